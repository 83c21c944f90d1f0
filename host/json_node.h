// JSON whose values know where they stand in the file, so that an error can name the place. The
// library's own header, which takes longer to compile than all that reads scenes, is known to the
// sources `json_node.cpp` and `json_parse.cpp` alone.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

/// Keeps the members of an object in the order of the file.
using Json = nlohmann::ordered_json;

/// Parses `text` strictly, but for comments; members that stand twice in an object are an error.
/// Throws `SceneError`.
std::shared_ptr<const Json> parse_json(const std::string& text, const std::string& source);

/// "line L, column C" of a byte of `text`, both from 1, columns in characters.
std::string line_and_column(const std::string& text, std::size_t offset);

/// "FILE: POINTER", or "FILE" for the whole document; control characters are escaped as in
/// JSON.
std::string json_place(const std::string& source, const std::string& pointer);

/// The shortest text that reads back as this number.
std::string json_text(double number);

/// Values whose text is longer are described rather than repeated: messages stay on one line.
inline constexpr std::size_t kLongestText = 60;

/// One value of a document and its place. Refers to the document and to the file's name, which must
/// outlive it.
class JsonNode {
public:
    JsonNode(const Json& value, const std::string& source) : value_(&value), source_(&source) {}

    bool is_object() const;
    bool is_array() const;
    bool is_number() const;
    bool is_boolean() const;
    bool is_string() const;

    // Of a value of that kind.
    double number() const;
    bool boolean() const;
    const std::string& string() const;
    std::vector<std::string> members() const;

    /// Elements or members.
    std::size_t size() const;
    /// As JSON, in one line.
    std::string text() const;

    bool has(const std::string& member) const;
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
    JsonNode(const Json& value, const std::string& source, std::string pointer)
        : value_(&value), source_(&source), pointer_(std::move(pointer)) {}

    const Json* value_;
    const std::string* source_;
    std::string pointer_;  ///< empty: the whole document
};

}  // namespace host
