// How far the kernels' functions are from the correctly rounded values, bit pattern by bit pattern.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "kernels/kernel_sets.h"

namespace kernel_bounds {

using star_kernels::Kernels;

/// The double-precision error function. Near 0 the first two terms of its series, (2 / sqrt pi)
/// (x - x^3 / 3), which are as exact there (the next is x^4 / 10 of the value) and take less time.
inline double error_function(double x) {
    return std::fabs(x) < 0x1p-13 ? 1.1283791670955126 * (x - x * x * x / 3) : std::erf(x);
}

/// Floats by size, neighbours one apart, 0 and -0 the same; infinity follows the largest number.
inline std::int64_t rank(float x) {
    const auto bits = std::bit_cast<std::int32_t>(x);
    return bits < 0 ? std::int64_t{INT32_MIN} - bits : std::int64_t{bits};
}

/// A function whose error is bounded: units in the last place from the correctly rounded value.
///
/// That value is the double-precision result rounded once more. The C library's `exp` and `erf` are
/// within 2 units of double precision; so the right value lies between the rounded lower and upper
/// end of that, nearly always the same float, and the bound has to hold for both.
struct Bounded {
    const char* name;
    void (*Kernels::*function)(const float*, float*, std::size_t);
    double (*reference)(double);
    int bound;
    bool takes_up_to_0;  ///< only such numbers, else anything
};
inline const Bounded kBounds[] = {
    {"exp", &Kernels::exp, [](double x) { return std::exp(x); }, 1, true},
    {"erf", &Kernels::erf, error_function, 2, false},
};

/// The C library's own function is the reference, not the right value.
inline const Bounded kLibraryErf = {
    "library_erf", &Kernels::library_erf,
    [](double x) { return static_cast<double>(std::erf(static_cast<float>(x))); }, 1, false};

/// Arguments that are looked at in one go.
inline constexpr std::size_t kBlock = 1 << 14;

/// Calls `check(arguments, count)` for every `step`-th pattern from `first` to `last`.
template <class Check>
void for_patterns(std::uint64_t first, std::uint64_t last, std::uint64_t step, Check check) {
    std::vector<float> x(kBlock);
    for (std::uint64_t at = first; at <= last;) {
        std::size_t count = 0;
        for (; count < kBlock && at <= last; ++count, at += step) {
            x[count] = std::bit_cast<float>(static_cast<std::uint32_t>(at));
        }
        check(x.data(), count);
    }
}

inline std::int64_t distance(float x, float result, double reference) {
    if (std::isnan(x)) {
        return std::isnan(result) ? 0 : INT64_MAX;
    }
    if (std::isnan(result)) {
        return INT64_MAX;
    }
    const double margin = std::isinf(reference) ? 0 : std::fabs(reference) * 0x1p-51;
    const auto low = static_cast<float>(reference - margin);
    const auto high = static_cast<float>(reference + margin);
    return std::max(std::abs(rank(result) - rank(low)), std::abs(rank(result) - rank(high)));
}

/// Whether the bits are the same, or neither is a number.
inline bool are_same(const std::vector<float>& a, const std::vector<float>& b, std::size_t count) {
    if (std::memcmp(a.data(), b.data(), sizeof(float) * count) == 0) {
        return true;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (std::bit_cast<std::uint32_t>(a[i]) != std::bit_cast<std::uint32_t>(b[i]) &&
            !(std::isnan(a[i]) && std::isnan(b[i]))) {
            return false;
        }
    }
    return true;
}

/// Expects the bound of the first set's results, and the same of all sets.
inline void check_patterns(const Bounded& of, const std::vector<const Kernels*>& sets,
                           std::uint64_t first, std::uint64_t last, std::uint64_t step) {
    std::vector<float> results(kBlock), others(kBlock);
    std::int64_t worst = 0;
    float worst_at = 0;
    bool same = true;
    std::vector<float> within(kBlock);
    for_patterns(first, last, step, [&](const float* x, std::size_t count) {
        if (of.takes_up_to_0) {
            std::transform(x, x + count, within.begin(),
                           [](float value) { return value <= 0 ? value : 0; });
            x = within.data();
        }
        (sets.front()->*of.function)(x, results.data(), count);
        for (std::size_t i = 1; i < sets.size(); ++i) {
            (sets[i]->*of.function)(x, others.data(), count);
            same = same && are_same(results, others, count);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const std::int64_t off =
                distance(x[i], results[i], of.reference(static_cast<double>(x[i])));
            if (off > worst) {
                worst = off;
                worst_at = x[i];
            }
        }
    });
    EXPECT_LE(worst, of.bound) << of.name << " at " << worst_at;
    EXPECT_TRUE(same) << of.name << ": every set gives the same bits";
    testing::Test::RecordProperty(std::string(of.name) + "_largest_distance",
                                  static_cast<int>(std::min<std::int64_t>(worst, 1000)));
}

}  // namespace kernel_bounds
