// The kernels, for any number of lanes. A source for one instruction set defines LANES,
// KERNELS_NAME and KERNELS_TABLE and includes this once.
#pragma once

#include "kernels.h"

#define LANES_MEMBER inline __attribute__((always_inline))
#define LANES_INLINE static LANES_MEMBER
#include KERNELS_LANES

using star_kernels::Pixels;
using star_kernels::Segment;
using star_kernels::Spot;
using star_kernels::Streak;

namespace {

constexpr int PIXEL = star_kernels::FLOATS_PER_PIXEL;

// --- mathematics ------------------------------------------------------------------------------

/// Adding this leaves a float no bits for fractions: it rounds numbers below 2^22 to the nearest
/// integer, which then stands in the lowest bits.
constexpr float ROUNDER = 12582912.0F;  // 1.5 x 2^23
constexpr std::int32_t ROUNDER_BITS = 0x4b400000;
constexpr std::int32_t ONE_BITS = 0x3f800000;  // 1.0
constexpr int EXPONENT_SHIFT = 23;

LANES_INLINE Floats absolute(Floats x) { return floats_of(bits_of(x) & splat(0x7fffffff)); }
/// 1 with the sign of `x`.
LANES_INLINE Floats sign_of(Floats x) {
    return floats_of((bits_of(x) & splat(INT32_MIN)) | splat(ONE_BITS));
}
LANES_INLINE bool any(Ints which) { return mask_of(which) != 0; }
/// How many of the first lanes; those behind the first one that is not are not either.
LANES_INLINE int count(Ints which) { return __builtin_ctz(~mask_of(which)); }

/// For magnitudes below 2^22.
LANES_INLINE Floats floor_of(Floats x) {
    const Floats nearest = (x + splat(ROUNDER)) - splat(ROUNDER);
    return nearest - select(nearest > x, splat(1.0F), splat(0.0F));
}
LANES_INLINE Floats ceil_of(Floats x) {
    const Floats nearest = (x + splat(ROUNDER)) - splat(ROUNDER);
    return nearest + select(nearest < x, splat(1.0F), splat(0.0F));
}

/// e^x as a number around 1 and the power of two that it lacks: as a float, and in the lowest bits
/// of integers.
struct Exponential {
    Floats mantissa;
    Floats power;
    Ints power_bits;
};
LANES_INLINE Exponential exponential(Floats x) {
    // x = n ln 2 + r with |r| <= ln 2 / 2; the first part of ln 2 has few bits, so that its
    // product with n is exact.
    const Floats rounded = x * splat(1.44269504F) + splat(ROUNDER);
    const Floats n = rounded - splat(ROUNDER);
    const Floats r = (x - n * splat(0.693359375F)) + n * splat(2.12194440e-4F);
    // (e^r - 1 - r) / r^2, minimax: off by 5e-9 of e^r. In pairs: few steps wait for each other.
    const Floats r2 = r * r;
    const Floats high =
        (splat(0x1.5558fcp-5F) + splat(0x1.123a24p-7F) * r) + splat(0x1.6a1f5ep-10F) * r2;
    const Floats p = (splat(0x1.fffffcp-2F) + splat(0x1.555490p-3F) * r) + high * r2;
    return {(p * r2 + r) + splat(1.0F), n, bits_of(rounded)};
}

/// e^x for x up to 0.
LANES_INLINE Floats exp_of_negative(Floats x) {
    const Exponential e = exponential(select(splat(-105.0F) > x, splat(-105.0F), x));
#if LANES == 16 && defined(__AVX512F__)
    return _mm512_scalef_ps(e.mantissa, e.power);
#else
    // By way of a number 2^64 too large, so that only the last step rounds where numbers grow
    // subnormal. The shift leaves nothing of ROUNDER.
    constexpr std::int32_t TOO_LARGE = (64 << EXPONENT_SHIFT) + ONE_BITS;
    return e.mantissa * floats_of((e.power_bits << EXPONENT_SHIFT) + splat(TOO_LARGE)) *
           splat(0x1p-64F);
#endif
}

/// From here on the error function counts as 1, which is 2 units in the last place off at most.
constexpr float ERF_IS_ONE = 3.75F;

/// erf(a) / a around a = 0, 0.5, 1 ... 3.5: the coefficient of each power of the distance, minimax,
/// off by 1e-8 of the value at most.
alignas(64) constexpr float ERF_TABLE[7][TABLE_SIZE] = {
    {0x1.20dd76p+0F, 0x1.0a7ef6p+0F, 0x1.af767ap-1F, 0x1.49c38ep-1F, 0x1.fd9ae2p-2F, 0x1.996eeep-2F,
     0x1.555368p-2F, 0x1.24923ap-2F},
    {0.0F, -0x1.4c3872p-2F, -0x1.b5db08p-2F, -0x1.667edcp-2F, -0x1.e87126p-3F, -0x1.45c31cp-3F,
     -0x1.c6e932p-4F, -0x1.4e5c5cp-4F},
    {-0x1.812732p-2F, -0x1.d6dd08p-3F, 0x1.991fc4p-7F, 0x1.d4d966p-4F, 0x1.93ca52p-4F,
     0x1.f76002p-5F, 0x1.2e2216p-5F, 0x1.7e09c2p-6F},
    {0.0F, 0x1.55bceep-3F, 0x1.01d25ep-3F, 0x1.0981a6p-6F, -0x1.9c8edep-6F, -0x1.5c0488p-6F,
     -0x1.8a3d04p-7F, -0x1.b3d1a8p-8F},
    {0x1.ce14d4p-4F, 0x1.091276p-5F, -0x1.d04f92p-5F, -0x1.4c007ap-5F, -0x1.2fe4dcp-8F,
     0x1.4ac0d6p-8F, 0x1.e00eb8p-9F, 0x1.ed05fcp-10F},
    {0.0F, -0x1.90ba3ap-5F, -0x1.9fc470p-7F, 0x1.10e7a8p-6F, 0x1.23b8f6p-7F, 0x1.0a73c2p-11F,
     -0x1.c7a752p-11F, -0x1.0e7af0p-11F},
    {-0x1.ad9e64p-6F, -0x1.0fb1e2p-16F, 0x1.113b16p-6F, 0x1.9c9b48p-10F, -0x1.0d8612p-8F,
     -0x1.56cb80p-10F, 0x1.3a0ab4p-15F, 0x1.039e0ep-13F},
};

LANES_INLINE Floats erf_of(Floats x) {
    // Adding this rounds to the nearest half, whose number then stands in the lowest bits.
    constexpr float TO_HALVES = 6291456.0F;  // 1.5 x 2^22
    const Floats a = absolute(x);
    const Floats rounded = a + splat(TO_HALVES);
    const Floats d = a - (rounded - splat(TO_HALVES));
    const Ints piece = bits_of(rounded);
    const Floats d2 = d * d;
    const auto pair = [&](int n) __attribute__((always_inline)) {
        return look_up(ERF_TABLE[n], piece) + look_up(ERF_TABLE[n + 1], piece) * d;
    };
    const Floats high = pair(4) + look_up(ERF_TABLE[6], piece) * d2;
    const Floats p = look_up(ERF_TABLE[0], piece) +
                     (look_up(ERF_TABLE[1], piece) * d + (pair(2) + high * d2) * d2);
    return select(a >= splat(ERF_IS_ONE), sign_of(x), x * p);
}

// --- light ------------------------------------------------------------------------------------

/// The colour on a pixel's lanes; nothing for coverage.
LANES_INLINE Floats pixel_colour(const Segment& of) {
    float lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = k % PIXEL == 0 ? 0.0F : of.color[k % PIXEL - 1];
    }
    return load(lanes);
}

