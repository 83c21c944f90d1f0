#include "star_tour.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "failure.h"
#include "star_resolver.h"
#include "text_numbers.h"

namespace lumivar {
namespace {

std::string unknown_star(const std::string& name) {
    const host::StarAnswer answer = resolve_star(name);
    return "no star is called \"" + name + "\"" +
           (answer.nearest ? "; did you mean \"" + *answer.nearest + "\"?"
                           : "; names are as in data/bright-stars.csv, or HIP and a number");
}

void require(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw UsageError(otherwise);
    }
}

void require_possible(const StarTour& tour) {
    require(!tour.stops.empty(), "a tour needs at least one star");
    require(tour.hold >= 0.0 && std::isfinite(tour.hold), "--hold takes seconds, 0 or more");
    require(tour.vertical_fov > 0.0 && tour.vertical_fov < 180.0,
            "--fov takes degrees, above 0 and below 180");
    require(tour.frame_rate >= 0.001 && tour.frame_rate <= 999.0,
            "--frame-rate takes frames a second, 0.001 to 999");
    require(tour.stops.front().time >= 0.0,
            tour.stops.front().said + ": a tour starts at 0 seconds or later");
    for (std::size_t i = 1; i < tour.stops.size(); ++i) {
        const TourStop& before = tour.stops[i - 1];
        const TourStop& stop = tour.stops[i];
        const std::string rest =
            tour.hold > 0.0 ? " and its rest of " + number_text(tour.hold) + " s" : "";
        require(stop.time > before.time + tour.hold,
                stop.said + ": its time must come after " + before.said + rest);
    }
}

std::string key_text(double time, const TourStop& stop) {
    // The labels are letters, digits and blanks: nothing in them has to be escaped.
    return R"({"time": )" + number_text(time) + R"(, "value": {"star": ")" +
           star_label(*stop.star) + R"("}})";
}

}  // namespace

TourStop parse_tour_stop(const std::string& text) {
    const std::size_t at = text.rfind('@');
    const std::optional<double> seconds =
        at == std::string::npos ? std::nullopt
                                : finite_number(std::string_view(text).substr(at + 1));
    if (!seconds) {
        throw UsageError("a stop is a star and a time, as in Rigel@2, not \"" + text + "\"");
    }
    const std::string name = text.substr(0, at);
    const NamedStar* const star = find_star(name);
    if (star == nullptr) {
        throw UsageError(unknown_star(name));
    }
    return {star, *seconds, text};
}

std::vector<TourStop> read_tour_stops(std::istream& input, const std::string& source) {
    std::vector<TourStop> stops;
    std::string line;
    for (int number = 1; std::getline(input, line); ++number) {
        const std::string text(trimmed(std::string_view(line).substr(0, line.find('#'))));
        if (text.empty()) {
            continue;
        }
        const std::string place = source + ": line " + std::to_string(number) + ": ";
        const std::size_t blank = text.find_first_of(" \t");
        const std::optional<double> seconds = finite_number(text.substr(0, blank));
        if (!seconds || blank == std::string::npos) {
            std::string fault = place;
            fault.append("expected a time and a star, as in \"2.5 Rigel\", found \"");
            throw Failure(fault.append(text).append("\""));
        }
        const std::string name = text.substr(text.find_first_not_of(" \t", blank));
        const NamedStar* const star = find_star(name);
        if (star == nullptr) {
            throw Failure(place + unknown_star(name));
        }
        stops.push_back({star, *seconds, "line " + std::to_string(number) + " (" + text + ")"});
    }
    if (stops.empty()) {
        throw Failure(source + ": no line names a star; write lines as \"2.5 Rigel\"");
    }
    return stops;
}

std::string tour_scene(const StarTour& tour) {
    require_possible(tour);
    // One frame more, so that the last one shows the last star.
    const double duration = tour.stops.back().time + tour.hold + 1.0 / tour.frame_rate;
    std::string keys;
    for (const TourStop& stop : tour.stops) {
        keys.append(keys.empty() ? "" : ",\n").append("      ").append(key_text(stop.time, stop));
        if (tour.hold > 0.0) {
            keys.append(",\n      ").append(key_text(stop.time + tour.hold, stop));
        }
    }
    return "// From star to star; see scenes/README.md for what can be changed here.\n"
           "{\n  \"composition\": {\"width\": " +
           std::to_string(tour.width) + ", \"height\": " + std::to_string(tour.height) +
           ", \"frame_rate\": " + number_text(tour.frame_rate) +
           ",\n                  \"duration\": " + number_text(duration) +
           ", \"motion_blur\": true, \"shutter_angle\": 180},\n"
           "  \"camera\": {\n    \"look_at\": {\"interpolation\": \"smooth\", \"keys\": [\n" +
           keys + "\n    ]},\n    \"vertical_fov\": " + number_text(tour.vertical_fov) +
           "\n  },\n  \"controls\": {\"Motion Blur Segments\": 8}\n}\n";
}

}  // namespace lumivar
