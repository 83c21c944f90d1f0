#include "render_run.h"

#include <algorithm>
#include <filesystem>

#include "counted.h"
#include "frame_range.h"
#include "working_folder.h"

namespace lumivar {

RenderRun::RenderRun(const std::vector<Shot>& shots, ProgressStyle style, int jobs)
    : shots_(shots), progress_(style, shots.size(), jobs) {}

ShotStanding RenderRun::standing() const {
    return {rendered_ + kept_ + failures_.size(), shots_.size(), rendered_, stars_,
            progress_.seconds()};
}

void RenderRun::tell(std::size_t item, const char* state, const std::string& error,
                     double seconds) {
    const Shot& shot = shots_[item];
    progress_.tell({shot.frame, shot.path, state, error, seconds}, standing());
}

void RenderRun::done(std::size_t item, const std::string& text) {
    const FrameReport report = parse_report(text);
    reports_[item] = report;
    if (report.kept) {
        ++kept_;
        tell(item, "kept", "", 0.0);
    } else {
        ++rendered_;
        stars_ += report.stars;
        tell(item, "rendered", "", report.render_seconds + report.write_seconds);
    }
}

void RenderRun::failed(std::size_t item, const std::string& text) {
    failures_[item] = text;
    last_failure_ = text;
    // Of a single picture this is the whole message, which the end of the run tells.
    if (shots_.size() > 1) {
        progress_.say(name_of(item) + ": " + text);
    }
    tell(item, "failed", text, 0.0);
}

void RenderRun::tried_again(std::size_t item, const std::string& how) {
    progress_.say(name_of(item) + ": " + how + "; it is tried once more");
    tell(item, "retried", how, 0.0);
}

void RenderRun::given_up(std::size_t item, const std::string& how) {
    failed(item, how + "; for the second time, so it is left");
}

void RenderRun::worker_ended() {
    // What one that was killed hard has left half-written.
    const std::filesystem::path folder = std::filesystem::path(shots_.front().path).parent_path();
    remove_orphans(folder.empty() ? "." : folder);
}

void RenderRun::said(const std::string& line) {
    // Every worker says what the plug-in makes it say.
    if (said_.insert(line).second) {
        progress_.say(line);
    }
}

void RenderRun::waited() { progress_.update(standing()); }

void RenderRun::tell_interruption(const std::string& remedy) {
    if (shots_.size() > 1) {
        progress_.say("interrupted; " + std::to_string(shots_.size() - missing().size()) + " of " +
                      counted(shots_.size(), "frame is", "frames are") + " there; " + remedy +
                      " renders the others");
    }
}

std::vector<std::size_t> RenderRun::missing() const {
    std::vector<std::size_t> items;
    for (std::size_t item = 0; item < shots_.size(); ++item) {
        if (reports_.count(item) == 0) {
            items.push_back(item);
        }
    }
    return items;
}

std::string RenderRun::name_of(std::size_t item) const {
    const std::string& face = shots_[item].face;
    return names_of({item}) + (face.empty() ? "" : " " + face);
}

std::string RenderRun::names_of(const std::vector<std::size_t>& items) const {
    std::vector<int> frames;
    for (const std::size_t item : items) {
        if (!shots_[item].frame) {
            return shots_[item].path;
        }
        frames.push_back(*shots_[item].frame);
    }
    // A cube has six pictures of a frame.
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    return (frames.size() == 1 ? "frame " : "frames ") + frame_range_text(frames);
}

}  // namespace lumivar
