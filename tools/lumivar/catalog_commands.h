// The subcommands of lumivar catalog, each in a file of its own.
#pragma once

#include <string>

#include "command_line.h"

namespace lumivar {

/// Each adds its subcommand.
void add_catalog_import_command(Command& catalog);
void add_catalog_info_command(Command& catalog);
void add_catalog_synth_command(Command& catalog);
void add_catalog_verify_command(Command& catalog);
void add_catalog_dump_command(Command& catalog);
void add_catalog_merge_command(Command& catalog);
void add_catalog_filter_command(Command& catalog);
void add_catalog_sort_command(Command& catalog);

/// Warns on standard error of a database that was written under a name that the plug-in passes
/// over.
void warn_of_unlisted_name(const std::string& database);
/// Warns on standard error of what is left out of a database that is read: bytes behind its last
/// whole record, or all of it where the header is cut short. Throws `Failure` when it cannot be
/// read.
void warn_of_cut_database(const std::string& database);
/// "1 star", "2 stars".
std::string star_count(unsigned long long stars);

}  // namespace lumivar
