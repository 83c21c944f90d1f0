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

/// Where the rows of a streak begin and end.
struct Spans {
    float ry[LANES];
    std::int32_t x[LANES];        ///< first column
    float first[LANES];           ///< its offset from the midpoint
    float last[LANES];            ///< no pixel farther than this
    std::int32_t columns[LANES];  ///< from the first to that one; none where not above 0
};

LANES_INLINE void find_spans(const Streak& of, int width, Floats ry, Spans* spans) {
    const Floats y = ry + splat(of.mid_y);
    const Floats centre =
        of.is_flat ? splat(of.mid_x) : splat(of.a_x) + (y - splat(of.a_y)) * splat(of.slope);
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
    const Ints first_column = bits_of(left + splat(kRounder)) - splat(kRounderBits);
    store(spans->x, first_column);
    store(spans->columns,
          bits_of(right + splat(kRounder)) - splat(kRounderBits - 1) - first_column);
    store(spans->first, left - splat(of.mid_x));
    store(spans->last, right - splat(of.mid_x));
}

/// Pixels of consecutive rows, one after the other: their offsets from the midpoint, and where in
/// the frame each row's pixels begin and how many there are.
struct Block {
    float rx[kBlock + LANES];
    float ry[kBlock + LANES];
    float weights[kBlock + LANES];
    float* pixels[kBlock];
    int counts[kBlock];
    int used = 0;
    int pieces = 0;
};

/// Which of a streak's two error functions are worked out; the others are 1 and -1. `Library`:
/// both, nearly to the C library's last bit.
enum class Ends { None, Nearer, Both, Library };

template <Ends kEnds>
LANES_INLINE Floats weight_at(const Streak& of, Floats rx, Floats ry) {
    const Floats u = splat(of.dir_y) * rx - splat(of.dir_x) * ry;
    if (kEnds == Ends::None) {
        return exp_of_negative((u * u) * splat(-1.0F / of.q)) *
               splat(2.0F * of.area * of.energy_a_pixel);
    }
    const Floats v = splat(of.along_x) * rx + splat(of.along_y) * ry;
    if (kEnds == Ends::Library) {
        // In the plain streak's order.
        const Floats ends = library_erf_of((splat(of.half_way) - v) * splat(of.scale)) -
                            library_erf_of((splat(-of.half_way) - v) * splat(of.scale));
        return exp_of_negative(-(u * u) / splat(of.q)) * splat(of.area) * ends *
               splat(of.energy_a_pixel);
    }
    const Floats ends =
        kEnds == Ends::Nearer
            ? splat(1.0F) + erf_of((splat(of.half_way) - absolute(v)) * splat(of.scale))
            : erf_of((splat(of.half_way) - v) * splat(of.scale)) -
                  erf_of((splat(-of.half_way) - v) * splat(of.scale));
    return exp_of_negative((u * u) * splat(-1.0F / of.q)) * ends *
           splat(of.area * of.energy_a_pixel);
}

template <Ends kEnds>
LANES_INLINE void weigh(const Streak& of, Block* block) {
    // The last register reads beyond what is used.
    store(block->rx + block->used, splat(0.0F));
    store(block->ry + block->used, splat(0.0F));
    store(block->weights + block->used, splat(0.0F));
    for (int i = 0; i < block->used; i += LANES) {
        store(block->weights + i, weight_at<kEnds>(of, load(block->rx + i), load(block->ry + i)));
    }
}

/// Lights what is in the block and empties it.
template <Ends kEnds, bool kCovered>
LANES_INLINE void flush(const Streak& of, Block* block) {
    weigh<kEnds>(of, block);
    const Floats colour = pixel_colour(of);
    const float* weights = block->weights;
    for (int i = 0; i < block->pieces; ++i) {
        light<kCovered>(block->pixels[i], PixelWeights{weights}, block->counts[i], colour);
        weights += block->counts[i];
    }
    block->used = block->pieces = 0;
}

/// Puts LANES pixels into the block from its pixel `at` on; some of them may be beyond its end.
LANES_INLINE void put(Block* block, int at, Floats rx, Floats ry, const float* pixels) {
    store(block->rx + at, rx);
    store(block->ry + at, ry);
    // Weighing a block takes as long as a cache needs to bring its pixels.
    for (int i = 0; i < kPixel * LANES; i += kCacheLine) {
        __builtin_prefetch(pixels + i, 1);
    }
}

/// Counts `n` pixels that were put behind those of the block.
LANES_INLINE void count_piece(Block* block, float* pixels, int n) {
    block->pixels[block->pieces] = pixels;
    block->counts[block->pieces++] = n;
    block->used += n;
}

