// Opens a camera file of any format that is known, told by the ending of its name.
#pragma once

#include <string>
#include <vector>

#include "camera_path.h"
#include "camera_reading.h"

namespace lumivar {

/// What `FILE` or `FILE:NAME` names.
struct CameraChoice {
    std::string file;
    std::string name;  ///< of the camera; empty: not said
};

/// A file that has the whole text for its name comes before a name behind a colon.
CameraChoice parse_camera_choice(const std::string& text);

struct CameraPaths {
    std::vector<CameraPath> paths;  ///< one at least
    std::vector<std::string> warnings;
};

/// The cameras of a file, or the one that is named. Throws `Failure` for what cannot be read, and
/// where no camera has the name.
CameraPaths read_camera_paths(const CameraChoice& choice, const CameraReading& reading);

/// The only one. Throws `UsageError` where there are several, with their names.
const CameraPath& only_path(const CameraPaths& paths, const CameraChoice& choice);

}  // namespace lumivar
