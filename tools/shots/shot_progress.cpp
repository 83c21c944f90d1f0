#include "shot_progress.h"

#include <base/string.h>
#include <host/printable.h>

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace lumivar {
namespace {

using nlohmann::json;

constexpr std::chrono::seconds kBetweenLogLines{10};

/// Frames a second; nothing before the first.
std::optional<double> rate_of(const ShotStanding& standing) {
    if (standing.rendered == 0 || !(standing.seconds > 0.0)) {
        return std::nullopt;
    }
    return static_cast<double>(standing.rendered) / standing.seconds;
}

std::string stars_text(double per_second) {
    constexpr double kThousand = 1e3;
    constexpr double kMillion = 1e6;
    if (per_second >= kMillion) {
        return String::fmt("%.1fM stars/s", per_second / kMillion).c_str();
    }
    if (per_second >= kThousand) {
        return String::fmt("%.0fk stars/s", per_second / kThousand).c_str();
    }
    return String::fmt("%.0f stars/s", per_second).c_str();
}

void print_json(const json& object) {
    std::fprintf(stderr, "%s\n",
                 object.dump(-1, ' ', false, json::error_handler_t::replace).c_str());
    std::fflush(stderr);
}

}  // namespace

std::string shot_progress_text(const ShotStanding& standing) {
    std::string text =
        String::fmt("%llu/%llu frames", static_cast<unsigned long long>(standing.settled),
                    static_cast<unsigned long long>(standing.total))
            .c_str();
    if (const auto rate = rate_of(standing)) {
        const double left = static_cast<double>(standing.total - standing.settled) / *rate;
        text += String::fmt(", %.1f frames/s, ", *rate).c_str();
        text += stars_text(static_cast<double>(standing.stars) / standing.seconds);
        text += String::fmt(", %.0f s left", left).c_str();
    }
    return text;
}

ShotProgress::ShotProgress(ProgressStyle style, std::uint64_t total, int jobs)
    : style_(style), start_(Clock::now()), last_log_(start_) {
    if (style_ == ProgressStyle::Json) {
        print_json({{"event", "start"}, {"total", total}, {"jobs", jobs}});
    }
}

void ShotProgress::tell(const FrameNews& news, const ShotStanding& standing) {
    if (style_ != ProgressStyle::Json) {
        update(standing);
        return;
    }
    json object = {{"event", "frame"},
                   {"frame", nullptr},
                   {"picture", news.picture},
                   {"state", news.state},
                   {"settled", standing.settled},
                   {"total", standing.total}};
    if (news.frame) {
        object["frame"] = *news.frame;
    }
    if (!news.error.empty()) {
        object["error"] = news.error;
    }
    if (news.state == "rendered") {
        object["seconds"] = news.seconds;
    }
    if (const auto rate = rate_of(standing)) {
        object["frames_per_second"] = *rate;
        object["seconds_left"] = static_cast<double>(standing.total - standing.settled) / *rate;
    }
    print_json(object);
}

void ShotProgress::update(const ShotStanding& standing) {
    if (style_ != ProgressStyle::Text) {
        return;
    }
    if (line_.is_shown()) {
        if (line_.is_due()) {
            line_.show(shot_progress_text(standing));
        }
    } else if (standing.total > 1 && Clock::now() - last_log_ >= kBetweenLogLines) {
        last_log_ = Clock::now();
        std::fprintf(stderr, "lumivar: %s\n", shot_progress_text(standing).c_str());
    }
}

void ShotProgress::say(const std::string& line) {
    if (style_ == ProgressStyle::Json) {
        print_json({{"event", "message"}, {"text", host::printable(line)}});
        return;
    }
    line_.wipe();
    const bool is_ours = line.rfind("lumivar: ", 0) == 0;
    std::fprintf(stderr, "%s%s\n", is_ours ? "" : "lumivar: ", host::printable(line).c_str());
}

double ShotProgress::seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

}  // namespace lumivar
