// A camera's path in the composition's world: x right, y down, z away, one unit a parsec. There a
// star stands at (cos dec cos ra, -sin dec, cos dec sin ra) times its distance; the camera looks
// along its +z with y down.
#pragma once

#include <host/camera.h>
#include <host/scene.h>

#include <optional>
#include <string>
#include <vector>

#include "camera_file.h"

namespace lumivar {

struct PathSample {
    double time = 0.0;              ///< seconds of the scene
    host::Matrix layer_to_world{};  ///< a turn and a move, row vectors
    std::optional<FileLens> lens;
};

struct CameraPath {
    std::string name;
    std::vector<PathSample> samples;  ///< at least one; times strictly increasing
};

/// A file's camera in the world (see file_axes.h).
///
/// Scale and shear are taken out: the camera keeps where it looks, and which way up. `source` names
/// the file. Throws `Failure` for a matrix that mirrors or flattens, and for what is no number that
/// a shot can have.
CameraPath world_path(const FileCamera& camera, double parsecs_per_unit, const std::string& source);

/// The path for a picture of that size. Samples without a lens take that of `other` at their time.
std::vector<host::CameraSample> samples_on_picture(const CameraPath& path, int width, int height,
                                                   const host::Camera& other);

}  // namespace lumivar