/// The lanes that hold coverage.
LANES_INLINE Ints coverage_lanes() {
    std::int32_t lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = k % PIXEL == 0 ? -1 : 0;
    }
    return load_ints(lanes);
}

/// `COVERED`: whether any pixel may have coverage.
template <bool COVERED>
LANES_INLINE Floats lit(Floats pixels, Floats weights, Floats colour) {
    if (!COVERED) {
        return select(coverage_lanes(), pixels, pixels + colour * weights);
    }
    const Floats coverage = coverage_of(pixels);
    const Floats more = pixels + colour * (weights * (splat(1.0F) - coverage));
    // Coverage keeps every bit, even where the light is infinite.
    return select((coverage >= splat(1.0F)) | coverage_lanes(), pixels, more);
}

/// Weights of pixels side by side, from an array with one a pixel.
struct PixelWeights {
    const float* first;

    /// Those of pixel `i` and the next, each on its pixel's lanes.
    LANES_MEMBER Floats lanes(int i) const { return load_for_pixels(first + i); }
    LANES_MEMBER float of(int i) const { return first[i]; }
};

/// The same for a row of a spot: a factor a column, on all lanes of its pixel, and one for the row.
struct RowWeights {
    const float* columns;
    float row;

    LANES_MEMBER Floats lanes(int i) const {
        return load(columns + std::ptrdiff_t{PIXEL} * i) * splat(row);
    }
    LANES_MEMBER float of(int i) const { return columns[std::ptrdiff_t{PIXEL} * i] * row; }
};

