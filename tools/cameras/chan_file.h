// The .chan file: a line of numbers for each frame.
//
//     frame tx ty tz rx ry rz vertical_fov
//
// Angles in degrees; the last column may be missing from all lines. Blank lines and lines that
// begin with "#" are passed over.
#pragma once

#include <host/camera.h>

#include <string>
#include <string_view>
#include <vector>

#include "camera_file.h"
#include "camera_reading.h"

namespace lumivar {

/// `source` names the file; the camera is called after it. Throws `Failure`.
CameraFile read_chan(std::string_view text, const std::string& source,
                     const CameraReading& reading);

/// A path as such a file, y up unless `reading.up` says z, for a picture of `height` pixels.
std::string chan_text(const std::vector<host::CameraSample>& samples, int height,
                      const CameraReading& reading);

}  // namespace lumivar
