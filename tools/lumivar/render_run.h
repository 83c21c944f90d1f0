// A run over the frames of a shot as the user sees it: progress, failures, and what came of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "frame_report.h"
#include "shot_plan.h"
#include "shot_progress.h"
#include "worker_pool.h"

namespace lumivar {

class RenderRun : public PoolEvents {
public:
    /// `shots` must outlive the object.
    RenderRun(const std::vector<Shot>& shots, ProgressStyle style, int jobs);

    void done(std::size_t item, const std::string& text) override;
    void failed(std::size_t item, const std::string& text) override;
    void tried_again(std::size_t item, const std::string& how) override;
    void given_up(std::size_t item, const std::string& how) override;
    void worker_ended() override;
    void said(const std::string& line) override;
    void waited() override;

    /// No progress is shown any more.
    void end_progress() { progress_.end(); }
    /// Says that the run was interrupted, how far it came and how to go on.
    /// `remedy`: what renders the others.
    void tell_interruption(const std::string& remedy);

    std::uint64_t rendered() const { return rendered_; }
    std::uint64_t kept() const { return kept_; }
    /// By the place of the shot.
    const std::map<std::size_t, FrameReport>& reports() const { return reports_; }
    const std::map<std::size_t, std::string>& failures() const { return failures_; }
    /// Of the shot that failed last.
    const std::string& last_failure() const { return last_failure_; }
    /// The shots whose picture is not there.
    std::vector<std::size_t> missing() const;
    /// A shot's name in messages: "frame 12", or its picture.
    std::string name_of(std::size_t item) const;
    /// Shots by their names: "frames 12,17-20".
    std::string names_of(const std::vector<std::size_t>& items) const;
    double seconds() const { return progress_.seconds(); }

private:
    ShotStanding standing() const;
    void tell(std::size_t item, const char* state, const std::string& error, double seconds);

    const std::vector<Shot>& shots_;
    ShotProgress progress_;
    std::map<std::size_t, FrameReport> reports_;
    std::map<std::size_t, std::string> failures_;
    std::string last_failure_;
    std::set<std::string> said_;
    std::uint64_t rendered_ = 0;
    std::uint64_t kept_ = 0;
    std::uint64_t stars_ = 0;
};

}  // namespace lumivar
