// Which moments of a scene become which pictures.
#pragma once

#include <host/scene.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "frame_names.h"

namespace lumivar {

/// What the command line says of it; at most one of the three, nothing means the first frame.
struct ShotRequest {
    std::optional<double> time;  ///< seconds
    std::optional<int> frame;    ///< as the composition numbers its frames
    std::string frames;          ///< a range; empty: none
};

/// One picture to make.
struct Shot {
    host::Time time;
    std::optional<int> frame;
    std::string path;
    std::size_t scene = 0;  ///< which of the run's scenes it shows
    std::string face;       ///< of a cube; empty: the whole picture
};

/// In ascending order, one at least. Throws `UsageError` for moments that the composition does not
/// have, and for names without a place for the number where there may be several.
std::vector<Shot> plan_shots(const ShotRequest& request, const host::Composition& composition,
                             const FrameNames& names);

/// "frame 12 (0.500 s)", or "0.512 s" for a moment that is no frame.
std::string shown_time(const Shot& shot);

/// Their moments, in ascending order, each once.
std::vector<host::Time> times_of(const std::vector<Shot>& shots);

}  // namespace lumivar
