// lumivar catalog verify
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "catalog_commands.h"
#include "database/database_faults.h"
#include "failure.h"

namespace lumivar {
namespace {

struct VerifyArguments {
    std::vector<std::string> databases;
    bool quiet = false;
};

/// The lines that are said of one database.
std::vector<std::string> verdict(const std::string& database, bool& good) {
    std::vector<std::string> lines;
    try {
        for (const std::string& fault : database_faults(database)) {
            lines.emplace_back(database).append(": ").append(fault);
        }
    } catch (const Failure& failure) {
        lines.emplace_back(failure.what());  // names the file
    }
    good = lines.empty();
    if (good) {
        lines.push_back(database + ": good");
    }
    return lines;
}

void verify_command(const VerifyArguments& arguments) {
    std::size_t faulty = 0;
    for (const std::string& database : arguments.databases) {
        bool good = false;
        const std::vector<std::string> lines = verdict(database, good);
        faulty += good ? 0 : 1;
        for (const std::string& line : lines) {
            if (!arguments.quiet) {
                std::printf("%s\n", line.c_str());
            }
        }
    }
    std::fflush(stdout);  // before the failure, wherever both go
    if (faulty > 0) {
        throw Failure(
            std::to_string(faulty) + " of " + std::to_string(arguments.databases.size()) +
            (arguments.databases.size() == 1 ? " database is faulty" : " databases are faulty"));
    }
}

}  // namespace

void add_catalog_verify_command(Command& catalog) {
    auto arguments = std::make_shared<VerifyArguments>();
    Command command = catalog.add_command("verify", "Look for what is wrong with star databases");
    command.add_all("DATABASE", arguments->databases, "The .stars files").required();
    command.add_flag("-q,--quiet", arguments->quiet,
                     "Only the exit code and one line for a failure");
    command.footer(
        "A database is good when its header and all its records are whole, and every star has a\n"
        "place (lon 0 to 360, lat -90 to 90), a luminance above 0 and, in version 2, a distance\n"
        "that is a finite number; 0 or below stands for an unknown one. Each kind of fault is one\n"
        "line with the number of stars and the first of them, counted from 1. The effect draws\n"
        "what it can of a faulty database, and never says so.\n\n"
        "The exit code is 0 when all are good, and 1 otherwise.\n\n"
        "Examples:\n"
        "  lumivar catalog verify hipparcos.stars\n"
        "  lumivar catalog verify --quiet *.stars && cp *.stars \"$PLUGINS\"\n");
    command.run([arguments] { verify_command(*arguments); });
}

}  // namespace lumivar
