// Trails: streaks that lie nearly on one another.
// For `kernel_source.h` alone.
#pragma once

#include <cstddef>

#include "kernel_light.h"
#include "kernel_streak.h"

using star_kernels::Trail;

namespace {

/// Where pixels of a trail are, row after row: a row or more, as many pixels as the widest trail
/// has columns. The last register reads beyond the last pixel.
struct TrailPixels {
    float x[star_kernels::kWidestTrail + LANES];
    float y[star_kernels::kWidestTrail + LANES];
    int count;
};

LANES_INLINE void find_trail_pixels(int x0, int x1, int y0, int y1, TrailPixels* pixels) {
    int n = 0;
    for (int y = y0; y <= y1; ++y) {
        for (int x = x0; x <= x1; ++x, ++n) {
            pixels->x[n] = static_cast<float>(x);
            pixels->y[n] = static_cast<float>(y);
        }
    }
    store(pixels->x + n, splat(0.0F));
    store(pixels->y + n, splat(0.0F));
    pixels->count = n;
}

/// Whether the streak visits these pixels: those of its box that lie between the ends of their row,
/// which are rounded outwards, as in `find_spans`.
LANES_INLINE Ints visits(const Streak& of, Floats x, Floats y) {
    const Floats centre = centre_of_row(of, y);
    return (x >= splat(static_cast<float>(of.x0))) & (splat(static_cast<float>(of.x1)) >= x) &
           (y >= splat(static_cast<float>(of.y0))) & (splat(static_cast<float>(of.y1)) >= y) &
           (x + splat(1.0F) > centre - splat(of.half)) &
           (centre + splat(of.half) > x - splat(1.0F));
}

/// Works out the weights of all pixels for the first streak, then of all for the next.
LANES_INLINE void weigh_trail(const Trail& trail, const TrailPixels& pixels, float* weights) {
    constexpr ErrorFunctions kBoth = ErrorFunctions::Both;
    Steps steps;
    // Each streak's last register reaches into the next one's pixels, which come after it.
    for (int i = 0, first = 0; i < trail.count; ++i, first += pixels.count) {
        const Streak& streak = trail.streaks[i];
        for (int at = 0; at < pixels.count; at += LANES) {
            const Floats rx = load(pixels.x + at) - splat(streak.mid_x);
            const Floats ry = load(pixels.y + at) - splat(streak.mid_y);
            find_arguments<kBoth>(streak, rx, ry, first + at, &steps);
        }
    }
    // Lighting the last pixel may read the weights of some more.
    const int all = trail.count * pixels.count;
    store(weights + all, splat(0.0F));
    find_ends<kBoth>(all, &steps);
    for (int i = 0, first = 0; i < trail.count; ++i, first += pixels.count) {
        const Streak& streak = trail.streaks[i];
        for (int at = 0; at < pixels.count; at += LANES) {
            const Ints is_visited = visits(streak, load(pixels.x + at), load(pixels.y + at));
            const Floats weight = weights_at<kBoth>(streak, first + at, steps);
            // Adding -0 leaves every number as it is.
            store(weights + first + at, select(is_visited, weight, splat(-0.0F)));
        }
    }
}

/// Pixels with the light of all streaks, one after the other. `weights`: the first streak's;
/// `stride`: from one streak's to the next.
LANES_INLINE Floats lit_by_all(const Trail& trail, Floats old, const float* weights, int stride,
                               Floats colour) {
    Floats sum = old;
    for (int i = 0; i < trail.count; ++i, weights += stride) {
        sum = sum + colour * load_for_pixels(weights);
    }
    // Coverage keeps every bit, even where the light is infinite.
    return with_coverage_of(old, sum);
}

LANES_INLINE void light_row(const Trail& trail, float* row, const float* weights, int stride) {
    constexpr int kAtOnce = LANES / kPixel;
    const Floats colour = pixel_colour(trail.streaks[0]);
    int left = trail.x1 - trail.x0 + 1;
    for (; left >= kAtOnce; left -= kAtOnce, weights += kAtOnce, row += LANES) {
        store(row, lit_by_all(trail, load(row), weights, stride, colour));
    }
    if (left > 0) {
        const Floats old = load_part(row, left);
        store_part(row, left, lit_by_all(trail, old, weights, stride, colour));
    }
}

void draw_trail(const Pixels& to, const Trail& trail) {
    const int columns = trail.x1 - trail.x0 + 1;
    const int rows = star_kernels::kWidestTrail / columns;
    float* first = to.first + std::ptrdiff_t{kPixel} * trail.x0;
    for (int y0 = trail.y0; y0 <= trail.y1; y0 += rows) {
        const int y1 = y0 + rows <= trail.y1 ? y0 + rows - 1 : trail.y1;
        TrailPixels pixels;
        find_trail_pixels(trail.x0, trail.x1, y0, y1, &pixels);
        float weights[Steps::kMost];
        weigh_trail(trail, pixels, weights);
        for (int y = y0; y <= y1; ++y) {
            light_row(trail, first + y * to.row, weights + std::ptrdiff_t{columns} * (y - y0),
                      pixels.count);
        }
    }
}

}  // namespace
