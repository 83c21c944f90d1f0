// A benchmark of something that both paths do, and what the machine could do at best.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "scene.h"

/// Two benchmarks, NAME/plain and NAME/fast, of a function that takes the state and the path.
#define BENCHMARK_PAIR(name)                         \
    BENCHMARK_CAPTURE(name, plain, DrawPath::Plain); \
    BENCHMARK_CAPTURE(name, fast, DrawPath::Fast)

namespace bench {

/// What one unit of a case (a star, a pixel, a frame) takes at least, for scripts/bench to price:
/// bytes from and to memory, and exponentials.
struct Needs {
    double read_bytes = 0;
    double written_bytes = 0;
    double exponentials = 0;
};

/// Says how many units an iteration did and what each takes.
inline void report(benchmark::State& state, double units, const Needs& needs) {
    state.SetItemsProcessed(
        static_cast<std::int64_t>(static_cast<double>(state.iterations()) * units));
    state.counters["units"] = units;
    state.counters["read_bytes"] = needs.read_bytes;
    state.counters["written_bytes"] = needs.written_bytes;
    state.counters["exponentials"] = needs.exponentials;
}

/// Fails the benchmark if `difference` says anything. Returns whether it may go on.
inline bool agrees(benchmark::State& state, const std::string& difference) {
    if (!difference.empty()) {
        state.SkipWithError(difference.c_str());
    }
    return difference.empty();
}

}  // namespace bench
