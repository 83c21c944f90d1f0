// lumivar camera info
#include <host/printable.h>
#include <host/scene.h>

#include <cstdio>
#include <memory>
#include <string>

#include "camera_arguments.h"
#include "camera_commands.h"
#include "camera_opening.h"
#include "path_summary.h"

namespace lumivar {
namespace {

struct CameraInfoArguments {
    CameraArguments camera;
    double frame_rate = 24.0;
};

void camera_info_command(const CameraInfoArguments& arguments) {
    const CameraChoice choice = parse_camera_choice(arguments.camera.camera);
    const double frames_per_second = host::frame_rate_of(arguments.frame_rate).per_second();
    const CameraPaths paths =
        read_camera_paths(choice, camera_reading(arguments.camera, frames_per_second));
    warn_of_camera_file(choice, paths);
    std::string text;
    for (const CameraPath& path : paths.paths) {
        text.append(host::printable(path.name)).append("\n");
        text.append(path_summary(path, frames_per_second)).append(path_plot(path));
    }
    std::fputs(text.c_str(), stdout);
}

}  // namespace

void add_camera_info_command(Command& camera) {
    auto arguments = std::make_shared<CameraInfoArguments>();
    Command command = camera.add_command("info", "Say what cameras a file has and how they move");
    command
        .add("FILE", arguments->camera.camera,
             "The file, .chan, .csv, .gltf, .glb or of USD, or FILE:NAME for one camera of it")
        .required();
    command
        .add("--frame-rate", arguments->frame_rate,
             "Frames a second, to count frames by; 24 if nothing is said")
        .between(0.001, 999.0);
    add_reading_arguments(command, "--", arguments->camera);
    command.footer(
        "Shows of each camera its samples, where it looks in the sky (degrees), where it stands\n"
        "(parsecs from the Sun), its lens, the largest turn from frame to frame, and its path\n"
        "over the whole sky: S is the start, E the end. docs/cameras.md has the axes and units.\n\n"
        "Examples:\n"
        "  lumivar camera info shot.chan --frame-rate 25\n"
        "  lumivar camera info stage.glb:ShotCam --up z --unit ly\n");
    command.run([arguments] { camera_info_command(*arguments); });
}

}  // namespace lumivar
