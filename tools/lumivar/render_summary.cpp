#include "render_summary.h"

#include <base/string.h>

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <utility>

#include "counted.h"
#include "frame_range.h"

namespace lumivar {
namespace {

using nlohmann::json;

constexpr std::size_t kSlowest = 5;

/// A frame that was rendered; all have the same size. Nothing when none was.
const FrameReport* any_rendered(const RenderRun& run) {
    const auto found = std::find_if(run.reports().rbegin(), run.reports().rend(),
                                    [](const auto& entry) { return !entry.second.kept; });
    return found == run.reports().rend() ? nullptr : &found->second;
}

/// The places of the shots that took longest, longest first.
std::vector<std::size_t> slowest(const RenderRun& run) {
    std::vector<std::pair<double, std::size_t>> times;
    for (const auto& [item, report] : run.reports()) {
        if (!report.kept) {
            times.emplace_back(-(report.render_seconds + report.write_seconds), item);
        }
    }
    std::sort(times.begin(), times.end());
    times.resize(std::min(times.size(), kSlowest));
    std::vector<std::size_t> items;
    items.reserve(times.size());
    for (const auto& [time, item] : times) {
        items.push_back(item);
    }
    return items;
}

std::string slowest_table(const RenderRun& run) {
    std::string text = "  slowest frames   to draw  to write\n";
    for (const std::size_t item : slowest(run)) {
        const FrameReport& report = run.reports().at(item);
        text += String::fmt("  %-14s %7.2f s %7.2f s\n", run.name_of(item).c_str(),
                            report.render_seconds, report.write_seconds)
                    .c_str();
    }
    return text;
}

}  // namespace

std::string summary_text(const RenderRun& run, const std::vector<Shot>& shots,
                         const SummaryFacts& facts) {
    std::string text = (shots.size() == 1 ? shots.front().path : facts.output) + ": ";
    const FrameReport* const report = any_rendered(run);
    if (report != nullptr) {
        text += std::to_string(report->width) + "x" + std::to_string(report->height) + ", " +
                facts.depth + ", ";
    }
    text += shown_time(shots.front());
    if (shots.size() > 1) {
        text += " to " + shown_time(shots.back());
    }
    if (report != nullptr) {
        text += ", catalogue " +
                (report->catalogue.empty()
                     ? "none"
                     : report->catalogue + " (" + counted(report->stars, "star", "stars") + ")") +
                ", " + facts.picture;
    }
    if (run.kept() > 0) {
        text += ", " + counted(run.kept(), "frame", "frames") + " kept";
    }
    text += String::fmt(", %.2f s\n", facts.seconds).c_str();
    if (run.rendered() > kSlowest) {
        text += slowest_table(run);
    }
    return text;
}

std::string summary_json(const RenderRun& run, const std::vector<Shot>& shots,
                         const SummaryFacts& facts) {
    json object = {{"scene", facts.scene},     {"output", facts.output}, {"depth", facts.depth},
                   {"picture", facts.picture}, {"jobs", facts.jobs},     {"seconds", facts.seconds},
                   {"width", nullptr},         {"height", nullptr},      {"catalogue", nullptr}};
    if (const FrameReport* const report = any_rendered(run)) {
        object["width"] = report->width;
        object["height"] = report->height;
        if (!report->catalogue.empty()) {
            object["catalogue"] = {{"name", report->catalogue}, {"stars", report->stars}};
        }
    }
    const auto number_of = [&shots](std::size_t item) {
        return shots[item].frame ? json(*shots[item].frame) : json(nullptr);
    };
    json failed = json::array();
    for (const auto& [item, error] : run.failures()) {
        failed.push_back(
            {{"frame", number_of(item)}, {"picture", shots[item].path}, {"error", error}});
    }
    object["frames"] = {{"asked", shots.size()},
                        {"rendered", run.rendered()},
                        {"kept", run.kept()},
                        {"failed", failed}};
    std::vector<int> missing;
    for (const std::size_t item : run.missing()) {
        if (shots[item].frame) {
            missing.push_back(*shots[item].frame);
        }
    }
    missing.erase(std::unique(missing.begin(), missing.end()), missing.end());
    object["missing"] = frame_range_text(missing);
    object["slowest"] = json::array();
    for (const std::size_t item : slowest(run)) {
        const FrameReport& report = run.reports().at(item);
        object["slowest"].push_back({{"frame", number_of(item)},
                                     {"render_seconds", report.render_seconds},
                                     {"write_seconds", report.write_seconds}});
    }
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace lumivar