/// Adds the colour, as much as `weights` say, to `n` pixels.
template <bool COVERED, class Weights>
LANES_INLINE void light(float* pixels, const Weights& weights, int n, Floats colour) {
    constexpr int AT_ONCE = LANES / PIXEL;
    int i = 0;
    for (; i <= n - AT_ONCE; i += AT_ONCE, pixels += LANES) {
        store(pixels, lit<COVERED>(load(pixels), weights.lanes(i), colour));
    }
#if LANES == 16 && defined(__AVX512F__)
    if (i < n) {
        const auto lanes =
            static_cast<__mmask16>(0xffffU >> static_cast<unsigned>(16 - PIXEL * (n - i)));
        const Floats old = _mm512_maskz_loadu_ps(lanes, pixels);
        _mm512_mask_storeu_ps(pixels, lanes, lit<COVERED>(old, weights.lanes(i), colour));
    }
#else
    for (; i < n; ++i, pixels += PIXEL) {
        const float coverage = COVERED ? pixels[0] : 0.0F;
        if (!(coverage >= 1.0F)) {
            add_to_pixel(pixels, weights.of(i) * (1.0F - coverage), colour);
        }
    }
#endif
}

// --- rows -------------------------------------------------------------------------------------

/// Offsets of LANES pixels from the midpoint, the first at `rx`. Each is the one before plus 1,
/// rounded; `rx` becomes the one after the last.
LANES_INLINE Floats offsets(float* rx) {
    float lanes[LANES];
    const float after = *rx + static_cast<float>(LANES);
    constexpr float LAST_ODD = 16777216.0F;  // 2^24; beyond it there are no odd numbers
    if (after - static_cast<float>(LANES) == *rx && *rx > -LAST_ODD && after < LAST_ODD) {
        // The last one is exact, so that all are: multiples of the first one's lowest bit, below
        // the same bound.
        for (int k = 0; k < LANES; ++k) {
            lanes[k] = static_cast<float>(k);
        }
        const Floats result = splat(*rx) + load(lanes);
        *rx = after;
        return result;
    }
    if (*rx + 1.0F == *rx) {
        return splat(*rx);
    }
    for (float& lane : lanes) {
        lane = *rx;
        *rx += 1.0F;
    }
    return load(lanes);
}

/// Floats of a cache line.
constexpr int CACHE_LINE = 16;

/// Pixels whose weights are worked out in one go.
constexpr int BLOCK = 256;

/// Factors of a spot's columns, each on all lanes of its pixel.
struct Columns {
    float factors[PIXEL * (BLOCK + LANES)];
    int count;
};

