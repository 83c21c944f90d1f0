// Seeded numbers that are the same on every machine.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>

/// The standard's generators are fixed to the bit, its distributions are not.
class RandomNumbers {
public:
    explicit RandomNumbers(unsigned seed) : bits_(seed) {}

    std::uint32_t bits() { return static_cast<std::uint32_t>(bits_()); }
    /// From `low` up to, not including, `high`.
    double between(double low, double high) { return low + (high - low) * (bits() * 0x1p-32); }
    std::uint8_t code() { return static_cast<std::uint8_t>(bits_() >> 24U); }
    int whole(int low, int high) {
        return low + static_cast<int>(bits() % static_cast<std::uint32_t>(high - low + 1));
    }
    /// The same, spread evenly in the logarithm.
    double on_scale(double low, double high) {
        return std::exp(between(std::log(low), std::log(high)));
    }
    bool chance(double probability) { return bits() * 0x1p-32 < probability; }
    template <class T, std::size_t N>
    const T& of(const T (&values)[N]) {
        return values[bits() % N];
    }

private:
    std::mt19937 bits_;
};
