// Adding light to pixels side by side, and fetching them.
// For `kernel_source.h` alone.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernel_math.h"

using star_kernels::Pixels;
using star_kernels::Segment;

namespace {

/// Floats of a cache line.
constexpr int kCacheLine = 16;

/// The colour on a pixel's lanes; nothing for coverage.
LANES_INLINE Floats pixel_colour(const Segment& of) {
    float lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = k % kPixel == 0 ? 0.0F : of.colour[k % kPixel - 1];
    }
    return load(lanes);
}

/// The lanes that hold coverage.
LANES_INLINE Ints coverage_lanes() {
    std::int32_t lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = k % kPixel == 0 ? -1 : 0;
    }
    return load_ints(lanes);
}

template <bool kCovered>
LANES_INLINE Floats lit(Floats pixels, Floats weights, Floats colour) {
    // Coverage keeps every bit, even where the light is infinite.
    if (!kCovered) {
        return with_coverage_of(pixels, pixels + colour * weights);
    }
    const Floats coverage = coverage_of(pixels);
    const Floats more = pixels + colour * (weights * (splat(1.0F) - coverage));
    return with_coverage_of(pixels, select(coverage >= splat(1.0F), pixels, more));
}

template <bool kCovered, class Weights>
LANES_INLINE void light_pixels(float* pixels, const Weights& weights, std::ptrdiff_t n,
                               Floats colour) {
    constexpr std::ptrdiff_t kAtOnce = LANES / kPixel;
    std::ptrdiff_t i = 0;
    for (; i <= n - 2 * kAtOnce; i += 2 * kAtOnce, pixels += std::ptrdiff_t{2} * LANES) {
        store(pixels, lit<kCovered>(load(pixels), weights(i), colour));
        store(pixels + LANES, lit<kCovered>(load(pixels + LANES), weights(i + kAtOnce), colour));
    }
    for (; i <= n - kAtOnce; i += kAtOnce, pixels += LANES) {
        store(pixels, lit<kCovered>(load(pixels), weights(i), colour));
    }
    if (i < n) {
        const Floats old = load_part(pixels, n - i);
        store_part(pixels, n - i, lit<kCovered>(old, weights(i), colour));
    }
}

/// Adds the colour to `n` pixels, as much as `weights` says: of pixel i and the next ones, each on
/// all lanes of its pixel, also of some behind the last. `is_covered`: whether any may have
/// coverage.
template <class Weights>
LANES_INLINE void light(bool is_covered, float* pixels, const Weights& weights, std::ptrdiff_t n,
                        Floats colour) {
    is_covered ? light_pixels<true>(pixels, weights, n, colour)
               : light_pixels<false>(pixels, weights, n, colour);
}

bool fetch(const Pixels& to, int y, int rows) {
    const Ints colours = coverage_lanes() ^ splat(-1);
    Ints uncovered = splat(-1);
    for (int i = y; i < y + rows; ++i) {
        float* row = to.first + i * to.row;
        int x = 0;
        for (; x <= kPixel * to.width - kCacheLine; x += kCacheLine) {
            for (int k = 0; k < kCacheLine; k += LANES) {
                uncovered = uncovered & (colours | (absolute(load(row + x + k)) <= splat(0.0F)));
            }
            // Written as it is: a cache line that was only read has to be fetched again to be
            // written.
            volatile float* touched = row + x;
            *touched = row[x];
        }
        for (; x < kPixel * to.width; x += kPixel) {
            uncovered = uncovered & splat(row[x] == 0.0F ? -1 : 0);
        }
    }
    return any(uncovered ^ splat(-1));
}

}  // namespace
