// lumivar catalog dump
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "atomic_file.h"
#include "catalog_commands.h"
#include "database/dump.h"
#include "failure.h"

namespace lumivar {
namespace {

struct DumpArguments {
    std::string database;
    std::string output;
};

void dump_to_standard_output(const std::string& database) {
    dump_database(database, [](std::string_view text) {
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
            throw Failure("cannot write to standard output");
        }
    });
}

void dump_to_file(const std::string& database, const std::string& output) {
    const auto start = std::chrono::steady_clock::now();
    AtomicFile file(output);
    const std::uint64_t stars = dump_database(
        database, [&file](std::string_view text) { file.write(std::as_bytes(std::span(text))); });
    file.publish();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s: %s, %.2f s\n", output.c_str(), star_count(stars).c_str(), seconds.count());
}

}  // namespace

void add_catalog_dump_command(Command& catalog) {
    auto arguments = std::make_shared<DumpArguments>();
    Command command = catalog.add_command("dump", "Write a star database as text (CSV)");
    command.add("DATABASE", arguments->database, "The .stars file").required();
    command.add("-o,--output", arguments->output,
                "The text file to write; if not given, standard output");
    command.footer(
        "A header line, then a line for each star, in the order of the file:\n"
        "  lon_deg,lat_deg,luminance,r,g,b,distance_pc\n"
        "The numbers are those of the records: degrees, linear luminance, sRGB codes, parsecs (0\n"
        "or below: unknown). Each is the shortest decimal that reads back as the same number, so\n"
        "that importing the text gives the same records. In a database of version 1, whose\n"
        "distances are never read, the last column is called distance_unused.\n\n"
        "Examples:\n"
        "  lumivar catalog dump hipparcos.stars | head\n"
        "  lumivar catalog dump hipparcos.stars -o hipparcos.csv\n"
        "  lumivar catalog dump hipparcos.stars | awk -F, 'NR > 1 && $7 > 0 && $7 < 10'\n");
    command.run([arguments] {
        if (arguments->output.empty()) {
            dump_to_standard_output(arguments->database);
        } else {
            dump_to_file(arguments->database, arguments->output);
        }
    });
}

}  // namespace lumivar
