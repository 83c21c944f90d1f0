// lumivar catalog synth
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "catalog_commands.h"
#include "failure.h"
#include "synthesis/synthetic_sky.h"

namespace lumivar {
namespace {

struct SynthArguments {
    std::string output;
    int stars = 1'000'000;
    int seed = 1;
    double brightest = -1.5;
    std::optional<double> faintest;
    bool distances = false;
};

void synth_command(const SynthArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    if (arguments.faintest && !(*arguments.faintest > arguments.brightest)) {
        throw UsageError("--faintest must be a larger magnitude than --brightest");
    }
    SynthOptions options;
    options.stars = static_cast<std::uint64_t>(arguments.stars);
    options.seed = static_cast<std::uint64_t>(arguments.seed);
    options.brightest = arguments.brightest;
    options.faintest = arguments.faintest;
    options.distances = arguments.distances;
    const SynthSummary summary = write_synthetic_sky(options, arguments.output);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s: %s of magnitude %.2f to %.2f, seed %d, %.2f s\n", arguments.output.c_str(),
                star_count(options.stars).c_str(), summary.brightest, summary.faintest,
                arguments.seed, seconds.count());
    warn_of_unlisted_name(arguments.output);
}

}  // namespace

void add_catalog_synth_command(Command& catalog) {
    auto arguments = std::make_shared<SynthArguments>();
    Command command = catalog.add_command("synth", "Make a synthetic sky of any number of stars");
    command.add("-o,--output", arguments->output, "The database to write, NAME.stars").required();
    command.add("--stars", arguments->stars, "How many, 1000000000 at most [1000000]")
        .between(1.0, static_cast<double>(kMostSyntheticStars));
    command.add("--seed", arguments->seed, "Another number gives another sky [1]")
        .between(0.0, 2147483647.0);
    command.add("--brightest", arguments->brightest, "Magnitude of the brightest star [-1.5]")
        .between(StarCounts::kBrightest, StarCounts::kFaintest - 1.0);
    command
        .add("--faintest", arguments->faintest,
             "Magnitude of the faintest; without it, as faint as that many stars go in the sky")
        .between(StarCounts::kBrightest, StarCounts::kFaintest);
    command.add_flag("--distances", arguments->distances,
                     "Give the stars distances that go with their colours and magnitudes");
    command.footer(
        "No star of it was ever observed, but there are as many of each magnitude as in the real\n"
        "sky, in the colours that are found there, crowded along a Milky Way with clouds of dust.\n"
        "The brightest star comes first. The same arguments give the same bytes on every machine.\n"
        "The million brightest stars go down to magnitude 11.2, a billion to 20.\n\n"
        "Examples:\n"
        "  lumivar catalog synth -o sky.stars --stars 2500000\n"
        "  lumivar catalog synth -o deep.stars --stars 100000000 --seed 7 --distances\n"
        "  lumivar catalog synth -o faint.stars --stars 500000 --brightest 6.5 --faintest 12\n");
    command.run([arguments] { synth_command(*arguments); });
}

}  // namespace lumivar
