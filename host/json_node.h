// JSON whose values know where they stand in the file, so that an error can name the place.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

namespace host {

/// Keeps the members of an object in the order of the file.
using Json = nlohmann::ordered_json;

/// Parses `text` strictly, but for comments; members that stand twice in an object are an error.
/// Throws `SceneError`.
Json parse_json(const std::string& text, const std::string& source);

/// "line L, column C" of a byte of `text`, both from 1, columns in characters.
std::string line_and_column(const std::string& text, std::size_t offset);

/// "FILE: POINTER", or "FILE" for the whole document; control characters are escaped as in
/// JSON.
std::string json_place(const std::string& source,
                       const nlohmann::json_pointer<std::string>& pointer);

/// Values whose text is longer are described rather than repeated: messages stay on one line.
inline constexpr std::size_t kLongestText = 60;

/// One value of a document and its place. Refers to the document and to the file's name, which must
/// outlive it.
class JsonNode {
public:
    JsonNode(const Json& value, const std::string& source) : value_(&value), source_(&source) {}

    const Json& value() const { return *value_; }
    const Json* operator->() const { return value_; }

    bool has(const std::string& member) const { return value_->contains(member); }
    /// The member or element, which must be there.
    JsonNode operator[](const std::string& member) const;
    JsonNode operator[](std::size_t index) const;

    std::string place() const { return json_place(*source_, pointer_); }
    /// Throws "PLACE: expected `expected`, found `found`"; without `found`, the value itself.
    [[noreturn]] void fail(const std::string& expected) const;
    [[noreturn]] void fail(const std::string& expected, const std::string& found) const;

    void expect_object() const;
    /// Fails unless this is an object that has no members but `known`; at a wrong one suggests the
    /// known name nearest to it.
    void expect_members(std::initializer_list<std::string_view> known) const;

private:
    JsonNode(const Json& value, const std::string& source, nlohmann::json_pointer<std::string> at)
        : value_(&value), source_(&source), pointer_(std::move(at)) {}

    const Json* value_;
    const std::string* source_;
    nlohmann::json_pointer<std::string> pointer_;
};

}  // namespace host
