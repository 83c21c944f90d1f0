// The subcommands of lumivar camera, each in a file of its own.
#pragma once

#include "command_line.h"

namespace lumivar {

void add_camera_info_command(Command& camera);
void add_camera_convert_command(Command& camera);

}  // namespace lumivar
