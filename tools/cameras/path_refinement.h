// Samples of a path that moves on curves, close enough for straight lines between them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "camera_file.h"

namespace lumivar {

/// Samples at `times` (one at least, increasing), and between two of them wherever a camera that
/// goes the straight way, as `host::path_camera` does, would be off by more than 1e-6 in an element
/// of its axes (radians), a 1e-7th of the path's extent in position, or a millionth of its zoom.
/// An interval is divided 4096-fold at most, and none any more from half a million samples on.
/// `source`, the file, and the camera's name are told in the `Failure` of a matrix that no camera
/// can have.
std::vector<FileCameraSample> refined(
    const std::vector<double>& times,
    const std::function<FileCameraSample(double seconds)>& sample_at, const std::string& source,
    const std::string& name);

}  // namespace lumivar
