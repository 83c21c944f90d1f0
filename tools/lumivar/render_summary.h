// The result of a run of `lumivar render`, for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "picture_file.h"
#include "render_run.h"
#include "shot_plan.h"

namespace lumivar {

/// What the summary says beside what came of the frames.
struct SummaryFacts {
    std::string scene;    ///< its file
    std::string output;   ///< the pictures' name, as the user wrote it
    std::string depth;    ///< "float"
    std::string picture;  ///< "linear light"
    int jobs = 1;
    double seconds = 0.0;
};

/// The line of a run, and for more than a handful of rendered frames a table of the slowest.
std::string summary_text(const RenderRun& run, const std::vector<Shot>& shots,
                         const SummaryFacts& facts);

/// An object in one line: {"scene": "a.json", "output": "a.####.exr", "width": 1920, "height":
/// 1080, "depth": "float", "picture": "linear light", "catalogue": {"name": "hipparcos.stars",
/// "stars": 117955}, "frames": {"asked": 24, "rendered": 20, "kept": 3, "failed": [{"frame": 12,
/// "picture": "a.0012.exr", "error": "..."}]}, "missing": "12", "jobs": 2, "seconds": 1.5,
/// "slowest": [{"frame": 7, "render_seconds": 0.2, "write_seconds": 0.1}]}. What no rendered frame
/// told is null; "missing" is a range, with the failed frames and those that were not begun.
std::string summary_json(const RenderRun& run, const std::vector<Shot>& shots,
                         const SummaryFacts& facts);

}  // namespace lumivar
