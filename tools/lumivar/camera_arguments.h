// How a camera file is to be read, as arguments of a command.
#pragma once

#include <host/scene.h>

#include <memory>
#include <string>
#include <vector>

#include "camera_opening.h"
#include "camera_path.h"
#include "camera_reading.h"
#include "command_line.h"

namespace lumivar {

/// The texts as they were given; empty: not said.
struct CameraArguments {
    std::string camera;  ///< FILE or FILE:NAME
    std::string rotation_order;
    std::string up;
    std::string unit;
};

/// Adds the arguments that say how a camera file is read, each name behind `prefix`:
/// "--" or "--camera-".
void add_reading_arguments(Command& command, const std::string& prefix, CameraArguments& arguments);

/// Throws `UsageError`.
CameraReading camera_reading(const CameraArguments& arguments, double frames_per_second,
                             int first_frame = 0);

/// Says on standard error what of the file is not taken over.
void warn_of_camera_file(const CameraChoice& choice, const CameraPaths& paths);

/// The path as a camera of the scene. A file that says nothing of a lens leaves the scene's camera
/// that of its own, moving or not, or that of a new camera.
std::shared_ptr<const host::Camera> camera_in_scene(const CameraPath& path,
                                                    const host::Scene& scene);

/// Adds `--camera` and what belongs to it.
void add_camera_arguments(Command& command, CameraArguments& arguments);

/// Replaces the scene's camera by that of the file, if one was given, and gives its samples. A file
/// without a lens leaves the scene's. Throws `Failure`.
std::vector<host::CameraSample> bring_camera(const CameraArguments& arguments, host::Scene& scene);

}  // namespace lumivar
