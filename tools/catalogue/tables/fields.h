// The fields of one line of a table, split in place.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace lumivar {

inline constexpr std::string_view kBlanks = " \t";

/// Without spaces and tabs at both ends.
inline std::string_view trimmed(std::string_view text) {
    const auto is_blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && is_blank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && is_blank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// The separator of fields that stand between runs of blanks.
inline constexpr char kAnyBlanks = ' ';

/// Splits lines; keeps what it needs to, so that a row costs no allocation.
class FieldSplitter {
public:
    /// `separator` is ',', ';', '|', a tab, or `kAnyBlanks`.
    explicit FieldSplitter(char separator) : separator_(separator) {}

    /// Blanks round a field do not count; a field in double quotes may hold separators, and doubled
    /// quotes for one. A quoted field ends with its line. False when a quote is left open or
    /// followed by other text. The fields stay valid until the next call, as long as `line` does.
    bool split(std::string_view line);
    const std::vector<std::string_view>& fields() const { return fields_; }

private:
    bool take_quoted(std::string_view& line);

    char separator_;
    std::vector<std::string_view> fields_;
    std::deque<std::string> unquoted_;  ///< fields with doubled quotes, without them
};

/// A field that stands at fixed bytes of its line.
struct ByteRange {
    std::size_t first = 0;  ///< from 0
    std::size_t size = 0;
};

/// Its text without blanks round it; empty or shorter where the line ends before.
std::string_view field_at(std::string_view line, ByteRange range);

/// A field as it may stand in a message: short and printable.
std::string shown_field(std::string_view text);

}  // namespace lumivar
