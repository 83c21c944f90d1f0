// A value of a JSON document that knows its place, so that an error can name it.
#pragma once

#include <cstddef>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace lumivar {

/// Parses a whole document. Throws `Failure` with line and column.
std::shared_ptr<const nlohmann::json> parse_document(std::string_view text,
                                                     const std::string& source);

/// Refers to the document and to the file's name, which must outlive it. What is not as a caller
/// wants it throws `Failure`: "FILE: /nodes/3/mesh: expected ..., found ...".
class JsonPlace {
public:
    JsonPlace(const nlohmann::json& document, const std::string& source)
        : value_(&document), source_(&source) {}

    bool is_object() const;
    bool is_array() const;
    bool is_string() const;
    bool is_true() const;
    bool has(const std::string& member) const;
    /// Elements of an array; 0 of anything else.
    std::size_t size() const;

    /// The member of an object, which must have it.
    JsonPlace operator[](const std::string& member) const;
    /// The element of an array, which must have so many.
    JsonPlace operator[](std::size_t index) const;
    /// The member, or nothing where this has none.
    std::optional<JsonPlace> find(const std::string& member) const;

    /// A finite number.
    double number() const;
    /// A whole number from 0 below `end`.
    std::size_t index(std::size_t end) const;
    std::string text() const;
    /// This, if it is an array, of `size` elements where that is not 0.
    const JsonPlace& array(std::size_t size = 0) const;

    std::string place() const;
    /// Throws "PLACE: expected `expected`, found THE VALUE".
    [[noreturn]] void fail(const std::string& expected) const;
    /// Throws "PLACE: `complaint`".
    [[noreturn]] void complain(const std::string& complaint) const;

private:
    JsonPlace(const nlohmann::json& value, const std::string& source, std::string pointer)
        : value_(&value), source_(&source), pointer_(std::move(pointer)) {}

    const nlohmann::json* value_;
    const std::string* source_;
    std::string pointer_;  ///< empty: the whole document
};

}  // namespace lumivar
