#include <host/pixel_format.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <iterator>

namespace host {
namespace {

constexpr PixelFormat kAfterEffects[] = {
    {PF_PixelFormat_ARGB32, Depth::Bits8, ChannelOrder::Argb},
    {PF_PixelFormat_ARGB64, Depth::Bits16, ChannelOrder::Argb},
    {PF_PixelFormat_ARGB128, Depth::Float, ChannelOrder::Argb},
};

/// Premiere Pro has no ARGB of more than 8 bits.
constexpr PixelFormat kPremiere[] = {
    {PF_PixelFormat_ARGB32, Depth::Bits8, ChannelOrder::Argb},
    {PF_PixelFormat_BGRA32, Depth::Bits8, ChannelOrder::Bgra},
    {PF_PixelFormat_BGRA64, Depth::Bits16, ChannelOrder::Bgra},
    {PF_PixelFormat_BGRA128, Depth::Float, ChannelOrder::Bgra},
};

}  // namespace

PixelFormat after_effects_format(Depth depth) {
    return *std::find_if(std::begin(kAfterEffects), std::end(kAfterEffects),
                         [=](const PixelFormat& format) { return format.depth == depth; });
}

std::optional<PixelFormat> premiere_format(const std::vector<std::int32_t>& declared, Depth depth) {
    if (declared.empty() && depth == Depth::Bits8) {
        return after_effects_format(depth);
    }
    for (const std::int32_t number : declared) {
        for (const PixelFormat& format : kPremiere) {
            if (format.number == number && format.depth == depth) {
                return format;
            }
        }
    }
    return std::nullopt;
}

}  // namespace host
