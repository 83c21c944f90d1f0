#include "golden_scene.h"

#include <cmath>
#include <cstddef>
#include <fstream>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <numbers>
#include <stdexcept>

namespace golden {

namespace {

using nlohmann::json;
using reference::Camera;
using reference::Projection;
using reference::Settings;
using reference::Triple;

constexpr double degree = std::numbers::pi / 180;

/// A number, or keys joined by straight lines, at a time in seconds.
double value_at(const json& node, double seconds) {
    if (node.is_number()) {
        return node.get<double>();
    }
    const json& keys = node.at("keys");
    const auto time = [&](std::size_t i) { return keys.at(i).at("time").get<double>(); };
    const auto value = [&](std::size_t i) { return keys.at(i).at("value").get<double>(); };
    if (seconds <= time(0)) {
        return value(0);
    }
    for (std::size_t i = 1; i < keys.size(); ++i) {
        if (seconds <= time(i)) {
            const double part = (seconds - time(i - 1)) / (time(i) - time(i - 1));
            return value(i - 1) * (1 - part) + value(i) * part;
        }
    }
    return value(keys.size() - 1);
}

using Reader = std::function<void(const json&)>;

/// Hands each member to its reader.
void read_members(const json& object, const std::map<std::string, Reader>& readers) {
    for (const auto& [name, node] : object.items()) {
        const auto reader = readers.find(name);
        if (reader == readers.end()) {
            throw std::runtime_error("the golden scenes know no \"" + name + "\"");
        }
        reader->second(node);
    }
}

Reader number(double& to, double seconds = 0) {
    return [&to, seconds](const json& node) { to = value_at(node, seconds); };
}

/// The axes `from` towards `to` by `angle` degrees.
void turn(Camera& camera, std::size_t from, std::size_t to, double angle) {
    const double c = std::cos(angle * degree);
    const double s = std::sin(angle * degree);
    for (Triple* axis : {&camera.right, &camera.up, &camera.forward}) {
        Triple& v = *axis;
        const double along_from = v[from];
        v[from] = c * along_from - s * v[to];
        v[to] = s * along_from + c * v[to];
    }
}

/// The camera at one moment. The scene's y points down and the sky's up.
Camera camera_at(const json& node, double seconds, int width, int height) {
    double ra = 0;
    double dec = 0;
    double roll = 0;
    // 50 mm on film 36 mm wide.
    double zoom = width * 50.0 / 36;
    Triple position{};
    Triple orientation{};
    bool placed = false;
    const auto triple = [&](Triple& to) {
        return [&](const json& numbers) {
            placed = true;
            for (std::size_t i = 0; i < 3; ++i) {
                to[i] = value_at(numbers.at(i), seconds);
            }
        };
    };
    read_members(node, {{"look_at",
                         [&](const json& place) {
                             read_members(place, {{"ra", number(ra, seconds)},
                                                  {"dec", number(dec, seconds)},
                                                  {"roll", number(roll, seconds)}});
                         }},
                        {"position", triple(position)},
                        {"orientation", triple(orientation)},
                        {"zoom", number(zoom, seconds)},
                        {"vertical_fov", [&](const json& angle) {
                             zoom = height / 2.0 / std::tan(value_at(angle, seconds) / 2 * degree);
                         }}});
    const double focal = zoom / (height / 2.0);
    if (!placed) {
        // A camera that turns clockwise brings the west, on the right, to the top.
        return reference::look_at(ra, dec, -roll, focal);
    }
    Camera camera;
    camera.focal = focal;
    camera.position = {position[0], -position[1], position[2]};
    // A positive z leans the top to the right, y turns the view to the right, x lifts it: in this
    // order, each about the axes that stand still.
    turn(camera, 1, 0, orientation[2]);
    turn(camera, 2, 0, orientation[1]);
    turn(camera, 2, 1, orientation[0]);
    return camera;
}

Projection projection(const std::string& name) {
    static const std::map<std::string, Projection> known = {{"Persp", Projection::Perspective},
                                                            {"HemiSph", Projection::Hemisphere},
                                                            {"AzEqu", Projection::Equidistant}};
    return known.at(name);
}

}  // namespace

Frame load_frame(const std::string& scene_file, int index) {
    std::ifstream in(scene_file);
    if (!in) {
        throw std::runtime_error("cannot read " + scene_file);
    }
    const json scene = json::parse(in, nullptr, true, /*ignore_comments=*/true);

    double width = 0;
    double height = 0;
    double rate = 0;
    double duration = 0;
    double angle = 180;
    double phase = -90;
    bool motion_blur = false;
    Frame frame;
    Settings& settings = frame.settings;
    double segments = 1;
    json camera;
    read_members(scene.at("composition"),
                 {{"width", number(width)},
                  {"height", number(height)},
                  {"frame_rate", number(rate)},
                  {"duration", number(duration)},
                  {"motion_blur", [&](const json& on) { motion_blur = on.get<bool>(); }},
                  {"shutter_angle", number(angle)},
                  {"shutter_phase", number(phase)}});
    const double seconds = index / rate;
    const auto controls = [&](const json& node) {
        read_members(
            node,
            {{"Star Brightness", number(settings.brightness, seconds)},
             {"Brightness Bias", number(settings.bias, seconds)},
             {"Star Saturation", number(settings.saturation, seconds)},
             {"Tint Strength", number(settings.tint_strength, seconds)},
             {"Tint Color",
              [&](const json& codes) {
                  for (std::size_t i = 0; i < 3; ++i) {
                      // The effect takes a colour control's codes for linear light.
                      settings.tint[i] = value_at(codes.at(i), seconds) / 255;
                  }
              }},
             {"Maximum Luminance", number(settings.max_luminance, seconds)},
             {"Luminance Threshold", number(settings.threshold, seconds)},
             {"Star Spot Size", number(settings.spot_size, seconds)},
             {"Star Aspect Ratio", number(settings.aspect_ratio, seconds)},
             {"Motion Blur Segments", number(segments, seconds)},
             {"Projection",
              [&](const json& name) { settings.projection = projection(name.get<std::string>()); }},
             {"Parallax Crush", number(settings.parallax_crush, seconds)}});
    };
    read_members(scene, {{"composition", [](const json&) {}},
                         {"camera", [&](const json& node) { camera = node; }},
                         {"controls", controls}});
    settings.width = static_cast<int>(width);
    settings.height = static_cast<int>(height);

    const double opening = seconds + phase / 360 / rate;
    const double open = angle / 360 / rate;
    const int parts = motion_blur && open > 0 ? static_cast<int>(segments) : 0;
    for (int i = 0; i <= parts; ++i) {
        // Without parts there is the opening alone.
        const double moment = opening + (parts > 0 ? open * i / parts : 0.0);
        frame.cameras.push_back(camera_at(camera, moment, settings.width, settings.height));
    }
    return frame;
}

}  // namespace golden
