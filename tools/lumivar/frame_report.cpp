#include "frame_report.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

namespace lumivar {

using nlohmann::json;

namespace {
constexpr float kBrightest = std::numeric_limits<float>::max();
}  // namespace

std::string report_text(const FrameReport& report) {
    const json object = {{"kept", report.kept},
                         {"render_seconds", report.render_seconds},
                         {"write_seconds", report.write_seconds},
                         {"width", report.width},
                         {"height", report.height},
                         // The format has no infinity.
                         {"brightest", std::min(report.brightest, kBrightest)},
                         {"catalogue", report.catalogue},
                         {"stars", report.stars}};
    // A catalogue's name may be no text at all.
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

FrameReport parse_report(const std::string& text) {
    const json object = json::parse(text);
    FrameReport report;
    object.at("kept").get_to(report.kept);
    object.at("render_seconds").get_to(report.render_seconds);
    object.at("write_seconds").get_to(report.write_seconds);
    object.at("width").get_to(report.width);
    object.at("height").get_to(report.height);
    object.at("brightest").get_to(report.brightest);
    object.at("catalogue").get_to(report.catalogue);
    object.at("stars").get_to(report.stars);
    return report;
}

}  // namespace lumivar