/// Draws `n` pixels of a row, the first at the offset `rx`, whose offsets are all exact.
template <Ends kEnds, bool kCovered>
LANES_INLINE void draw_exact_row(const Streak& of, Block* block, float* pixels, int n, float rx,
                                 float ry) {
    float lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = static_cast<float>(k);
    }
    while (n > 0) {
        if (block->used > kBlock - LANES) {
            flush<kEnds, kCovered>(of, block);
        }
        const int room = kBlock - block->used;
        const int now = n < room ? n : room;
        Floats offset = splat(rx) + load(lanes);
        const float* ahead = pixels;
        for (int at = block->used; at < block->used + now; at += LANES) {
            put(block, at, offset, splat(ry), ahead);
            offset = offset + splat(static_cast<float>(LANES));
            ahead += std::ptrdiff_t{kPixel} * LANES;
        }
        count_piece(block, pixels, now);
        n -= now;
        if (n > 0) {
            rx += static_cast<float>(now);
            pixels += std::ptrdiff_t{kPixel} * now;
        }
    }
}

/// Draws a row of `room` pixels at most, the first at the offset `rx`, up to the offset `last`.
template <Ends kEnds, bool kCovered>
LANES_INLINE void draw_carried_row(const Streak& of, Block* block, float* pixels, int room,
                                   float rx, float last, float ry) {
    int n = LANES;
    while (room > 0 && n == LANES) {
        if (block->used > kBlock - LANES) {
            flush<kEnds, kCovered>(of, block);
        }
        const Floats offset = offsets(&rx);
        n = count(offset <= splat(last));
        n = n < room ? n : room;
        if (n > 0) {
            put(block, block->used, offset, splat(ry), pixels);
            count_piece(block, pixels, n);
            room -= n;
            pixels += std::ptrdiff_t{kPixel} * LANES;
        }
    }
}

/// Whether the offsets of columns 0 to x1 from the midpoint are surely exact: multiples of its
/// lowest bit, and no larger than the midpoint itself.
LANES_INLINE bool has_exact_offsets(const Streak& of) {
    constexpr float kFirstEven = 8388608.0F;  // 2^23; up to it a float's lowest bit is 1 or less
    return static_cast<float>(of.x1) <= 2.0F * of.mid_x && of.mid_x < kFirstEven;
}

template <Ends kEnds, bool kCovered>
LANES_INLINE float draw_rows(const Pixels& to, const Streak& streak, int y, int rows, float ry) {
    Block block;
    const bool is_exact = has_exact_offsets(streak);
    for (int done = 0; done < rows; done += LANES) {
        Spans spans;
        float rest = ry;
        const Floats row_offsets = offsets(&rest);
        find_spans(streak, to.width, row_offsets, &spans);
        const int now = rows - done < LANES ? rows - done : LANES;
        for (int k = 0; k < now; ++k) {
            const int x = spans.x[k];
            float* pixels = to.first + (y + done + k) * to.row + std::ptrdiff_t{kPixel} * x;
            const int room = to.width - x;
            if (is_exact) {
                const int n = spans.columns[k] < room ? spans.columns[k] : room;
                draw_exact_row<kEnds, kCovered>(streak, &block, pixels, n, spans.first[k],
                                                spans.ry[k]);
            } else {
                draw_carried_row<kEnds, kCovered>(streak, &block, pixels, room, spans.first[k],
                                                  spans.last[k], spans.ry[k]);
            }
        }
        if (now < LANES) {
            ry = spans.ry[now];
            break;
        }
        ry = rest;
    }
    flush<kEnds, kCovered>(streak, &block);
    return ry;
}

template <Ends kEnds>
LANES_INLINE float draw_with(const Pixels& to, const Streak& streak, int y, int rows, float ry) {
    return to.is_covered ? draw_rows<kEnds, true>(to, streak, y, rows, ry)
                         : draw_rows<kEnds, false>(to, streak, y, rows, ry);
}

float draw_streak(const Pixels& to, const Streak& streak, int y, int rows, float ry) {
    switch (streak.ends) {
        case ErrorFunctions::Saturated:
            return draw_with<Ends::None>(to, streak, y, rows, ry);
        case ErrorFunctions::Library:
            return draw_with<Ends::Library>(to, streak, y, rows, ry);
        case ErrorFunctions::Accurate:
            break;
    }
    // From the middle of the streak on, the farther end's error function is 1.
    if (streak.half_way * streak.scale >= star_kernels::kErfIsOne) {
        return draw_with<Ends::Nearer>(to, streak, y, rows, ry);
    }
    return draw_with<Ends::Both>(to, streak, y, rows, ry);
}

}  // namespace
