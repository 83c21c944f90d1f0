// Moving spots.
// For `kernel_source.h` alone.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernel_light.h"
#include "kernel_math.h"
#include "kernel_offsets.h"

using star_kernels::Pixels;
using star_kernels::Streak;

namespace {

/// Where the rows of a streak begin and end.
struct Spans {
    float ry[LANES];
    std::int32_t x[LANES];  ///< first column
    float first[LANES];     ///< its offset from the midpoint
    float last[LANES];      ///< no pixel farther than this
};

/// From this slope on the middle of every row is the midpoint's column, as in the plain streak.
constexpr float kSteepestSlope = 100000.0F;

LANES_INLINE void find_spans(const Streak& of, int width, Floats ry, Spans* spans) {
    const Floats y = ry + splat(of.mid_y);
    const Floats centre = of.slope < kSteepestSlope
                              ? splat(of.a_x) + (y - splat(of.a_y)) * splat(of.slope)
                              : splat(of.mid_x);
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
    float weights[kBlock + LANES];
    float* pixels[kBlock];
    int counts[kBlock];
    int used = 0;
    int pieces = 0;
};

/// Which of a streak's two error functions are worked out; the others are 1 and -1.
enum class Ends { None, Nearer, Both };

template <Ends kEnds>
LANES_INLINE void weigh(const Streak& of, Block* block) {
    const float per_q = -1.0F / of.q;
    // The last register reads beyond what is used.
    store(block->rx + block->used, splat(0.0F));
    store(block->ry + block->used, splat(0.0F));
    store(block->weights + block->used, splat(0.0F));
    const float light = kEnds == Ends::None ? 2.0F * of.light : of.light;
    for (int i = 0; i < block->used; i += LANES) {
        const Floats rx = load(block->rx + i);
        const Floats ry = load(block->ry + i);
        const Floats u = splat(of.dir_y) * rx - splat(of.dir_x) * ry;
        Floats weight = exp_of_negative((u * u) * splat(per_q));
        if (kEnds != Ends::None) {
            const Floats v = splat(of.along_x) * rx + splat(of.along_y) * ry;
            weight =
                weight *
                (kEnds == Ends::Nearer
                     ? splat(1.0F) + erf_of((splat(of.half_way) - absolute(v)) * splat(of.scale))
                     : erf_of((splat(of.half_way) - v) * splat(of.scale)) -
                           erf_of((splat(-of.half_way) - v) * splat(of.scale)));
        }
        store(block->weights + i, weight * splat(light));
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

template <Ends kEnds, bool kCovered>
LANES_INLINE float draw_rows(const Pixels& to, const Streak& streak, int y, int rows, float ry) {
    Block block;
    for (int done = 0; done < rows; done += LANES) {
        Spans spans;
        float rest = ry;
        const Floats row_offsets = offsets(&rest);
        find_spans(streak, to.width, row_offsets, &spans);
        const int now = rows - done < LANES ? rows - done : LANES;
        for (int k = 0; k < now; ++k) {
            float* row = to.first + (y + done + k) * to.row;
            float rx = spans.first[k];
            int room = to.width - spans.x[k];
            float* pixels = row + std::ptrdiff_t{kPixel} * spans.x[k];
            bool is_new = true;
            while (room > 0) {
                if (block.used > kBlock - LANES) {
                    flush<kEnds, kCovered>(streak, &block);
                    is_new = true;
                }
                const Floats offset = offsets(&rx);
                int n = count(offset <= splat(spans.last[k]));
                n = n < room ? n : room;
                if (n == 0) {
                    break;
                }
                store(block.rx + block.used, offset);
                store(block.ry + block.used, splat(spans.ry[k]));
                // Weighing a block takes as long as a cache needs to bring its pixels.
                for (int i = 0; i < kPixel * LANES; i += kCacheLine) {
                    __builtin_prefetch(pixels + i, 1);
                }
                if (is_new) {
                    block.pixels[block.pieces] = pixels;
                    block.counts[block.pieces++] = 0;
                    is_new = false;
                }
                block.counts[block.pieces - 1] += n;
                block.used += n;
                if (n < LANES) {
                    break;
                }
                room -= LANES;
                pixels += std::ptrdiff_t{kPixel} * LANES;
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
    if (streak.is_saturated) {
        return draw_with<Ends::None>(to, streak, y, rows, ry);
    }
    // From the middle of the streak on, the farther end's error function is 1.
    if (streak.half_way * streak.scale >= kErfIsOne) {
        return draw_with<Ends::Nearer>(to, streak, y, rows, ry);
    }
    return draw_with<Ends::Both>(to, streak, y, rows, ry);
}

}  // namespace
