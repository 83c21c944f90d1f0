// Pixels to the host's codes.
// For `kernel_source.h` alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernel_lanes.h"

namespace {

/// Codes of LANES / 4 pixels: rounded half up, limited to 0...full, 0 for what is not a number;
/// coverage is full.
LANES_INLINE Ints codes_of(Floats pixels, std::int32_t full) {
    std::int32_t coverage[LANES];
    std::int32_t colours[LANES];
    for (int k = 0; k < LANES; ++k) {
        coverage[k] = k % kPixel == 0 ? full : 0;
        colours[k] = k % kPixel == 0 ? 0 : -1;
    }
    const Floats most = splat(static_cast<float>(full));
    Floats scaled = splat(0.5F) + pixels * most;
    scaled = select(scaled > splat(0.0F), scaled, splat(0.0F));
    scaled = select(scaled < most, scaled, most);
    return (truncated(scaled) & load_ints(colours)) | load_ints(coverage);
}

/// `Code`: what a channel becomes.
template <class Code>
LANES_INLINE void to_codes(const float* pixels, void* codes, std::size_t count, std::int32_t full) {
    std::size_t channels = kPixel * count;
    auto* to = static_cast<unsigned char*>(codes);
    for (; channels >= LANES; channels -= LANES, pixels += LANES, to += sizeof(Code) * LANES) {
        store_low_parts<Code>(to, codes_of(load(pixels), full));
    }
    if (channels > 0) {
        float rest[LANES] = {};
        std::memcpy(rest, pixels, channels * sizeof(float));
        Code some[LANES];
        store_low_parts<Code>(some, codes_of(load(rest), full));
        std::memcpy(to, some, channels * sizeof(Code));
    }
}

void to_8_bits(const float* pixels, void* codes, std::size_t count) {
    to_codes<std::uint8_t>(pixels, codes, count, 255);
}
void to_16_bits(const float* pixels, void* codes, std::size_t count) {
    to_codes<std::uint16_t>(pixels, codes, count, 32768);
}

}  // namespace