/// The next columns of a spot, BLOCK or what is left up to the offset `last`. `rx`: the first
/// one's offset, moved on behind them.
LANES_INLINE void find_columns(float w2, float* rx, float last, int room, Columns* columns) {
    float factors[BLOCK + LANES];
    int n = LANES;
    int found = 0;
    while (n == LANES && found < BLOCK) {
        const Floats offset = offsets(rx);
        n = count(offset <= splat(last));
        store(factors + found, exp_of_negative(-(offset * offset) / splat(w2)));
        found += n;
    }
    columns->count = found < room ? found : room;
    for (int i = 0; i < columns->count; i += LANES / PIXEL) {
        store(columns->factors + std::ptrdiff_t{PIXEL} * i, load_for_pixels(factors + i));
    }
}

/// Draws `columns` of `rows` rows from `row` on; returns the offset `ry` behind the last.
template <bool COVERED>
LANES_INLINE float draw_columns(const Pixels& to, const Spot& spot, const Columns& columns,
                                float* row, int rows, float ry) {
    const Floats colour = pixel_colour(spot);
    for (int done = 0; done < rows; done += LANES) {
        float rest = ry;
        const Floats offset = offsets(&rest);
        float peaks[LANES];
        store(peaks, exp_of_negative(-(offset * offset) / splat(spot.h2)) * splat(spot.energy));
        const int now = rows - done < LANES ? rows - done : LANES;
        for (int k = 0; k < now; ++k, row += to.row) {
            light<COVERED>(row, RowWeights{columns.factors, peaks[k]}, columns.count, colour);
        }
        if (now < LANES) {
            float lanes[LANES];
            store(lanes, offset);
            return lanes[now];
        }
        ry = rest;
    }
    return ry;
}

template <bool COVERED>
LANES_INLINE float draw_spot_rows(const Pixels& to, const Spot& spot, int y, int rows, float ry) {
    // exp(-(x / w)^2 - (y / h)^2) is a product of one factor a column and one a row.
    float rx = static_cast<float>(spot.x0) - spot.mid_x;
    const float last = static_cast<float>(spot.x1) - spot.mid_x;
    Columns columns;
    float after = ry;
    int x = spot.x0;
    do {
        find_columns(spot.w2, &rx, last, to.width - x, &columns);
        float* first = to.first + y * to.row + std::ptrdiff_t{PIXEL} * x;
        after = draw_columns<COVERED>(to, spot, columns, first, rows, ry);
        x += columns.count;
    } while (columns.count == BLOCK);
    return after;
}

float draw_spot(const Pixels& to, const Spot& spot, int y, int rows, float ry) {
    return to.is_covered ? draw_spot_rows<true>(to, spot, y, rows, ry)
                         : draw_spot_rows<false>(to, spot, y, rows, ry);
}

/// Where the rows of a streak begin and end.
struct Spans {
    float ry[LANES];
    std::int32_t x[LANES];  ///< first column
    float first[LANES];     ///< its offset from the midpoint
    float last[LANES];      ///< no pixel farther than this
};

/// Midpoints of steeper segments are the middle of every row: the plain streak's rule.
constexpr float STEEPEST_SLOPE = 100000.0F;

LANES_INLINE void find_spans(const Streak& of, int width, Floats ry, Spans* spans) {
    const Floats y = ry + splat(of.mid_y);
    const Floats centre = of.slope < STEEPEST_SLOPE
                              ? splat(of.a_x) + (y - splat(of.a_y)) * splat(of.slope)
                              : splat(of.mid_x);
    const Floats x0 = splat(static_cast<float>(of.x0));
    const Floats x1 = splat(static_cast<float>(of.x1));
    Floats left = centre - splat(of.half);
    Floats right = centre + splat(of.half);
    left = select(x0 >= left, x0, left);
    right = select(right > x1, x1, right);
    // A row that lies beside the frame stays there, within what can be rounded.
    const Floats beyond = splat(static_cast<float>(width));
    const Floats before = splat(-0x1p21F);
    left = floor_of(select(left > beyond, beyond, left));
    right = ceil_of(select(right < before, before, right));
    store(spans->ry, ry);
    store(spans->x, bits_of(left + splat(ROUNDER)) - splat(ROUNDER_BITS));
    store(spans->first, left - splat(of.mid_x));
    store(spans->last, right - splat(of.mid_x));
}

