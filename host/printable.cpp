#include <host/printable.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace host {
namespace {

struct Span {
    std::uint32_t first;
    std::uint32_t last;

    bool holds(std::uint32_t character) const { return first <= character && character <= last; }
};

/// Characters that control a terminal instead of being shown.
constexpr std::array<Span, 6> kActing = {{
    {0x00, 0x1F},      // C0
    {0x7F, 0x9F},      // DEL and C1
    {0x061C, 0x061C},  // direction of writing
    {0x200E, 0x200F},  // likewise
    {0x2028, 0x202E},  // line and paragraph ends, direction of writing
    {0x2066, 0x2069},  // direction of writing
}};

/// What the first byte of a character says of it.
struct Lead {
    std::size_t length;   ///< in bytes; 0: no character begins with it
    std::uint32_t bits;   ///< of the character, in this byte
    std::uint32_t least;  ///< smaller characters have a shorter form
};

Lead lead_of(unsigned char byte) {
    if (byte < 0x80U) {
        return {1, byte, 0};
    }
    if ((byte & 0xE0U) == 0xC0U) {
        return {2, byte & 0x1FU, 0x80};
    }
    if ((byte & 0xF0U) == 0xE0U) {
        return {3, byte & 0x0FU, 0x800};
    }
    if ((byte & 0xF8U) == 0xF0U) {
        return {4, byte & 0x07U, 0x10000};
    }
    return {0, 0, 0};
}

/// Bytes of the character at the beginning of `text`, which is not empty; 0 when it has to be
/// escaped.
std::size_t harmless_length(std::string_view text) {
    constexpr Span kSurrogates = {0xD800, 0xDFFF};
    constexpr std::uint32_t kLast = 0x10FFFF;
    const Lead lead = lead_of(static_cast<unsigned char>(text.front()));
    if (lead.length == 0 || lead.length > text.size()) {
        return 0;
    }
    std::uint32_t character = lead.bits;
    for (const char next : text.substr(1, lead.length - 1)) {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & 0xC0U) != 0x80U) {
            return 0;
        }
        character = character << 6U | (byte & 0x3FU);
    }
    if (character < lead.least || character > kLast || kSurrogates.holds(character)) {
        return 0;
    }
    for (const Span& acting : kActing) {
        if (acting.holds(character)) {
            return 0;
        }
    }
    return lead.length;
}

std::string escape(char character) {
    switch (character) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            break;
    }
    std::array<char, 5> text{};
    std::snprintf(text.data(), text.size(), "\\x%02X",
                  static_cast<unsigned>(static_cast<unsigned char>(character)));
    return text.data();
}

}  // namespace

std::string printable(std::string_view text) {
    std::string clean;
    clean.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = harmless_length(text);
        if (length == 0) {
            // Byte by byte: the bytes that follow begin no character, so each is escaped in turn.
            clean += escape(text.front());
            text.remove_prefix(1);
        } else {
            clean += text.substr(0, length);
            text.remove_prefix(length);
        }
    }
    return clean;
}

}  // namespace host
