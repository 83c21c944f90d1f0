#include "premiere_formats.h"

#include <host/pixel_format.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <utility>

namespace conformance {
namespace {

using host::Depth;

constexpr std::pair<PF_PixelFormat, const char*> kNames[] = {
    {PF_PixelFormat_BGRA32, "8-bit BGRA"},
    {PF_PixelFormat_ARGB32, "8-bit ARGB"},
    {PF_PixelFormat_ARGB64, "16-bit ARGB"},
    {PF_PixelFormat_ARGB128, "float ARGB"},
};

std::string name_of(std::int32_t format) {
    for (const auto& [number, name] : kNames) {
        if (number == format) {
            return name;
        }
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "the format 0x%08X", static_cast<unsigned>(format));
    return text.data();
}

bool drawn(const std::vector<std::int32_t>& declared, std::int32_t format) {
    const Depth depths[] = {Depth::Bits8, Depth::Bits16, Depth::Float};
    return std::any_of(std::begin(depths), std::end(depths), [&](Depth depth) {
        const auto chosen = host::premiere_format(declared, depth);
        return chosen && chosen->number == format;
    });
}

}  // namespace

std::string formats_not_drawn(const std::vector<std::int32_t>& declared) {
    std::vector<std::string> names;
    for (const std::int32_t format : declared) {
        const std::string name = name_of(format);
        if (!drawn(declared, format) &&
            std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
    }
    return text;
}

}  // namespace conformance
