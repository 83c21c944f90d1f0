// lumivar catalog, and what its subcommands share
#include <libimgops/star_database_name.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "catalog_commands.h"
#include "counted.h"
#include "database/database_faults.h"

namespace lumivar {

void add_catalog_command(Command& program) {
    Command catalog = program.add_command("catalog", "Make, examine and change star databases");
    add_catalog_import_command(catalog);
    add_catalog_synth_command(catalog);
    add_catalog_info_command(catalog);
    add_catalog_verify_command(catalog);
    add_catalog_dump_command(catalog);
    add_catalog_merge_command(catalog);
    add_catalog_filter_command(catalog);
    add_catalog_sort_command(catalog);
}

void warn_of_unlisted_name(const std::string& database) {
    if (!is_star_database_name(std::filesystem::path(database).filename().c_str())) {
        std::fprintf(
            stderr,
            "lumivar: warning: the plug-in finds only files with \".stars\" in their name, "
            "and %s has not\n",
            database.c_str());
    }
}

void warn_of_cut_database(const std::string& database) {
    for (const std::string& fault : file_faults(DatabaseReader(database))) {
        std::fprintf(stderr, "lumivar: warning: %s: %s\n", database.c_str(), fault.c_str());
    }
}

std::string star_count(unsigned long long stars) { return counted(stars, "star", "stars"); }

}  // namespace lumivar
