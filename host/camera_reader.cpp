#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "scene_readers.h"
#include "sky_reader.h"
#include "track_reader.h"

namespace host {

namespace {

NumberRule angle_of_view() {
    return {"a number above 0 and below 180", [](double x) { return x > 0.0 && x < 180.0; }};
}

/// The three ways to place a camera exclude each other. A position goes with an aim or an
/// orientation.
void expect_one_placing(const JsonNode& node) {
    std::vector<std::string> found;
    if (node.has("look_at")) {
        found.emplace_back("\"look_at\"");
    }
    if (node.has("orientation")) {
        found.emplace_back(node.has("position") && !node.has("look_at")
                               ? "\"position\" with \"orientation\""
                               : "\"orientation\"");
    }
    if (node.has("matrix")) {
        if (node.has("position") && found.empty()) {
            found.emplace_back("\"position\"");
        }
        found.emplace_back("\"matrix\"");
    }
    if (found.size() > 1) {
        node.fail("one way to place the camera",
                  found.size() == 2
                      ? found[0] + " and " + found[1] + "; remove one of them"
                      : found[0] + ", " + found[1] + " and " + found[2] + "; remove two of them");
    }
}

Lens read_lens(const JsonNode& node, const Composition& composition) {
    if (node.has("zoom") && node.has("vertical_fov")) {
        node.fail("one way to say how much the camera sees",
                  "\"zoom\" and \"vertical_fov\"; remove one of them");
    }
    if (node.has("zoom")) {
        return Lens::zoom(read_track(node["zoom"], number_above_0()));
    }
    if (node.has("vertical_fov")) {
        return Lens::vertical_fov(read_track(node["vertical_fov"], angle_of_view()),
                                  composition.height);
    }
    return Lens::new_camera(composition.width);
}

/// Determinant of the part that turns and scales.
double linear_determinant(const Matrix& m) {
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
           m[2] * (m[4] * m[9] - m[5] * m[8]);
}

std::shared_ptr<const Camera> read_matrix(const JsonNode& node, Lens lens) {
    // The last column of a layer's matrix; numbers there mostly tell of a matrix written for column
    // vectors.
    std::vector<NumberRule> rules(16, any_number());
    for (const std::size_t i : {3U, 7U, 11U, 15U}) {
        const int value = i == 15 ? 1 : 0;
        rules[i] = {
            std::to_string(value) +
                " (the matrix's rows end in 0, 0, 0 and 1, and the translation is its last row)",
            [value](double x) { return x == value; }};
    }
    const auto elements = read_track_array<16>(node, rules);
    auto camera = matrix_camera(elements, std::move(lens));
    // The effect inverts the matrix and takes the inverse for unreliable below this determinant.
    constexpr double kSingular = 1e-10;
    for (const Track& element : elements) {
        for (const Track::Key& key : element.keys()) {
            if (std::fabs(linear_determinant(camera->layer_to_world(key.time))) < kSingular) {
                node.fail("a matrix that can be inverted",
                          "one that flattens space at " + json_text(key.time) + " s");
            }
        }
    }
    return camera;
}

std::shared_ptr<const Camera> read_placed(const JsonNode& node, Lens lens,
                                          const Composition& composition, const SkyReader& sky) {
    // A new camera stands where the composition's plane fills the picture.
    std::array<Track, 3> position = {composition.width / 2.0, composition.height / 2.0,
                                     -lens.zoom_at(0.0)};
    std::array<Track, 3> orientation;
    if (node.has("position")) {
        position = sky.read_position(node["position"]);
    }
    if (node.has("orientation")) {
        orientation = read_track_array<3>(node["orientation"], {any_number()});
    }
    return placed_camera(std::move(position), std::move(orientation), std::move(lens));
}

}  // namespace

std::shared_ptr<const Camera> read_camera(const JsonNode& node, const Composition& composition,
                                          const StarResolver& stars) {
    node.expect_members(
        {"look_at", "position", "unit", "orientation", "matrix", "zoom", "vertical_fov"});
    expect_one_placing(node);
    Lens lens = read_lens(node, composition);
    if (node.has("matrix")) {
        if (node.has("unit")) {
            node["unit"].fail("no \"unit\" beside \"matrix\", whose translation is in parsecs");
        }
        return read_matrix(node["matrix"], std::move(lens));
    }
    const SkyReader sky(node.has("unit") ? read_length_unit(node["unit"]) : 1.0, stars);
    if (node.has("look_at")) {
        std::array<Track, 3> position;
        if (node.has("position")) {
            position = sky.read_position(node["position"]);
        }
        return sky.read_look_at(node["look_at"], std::move(position), std::move(lens));
    }
    return read_placed(node, std::move(lens), composition, sky);
}

}  // namespace host
