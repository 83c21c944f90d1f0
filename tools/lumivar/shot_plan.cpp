#include "shot_plan.h"

#include <base/string.h>

#include <cstddef>
#include <cstdint>

#include "failure.h"
#include "frame_range.h"

namespace lumivar {
namespace {

std::string seconds_text(double seconds) { return String::fmt("%.3f s", seconds).c_str(); }

/// Throws for frames that the composition does not have.
void require_frames(const host::Composition& composition, const std::vector<int>& frames) {
    const int first = composition.first_frame;
    const std::int64_t last = std::int64_t{first} + composition.frames() - 1;
    std::vector<int> missing;
    for (const int frame : frames) {
        if (frame < first || frame > last) {
            missing.push_back(frame);
        }
    }
    if (!missing.empty()) {
        throw UsageError((missing.size() == 1 ? "there is no frame " : "there are no frames ") +
                         frame_range_text(missing) + "; the scene has frames " +
                         std::to_string(first) + " to " + std::to_string(last));
    }
}

std::vector<Shot> shots_of_frames(const host::Composition& composition,
                                  const std::vector<int>& frames, const FrameNames& names) {
    require_frames(composition, frames);
    std::vector<Shot> shots;
    shots.reserve(frames.size());
    for (const int frame : frames) {
        shots.push_back({composition.frame_time(frame - composition.first_frame),
                         frame,
                         names.name_of(frame),
                         0,
                         {}});
    }
    return shots;
}

}  // namespace

std::vector<Shot> plan_shots(const ShotRequest& request, const host::Composition& composition,
                             const FrameNames& names) {
    if (!request.frames.empty()) {
        if (!names.are_numbered()) {
            throw UsageError(
                "--frames writes a picture a frame: put #### for its number into the name \"" +
                names.pattern() + "\"");
        }
        return shots_of_frames(composition, parse_frame_range(request.frames), names);
    }
    if (!request.time) {
        return shots_of_frames(composition, {request.frame.value_or(composition.first_frame)},
                               names);
    }
    if (names.are_numbered()) {
        throw UsageError(
            "the name \"" + names.pattern() +
            "\" has a place for the number of a frame; use --frame or --frames with it");
    }
    if (!(*request.time >= 0.0 && *request.time <= composition.duration)) {
        throw UsageError("--time " + seconds_text(*request.time) +
                         " lies outside the scene's 0 to " + seconds_text(composition.duration));
    }
    return {{composition.time_at(*request.time), std::nullopt, names.pattern(), 0, {}}};
}

std::string shown_time(const Shot& shot) {
    const std::string seconds = seconds_text(shot.time.seconds());
    return shot.frame ? "frame " + std::to_string(*shot.frame) + " (" + seconds + ")" : seconds;
}

std::vector<host::Time> times_of(const std::vector<Shot>& shots) {
    std::vector<host::Time> times;
    times.reserve(shots.size());
    for (const Shot& shot : shots) {
        // A cube has six pictures of a moment.
        if (times.empty() || times.back().seconds() != shot.time.seconds()) {
            times.push_back(shot.time);
        }
    }
    return times;
}

}  // namespace lumivar
