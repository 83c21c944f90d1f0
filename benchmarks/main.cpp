// Runs the benchmarks that --benchmark_filter names, like any Google Benchmark program. Options of
// its own:
//   --kernels=NAME            draws with this set of kernels, not with the widest
//   --turns=N --report=FILE   runs all of them N times, so that the plain and the fast run of a
//   case
//                             always follow each other; writes a list of N reports
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "libimgops/fast/kernels/choice.h"

namespace {

/// The value of option `name`, which is taken off the command line; empty if it is not there.
std::string take_option(const char* name, int* argc, char** argv) {
    const std::string start = std::string("--") + name + "=";
    for (int i = 1; i < *argc; ++i) {
        if (std::strncmp(argv[i], start.c_str(), start.size()) == 0) {
            std::string value = argv[i] + start.size();
            // The null at the end moves too.
            std::memmove(argv + i, argv + i + 1,
                         static_cast<std::size_t>(*argc - i) * sizeof argv[0]);
            --*argc;
            return value;
        }
    }
    return "";
}

/// Null if no set of that name runs here.
const star_kernels::Kernels* kernels_named(const std::string& name) {
    for (const star_kernels::Kernels* const* set = star_kernels::built(); *set != nullptr; ++set) {
        if (name == (*set)->name && star_kernels::runs_here(**set)) {
            return *set;
        }
    }
    return nullptr;
}

void run_in_turns(int turns, const std::string& path) {
    std::ofstream file(path);
    for (int turn = 0; turn < turns; ++turn) {
        file << (turn == 0 ? "[" : ",\n");
        benchmark::JSONReporter report;
        report.SetOutputStream(&file);
        benchmark::RunSpecifiedBenchmarks(&report);
        std::fprintf(stderr, "turn %d of %d\n", turn + 1, turns);
    }
    file << "]\n";
}

}  // namespace

int main(int argc, char** argv) {
    const std::string name = take_option("kernels", &argc, argv);
    const std::string turns = take_option("turns", &argc, argv);
    const std::string report = take_option("report", &argc, argv);
    const star_kernels::Kernels* const kernels =
        name.empty() ? star_kernels::in_use() : kernels_named(name);
    if (kernels == nullptr) {
        std::fprintf(stderr, "no kernels%s%s run on this processor\n",
                     name.empty() ? "" : " named ", name.c_str());
        return 1;
    }
    star_kernels::use(kernels);
    benchmark::AddCustomContext("kernels", kernels->name);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    if (report.empty()) {
        benchmark::RunSpecifiedBenchmarks();
    } else {
        run_in_turns(std::atoi(turns.c_str()), report);
    }
    return 0;
}
