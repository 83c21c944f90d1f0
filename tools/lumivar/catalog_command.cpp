// lumivar catalog import, lumivar catalog info
#include <libimgops/star_database_name.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "astronomy/star_light.h"
#include "command_line.h"
#include "database/info.h"
#include "database/star_file.h"
#include "import/import.h"

namespace lumivar {
namespace {

struct ImportArguments {
    std::string input;
    std::string output;
};

void import_command(const ImportArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const ImportSummary summary = import_catalogue(arguments.input, arguments.output);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf(
        "%s: %lu stars, %lu without colour (drawn as B-V %.1f), %lu without distance, %.2f s\n",
        arguments.output.c_str(), static_cast<unsigned long>(summary.stars),
        static_cast<unsigned long>(summary.without_colour), kNeutralColourIndex,
        static_cast<unsigned long>(summary.without_distance), seconds.count());
    if (summary.stars == 0) {
        std::fprintf(stderr, "lumivar: warning: %s holds no stars\n", arguments.output.c_str());
    }
    if (!is_star_database_name(std::filesystem::path(arguments.output).filename().c_str())) {
        std::fprintf(
            stderr,
            "lumivar: warning: the plug-in finds only files with \".stars\" in their name, "
            "and %s has not\n",
            arguments.output.c_str());
    }
}

void add_import(Command& catalog) {
    auto arguments = std::make_shared<ImportArguments>();
    Command command = catalog.add_command("import", "Make a star database from a table of stars");
    command
        .add("TABLE", arguments->input,
             "Comma-separated text whose first line names the columns; - is standard input")
        .required();
    command.add("-o,--output", arguments->output, "The database to write, NAME.stars").required();
    command.footer(
        "Columns, in any order (others are passed over):\n"
        "  ra_deg       right ascension, degrees 0..360                becomes lon\n"
        "  dec_deg      declination, degrees -90..90                   becomes lat\n"
        "  vmag         magnitude m                                    luminance 10^(-0.4 m)\n"
        "  bv           colour index B-V; empty or missing: 0.6        sRGB colour\n"
        "  distance_pc  parsecs; empty or missing: unknown, -1         distance\n"
        "The stars keep their order. The database appears whole or not at all: it is made\n"
        "in a hidden folder beside its place, as the plug-in would take a half-written\n"
        "file for a database.\n\n"
        "Examples:\n"
        "  lumivar catalog import data/hip.csv -o hipparcos.stars\n"
        "  grep -v ',e$' data/hip.csv | lumivar catalog import - -o measured.stars\n");
    command.run([arguments] { import_command(*arguments); });
}

void add_info(Command& catalog) {
    auto path = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    Command command = catalog.add_command("info", "Say what a star database holds");
    command.add("DATABASE", *path, "The .stars file").required();
    command.add_flag("--json", *json, "As JSON, for other programs");
    command.footer(
        "Shows version, number of stars, the range of every field, stars by magnitude, and\n"
        "warns of values that are not numbers or out of range and of trailing bytes.\n\n"
        "Examples:\n"
        "  lumivar catalog info hipparcos.stars\n"
        "  lumivar catalog info hipparcos.stars --json\n");
    command.run([path, json] {
        const CatalogueInfo info = examine_catalogue(*path);
        std::fputs((*json ? info_as_json(info) : info_as_text(info)).c_str(), stdout);
    });
}

}  // namespace

void add_catalog_command(Command& program) {
    Command catalog = program.add_command("catalog", "Make and examine star databases");
    add_import(catalog);
    add_info(catalog);
}

}  // namespace lumivar
