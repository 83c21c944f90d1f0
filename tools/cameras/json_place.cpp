#include "json_place.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "failure.h"

namespace lumivar {

std::shared_ptr<const nlohmann::json> parse_document(std::string_view text,
                                                     const std::string& source) {
    try {
        return std::make_shared<const nlohmann::json>(nlohmann::json::parse(text));
    } catch (const nlohmann::json::parse_error& error) {
        const std::size_t at = std::min(text.size(), error.byte == 0 ? 0 : error.byte - 1);
        const std::string_view before = text.substr(0, at);
        const auto line = std::count(before.begin(), before.end(), '\n') + 1;
        const std::size_t newline = before.rfind('\n');
        const std::size_t column = at - (newline == std::string_view::npos ? 0 : newline + 1) + 1;
        throw Failure(source + ": line " + std::to_string(line) + ", column " +
                      std::to_string(column) +
                      ": this is no JSON; is the file whole, and of the kind that its name says?");
    } catch (const nlohmann::json::exception&) {
        throw Failure(source + ": a number in it is too large");
    }
}

bool JsonPlace::is_object() const { return value_->is_object(); }
bool JsonPlace::is_array() const { return value_->is_array(); }
bool JsonPlace::is_string() const { return value_->is_string(); }
bool JsonPlace::is_true() const { return value_->is_boolean() && value_->get<bool>(); }
bool JsonPlace::has(const std::string& member) const {
    return value_->is_object() && value_->contains(member);
}
std::size_t JsonPlace::size() const { return value_->is_array() ? value_->size() : 0; }

JsonPlace JsonPlace::operator[](const std::string& member) const {
    if (!value_->is_object()) {
        fail("an object");
    }
    const auto found = value_->find(member);
    if (found == value_->end()) {
        complain("expected a member \"" + member + "\", found none");
    }
    return {*found, *source_, pointer_ + "/" + member};
}

JsonPlace JsonPlace::operator[](std::size_t index) const {
    array();
    if (index >= value_->size()) {
        complain("expected more than " + std::to_string(index) + " elements, found " +
                 std::to_string(value_->size()));
    }
    return {(*value_)[index], *source_, pointer_ + "/" + std::to_string(index)};
}

std::optional<JsonPlace> JsonPlace::find(const std::string& member) const {
    return has(member) ? std::optional(operator[](member)) : std::nullopt;
}

double JsonPlace::number() const {
    if (!value_->is_number() || !std::isfinite(value_->get<double>())) {
        fail("a number");
    }
    return value_->get<double>();
}

std::size_t JsonPlace::index(std::size_t end) const {
    const std::string expected = end == 0 ? "an index of a list that is not there"
                                          : "a whole number from 0 to " + std::to_string(end - 1);
    if (!value_->is_number_unsigned()) {
        fail(expected);
    }
    const auto number = value_->get<std::uint64_t>();
    if (number >= end) {
        fail(expected);
    }
    return static_cast<std::size_t>(number);
}

std::string JsonPlace::text() const {
    if (!value_->is_string()) {
        fail("a text");
    }
    return value_->get<std::string>();
}

const JsonPlace& JsonPlace::array(std::size_t size) const {
    if (!value_->is_array()) {
        fail("a list");
    }
    if (size != 0 && value_->size() != size) {
        complain("expected " + std::to_string(size) + " elements, found " +
                 std::to_string(value_->size()));
    }
    return *this;
}

std::string JsonPlace::place() const {
    return pointer_.empty() ? *source_ : *source_ + ": " + pointer_;
}

void JsonPlace::fail(const std::string& expected) const {
    // What holds others may hold them to any depth.
    if (value_->is_structured() && !value_->empty()) {
        complain("expected " + expected + ", found an " + value_->type_name());
    }
    constexpr std::size_t kLongestText = 60;
    std::string found = value_->dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
    if (found.size() > kLongestText) {
        found = "a long " + std::string(value_->type_name());
    }
    complain("expected " + expected + ", found " + found);
}

void JsonPlace::complain(const std::string& complaint) const {
    throw Failure(place() + ": " + complaint);
}

}  // namespace lumivar
