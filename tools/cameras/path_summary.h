// What a path does, in words and as a plot.
#pragma once

#include <string>
#include <vector>

#include "camera_path.h"

namespace lumivar {

/// Lines that say how many samples it has and when, where it looks and stands at both ends, its
/// lens and how fast it turns. `frames_per_second` counts the frames.
std::string path_summary(const CameraPath& path, double frames_per_second);

/// The whole sky in characters, 24 h of right ascension at the left and 0 h at the right, as one
/// sees it from within: S where the path begins, E where it ends, a line of "*" between.
std::string path_plot(const CameraPath& path);

}  // namespace lumivar
