#include "tables/fields.h"

#include <algorithm>

namespace lumivar {

bool FieldSplitter::take_quoted(std::string_view& line) {
    std::string_view field;
    const std::size_t quote = line.find('"', 1);
    if (quote == std::string_view::npos) {
        return false;
    }
    if (quote + 1 < line.size() && line[quote + 1] == '"') {
        std::string& text = unquoted_.emplace_back();
        std::size_t at = 1;
        for (;; ++at) {
            if (at == line.size()) {
                return false;
            }
            if (line[at] == '"') {
                if (at + 1 == line.size() || line[at + 1] != '"') {
                    break;
                }
                ++at;
            }
            text += line[at];
        }
        field = text;
        line.remove_prefix(at + 1);
    } else {
        field = line.substr(1, quote - 1);
        line.remove_prefix(quote + 1);
    }
    fields_.push_back(field);
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t') &&
           line.front() != separator_) {
        line.remove_prefix(1);
    }
    return line.empty() || line.front() == separator_ ||
           (separator_ == kAnyBlanks && line.front() == '\t');
}

bool FieldSplitter::split(std::string_view line) {
    fields_.clear();
    unquoted_.clear();
    if (separator_ == kAnyBlanks) {
        line = trimmed(line);
    }
    for (;;) {
        // Blanks before a field, the separator itself apart.
        std::size_t start = 0;
        while (start < line.size() && (line[start] == ' ' || line[start] == '\t') &&
               (separator_ == kAnyBlanks || line[start] != separator_)) {
            ++start;
        }
        if (start < line.size() && line[start] == '"') {
            line.remove_prefix(start);
            if (!take_quoted(line)) {
                return false;
            }
        } else {
            const std::size_t from = separator_ == kAnyBlanks ? start : 0;
            const std::size_t end = separator_ == kAnyBlanks ? line.find_first_of(kBlanks, from)
                                                             : line.find(separator_, from);
            const std::size_t size = std::min(end, line.size());
            fields_.push_back(trimmed(line.substr(from, size - from)));
            line.remove_prefix(size);
        }
        if (line.empty()) {
            return true;
        }
        line.remove_prefix(1);
    }
}

std::string_view field_at(std::string_view line, ByteRange range) {
    return range.first >= line.size() ? std::string_view()
                                      : trimmed(line.substr(range.first, range.size));
}

std::string shown_field(std::string_view text) {
    constexpr std::size_t kLongest = 40;
    std::string result;
    for (const char character : text.substr(0, kLongest)) {
        result += character >= ' ' && character <= '~' ? character : '?';
    }
    if (text.size() > kLongest) {
        result += "...";
    }
    return result;
}

}  // namespace lumivar
