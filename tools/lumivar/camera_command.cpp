// lumivar camera
#include "camera_commands.h"

namespace lumivar {

void add_camera_command(Command& program) {
    Command camera = program.add_command("camera", "Examine and convert other programs' cameras");
    add_camera_info_command(camera);
    add_camera_convert_command(camera);
}

}  // namespace lumivar
