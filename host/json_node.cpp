// Places, and the texts of what was found there.
#include "json_node.h"

#include <host/scene.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace host {

namespace {

/// As a JSON string.
std::string in_quotes(std::string_view text) { return Json(text).dump(); }

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

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Letters to insert, drop or replace to make one text of the other, capitals aside.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string json_place(const std::string& source,
                       const nlohmann::json_pointer<std::string>& pointer) {
    if (pointer.empty()) {
        return source;
    }
    const std::string quoted = in_quotes(pointer.to_string());
    return source + ": " + quoted.substr(1, quoted.size() - 2);
}

JsonNode JsonNode::operator[](const std::string& member) const {
    return {value_->at(member), *source_, pointer_ / member};
}

JsonNode JsonNode::operator[](std::size_t index) const {
    return {value_->at(index), *source_, pointer_ / index};
}

void JsonNode::fail(const std::string& expected) const { fail(expected, describe(*value_)); }

void JsonNode::fail(const std::string& expected, const std::string& found) const {
    throw SceneError(place() + ": expected " + expected + ", found " + found);
}

void JsonNode::expect_object() const {
    if (!value_->is_object()) {
        fail("an object");
    }
}

void JsonNode::expect_members(std::initializer_list<std::string_view> known) const {
    expect_object();
    for (const auto& [name, value] : value_->items()) {
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            continue;
        }
        std::string names;
        std::string_view nearest;
        std::size_t distance = name.size() / 2 + 1;  // a name that shares less is no typing error
        for (const std::string_view candidate : known) {
            names += (names.empty() ? "" : ", ") + in_quotes(candidate);
            if (const std::size_t edits = edit_distance(name, candidate); edits < distance) {
                distance = edits;
                nearest = candidate;
            }
        }
        (*this)[name].fail(
            (known.size() > 1 ? "one of " : "") + names,
            in_quotes(name) +
                (nearest.empty() ? "" : "; did you mean " + in_quotes(nearest) + "?"));
    }
}

}  // namespace host