/// Pixels of consecutive rows, one after the other: offsets from the midpoint, and where each row's
/// share lies in the frame.
struct Block {
    float rx[BLOCK + LANES];
    float ry[BLOCK + LANES];
    float weights[BLOCK + LANES];
    float* pixels[BLOCK];
    int counts[BLOCK];
    int used = 0;
    int pieces = 0;
};

/// How many of a streak's two error functions there are to work out; any other is 1 or -1.
enum class Ends { none, nearer, both };

template <Ends ENDS>
LANES_INLINE void weigh(const Streak& of, Block* block) {
    const float per_q = -1.0F / of.q;
    // What is read beyond it.
    store(block->rx + block->used, splat(0.0F));
    store(block->ry + block->used, splat(0.0F));
    store(block->weights + block->used, splat(0.0F));
    const float light = ENDS == Ends::none ? 2.0F * of.light : of.light;
    for (int i = 0; i < block->used; i += LANES) {
        const Floats rx = load(block->rx + i);
        const Floats ry = load(block->ry + i);
        const Floats u = splat(of.dir_y) * rx - splat(of.dir_x) * ry;
        Floats weight = exp_of_negative((u * u) * splat(per_q));
        if (ENDS != Ends::none) {
            const Floats v = splat(of.along_x) * rx + splat(of.along_y) * ry;
            weight =
                weight *
                (ENDS == Ends::nearer
                     ? splat(1.0F) + erf_of((splat(of.half_way) - absolute(v)) * splat(of.scale))
                     : erf_of((splat(of.half_way) - v) * splat(of.scale)) -
                           erf_of((splat(-of.half_way) - v) * splat(of.scale)));
        }
        store(block->weights + i, weight * splat(light));
    }
}

/// Lights what is in the block and empties it.
template <Ends ENDS, bool COVERED>
LANES_INLINE void flush(const Streak& of, Block* block) {
    weigh<ENDS>(of, block);
    const Floats colour = pixel_colour(of);
    const float* weights = block->weights;
    for (int i = 0; i < block->pieces; ++i) {
        light<COVERED>(block->pixels[i], PixelWeights{weights}, block->counts[i], colour);
        weights += block->counts[i];
    }
    block->used = block->pieces = 0;
}

