// Pixel formats: how effect and host name what a world's pixels are.
#pragma once

#include <host/world.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace host {

/// A format in which this host makes worlds.
struct PixelFormat {
    std::int32_t number;  ///< as the interface has it
    Depth depth;
    ChannelOrder order;
};

/// After Effects' own.
PixelFormat after_effects_format(Depth depth);

/// What an effect gets at a depth in Premiere Pro: of the formats that it declared, in its order of
/// preference, the first of that depth, BGRA or 8-bit ARGB; 8-bit ARGB if it declared none at all.
/// Nothing when it draws none of them.
std::optional<PixelFormat> premiere_format(const std::vector<std::int32_t>& declared, Depth depth);

}  // namespace host
