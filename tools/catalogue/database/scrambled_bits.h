// Numbers that look random but are the same on every machine.
#pragma once

#include <cstdint>

namespace lumivar {

/// Each bit of the result depends on every bit of `x`, and no two results are equal: the last step
/// of SplitMix64 (G. Steele, D. Lea and C. Flood, 2014, Fast Splittable Pseudorandom Number
/// Generators, OOPSLA, with the constants of D. Stafford's variant 13), on `x` moved off 0, which
/// would stay 0.
constexpr std::uint64_t scrambled_bits(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15U;
    x = (x ^ x >> 30U) * 0xBF58476D1CE4E5B9U;
    x = (x ^ x >> 27U) * 0x94D049BB133111EBU;
    return x ^ x >> 31U;
}

}  // namespace lumivar
