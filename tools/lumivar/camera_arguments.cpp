#include "camera_arguments.h"

#include <host/camera.h>
#include <host/printable.h>
#include <host/scene.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "camera_opening.h"
#include "camera_path.h"
#include "failure.h"

namespace lumivar {

void add_reading_arguments(Command& command, const std::string& prefix,
                           CameraArguments& arguments) {
    command.add(prefix + "rotation-order", arguments.rotation_order,
                "Order in which a file's angles turn, first axis first; ZXY if nothing is said");
    command.add(prefix + "up", arguments.up,
                "y or z: which way is up in the file; if not given, what the file says, or y");
    command.add(prefix + "unit", arguments.unit,
                "What one unit of the file is: pc, ly, au, km, m or parsecs as a number; pc if "
                "nothing is said");
}

CameraReading camera_reading(const CameraArguments& arguments, double frames_per_second,
                             int first_frame) {
    CameraReading reading;
    reading.frames_per_second = frames_per_second;
    reading.first_frame = first_frame;
    if (!arguments.rotation_order.empty()) {
        reading.rotation_order = RotationOrder(arguments.rotation_order);
    }
    if (!arguments.up.empty()) {
        reading.up = up_axis_of(arguments.up);
    }
    if (!arguments.unit.empty()) {
        reading.parsecs_per_unit = parsecs_of_unit(arguments.unit);
    }
    return reading;
}

void warn_of_camera_file(const CameraChoice& choice, const CameraPaths& paths) {
    for (const std::string& warning : paths.warnings) {
        std::fprintf(stderr, "lumivar: warning: %s: %s\n", host::printable(choice.file).c_str(),
                     host::printable(warning).c_str());
    }
}

namespace {

/// A path's samples in the scene's picture, and the scene's camera where they have no lens.
struct SceneSamples {
    std::vector<host::CameraSample> samples;
    std::shared_ptr<const host::Camera> lens;
};

SceneSamples samples_in_scene(const CameraPath& path, const host::Scene& scene) {
    const host::Composition& composition = scene.composition;
    const std::shared_ptr<const host::Camera> other =
        scene.camera
            ? scene.camera
            : host::look_at_camera(0.0, 0.0, 0.0, host::Lens::new_camera(composition.width));
    const bool has_lens =
        std::any_of(path.samples.begin(), path.samples.end(),
                    [](const PathSample& sample) { return sample.lens.has_value(); });
    return {samples_on_picture(path, composition.width, composition.height, *other),
            has_lens ? nullptr : other};
}

}  // namespace

std::shared_ptr<const host::Camera> camera_in_scene(const CameraPath& path,
                                                    const host::Scene& scene) {
    const SceneSamples found = samples_in_scene(path, scene);
    return host::path_camera(found.samples, found.lens);
}

void add_camera_arguments(Command& command, CameraArguments& arguments) {
    command.add("--camera", arguments.camera,
                "FILE or FILE:NAME: the camera of another program's file, in place of the scene's "
                "(see docs/cameras.md)");
    add_reading_arguments(command, "--camera-", arguments);
}

std::vector<host::CameraSample> bring_camera(const CameraArguments& arguments, host::Scene& scene) {
    if (arguments.camera.empty()) {
        if (!(arguments.rotation_order + arguments.up + arguments.unit).empty()) {
            throw UsageError(
                "--camera-rotation-order, --camera-up and --camera-unit go with "
                "--camera, which says the file");
        }
        return {};
    }
    const CameraChoice choice = parse_camera_choice(arguments.camera);
    const CameraPaths paths = read_camera_paths(
        choice, camera_reading(arguments, scene.composition.frame_rate.per_second(),
                               scene.composition.first_frame));
    const CameraPath& path = only_path(paths, choice);
    warn_of_camera_file(choice, paths);
    SceneSamples found = samples_in_scene(path, scene);
    scene.camera = host::path_camera(found.samples, found.lens);
    return std::move(found.samples);
}

}  // namespace lumivar
