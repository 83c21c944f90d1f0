// Cameras as JSON samples, the form in which a converter hands over what it read.
//
//     {"cameras": [{"name": "/World/cam", "up_axis": "Y",
//                   "samples": [{"time": 0.0, "matrix": [16 numbers],
//                                "focal_length": 50.0, "horizontal_aperture": 36.0}]}],
//      "warnings": ["..."]}
//
// Times are seconds. The matrix leads from the camera to the world, row by row, for row vectors.
// Focal length and aperture share a unit; both may be missing. "up_axis" is "Y" or "Z", Y without
// it. Other members are passed over.
#pragma once

#include <string>

#include "camera_file.h"

namespace lumivar {

/// `source` stands for the file's name in messages. Throws `Failure`.
CameraFile read_camera_json(const std::string& text, const std::string& source);

}  // namespace lumivar
