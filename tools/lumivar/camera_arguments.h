// How a camera file is to be read, as arguments of a command.
#pragma once

#include <host/scene.h>

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
CameraReading camera_reading(const CameraArguments& arguments, double frames_per_second);

/// Says on standard error what of the file is not taken over.
void warn_of_camera_file(const CameraChoice& choice, const CameraPaths& paths);

/// The path on the scene's picture. Samples without a lens take that of the scene's camera, or of a
/// new one.
std::vector<host::CameraSample> samples_in_scene(const CameraPath& path, const host::Scene& scene);

/// Adds `--camera` and what belongs to it.
void add_camera_arguments(Command& command, CameraArguments& arguments);

/// Replaces the scene's camera by that of the file, if one was given. Samples without a lens keep
/// that of the scene. Throws `Failure`.
void bring_camera(const CameraArguments& arguments, host::Scene& scene);

}  // namespace lumivar
