// The subcommands of lumivar catalog, each in a file of its own.
#pragma once

#include "command_line.h"

namespace lumivar {

void add_catalog_import_command(Command& catalog);

}  // namespace lumivar
