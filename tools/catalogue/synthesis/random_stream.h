// Seeded random numbers that are the same on every machine.
#pragma once

#include <cstdint>

#include "database/scrambled_bits.h"

namespace lumivar {

/// SplitMix64. Streams of different seeds or numbers have nothing in common.
class RandomStream {
public:
    /// The stream `number` of a seed, without making those before it.
    RandomStream(std::uint64_t seed, std::uint64_t number)
        : state_(scrambled_bits(scrambled_bits(seed) ^ number)) {}

    /// From 0 up to, not including, 1, in steps of 2^-53.
    double unit() {
        const std::uint64_t bits = scrambled_bits(state_);
        state_ += 0x9E3779B97F4A7C15U;
        return static_cast<double>(bits >> 11U) * 0x1p-53;
    }
    /// From -1 up to, not including, 1.
    double signed_unit() { return 2.0 * unit() - 1.0; }

private:
    std::uint64_t state_;
};

}  // namespace lumivar
