// The subcommands of lumivar farm, each in a file of its own.
#pragma once

#include "command_line.h"

namespace lumivar {

/// Each adds its subcommand.
void add_farm_slurm_command(Command& farm);

}  // namespace lumivar
