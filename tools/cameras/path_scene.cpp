#include "path_scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "failure.h"
#include "rotation_order.h"
#include "text_numbers.h"

namespace lumivar {
namespace {

using OrderedJson = nlohmann::ordered_json;

/// "[1, 2, 3]".
std::string listed(std::span<const double> numbers) {
    std::string text = "[";
    for (const double number : numbers) {
        text.append(text.size() == 1 ? "" : ", ").append(number_text(number));
    }
    return text + "]";
}

/// The value alone where all are the same, else a key for each sample, a line each.
std::string keyed(const std::vector<host::CameraSample>& samples,
                  const std::vector<std::string>& values) {
    if (std::all_of(values.begin(), values.end(),
                    [&](const std::string& value) { return value == values.front(); })) {
        return values.front();
    }
    std::string text = "{\"keys\": [";
    for (std::size_t i = 0; i < samples.size(); ++i) {
        text.append(i == 0 ? "\n" : ",\n")
            .append("      {\"time\": ")
            .append(number_text(samples[i].time))
            .append(", \"value\": ")
            .append(values[i])
            .append("}");
    }
    return text + "]}";
}

}  // namespace

std::string scene_with_path(const std::string& base, const std::string& source,
                            const std::vector<host::CameraSample>& samples, Placing placing) {
    // The host's orientation turns about z first, then y, then x.
    const RotationOrder order("ZYX");
    std::vector<std::string> positions, orientations, matrices, zooms;
    std::array<double, 3> angles = {};
    for (const host::CameraSample& sample : samples) {
        const host::Matrix& matrix = sample.layer_to_world;
        angles = order.angles(matrix, angles);
        positions.push_back(listed(std::span(matrix).subspan(12, 3)));
        matrices.push_back(listed(matrix));
        orientations.push_back(listed(angles));
        zooms.push_back(number_text(sample.zoom));
    }
    std::string text = "{\n";
    try {
        const OrderedJson scene = OrderedJson::parse(base, nullptr, true, true);
        for (const auto& [name, value] : scene.items()) {
            if (name != "camera") {
                text.append("  ").append(OrderedJson(name).dump()).append(": ");
                text.append(value.dump()).append(",\n");
            }
        }
    } catch (const nlohmann::json::exception&) {
        throw Failure(source + ": this is no scene");
    }
    text.append("  \"camera\": {\n");
    if (placing == Placing::Angles) {
        text.append("    \"position\": ").append(keyed(samples, positions));
        text.append(",\n    \"orientation\": ").append(keyed(samples, orientations));
    } else {
        text.append("    \"matrix\": ").append(keyed(samples, matrices));
    }
    text.append(",\n    \"zoom\": ").append(keyed(samples, zooms));
    return text + "\n  }\n}\n";
}

std::string new_scene(double frames_per_second, double last_second) {
    const double frames = std::max(1.0, std::floor(last_second * frames_per_second + 1e-6) + 1.0);
    return "{\"composition\": {\"width\": 1920, \"height\": 1080, \"frame_rate\": " +
           number_text(frames_per_second) +
           ", \"duration\": " + number_text(frames / frames_per_second) +
           "}, \"controls\": {\"Parallax Crush\": 0}}";
}

}  // namespace lumivar
