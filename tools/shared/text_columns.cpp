#include "text_columns.h"

#include <algorithm>

namespace lumivar {
namespace {

/// Bytes that continue a UTF-8 character are 10xxxxxx.
bool begins_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

/// Bytes of the first `count` characters, or of all.
std::size_t bytes_of(const std::string& text, std::size_t count) {
    std::size_t at = 0;
    while (at < text.size() && (count > 0 || !begins_character(text[at]))) {
        count -= begins_character(text[at]) ? 1U : 0U;
        ++at;
    }
    return at;
}

}  // namespace

std::size_t characters(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

std::string cut(const std::string& text, std::size_t count) {
    return text.substr(0, bytes_of(text, count));
}

std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
    std::vector<std::string> lines;
    std::string rest = text;
    while (characters(rest) > width) {
        const std::size_t most = bytes_of(rest, width);
        std::size_t end = rest.rfind(' ', most);
        if (end == std::string::npos || end == 0) {
            end = most;
        }
        lines.push_back(rest.substr(0, end));
        rest.erase(0, rest[end] == ' ' ? end + 1 : end);
    }
    lines.push_back(rest);
    return lines;
}

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t taken = characters(text);
    return text + std::string(taken < width ? width - taken : 0, ' ');
}

}  // namespace lumivar
