// lumivar camera
#include "camera_commands.h"

namespace lumivar {

void add_camera_command(Command& program) {
    Command camera =
        program.add_command("camera", "Make camera moves; examine and convert other programs'");
    add_camera_info_command(camera);
    add_camera_convert_command(camera);
    add_camera_tour_command(camera);
}

}  // namespace lumivar
