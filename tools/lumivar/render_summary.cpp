#include "render_summary.h"

#include <base/string.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "counted.h"
#include "failure.h"
#include "frame_range.h"

namespace lumivar {
namespace {

using nlohmann::json;

constexpr std::size_t kSlowest = 5;

void keep_slowest(std::vector<RunSummary::Slow>& frames) {
    std::stable_sort(
        frames.begin(), frames.end(), [](const RunSummary::Slow& a, const RunSummary::Slow& b) {
            return a.render_seconds + a.write_seconds > b.render_seconds + b.write_seconds;
        });
    frames.resize(std::min(frames.size(), kSlowest));
}

/// Size and catalogue, of whichever knows them.
void take_frame(RunSummary& to, const RunSummary& from) {
    if (to.width == 0) {
        to.width = from.width;
        to.height = from.height;
        to.catalogue = from.catalogue;
        to.stars = from.stars;
    }
    to.depth = to.depth.empty() ? from.depth : to.depth;
    to.picture = to.picture.empty() ? from.picture : to.picture;
}

std::string slowest_table(const RunSummary& summary) {
    std::string text = "  slowest frames   to draw  to write\n";
    for (const RunSummary::Slow& frame : summary.slowest) {
        const std::string name =
            (frame.frame ? "frame " + std::to_string(*frame.frame) : summary.output) +
            (frame.face.empty() ? "" : " " + frame.face);
        text += String::fmt("  %-14s %7.2f s %7.2f s\n", name.c_str(), frame.render_seconds,
                            frame.write_seconds)
                    .c_str();
    }
    return text;
}

json number_or_null(const std::optional<int>& number) {
    return number ? json(*number) : json(nullptr);
}
std::optional<int> number_of(const json& value) {
    return value.is_number_integer() ? std::optional(value.get<int>()) : std::nullopt;
}

}  // namespace

RunSummary summary_of(const RenderRun& run, const std::vector<Shot>& shots,
                      const SummaryFacts& facts) {
    RunSummary summary;
    summary.scene = facts.scene;
    summary.output = facts.output;
    summary.depth = facts.depth;
    summary.picture = facts.picture;
    summary.jobs = facts.jobs;
    summary.seconds = facts.seconds;
    summary.asked = shots.size();
    summary.rendered = static_cast<std::size_t>(run.rendered());
    summary.kept = static_cast<std::size_t>(run.kept());
    for (const auto& [item, report] : run.reports()) {
        if (!report.kept) {
            // All have the same size.
            summary.width = report.width;
            summary.height = report.height;
            summary.catalogue = report.catalogue;
            summary.stars = report.stars;
            summary.render_seconds += report.render_seconds;
            summary.write_seconds += report.write_seconds;
            summary.slowest.push_back(
                {shots[item].frame, shots[item].face, report.render_seconds, report.write_seconds});
        }
    }
    keep_slowest(summary.slowest);
    for (const auto& [item, error] : run.failures()) {
        summary.failed.push_back({shots[item].frame, shots[item].path, error});
    }
    for (const std::size_t item : run.missing()) {
        if (shots[item].frame) {
            summary.missing.push_back(*shots[item].frame);
        }
    }
    summary.missing.erase(std::unique(summary.missing.begin(), summary.missing.end()),
                          summary.missing.end());
    return summary;
}

std::string summary_text(const RunSummary& summary, const std::vector<Shot>& shots) {
    std::string text = (shots.size() == 1 ? shots.front().path : summary.output) + ": ";
    if (summary.width != 0) {
        text += std::to_string(summary.width) + "x" + std::to_string(summary.height) + ", " +
                summary.depth + ", ";
    }
    text += shown_time(shots.front());
    if (shots.size() > 1) {
        text += " to " + shown_time(shots.back());
    }
    if (summary.width != 0) {
        text += ", catalogue " +
                (summary.catalogue.empty()
                     ? "none"
                     : summary.catalogue + " (" + counted(summary.stars, "star", "stars") + ")") +
                ", " + summary.picture;
    }
    if (summary.kept > 0) {
        text += ", " + counted(summary.kept, "frame", "frames") + " kept";
    }
    text += String::fmt(", %.2f s\n", summary.seconds).c_str();
    if (summary.rendered > kSlowest) {
        text += slowest_table(summary);
    }
    return text;
}

std::string summary_json(const RunSummary& summary) {
    json object = {{"scene", summary.scene},
                   {"output", summary.output},
                   {"depth", summary.depth},
                   {"picture", summary.picture},
                   {"jobs", summary.jobs},
                   {"seconds", summary.seconds},
                   {"render_seconds", summary.render_seconds},
                   {"write_seconds", summary.write_seconds},
                   {"width", nullptr},
                   {"height", nullptr},
                   {"catalogue", nullptr},
                   {"missing", frame_range_text(summary.missing)},
                   {"slowest", json::array()}};
    if (summary.width != 0) {
        object["width"] = summary.width;
        object["height"] = summary.height;
    }
    if (!summary.catalogue.empty()) {
        object["catalogue"] = {{"name", summary.catalogue}, {"stars", summary.stars}};
    }
    json failed = json::array();
    for (const RunSummary::Failed& picture : summary.failed) {
        failed.push_back({{"frame", number_or_null(picture.frame)},
                          {"picture", picture.picture},
                          {"error", picture.error}});
    }
    object["frames"] = {{"asked", summary.asked},
                        {"rendered", summary.rendered},
                        {"kept", summary.kept},
                        {"failed", failed}};
    for (const RunSummary::Slow& frame : summary.slowest) {
        object["slowest"].push_back({{"frame", number_or_null(frame.frame)},
                                     {"render_seconds", frame.render_seconds},
                                     {"write_seconds", frame.write_seconds}});
        if (!frame.face.empty()) {
            object["slowest"].back()["face"] = frame.face;
        }
    }
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<RunSummary> parse_summary(const std::string& text) {
    try {
        const json object = json::parse(text);
        RunSummary summary;
        object.at("scene").get_to(summary.scene);
        object.at("output").get_to(summary.output);
        object.at("depth").get_to(summary.depth);
        object.at("picture").get_to(summary.picture);
        object.at("jobs").get_to(summary.jobs);
        object.at("seconds").get_to(summary.seconds);
        object.at("render_seconds").get_to(summary.render_seconds);
        object.at("write_seconds").get_to(summary.write_seconds);
        if (!object.at("width").is_null()) {
            object.at("width").get_to(summary.width);
            object.at("height").get_to(summary.height);
        }
        if (const json& catalogue = object.at("catalogue"); !catalogue.is_null()) {
            catalogue.at("name").get_to(summary.catalogue);
            catalogue.at("stars").get_to(summary.stars);
        }
        const json& frames = object.at("frames");
        frames.at("asked").get_to(summary.asked);
        frames.at("rendered").get_to(summary.rendered);
        frames.at("kept").get_to(summary.kept);
        for (const json& picture : frames.at("failed")) {
            summary.failed.push_back({number_of(picture.at("frame")),
                                      picture.at("picture").get<std::string>(),
                                      picture.at("error").get<std::string>()});
        }
        if (const auto missing = object.at("missing").get<std::string>(); !missing.empty()) {
            summary.missing = parse_frame_range(missing, "missing frames");
        }
        for (const json& frame : object.at("slowest")) {
            summary.slowest.push_back({number_of(frame.at("frame")), frame.value("face", ""),
                                       frame.at("render_seconds").get<double>(),
                                       frame.at("write_seconds").get<double>()});
        }
        return summary;
    } catch (const json::exception&) {
        return std::nullopt;
    } catch (const Failure&) {
        return std::nullopt;
    }
}

RunSummary together_in_turn(const std::vector<RunSummary>& tries) {
    RunSummary whole;
    for (const RunSummary& one : tries) {
        const std::size_t rendered_before = whole.rendered;
        const double render_before = whole.render_seconds;
        const double write_before = whole.write_seconds;
        std::vector<RunSummary::Slow> slowest = std::move(whole.slowest);
        slowest.insert(slowest.end(), one.slowest.begin(), one.slowest.end());
        keep_slowest(slowest);
        RunSummary sum = one;
        take_frame(sum, whole);
        sum.slowest = std::move(slowest);
        sum.rendered = rendered_before + one.rendered;
        sum.render_seconds += render_before;
        sum.write_seconds += write_before;
        // What an earlier try has rendered this one found there.
        sum.kept = one.kept - std::min(one.kept, rendered_before);
        whole = std::move(sum);
    }
    return whole;
}

void add_part(RunSummary& whole, const RunSummary& part) {
    take_frame(whole, part);
    whole.jobs = std::max(whole.jobs, part.jobs);
    whole.rendered += part.rendered;
    whole.render_seconds += part.render_seconds;
    whole.write_seconds += part.write_seconds;
    whole.kept += part.kept;
    whole.failed.insert(whole.failed.end(), part.failed.begin(), part.failed.end());
    whole.slowest.insert(whole.slowest.end(), part.slowest.begin(), part.slowest.end());
    keep_slowest(whole.slowest);
}

}  // namespace lumivar
