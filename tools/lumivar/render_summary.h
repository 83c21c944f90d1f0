// The result of a run of `lumivar render`, or of a farm over the same frames, for people and for
// programs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "render_run.h"
#include "shot_plan.h"

namespace lumivar {

struct RunSummary {
    struct Failed {
        std::optional<int> frame;
        std::string picture;
        std::string error;
    };
    struct Slow {
        std::optional<int> frame;
        std::string face;  ///< of a cube; empty: the whole picture
        double render_seconds = 0.0;
        double write_seconds = 0.0;
    };

    std::string scene;    ///< its file
    std::string output;   ///< the pictures' name, as the user wrote it
    std::string depth;    ///< "float"
    std::string picture;  ///< "linear light"
    int jobs = 1;
    double seconds = 0.0;
    double render_seconds = 0.0;  ///< of all rendered frames together, in the plug-in
    double write_seconds = 0.0;   ///< likewise, from its pixels to the pictures in their places
    int width = 0;                ///< of the frames; 0 where none was rendered
    int height = 0;
    std::string catalogue;  ///< its name; empty: none
    std::uint64_t stars = 0;
    std::size_t asked = 0;  ///< pictures
    std::size_t rendered = 0;
    std::size_t kept = 0;
    std::vector<Failed> failed;
    std::vector<int> missing;   ///< frames, in ascending order
    std::vector<Slow> slowest;  ///< longest first
};

/// What the summary says beside what came of the frames.
struct SummaryFacts {
    std::string scene;
    std::string output;
    std::string depth;
    std::string picture;
    int jobs = 1;
    double seconds = 0.0;
};

RunSummary summary_of(const RenderRun& run, const std::vector<Shot>& shots,
                      const SummaryFacts& facts);

/// The line of a run, and for more than a handful of rendered frames a table of the slowest.
std::string summary_text(const RunSummary& summary, const std::vector<Shot>& shots);

/// An object in one line: {"scene": "a.json", "output": "a.####.exr", "width": 1920, "height":
/// 1080, "depth": "float", "picture": "linear light", "catalogue": {"name": "hipparcos.stars",
/// "stars": 117955}, "frames": {"asked": 24, "rendered": 20, "kept": 3, "failed": [{"frame": 12,
/// "picture": "a.0012.exr", "error": "..."}]}, "missing": "12", "jobs": 2, "seconds": 1.5,
/// "render_seconds": 2.1, "write_seconds": 0.7, "slowest": [{"frame": 7, "render_seconds": 0.2,
/// "write_seconds": 0.1}]}; a face of a cube map has "face" there. What no rendered frame told is
/// null; "missing" is a range, with the failed frames and those that were not begun.
std::string summary_json(const RunSummary& summary);

/// Reads a line of `summary_json` back. Nothing for other texts.
std::optional<RunSummary> parse_summary(const std::string& text);

/// What several tries of the same frames, in their order, and each with those before kept, make
/// together.
RunSummary together_in_turn(const std::vector<RunSummary>& tries);

/// Adds what another part of the shot came to; what the whole is called stays, and its seconds.
void add_part(RunSummary& whole, const RunSummary& part);

}  // namespace lumivar
