// What a run over the frames of a shot tells while it goes on, on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "progress.h"

namespace lumivar {

enum class ProgressStyle {
    Text,  ///< a line on a terminal; elsewhere one of the log every ten seconds
    Json,  ///< an object a line, for the programs of a farm
    None
};

/// How far a run is.
struct ShotStanding {
    std::uint64_t settled = 0;  ///< frames, failed ones too
    std::uint64_t total = 0;
    std::uint64_t rendered = 0;  ///< of the settled ones, without those that were there already
    std::uint64_t stars = 0;     ///< in the catalogue, summed over the rendered frames
    double seconds = 0.0;        ///< since the run began
};

/// "12/48 frames, 3.2 frames/s, 377k stars/s, 11 s left". Rate and time left go by the frames that
/// were rendered, and are left out before there is one.
std::string shot_progress_text(const ShotStanding& standing);

/// What became of a frame.
struct FrameNews {
    std::optional<int> frame;  ///< its number; a moment that is no frame has none
    std::string picture;       ///< its file
    std::string state;         ///< "rendered", "kept", "retried" or "failed"
    std::string error;         ///< of a retried or failed one
    double seconds = 0.0;      ///< of a rendered one, its rendering and writing
};

class ShotProgress {
public:
    ShotProgress(ProgressStyle style, std::uint64_t total, int jobs);

    /// As JSON: {"event": "frame", "frame": 12, "picture": "a.0012.exr", "state": "rendered",
    /// "seconds": 0.1, "settled": 3, "total": 48, "frames_per_second": 2.5, "seconds_left": 18}.
    void tell(const FrameNews& news, const ShotStanding& standing);
    /// Some time has passed.
    void update(const ShotStanding& standing);
    /// A line of another kind on standard error, "lumivar: " before it if it has no such beginning.
    void say(const std::string& line);
    /// Wipes the line.
    void end() { line_.wipe(); }
    /// Seconds since the run began.
    double seconds() const;

private:
    using Clock = std::chrono::steady_clock;

    ProgressStyle style_;
    ProgressLine line_;
    Clock::time_point start_;
    Clock::time_point last_log_;
};

}  // namespace lumivar
