// The subcommands of lumivar camera, each in a file of its own.
#pragma once

#include "command_line.h"

namespace lumivar {

/// Each adds its subcommand.
void add_camera_info_command(Command& camera);
void add_camera_convert_command(Command& camera);
void add_camera_tour_command(Command& camera);

}  // namespace lumivar
