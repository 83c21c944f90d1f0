#include <cmath>
#include <cstdint>
#include <limits>

#include "scene_readers.h"
#include "track_reader.h"

namespace host {

namespace {

NumberRule size_in_pixels() {
    return {"a whole number from 1 to 30000",
            [](double x) { return x >= 1.0 && x <= 30000.0 && x == std::floor(x); }};
}

NumberRule frame_number() {
    return {"a whole number from -1000000000 to 1000000000",
            [](double x) { return x >= -1e9 && x <= 1e9 && x == std::floor(x); }};
}

NumberRule rate() {
    return {"a number from 0.001 to 999", [](double x) { return x >= 0.001 && x <= 999.0; }};
}

}  // namespace

FrameRate frame_rate_of(double per_second) {
    for (const std::uint32_t whole : {24U, 30U, 48U, 60U, 120U}) {
        const double nominal = std::round(whole * 1000.0 / 1001.0 * 1000.0) / 1000.0;
        if (std::fabs(per_second - nominal) <= 0.001) {
            return {whole * 1000, 1001};
        }
    }
    constexpr std::uint32_t kLargestDenominator = 1000;
    constexpr double kSame = 1e-9;  // lower terms win among equals
    FrameRate best;
    double best_error = std::numeric_limits<double>::infinity();
    for (std::uint32_t den = 1; den <= kLargestDenominator; ++den) {
        const double num = std::round(per_second * den);
        const double error = std::fabs(num / den - per_second);
        if (num >= 1.0 && error < best_error - kSame) {
            best = {static_cast<std::uint32_t>(num), den};
            best_error = error;
        }
    }
    return best;
}

Composition read_composition(const JsonNode& node) {
    node.expect_members({"width", "height", "frame_rate", "duration", "first_frame", "motion_blur",
                         "shutter_angle", "shutter_phase"});
    Composition composition;
    if (node.has("width")) {
        composition.width = static_cast<int>(read_constant(node["width"], size_in_pixels()));
    }
    if (node.has("height")) {
        composition.height = static_cast<int>(read_constant(node["height"], size_in_pixels()));
    }
    if (node.has("frame_rate")) {
        composition.frame_rate = frame_rate_of(read_constant(node["frame_rate"], rate()));
    }
    if (node.has("duration")) {
        const JsonNode duration = node["duration"];
        composition.duration = read_constant(duration, number_above_0());
        // Times are 32-bit counts; the widest shutter closes three frames after the last.
        const FrameRate& frames = composition.frame_rate;
        const double longest =
            (static_cast<double>(std::numeric_limits<std::int32_t>::max()) - 3.0 * frames.den) /
            frames.num;
        if (composition.duration > longest) {
            duration.fail("at most " + json_text(std::floor(longest)) +
                          " seconds at this frame rate");
        }
    }
    if (node.has("first_frame")) {
        composition.first_frame =
            static_cast<int>(read_constant(node["first_frame"], frame_number()));
    }
    if (node.has("motion_blur")) {
        if (!node["motion_blur"].is_boolean()) {
            node["motion_blur"].fail("true or false");
        }
        composition.motion_blur = node["motion_blur"].boolean();
    }
    if (node.has("shutter_angle")) {
        composition.shutter_angle = read_track(node["shutter_angle"], number_from(0, 720));
    }
    if (node.has("shutter_phase")) {
        composition.shutter_phase = read_track(node["shutter_phase"], number_from(-360, 360));
    }
    return composition;
}

}  // namespace host