template <Ends ENDS, bool COVERED>
LANES_INLINE float draw_rows(const Pixels& to, const Streak& streak, int y, int rows, float ry) {
    float* row = to.first + y * to.row;
    Block block;
    for (int done = 0; done < rows; done += LANES) {
        Spans spans;
        float rest = ry;
        const Floats row_offsets = offsets(&rest);
        find_spans(streak, to.width, row_offsets, &spans);
        const int now = rows - done < LANES ? rows - done : LANES;
        for (int k = 0; k < now; ++k, row += to.row) {
            float rx = spans.first[k];
            int room = to.width - spans.x[k];
            float* pixels = row + std::ptrdiff_t{PIXEL} * spans.x[k];
            bool is_new = true;
            while (room > 0) {
                if (block.used > BLOCK - LANES) {
                    flush<ENDS, COVERED>(streak, &block);
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
                for (int i = 0; i < PIXEL * LANES; i += CACHE_LINE) {
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
                pixels += PIXEL * LANES;
            }
        }
        if (now < LANES) {
            ry = spans.ry[now];
            break;
        }
        ry = rest;
    }
    flush<ENDS, COVERED>(streak, &block);
    return ry;
}

template <Ends ENDS>
LANES_INLINE float draw_with(const Pixels& to, const Streak& streak, int y, int rows, float ry) {
    return to.is_covered ? draw_rows<ENDS, true>(to, streak, y, rows, ry)
                         : draw_rows<ENDS, false>(to, streak, y, rows, ry);
}

float draw_streak(const Pixels& to, const Streak& streak, int y, int rows, float ry) {
    if (streak.is_saturated) {
        return draw_with<Ends::none>(to, streak, y, rows, ry);
    }
    // From the middle of the streak on, the farther end's error function is 1.
    if (streak.half_way * streak.scale >= ERF_IS_ONE) {
        return draw_with<Ends::nearer>(to, streak, y, rows, ry);
    }
    return draw_with<Ends::both>(to, streak, y, rows, ry);
}

bool fetch(const Pixels& to, int y, int rows) {
    const Ints colours = coverage_lanes() ^ splat(-1);
    Ints uncovered = splat(-1);
    float* row = to.first + y * to.row;
    for (int i = 0; i < rows; ++i, row += to.row) {
        int x = 0;
        for (; x <= PIXEL * to.width - CACHE_LINE; x += CACHE_LINE) {
            for (int k = 0; k < CACHE_LINE; k += LANES) {
                uncovered = uncovered & (colours | (absolute(load(row + x + k)) <= splat(0.0F)));
            }
            // What was only read would have to be asked for once more.
            volatile float* touched = row + x;
            *touched = row[x];
        }
        for (; x < PIXEL * to.width; x += PIXEL) {
            uncovered = uncovered & splat(row[x] == 0.0F ? -1 : 0);
        }
    }
    return any(uncovered ^ splat(-1));
}

// --- stars outside the frame ------------------------------------------------------------------

struct SineCosine {
    Floats sine;
    Floats cosine;
};
/// Both off by less than 5e-7 for magnitudes below 10000.
LANES_INLINE SineCosine sine_cosine(Floats x) {
    // x = n pi / 2 + r with |r| <= pi / 4; the first part of pi / 2 has few bits.
    const Floats rounded = x * splat(0.636619772F) + splat(ROUNDER);
    const Floats n = rounded - splat(ROUNDER);
    const Floats r =
        ((x - n * splat(1.5703125F)) - n * splat(4.83751297e-4F)) - n * splat(7.54978995e-8F);
    const Floats r2 = r * r;
    const Floats sine =
        r + r * r2 * (splat(-1.0F / 6) + r2 * (splat(1.0F / 120) + r2 * splat(-1.0F / 5040)));
    const Floats cosine =
        splat(1.0F) +
        r2 * (splat(-0.5F) +
              r2 * (splat(1.0F / 24) + r2 * (splat(-1.0F / 720) + r2 * splat(1.0F / 40320))));
    const Ints quarter = bits_of(rounded);
    const Ints swaps = splat(0) - (quarter & splat(1));
    const Ints sine_sign = (quarter & splat(2)) << 30;
    const Ints cosine_sign = ((quarter + splat(1)) & splat(2)) << 30;
    return {floats_of(bits_of(select(swaps, cosine, sine)) ^ sine_sign),
            floats_of(bits_of(select(swaps, sine, cosine)) ^ cosine_sign)};
}

template <bool WEIGHTED>
LANES_INLINE Ints is_beyond(const star_kernels::Plane& plane, Floats x, Floats y, Floats z,
                            Floats w) {
    Floats side = x * splat(plane.nx) + y * splat(plane.ny) + z * splat(plane.nz);
    if (WEIGHTED) {
        side = side + w * splat(plane.nw - plane.tolerance_w);
    }
    return side > splat(plane.tolerance);
}

template <bool WEIGHTED>
LANES_INLINE Ints outside_all(const star_kernels::Plane* planes, int samples, Floats x, Floats y,
                              Floats z, Floats w) {
    Ints behind = splat(-1);
    Ints beyond[star_kernels::PLANES - 1];
    for (Ints& side : beyond) {
        side = splat(-1);
    }
    for (int sample = 0; sample < samples; ++sample, planes += star_kernels::PLANES) {
        behind = behind & is_beyond<WEIGHTED>(planes[0], x, y, z, w);
        // Ahead: the same plane the other way round.
        const star_kernels::Plane turned = {-planes[0].nx,       -planes[0].ny,
                                            -planes[0].nz,       -planes[0].nw,
                                            planes[0].tolerance, planes[0].tolerance_w};
        const Ints ahead = is_beyond<WEIGHTED>(turned, x, y, z, w);
        Ints some = behind;
        for (int side = 0; side < star_kernels::PLANES - 1; ++side) {
            beyond[side] = beyond[side] & ahead & is_beyond<WEIGHTED>(planes[side + 1], x, y, z, w);
            some = some | beyond[side];
        }
        if (!any(some)) {
            return some;
        }
    }
    return behind | beyond[0] | beyond[1] | beyond[2] | beyond[3];
}

void outside(const float* lon, const float* lat, const float* weight, int count,
             const star_kernels::Plane* planes, int samples, unsigned char* is_outside) {
    constexpr float LARGEST_ANGLE = 10000.0F;
    // Nearer stars may have no length even in double precision.
    constexpr float LARGEST_WEIGHT = 1e30F;
    for (int i = 0; i < count; i += LANES) {
        const Floats longitude = load(lon + i);
        const Floats latitude = load(lat + i);
        const Floats w = load(weight + i);
        const SineCosine of_lon = sine_cosine(longitude);
        const SineCosine of_lat = sine_cosine(latitude);
        const Floats x = of_lat.cosine * of_lon.cosine;
        const Floats y = of_lat.sine;
        const Floats z = of_lat.cosine * of_lon.sine;
        const Ints known = (absolute(longitude) < splat(LARGEST_ANGLE)) &
                           (absolute(latitude) < splat(LARGEST_ANGLE)) &
                           (w < splat(LARGEST_WEIGHT));
        const unsigned mask = mask_of(
            known & (any(w > splat(0.0F)) ? outside_all<true>(planes, samples, x, y, z, w)
                                          : outside_all<false>(planes, samples, x, y, z, w)));
        for (unsigned k = 0; k < LANES; ++k) {
            is_outside[i + static_cast<int>(k)] = static_cast<unsigned char>(mask >> k & 1U);
        }
    }
}

// --- host codes -------------------------------------------------------------------------------

/// Codes of LANES / 4 pixels: rounded half up, limited to 0...full, 0 for what is not a number;
/// coverage is full.
LANES_INLINE Ints codes_of(Floats pixels, std::int32_t full) {
    std::int32_t coverage[LANES];
    std::int32_t colours[LANES];
    for (int k = 0; k < LANES; ++k) {
        coverage[k] = k % PIXEL == 0 ? full : 0;
        colours[k] = k % PIXEL == 0 ? 0 : -1;
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
    std::size_t channels = PIXEL * count;
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

// --- whole arrays -----------------------------------------------------------------------------

template <class Function>
LANES_INLINE void for_all(const float* x, float* result, std::size_t count, Function function) {
    for (; count >= LANES; count -= LANES, x += LANES, result += LANES) {
        store(result, function(load(x)));
    }
    if (count > 0) {
        float lanes[LANES] = {};
        std::memcpy(lanes, x, count * sizeof(float));
        store(lanes, function(load(lanes)));
        std::memcpy(result, lanes, count * sizeof(float));
    }
}
void exp_of_all(const float* x, float* result, std::size_t count) {
    for_all(x, result, count, [](Floats lanes) { return exp_of_negative(lanes); });
}
void erf_of_all(const float* x, float* result, std::size_t count) {
    for_all(x, result, count, [](Floats lanes) { return erf_of(lanes); });
}

}  // namespace

namespace star_kernels {

extern const Kernels KERNELS_TABLE;
const Kernels KERNELS_TABLE = {KERNELS_NAME, LANES,     draw_spot,  draw_streak, fetch,
                               outside,      to_8_bits, to_16_bits, exp_of_all,  erf_of_all};

}  // namespace star_kernels
