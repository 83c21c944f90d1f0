// Numbers of a file, stored little-endian, as numbers of this processor, and back.
//
// `Host` is the byte order to convert to. It is there so that both branches can be tried on any
// machine; everyone else leaves it alone.
#pragma once

#include <base/words.h>

#include <bit>
#include <cstring>

template <std::endian Host = std::endian::native>
constexpr u32 le32_to_cpu(u32 x) {
    if constexpr (Host == std::endian::little) {
        return x;
    } else {
        return x >> 24U | (x >> 8U & 0xff00U) | (x << 8U & 0xff0000U) | x << 24U;
    }
}

template <std::endian Host = std::endian::native>
constexpr u64 le64_to_cpu(u64 x) {
    if constexpr (Host == std::endian::little) {
        return x;
    } else {
        return u64{le32_to_cpu<Host>(static_cast<u32>(x))} << 32U |
               le32_to_cpu<Host>(static_cast<u32>(x >> 32U));
    }
}

/// The four bytes at `p` as an IEEE-754 number; the bits are kept, whatever they mean.
template <std::endian Host = std::endian::native>
float lefloat_to_cpu(const float* p) {
    static_assert(sizeof(float) == sizeof(u32));
    u32 bits;
    std::memcpy(&bits, p, sizeof bits);
    return std::bit_cast<float>(le32_to_cpu<Host>(bits));
}

/// The eight bytes at `p` as an IEEE-754 number; the bits are kept, whatever they mean.
template <std::endian Host = std::endian::native>
double ledouble_to_cpu(const double* p) {
    static_assert(sizeof(double) == sizeof(u64));
    u64 bits;
    std::memcpy(&bits, p, sizeof bits);
    return std::bit_cast<double>(le64_to_cpu<Host>(bits));
}

/// Puts the number's four bytes at `p`, as `lefloat_to_cpu` reads them: turning bytes round is its
/// own inverse.
template <std::endian Host = std::endian::native>
void cpu_to_lefloat(float x, float* p) {
    const u32 bits = le32_to_cpu<Host>(std::bit_cast<u32>(x));
    std::memcpy(p, &bits, sizeof bits);
}

/// Puts the number's eight bytes at `p`, as `ledouble_to_cpu` reads them.
template <std::endian Host = std::endian::native>
void cpu_to_ledouble(double x, double* p) {
    const u64 bits = le64_to_cpu<Host>(std::bit_cast<u64>(x));
    std::memcpy(p, &bits, sizeof bits);
}
