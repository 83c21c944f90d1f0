#include "dumped_scenes.h"

#include <host/camera.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "support/random_numbers.h"

namespace processors {

namespace {

using host::Track;
using reference::Projection;

constexpr int kWidth = 320;
constexpr int kHeight = 180;

struct Kind {
    const char* name;
    Projection projection;
    const char* choice;
    int segments;      ///< 0: motion blur is off
    double turn = 20;  ///< fastest roll, degrees a second
};

constexpr Kind kKinds[] = {
    {"persp-still", Projection::Perspective, "Persp", 0},
    {"persp-1-segment", Projection::Perspective, "Persp", 1},
    {"persp-16-segments", Projection::Perspective, "Persp", 16},
    {"hemisph-still", Projection::Hemisphere, "HemiSph", 0},
    {"hemisph-1-segment", Projection::Hemisphere, "HemiSph", 1},
    {"hemisph-5-segments", Projection::Hemisphere, "HemiSph", 5},
    {"azequ-still", Projection::Equidistant, "AzEqu", 0},
    {"azequ-1-segment", Projection::Equidistant, "AzEqu", 1},
    {"azequ-5-segments", Projection::Equidistant, "AzEqu", 5},
    // Around the pivot segments are short.
    {"persp-pivot", Projection::Perspective, "Persp", 16, 2000},
    {"hemisph-pivot", Projection::Hemisphere, "HemiSph", 5, 2000},
};

/// From `from` at 0 seconds to `to` at 1 second.
Track way(double from, double to) { return Track(std::vector<Track::Key>{{0.0, from}, {1.0, to}}); }

void set(host::Scene& scene, const std::string& name, decltype(host::ControlSetting::value) value) {
    scene.controls.push_back({name, "dumped scene: " + name, std::move(value)});
}

/// Fills in the controls, and the reference's settings alike.
void draw_controls(DumpedScene& made, RandomNumbers& random, const Kind& kind) {
    reference::Settings& settings = made.settings;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.projection = kind.projection;
    settings.spot_size = random.between(12, 40);  // spots of 2 to 6.4 pixels
    settings.aspect_ratio = random.between(0.5, 2);
    settings.threshold = 0.002;
    settings.max_luminance = random.between(0.3, 1);
    settings.brightness = random.between(0.05, 0.15);
    settings.bias = random.between(0.7, 1.4);
    settings.saturation = random.between(0.2, 1);
    settings.tint_strength = random.between(0, 1);
    settings.parallax_crush = 100;
    host::Scene& scene = made.scene;
    set(scene, "Star Spot Size", Track(settings.spot_size));
    set(scene, "Star Aspect Ratio", Track(settings.aspect_ratio));
    set(scene, "Luminance Threshold", Track(settings.threshold));
    set(scene, "Maximum Luminance", Track(settings.max_luminance));
    set(scene, "Star Brightness", Track(settings.brightness));
    set(scene, "Brightness Bias", Track(settings.bias));
    set(scene, "Star Saturation", Track(settings.saturation));
    set(scene, "Tint Strength", Track(settings.tint_strength));
    host::Colour tint;
    for (Track& channel : tint.channels) {
        channel = Track(static_cast<double>(random.code()));
    }
    set(scene, "Tint Color", tint);
    set(scene, "Motion Blur Segments", Track(static_cast<double>(kind.segments)));
    set(scene, "Projection", std::string(kind.choice));
}

/// Stars within `radius` degrees of the place, a square on the map: the fields are away from the
/// poles.
std::vector<support::CatalogueStar> field(RandomNumbers& random, int count, double lon, double lat,
                                          double radius) {
    std::vector<support::CatalogueStar> stars;
    for (int i = 0; i < count; ++i) {
        support::CatalogueStar star;
        star.lon = lon + random.between(-radius, radius);
        star.lat = lat + random.between(-radius, radius);
        star.luminance = static_cast<float>(std::min(5e-3 / random.between(1e-3, 1), 1.0));
        star.r = random.code();
        star.g = random.code();
        star.b = random.code();
        stars.push_back(star);
    }
    return stars;
}

DumpedScene seeded(unsigned seed, const Kind& kind) {
    RandomNumbers random(seed);
    DumpedScene made;
    made.name = kind.name;
    made.scene.source = kind.name;
    host::Composition& composition = made.scene.composition;
    composition.width = kWidth;
    composition.height = kHeight;
    composition.duration = 1.0;
    composition.motion_blur = kind.segments > 0;
    draw_controls(made, random, kind);

    const bool perspective = kind.projection == Projection::Perspective;
    const double lon = random.between(0, 360);
    const double lat = random.between(-20, 20);
    const double fov = random.between(25, 45);
    const std::pair<double, double> pan{lon, lon + random.between(40, 90)};
    const std::pair<double, double> tilt{lat, lat + random.between(-15, 15)};
    const double roll = random.between(-180, 180);
    const std::pair<double, double> turn{roll, roll + random.between(0.5, 1) * kind.turn};
    made.stars = field(random, perspective ? 900 : 2500, lon, lat, perspective ? 35 : 50);
    made.scene.camera = host::look_at_camera(
        way(pan.first, pan.second), way(tilt.first, tilt.second), way(turn.first, turn.second),
        host::Lens::vertical_fov(Track(fov), kHeight));
    made.camera = [=](double seconds) {
        const auto at = [&](const std::pair<double, double>& ends) {
            return way(ends.first, ends.second).at(seconds);
        };
        // The host turns the camera clockwise for a positive roll, the reference the other way.
        return reference::look_at(at(pan), at(tilt), -at(turn),
                                  1 / std::tan(fov / 2 * std::numbers::pi / 180));
    };
    return made;
}

/// Stars at distances, past which the camera moves sideways without turning.
DumpedScene passing() {
    const Kind kind{"passing-near-stars", Projection::Perspective, "Persp", 8};
    RandomNumbers random(100);
    DumpedScene made = seeded(100, kind);
    made.settings.parallax_crush = 0;
    set(made.scene, "Parallax Crush", Track(0.0));
    // Unturned, the camera looks towards longitude 90.
    made.stars = field(random, 900, 90, 0, 35);
    for (support::CatalogueStar& star : made.stars) {
        star.distance = random.between(4, 20);
    }
    const double zoom = 250;
    made.scene.camera = host::placed_camera({way(-12, 12), Track(0.5), Track(0.25)}, {},
                                            host::Lens::zoom(Track(zoom)));
    made.camera = [=](double seconds) {
        reference::Camera camera;
        // The host's y points down.
        camera.position = {way(-12, 12).at(seconds), -0.5, 0.25};
        camera.focal = zoom / (kHeight / 2.0);
        return camera;
    };
    return made;
}

bool near_frame(const reference::Projected& place) {
    constexpr double kMargin = 60;  // farther than any spot's light
    return place.place.x > -kMargin && place.place.x < kWidth + kMargin &&
           place.place.y > -kMargin && place.place.y < kHeight + kMargin;
}

}  // namespace

std::vector<DumpedScene> dumped_scenes() {
    std::vector<DumpedScene> scenes;
    unsigned seed = 1;
    for (const Kind& kind : kKinds) {
        scenes.push_back(seeded(seed++, kind));
    }
    scenes.push_back(passing());
    return scenes;
}

double shortest_segment(const DumpedScene& of, const std::vector<host::Time>& times) {
    double shortest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i + 1 < times.size(); ++i) {
        const reference::Camera opening = of.camera(times[i].seconds());
        const reference::Camera closing = of.camera(times[i + 1].seconds());
        for (const support::CatalogueStar& star : of.stars) {
            reference::Star one;
            one.lon = star.lon;
            one.lat = star.lat;
            one.distance = star.distance > 0 ? star.distance : -1;
            const reference::Projected a = project(one, of.settings, opening);
            const reference::Projected b = project(one, of.settings, closing);
            const double length = std::hypot(b.place.x - a.place.x, b.place.y - a.place.y);
            if ((a.visible || b.visible) && (near_frame(a) || near_frame(b)) && length > 1e-5) {
                shortest = std::min(shortest, length);
            }
        }
    }
    return shortest;
}

}  // namespace processors
