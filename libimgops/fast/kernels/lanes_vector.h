// LANES floats at once, as the compiler's own vectors: one register, or as many as it takes.
// For `kernel_lanes.h` alone, before which LANES is defined.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace {

typedef float Floats __attribute__((vector_size(4 * LANES)));
/// Integers, and the results of comparisons: all bits of a lane set, or none.
typedef std::int32_t Ints __attribute__((vector_size(4 * LANES)));

LANES_INLINE Floats splat(float x) { return x - Floats{}; }
LANES_INLINE Ints splat(std::int32_t x) { return x - Ints{}; }
LANES_INLINE Floats load(const float* from) {
    Floats x;
    std::memcpy(&x, from, sizeof x);
    return x;
}
LANES_INLINE void store(float* to, Floats x) { std::memcpy(to, &x, sizeof x); }
LANES_INLINE void store(std::int32_t* to, Ints x) { std::memcpy(to, &x, sizeof x); }
LANES_INLINE Ints load_ints(const std::int32_t* from) {
    Ints x;
    std::memcpy(&x, from, sizeof x);
    return x;
}
LANES_INLINE Ints bits_of(Floats x) { return __builtin_bit_cast(Ints, x); }
LANES_INLINE Floats floats_of(Ints x) { return __builtin_bit_cast(Floats, x); }
LANES_INLINE Floats select(Ints which, Floats yes, Floats no) { return which ? yes : no; }

/// The integer part, of what fits.
LANES_INLINE Ints truncated(Floats x) { return __builtin_convertvector(x, Ints); }

/// Tables hold 8 values, twice where a register has 16 lanes.
constexpr int kTableSize = 8;
/// The value of `table` that the lowest three bits of each lane say.
LANES_INLINE Floats look_up(const float* table, Ints which) {
#if LANES == 16 && defined(__AVX512F__)
    const __m512 values =
        _mm512_castpd_ps(_mm512_broadcast_f64x4(_mm256_castps_pd(_mm256_load_ps(table))));
    return _mm512_permutexvar_ps(__builtin_bit_cast(__m512i, which), values);
#elif LANES == 8 && defined(__AVX2__)
    return _mm256_permutevar8x32_ps(_mm256_load_ps(table), __builtin_bit_cast(__m256i, which));
#else
    float lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = table[which[k] & (kTableSize - 1)];
    }
    return load(lanes);
#endif
}

/// One bit a lane, lane 0 lowest.
LANES_INLINE unsigned mask_of(Ints which) {
#if LANES == 16 && defined(__AVX512DQ__)
    return _mm512_movepi32_mask(__builtin_bit_cast(__m512i, which));
#elif LANES == 8 && defined(__AVX__)
    return static_cast<unsigned>(_mm256_movemask_ps(__builtin_bit_cast(__m256, which)));
#elif LANES == 4 && defined(__SSE2__)
    return static_cast<unsigned>(_mm_movemask_ps(__builtin_bit_cast(__m128, which)));
#else
    unsigned mask = 0;
    for (int k = 0; k < LANES; ++k) {
        mask |= static_cast<unsigned>(which[k] & 1) << static_cast<unsigned>(k);
    }
    return mask;
#endif
}

// A register holds LANES / 4 pixels.
#if LANES == 16
#define LANES_OF_PIXELS(a, b, c, d) a, a, a, a, b, b, b, b, c, c, c, c, d, d, d, d
#elif LANES == 8
#define LANES_OF_PIXELS(a, b, c, d) a, a, a, a, b, b, b, b
#else
#define LANES_OF_PIXELS(a, b, c, d) a, a, a, a
#endif

