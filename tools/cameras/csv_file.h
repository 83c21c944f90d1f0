// Cameras in a table: a line of names, then a line for each moment.
//
//     time or frame        seconds, or frames of the scene
//     tx, ty, tz           position
//     rx, ry, rz           degrees about the axes; or, instead of these six,
//     m00 ... m33          the matrix from camera to world, row by row, for row vectors
//     vfov                 vertical field of view in degrees; or
//     focal_length, horizontal_aperture     both in one unit; may all be missing
//
// Fields are apart by commas, semicolons or tabs. Blank lines and lines that begin with "#" are
// passed over, other columns with a warning.
#pragma once

#include <string>
#include <string_view>

#include "camera_file.h"
#include "camera_reading.h"

namespace lumivar {

/// `source` names the file; the camera is called after it. Throws `Failure`.
CameraFile read_camera_csv(std::string_view text, const std::string& source,
                           const CameraReading& reading);

}  // namespace lumivar
