// Places of values in their file, and messages about them.
#include "json_node.h"

#include <host/nearest.h>
#include <host/scene.h>

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>

namespace host {

namespace {

using Pointer = nlohmann::json_pointer<std::string>;

/// As a JSON string.
std::string in_json_quotes(std::string_view text) { return Json(text).dump(); }

std::string describe(const Json& value) {
    switch (value.type()) {
        case Json::value_t::object:
            return value.empty() ? "an empty object" : "an object";
        case Json::value_t::array:
            return value.empty() ? "an empty array" : "an array of " + std::to_string(value.size());
        case Json::value_t::string:
            if (value.get_ref<const std::string&>().size() > kLongestText) {
                return "a long string";
            }
            [[fallthrough]];
        default:
            return value.dump();
    }
}

}  // namespace

std::string json_place(const std::string& source, const std::string& pointer) {
    if (pointer.empty()) {
        return source;
    }
    const std::string quoted = in_json_quotes(pointer);
    return source + ": " + quoted.substr(1, quoted.size() - 2);
}

std::string json_text(double number) { return Json(number).dump(); }

bool JsonNode::is_object() const { return value_->is_object(); }
bool JsonNode::is_array() const { return value_->is_array(); }
bool JsonNode::is_number() const { return value_->is_number(); }
bool JsonNode::is_boolean() const { return value_->is_boolean(); }
bool JsonNode::is_string() const { return value_->is_string(); }

double JsonNode::number() const { return value_->get<double>(); }
bool JsonNode::boolean() const { return value_->get<bool>(); }
const std::string& JsonNode::string() const { return value_->get_ref<const std::string&>(); }
std::vector<std::string> JsonNode::members() const {
    std::vector<std::string> names;
    for (const auto& item : value_->items()) {
        names.push_back(item.key());
    }
    return names;
}

std::size_t JsonNode::size() const { return value_->size(); }
std::string JsonNode::text() const { return value_->dump(); }

bool JsonNode::has(const std::string& member) const { return value_->contains(member); }

JsonNode JsonNode::operator[](const std::string& member) const {
    return {value_->at(member), *source_, (Pointer(pointer_) / member).to_string()};
}

JsonNode JsonNode::operator[](std::size_t index) const {
    return {value_->at(index), *source_, (Pointer(pointer_) / index).to_string()};
}

void JsonNode::fail(const std::string& expected) const { fail(expected, describe(*value_)); }

void JsonNode::fail(const std::string& expected, const std::string& found) const {
    throw SceneError(place() + ": expected " + expected + ", found " + found);
}

void JsonNode::expect_object() const {
    if (!is_object()) {
        fail("an object");
    }
}

void JsonNode::expect_members(std::initializer_list<std::string_view> known) const {
    expect_object();
    for (const std::string& name : members()) {
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            continue;
        }
        std::string names;
        for (const std::string_view candidate : known) {
            names += (names.empty() ? "" : ", ") + in_json_quotes(candidate);
        }
        const auto likely = nearest(name, {known.begin(), known.end()});
        (*this)[name].fail((known.size() > 1 ? "one of " : "") + names,
                           in_json_quotes(name) +
                               (likely ? "; did you mean " + in_json_quotes(*likely) + "?" : ""));
    }
}

}  // namespace host
