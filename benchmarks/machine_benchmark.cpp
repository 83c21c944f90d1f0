// What this machine can do: its memory, the vector functions, and the C library's scalar functions
// that the plain path is made of. Per byte, per value and per call.
#include <base/words.h>
#include <benchmark/benchmark.h>
#include <sys/mman.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "libimgops/fast/kernels/choice.h"

namespace {

/// Far more than any cache holds.
constexpr std::size_t kMemoryBytes = std::size_t{256} << 20U;
/// Arguments of vector functions: few enough for the first cache.
constexpr int kFewValues = 2048;
/// Arguments of scalar functions: too many for a processor to learn which way their branches go.
constexpr int kManyValues = 1 << 16;

/// In large pages where the system has them, so that the memory's speed shows and not that of the
/// tables of its pages. Never freed: there is one.
u64* memory() {
    static u64* const words = [] {
        void* const made = std::aligned_alloc(std::size_t{2} << 20U, kMemoryBytes);
#if defined(MADV_HUGEPAGE)
        madvise(made, kMemoryBytes, MADV_HUGEPAGE);
#endif
        std::memset(made, 1, kMemoryBytes);
        return static_cast<u64*>(made);
    }();
    return words;
}

/// One word of each cache line: memory moves whole lines.
void machine_memory_read(benchmark::State& state) {
    const u64* const words = memory();
    constexpr std::size_t kLine = 64 / sizeof(u64);
    constexpr std::size_t kSums = 4;
    for (auto _ : state) {
        u64 sums[kSums] = {};
        for (std::size_t i = 0; i < kMemoryBytes / sizeof(u64); i += kSums * kLine) {
            for (std::size_t sum = 0; sum < kSums; ++sum) {
                sums[sum] += words[i + sum * kLine];
            }
        }
        benchmark::DoNotOptimize(sums);
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kMemoryBytes});
}
BENCHMARK(machine_memory_read);

void machine_memory_write(benchmark::State& state) {
    u64* const words = memory();
    for (auto _ : state) {
        std::memset(words, 0, kMemoryBytes);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kMemoryBytes});
}
BENCHMARK(machine_memory_write);

template <class T>
std::vector<T> values(std::size_t count, double low, double high) {
    std::mt19937_64 random(20261121);
    std::uniform_real_distribution<double> between(low, high);
    std::vector<T> result(count);
    for (T& x : result) {
        x = static_cast<T>(between(random));
    }
    return result;
}

using VectorFunction = void (*)(const float*, float*, std::size_t);

void vector_values(benchmark::State& state, VectorFunction function, double low, double high) {
    const std::vector<float> from = values<float>(kFewValues, low, high);
    std::vector<float> to(from.size());
    // A processor takes a while to get its widest units going.
    for (int i = 0; i < 100; ++i) {
        function(from.data(), to.data(), from.size());
    }
    for (auto _ : state) {
        function(from.data(), to.data(), from.size());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kFewValues);
}

/// From the peak of a spot far beyond its rim.
void machine_vector_exp(benchmark::State& state) {
    vector_values(state, star_kernels::in_use()->exp, -20, 0);
}
BENCHMARK(machine_vector_exp);

void machine_vector_erf(benchmark::State& state) {
    vector_values(state, star_kernels::in_use()->erf, -4, 4);
}
BENCHMARK(machine_vector_erf);

template <class T, class Function>
void scalar_values(benchmark::State& state, double low, double high, Function function) {
    const std::vector<T> from = values<T>(kManyValues, low, high);
    for (auto _ : state) {
        for (const T x : from) {
            benchmark::DoNotOptimize(function(x));
        }
    }
    state.SetItemsProcessed(state.iterations() * kManyValues);
}

void machine_expf(benchmark::State& state) {
    scalar_values<float>(state, -8, 0, [](float x) { return std::exp(x); });
}
BENCHMARK(machine_expf);

/// Arguments along an ordinary streak.
void machine_erff(benchmark::State& state) {
    scalar_values<float>(state, -4, 4, [](float x) { return std::erf(x); });
}
BENCHMARK(machine_erff);

/// Arguments far inside a streak across the camera's plane.
void machine_erff_saturated(benchmark::State& state) {
    scalar_values<float>(state, 10, 1000, [](float x) { return std::erf(x); });
}
BENCHMARK(machine_erff_saturated);

/// Longitudes.
void machine_sin(benchmark::State& state) {
    scalar_values<double>(state, 0, 6.283185307, [](double x) { return std::sin(x); });
}
BENCHMARK(machine_sin);

void machine_cos(benchmark::State& state) {
    scalar_values<double>(state, 0, 6.283185307, [](double x) { return std::cos(x); });
}
BENCHMARK(machine_cos);

/// Codes of star colours.
void machine_powf(benchmark::State& state) {
    scalar_values<float>(state, 0.5, 1, [](float x) { return std::pow(x, 2.4F); });
}
BENCHMARK(machine_powf);

}  // namespace
