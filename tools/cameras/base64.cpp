#include "base64.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumivar {

std::optional<std::string> from_base64(std::string_view text) {
    constexpr std::string_view kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    while (text.ends_with('=')) {
        text.remove_suffix(1);
    }
    if (text.size() % 4 == 1) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char letter : text) {
        const std::size_t value = kLetters.find(letter);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << 6U | static_cast<std::uint32_t>(value)) & 0xFFFFU;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<char>(bits >> static_cast<unsigned>(count) & 0xFFU));
        }
    }
    return bytes;
}

}  // namespace lumivar
