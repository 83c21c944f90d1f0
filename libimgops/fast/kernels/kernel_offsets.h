// How far pixels of a row, and rows, are from a segment's midpoint.
// For `kernel_source.h` alone.
#pragma once

#include "kernel_lanes.h"

namespace {

/// Pixels whose weights are worked out in one go.
constexpr int kBlock = 256;

/// 0, 1, 2 ...
LANES_INLINE Floats lane_numbers() {
    float lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = static_cast<float>(k);
    }
    return load(lanes);
}

/// Offsets of LANES pixels from the midpoint, the first at `rx`. Each is the one before plus 1,
/// rounded; `rx` becomes the one after the last.
LANES_INLINE Floats offsets(float* rx) {
    const float after = *rx + static_cast<float>(LANES);
    constexpr float kLastOdd = 16777216.0F;  // 2^24; beyond it there are no odd numbers
    if (after - static_cast<float>(LANES) == *rx && *rx > -kLastOdd && after < kLastOdd) {
        // The last one is exact, so that all are: multiples of the first one's lowest bit, below
        // the same bound.
        const Floats result = splat(*rx) + lane_numbers();
        *rx = after;
        return result;
    }
    if (*rx + 1.0F == *rx) {
        return splat(*rx);
    }
    float lanes[LANES];
    for (float& lane : lanes) {
        lane = *rx;
        *rx += 1.0F;
    }
    return load(lanes);
}

}  // namespace
