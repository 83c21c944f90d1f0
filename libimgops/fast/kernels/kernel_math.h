// Rounding, exponential and error function of the kernels.
// For `kernel_source.h` alone.
#pragma once

#include <cstdint>

#include "kernel_lanes.h"

namespace {

/// Adding this leaves a float no bits for fractions: it rounds numbers below 2^22 to the nearest
/// integer, which then stands in the lowest bits.
constexpr float kRounder = 12582912.0F;  // 1.5 x 2^23
constexpr std::int32_t kRounderBits = 0x4b400000;
constexpr std::int32_t kOneBits = 0x3f800000;  // 1.0
constexpr int kExponentShift = 23;

LANES_INLINE Floats absolute(Floats x) { return floats_of(bits_of(x) & splat(0x7fffffff)); }
/// 1 with the sign of `x`.
LANES_INLINE Floats sign_of(Floats x) {
    return floats_of((bits_of(x) & splat(INT32_MIN)) | splat(kOneBits));
}
LANES_INLINE bool any(Ints which) { return mask_of(which) != 0; }
/// How many lanes are set, of which none is set behind one that is not.
LANES_INLINE int count(Ints which) { return __builtin_ctz(~mask_of(which)); }

/// For magnitudes below 2^22.
LANES_INLINE Floats floor_of(Floats x) {
    const Floats nearest = (x + splat(kRounder)) - splat(kRounder);
    return nearest - select(nearest > x, splat(1.0F), splat(0.0F));
}
LANES_INLINE Floats ceil_of(Floats x) {
    const Floats nearest = (x + splat(kRounder)) - splat(kRounder);
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
    const Floats rounded = x * splat(1.44269504F) + splat(kRounder);
    const Floats n = rounded - splat(kRounder);
    const Floats r = (x - n * splat(0.693359375F)) + n * splat(2.12194440e-4F);
    // (e^r - 1 - r) / r^2: minimax, rounded to single precision, off by 5e-9 of e^r. In pairs, so
    // that few steps wait for each other.
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
    // subnormal. The shift leaves nothing of kRounder.
    constexpr std::int32_t kTooLarge = (64 << kExponentShift) + kOneBits;
    return e.mantissa * floats_of((e.power_bits << kExponentShift) + splat(kTooLarge)) *
           splat(0x1p-64F);
#endif
}

/// erf(a) / a around a = 0, 0.5, 1 ... 3.5: the coefficient of each power of the distance, minimax,
/// rounded to single precision: off by 6e-8 of the value at most.
alignas(64) constexpr float kErfTable[7][kTableSize] = {
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

/// The polynomial of `d` that the lowest three bits of `piece` say. `table`: the coefficients of
/// each power. In pairs, so that few steps wait for each other.
LANES_INLINE Floats polynomial(const float (&table)[7][kTableSize], Ints piece, Floats d) {
    const Floats d2 = d * d;
    const auto pair = [&](int n) __attribute__((always_inline)) {
        return look_up(table[n], piece) + look_up(table[n + 1], piece) * d;
    };
    const Floats high = (pair(2) + (pair(4) + look_up(table[6], piece) * d2) * d2) * d2;
    return look_up(table[0], piece) + (look_up(table[1], piece) * d + high);
}

LANES_INLINE Floats erf_of(Floats x) {
    // Adding this rounds to the nearest half, whose number then stands in the lowest bits.
    constexpr float kToHalves = 6291456.0F;  // 1.5 x 2^22
    const Floats a = absolute(x);
    const Floats rounded = a + splat(kToHalves);
    const Floats d = a - (rounded - splat(kToHalves));
    const Ints piece = bits_of(rounded);
    const Floats p = polynomial(kErfTable, piece, d);
    return select(a >= splat(star_kernels::kErfIsOne), sign_of(x), x * p);
}

}  // namespace
