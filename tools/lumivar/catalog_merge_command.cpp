// lumivar catalog merge
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "catalog_commands.h"
#include "database/duplicates.h"
#include "database/merge.h"

namespace lumivar {
namespace {

struct MergeArguments {
    std::vector<std::string> inputs;
    std::string output;
    std::optional<double> arcseconds;
};

void merge_command(const MergeArguments& arguments) {
    for (const std::string& input : arguments.inputs) {
        warn_of_cut_database(input);
    }
    const auto start = std::chrono::steady_clock::now();
    const MergeSummary summary = merge_databases({arguments.inputs.begin(), arguments.inputs.end()},
                                                 arguments.output, arguments.arcseconds);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::string merged;
    if (arguments.arcseconds) {
        merged = std::to_string(summary.merged) + " merged with one of another input, ";
    }
    std::printf("%s: %s of version %d, %llu read, %s%.2f s\n", arguments.output.c_str(),
                star_count(summary.written).c_str(), summary.version,
                static_cast<unsigned long long>(summary.read), merged.c_str(), seconds.count());
    warn_of_unlisted_name(arguments.output);
}

}  // namespace

void add_catalog_merge_command(Command& catalog) {
    auto arguments = std::make_shared<MergeArguments>();
    Command command = catalog.add_command("merge", "Make one star database of several");
    command.add_all("DATABASE", arguments->inputs, "The .stars files, the most trusted first")
        .required();
    command.add("-o,--output", arguments->output, "The database to write, NAME.stars").required();
    command
        .add("--dedupe", arguments->arcseconds,
             "ARCSEC: stars of different inputs that lie so close are one star")
        .between(0.0, kLargestDuplicateRadius);
    command.footer(
        "The stars stand in the order in which the databases are named. The output may be one of\n"
        "them: it takes its place when it is whole. It is of version 1 (distances unused) if all\n"
        "are; otherwise the stars of a version-1 database get an unknown distance.\n\n"
        "With --dedupe two stars of different databases within ARCSEC arcseconds, 600 at most,\n"
        "and within one magnitude of each other become one; pairs are joined nearest first. The\n"
        "star of the database named first stays, and takes a distance that it lacks from the\n"
        "other. Two stars of the same database are left, as they are a real double star.\n\n"
        "Examples:\n"
        "  lumivar catalog merge north.stars south.stars -o sky.stars\n"
        "  lumivar catalog merge hipparcos.stars tycho.stars -o both.stars --dedupe 2\n");
    command.run([arguments] { merge_command(*arguments); });
}

}  // namespace lumivar
