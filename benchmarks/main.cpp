// Says which kernels run, then runs the benchmarks.
#include "libimgops/kernels/choice.h"

#include <benchmark/benchmark.h>

#include <cstdio>

int main(int argc, char** argv) {
    const star_kernels::Kernels* kernels = star_kernels::in_use();
    if (kernels == nullptr) {
        std::fputs("no kernels for this processor: there is no fast path to measure\n", stderr);
        return 1;
    }
    benchmark::AddCustomContext("kernels", kernels->name);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