/// A weight a pixel, each on its pixel's four lanes.
LANES_INLINE Floats load_for_pixels(const float* weights) {
#if LANES == 16 && defined(__AVX512F__)
    const Ints which = {LANES_OF_PIXELS(0, 1, 2, 3)};
    return _mm512_permutexvar_ps(__builtin_bit_cast(__m512i, which),
                                 _mm512_castps128_ps512(_mm_loadu_ps(weights)));
#elif LANES == 8 && defined(__AVX2__)
    double both;
    std::memcpy(&both, weights, sizeof both);
    const Ints which = {LANES_OF_PIXELS(0, 1, 2, 3)};
    return _mm256_permutevar8x32_ps(_mm256_castpd_ps(_mm256_set1_pd(both)),
                                    __builtin_bit_cast(__m256i, which));
#else
    float lanes[LANES];
    for (int k = 0; k < LANES; ++k) {
        lanes[k] = weights[k / 4];
    }
    return load(lanes);
#endif
}

/// Each pixel's coverage on all its four lanes.
LANES_INLINE Floats coverage_of(Floats pixels) {
    return __builtin_shufflevector(pixels, pixels, LANES_OF_PIXELS(0, 4, 8, 12));
}

/// `lit` with the coverage of `pixels`, bit for bit. A shuffle, because of a selection between
/// numbers a compiler may make arithmetic, which changes the bits of a signalling NaN.
LANES_INLINE Floats with_coverage_of(Floats pixels, Floats lit) {
#if LANES == 16
    return __builtin_shufflevector(pixels, lit, 0, 17, 18, 19, 4, 21, 22, 23, 8, 25, 26, 27, 12, 29,
                                   30, 31);
#elif LANES == 8
    return __builtin_shufflevector(pixels, lit, 0, 9, 10, 11, 4, 13, 14, 15);
#else
    return __builtin_shufflevector(pixels, lit, 0, 5, 6, 7);
#endif
}

/// The first `n` pixels of a register, where `n` is less than it holds; 0 behind them.
LANES_INLINE Floats load_part(const float* from, std::ptrdiff_t n) {
#if LANES == 16 && defined(__AVX512F__)
    return _mm512_maskz_loadu_ps(static_cast<__mmask16>((1U << (4U * n)) - 1U), from);
#else
    Floats x = {};
    // A register of two pixels has one left: a size that the compiler knows.
    std::memcpy(&x, from, LANES == 8 ? 16 : 16 * static_cast<std::size_t>(n));
    return x;
#endif
}
LANES_INLINE void store_part(float* to, std::ptrdiff_t n, Floats x) {
#if LANES == 16 && defined(__AVX512F__)
    _mm512_mask_storeu_ps(to, static_cast<__mmask16>((1U << (4U * n)) - 1U), x);
#else
    std::memcpy(to, &x, LANES == 8 ? 16 : 16 * static_cast<std::size_t>(n));
#endif
}

/// The low 8 or 16 bits of each lane, one after the other. Any alignment.
template <class Part>
LANES_INLINE void store_low_parts(void* to, Ints lanes) {
#if LANES == 16 && defined(__AVX512F__)
    if constexpr (sizeof(Part) == 1) {
        const __m128i bytes = _mm512_cvtepi32_epi8(__builtin_bit_cast(__m512i, lanes));
        std::memcpy(to, &bytes, sizeof bytes);
    } else {
        const __m256i words = _mm512_cvtepi32_epi16(__builtin_bit_cast(__m512i, lanes));
        std::memcpy(to, &words, sizeof words);
    }
#elif LANES == 8 && defined(__AVX2__)
    const auto all = __builtin_bit_cast(__m256i, lanes);
    const __m128i words =
        _mm_packus_epi32(_mm256_castsi256_si128(all), _mm256_extracti128_si256(all, 1));
    if constexpr (sizeof(Part) == 1) {
        const __m128i bytes = _mm_packus_epi16(words, words);
        std::memcpy(to, &bytes, 8);
    } else {
        std::memcpy(to, &words, sizeof words);
    }
#else
    Part parts[LANES];
    for (int k = 0; k < LANES; ++k) {
        parts[k] = static_cast<Part>(lanes[k]);
    }
    std::memcpy(to, parts, sizeof parts);
#endif
}

}  // namespace
