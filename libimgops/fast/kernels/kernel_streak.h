// Moving spots.
// For `kernel_source.h` alone.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernel_erf.h"
#include "kernel_light.h"
#include "kernel_math.h"
#include "kernel_offsets.h"

using star_kernels::ErrorFunctions;
using star_kernels::Pixels;
using star_kernels::Streak;

namespace {

/// The middle of the streak's rows.
LANES_INLINE Floats centre_of_row(const Streak& of, Floats y) {
    return of.is_flat ? splat(of.mid_x) : splat(of.a_x) + (y - splat(of.a_y)) * splat(of.slope);
}

/// Where the rows of a streak begin and end.
struct Spans {
    float ry[LANES];
    std::int32_t x[LANES];  ///< first column
    float first[LANES];     ///< its offset from the midpoint
    float last[LANES];      ///< no pixel farther than this
};

LANES_INLINE void find_spans(const Streak& of, int width, Floats ry, Spans* spans) {
    const Floats centre = centre_of_row(of, ry + splat(of.mid_y));
    const Floats x0 = splat(static_cast<float>(of.x0));
    const Floats x1 = splat(static_cast<float>(of.x1));
    Floats left = centre - splat(of.half);
    Floats right = centre + splat(of.half);
    left = select(x0 >= left, x0, left);
    right = select(right > x1, x1, right);
    // Rows beside the frame stay beside it but come near enough for `floor_of` and `ceil_of`.
    const Floats beyond = splat(static_cast<float>(width));
    const Floats before = splat(-0x1p21F);
    left = floor_of(select(left > beyond, beyond, left));
    right = ceil_of(select(right < before, before, right));
    store(spans->ry, ry);
    store(spans->x, bits_of(left + splat(kRounder)) - splat(kRounderBits));
    store(spans->first, left - splat(of.mid_x));
    store(spans->last, right - splat(of.mid_x));
}

/// Pixels of consecutive rows, one after the other: their offsets from the midpoint, and where in
/// the frame each row's pixels begin and how many there are.
struct Block {
    float rx[kBlock + LANES];
    float ry[kBlock + LANES];
    float* pixels[kBlock];
    int counts[kBlock];
    bool is_covered;
    int used = 0;
    int pieces = 0;
};

/// What weights are made of, for pixels one after the other: the arguments of their exponential and
/// of their error functions, and then these. Each step towards a weight is a loop of its own: while
/// one round of a short loop waits for its results, a processor works at the next ones; the next
/// round of a long one is beyond what it looks ahead.
struct Steps {
    static constexpr int kMost = star_kernels::kMostInTrail * star_kernels::kWidestTrail + LANES;
    static_assert(kMost >= kBlock + LANES);
    float exponents[kMost];
    float ends[2][kMost];
};

/// Finds the arguments of LANES pixels, the first being pixel `at`.
template <ErrorFunctions kEnds>
LANES_INLINE void find_arguments(const Streak& of, Floats rx, Floats ry, int at, Steps* steps) {
    constexpr bool kBoth = kEnds == ErrorFunctions::Both;
    const Floats u = splat(of.dir_y) * rx - splat(of.dir_x) * ry;
    store(steps->exponents + at, kBoth ? -(u * u) / splat(of.q) : (u * u) * splat(-1.0F / of.q));
    if (kEnds != ErrorFunctions::None) {
        const Floats v = splat(of.along_x) * rx + splat(of.along_y) * ry;
        const Floats nearer = kBoth ? v : absolute(v);
        store(steps->ends[0] + at, (splat(of.half_way) - nearer) * splat(of.scale));
        if (kBoth) {
            store(steps->ends[1] + at, (splat(-of.half_way) - v) * splat(of.scale));
        }
    }
}

/// Works out the error functions of the first `n` pixels.
template <ErrorFunctions kEnds>
LANES_INLINE void find_ends(int n, Steps* steps) {
    constexpr int kCount = kEnds == ErrorFunctions::None     ? 0
                           : kEnds == ErrorFunctions::Nearer ? 1
                                                             : 2;
    for (int k = 0; k < kCount; ++k) {
        // The last register reads beyond them.
        store(steps->ends[k] + n, splat(0.0F));
        for (int i = 0; i < n; i += LANES) {
            const Floats x = load(steps->ends[k] + i);
            store(steps->ends[k] + i, kCount == 1 ? erf_of(x) : library_erf_of(x));
        }
    }
}

/// The weights of LANES pixels from pixel `at` on. With both error functions they are made in the
/// plain streak's order.
template <ErrorFunctions kEnds>
LANES_INLINE Floats weights_at(const Streak& of, int at, const Steps& steps) {
    const Floats light = exp_of_negative(load(steps.exponents + at));
    if (kEnds == ErrorFunctions::None) {
        return light * splat(2.0F * of.area * of.energy_a_pixel);
    }
    if (kEnds == ErrorFunctions::Nearer) {
        return light * (splat(1.0F) + load(steps.ends[0] + at)) *
               splat(of.area * of.energy_a_pixel);
    }
    return light * splat(of.area) * (load(steps.ends[0] + at) - load(steps.ends[1] + at)) *
           splat(of.energy_a_pixel);
}

/// Lights what is in the block and empties it.
template <ErrorFunctions kEnds>
LANES_INLINE void flush(const Streak& of, Block* block) {
    // The last register reads beyond what is used.
    store(block->rx + block->used, splat(0.0F));
    store(block->ry + block->used, splat(0.0F));
    Steps steps;
    for (int i = 0; i < block->used; i += LANES) {
        find_arguments<kEnds>(of, load(block->rx + i), load(block->ry + i), i, &steps);
    }
    find_ends<kEnds>(block->used, &steps);
    float weights[kBlock + LANES];
    store(weights + block->used, splat(0.0F));
    for (int i = 0; i < block->used; i += LANES) {
        store(weights + i, weights_at<kEnds>(of, i, steps));
    }
    const Floats colour = pixel_colour(of);
    for (int i = 0, first = 0; i < block->pieces; first += block->counts[i++]) {
        const auto of_piece = [&](std::ptrdiff_t k) __attribute__((always_inline)) {
            return load_for_pixels(weights + first + k);
        };
        light(block->is_covered, block->pixels[i], of_piece, block->counts[i], colour);
    }
    block->used = block->pieces = 0;
}

/// How many pixels a row has, the first at the offset `rx`, up to the offset `last`; a register
/// more than `room` at most.
LANES_INLINE int pixels_of_row(const Streak& of, int room, float rx, float last) {
    if (of.has_exact_columns) {
        return static_cast<int>(last - rx + 1.0F);
    }
    if (rx + 1.0F == rx) {
        return rx <= last ? room : 0;
    }
    int all = 0;
    int n = LANES;
    for (; n == LANES && all <= room; all += n) {
        n = count(offsets(&rx) <= splat(last));
    }
    return all;
}

/// Draws such a row, or `room` pixels of it.
template <ErrorFunctions kEnds>
LANES_INLINE void draw_row(const Streak& of, Block* block, float* pixels, int room, float rx,
                           float last, float ry) {
    Floats exact = splat(rx) + lane_numbers();
    int n = pixels_of_row(of, room, rx, last);
    n = n < room ? n : room;
    while (n > 0) {
        if (block->used > kBlock - LANES) {
            flush<kEnds>(of, block);
        }
        const int registers = (kBlock - block->used) / LANES;
        const int now = n < registers * LANES ? n : registers * LANES;
        block->pixels[block->pieces] = pixels;
        block->counts[block->pieces++] = now;
        for (int at = block->used; at < block->used + now; at += LANES) {
            store(block->rx + at, of.has_exact_columns ? exact : offsets(&rx));
            store(block->ry + at, splat(ry));
            // Weighing a block takes as long as a cache needs to bring its pixels.
            for (int i = 0; i < kPixel * LANES; i += kCacheLine) {
                __builtin_prefetch(pixels + i, 1);
            }
            exact = exact + splat(static_cast<float>(LANES));
            pixels += std::ptrdiff_t{kPixel} * LANES;
        }
        block->used += now;
        n -= now;
    }
}

template <ErrorFunctions kEnds>
LANES_INLINE float draw_rows(const Pixels& to, const Streak& streak, float ry) {
    Block block;
    block.is_covered = to.is_covered;
    for (int y = streak.y0; y <= streak.y1; y += LANES) {
        Spans spans;
        float rest = ry;
        const Floats row_offsets = offsets(&rest);
        find_spans(streak, to.width, row_offsets, &spans);
        const int rows = streak.y1 - y + 1 < LANES ? streak.y1 - y + 1 : LANES;
        for (int k = 0; k < rows; ++k) {
            const int x = spans.x[k];
            float* pixels = to.first + (y + k) * to.row + std::ptrdiff_t{kPixel} * x;
            draw_row<kEnds>(streak, &block, pixels, to.width - x, spans.first[k], spans.last[k],
                            spans.ry[k]);
        }
        ry = rows < LANES ? spans.ry[rows] : rest;
    }
    flush<kEnds>(streak, &block);
    return ry;
}

float draw_streak(const Pixels& to, const Streak& streak, float ry) {
    switch (streak.ends) {
        case ErrorFunctions::None:
            return draw_rows<ErrorFunctions::None>(to, streak, ry);
        case ErrorFunctions::Nearer:
            return draw_rows<ErrorFunctions::Nearer>(to, streak, ry);
        case ErrorFunctions::Both:
            break;
    }
    return draw_rows<ErrorFunctions::Both>(to, streak, ry);
}

}  // namespace
