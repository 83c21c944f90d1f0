#include "hints.h"

#include <base/string.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace lumivar {
namespace {

/// A frame's control values by the controls' names. A control that the effect does not have is
/// nothing at all times.
class NamedValues {
public:
    NamedValues(const std::vector<host::DeclaredControl>& controls, const host::Scene& scene,
                const std::vector<host::Time>& times)
        : controls_(controls), values_(controls, scene.controls), times_(times) {}

    /// Whether `holds` is true of the number at each of the times.
    template <class Holds>
    bool always(const char* name, Holds holds) const {
        const auto place = place_of(name);
        return place && std::all_of(times_.begin(), times_.end(), [&](const host::Time& time) {
                   return holds(values_.number(*place, time.seconds()));
               });
    }
    bool always_is(const char* name, double value) const {
        return always(name, [value](double number) { return number == value; });
    }
    /// The number at the first of the times; for controls that `always` has found.
    double first(const char* name) const {
        const auto place = place_of(name);
        return place ? values_.number(*place, times_.front().seconds()) : 0.0;
    }
    /// Whether a colour control has another colour than its default at any of the times.
    bool has_other_colour(const char* name) const {
        const auto place = place_of(name);
        return place && std::any_of(times_.begin(), times_.end(), [&](const host::Time& time) {
                   return values_.colour(*place, time.seconds()) !=
                          controls_[*place].default_colour;
               });
    }
    /// Whether a control has another value than its default at any of the times.
    bool is_changed(const char* name) const {
        const auto place = place_of(name);
        return place && !always_is(name, controls_[*place].default_value);
    }
    /// The name of the choice at all the times, or empty where it changes.
    std::string choice(const char* name) const {
        const auto place = place_of(name);
        if (!place || !always_is(name, first(name))) {
            return {};
        }
        const std::vector<std::string>& choices = controls_[*place].choices;
        const double number = first(name);
        return number >= 1.0 && number <= static_cast<double>(choices.size())
                   ? choices[static_cast<std::size_t>(number) - 1]
                   : std::string();
    }

private:
    std::optional<std::size_t> place_of(const std::string& name) const {
        const auto found = std::find_if(
            controls_.begin(), controls_.end(),
            [&name](const host::DeclaredControl& control) { return control.name == name; });
        if (found == controls_.end()) {
            return std::nullopt;
        }
        return static_cast<std::size_t>(found - controls_.begin());
    }

    const std::vector<host::DeclaredControl>& controls_;
    host::ControlValues values_;
    const std::vector<host::Time>& times_;
};

using Place = std::array<double, 3>;

/// Where the camera stands, in the units of the stars' distances.
Place place_of(const host::Camera& camera, double seconds) {
    const host::Matrix m = camera.layer_to_world(seconds);
    return {m[12], m[13], m[14]};
}

double distance(const Place& a, const Place& b = {}) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

std::string short_number(double number) { return String::fmt("%.4g", number).c_str(); }

/// "Parallax Crush" takes a hundredth of it off a star's inverse distance. From here on all stars
/// are at infinity: the nearest is 1.30 parsecs away.
constexpr double kAllAtInfinity = 77.0;
/// Up to here stars of ten parsecs and less keep a distance, enough of them to be seen as a crowd.
constexpr double kManyAtADistance = 10.0;

/// Beyond most of the stars whose distance is known.
constexpr double kOutsideTheStars = 1000.0;

/// Whether the camera stands where a new camera does: so that the composition's plane fills the
/// picture, which means nothing among stars.
bool stands_as_new(const host::Scene& scene, double seconds) {
    const double width = scene.composition.width;
    const double height = scene.composition.height;
    const Place place = place_of(*scene.camera, seconds);
    const double zoom = scene.camera->zoom(0.0);
    return distance(place, {width / 2.0, height / 2.0, -zoom}) <= 1e-9 * zoom;
}

void hint_at_lens(const NamedValues& values, const host::Scene& scene,
                  const std::vector<host::Time>& times, std::vector<std::string>& hints) {
    const std::string projection = values.choice("Projection");
    if (!scene.camera || (projection != "HemiSph" && projection != "AzEqu")) {
        return;
    }
    const double new_zoom = scene.composition.width * 50.0 / 36.0;
    const bool has_lens = std::any_of(times.begin(), times.end(), [&](const host::Time& time) {
        return std::fabs(scene.camera->zoom(time.seconds()) - new_zoom) > 1e-9 * new_zoom;
    });
    if (has_lens) {
        hints.push_back("the camera's lens is not used: \"Projection\" " + projection +
                        " always shows 180 degrees over the frame's height; choose Persp for a "
                        "lens");
    }
}

void hint_at_motion_blur(const NamedValues& values, const host::Scene& scene,
                         const std::vector<host::Time>& times, std::vector<std::string>& hints) {
    const char* const segments = "Motion Blur Segments";
    if (!scene.composition.motion_blur) {
        if (values.always(segments, [](double number) { return number > 1.0; })) {
            hints.push_back("\"" + std::string(segments) + "\" " +
                            short_number(values.first(segments)) +
                            " blurs nothing: the composition's motion blur is off; set "
                            "\"motion_blur\": true");
        }
        return;
    }
    if (!scene.camera) {
        hints.emplace_back(
            "\"motion_blur\" blurs nothing: the scene has no camera that could move; give it a "
            "\"camera\"");
        return;
    }
    if (values.always_is(segments, 0.0)) {
        hints.push_back("\"motion_blur\" blurs nothing: \"" + std::string(segments) +
                        "\" is 0; set it to 1 or more");
    } else if (std::all_of(times.begin(), times.end(), [&](const host::Time& time) {
                   return scene.composition.shutter_angle.at(time.seconds()) == 0.0;
               })) {
        hints.emplace_back(
            "\"motion_blur\" blurs nothing: \"shutter_angle\" is 0; 180 keeps the shutter open for "
            "half a frame");
    }
}

/// Whether the camera changes its place while the composition lasts.
bool moves(const host::Scene& scene) {
    constexpr int kLooks = 64;
    const Place start = place_of(*scene.camera, 0.0);
    for (int look = 1; look <= kLooks; ++look) {
        const double seconds = scene.composition.duration * look / kLooks;
        if (distance(place_of(*scene.camera, seconds), start) > 1e-9) {
            return true;
        }
    }
    return false;
}

void hint_at_place(const NamedValues& values, const host::Scene& scene,
                   const std::vector<host::Time>& times, std::vector<std::string>& hints) {
    if (!scene.camera) {
        return;
    }
    const char* const crush = "Parallax Crush";
    if (values.always(crush, [](double number) { return number >= kAllAtInfinity; })) {
        if (moves(scene)) {
            hints.push_back("the camera moves, but \"" + std::string(crush) + "\" " +
                            short_number(values.first(crush)) +
                            " keeps every star at infinity, where none moves; set it to 0 to fly "
                            "among the stars");
        }
    } else if (values.always(crush, [](double number) { return number <= kManyAtADistance; }) &&
               std::all_of(times.begin(), times.end(), [&](const host::Time& time) {
                   return stands_as_new(scene, time.seconds());
               })) {
        const double parsecs = distance(place_of(*scene.camera, times.front().seconds()));
        hints.push_back("the camera stands where a new one does, " + short_number(parsecs) +
                        " parsecs from the Sun, and with \"" + crush + "\" " +
                        short_number(values.first(crush)) +
                        " near stars crowd together in a corner; set \"position\": [0, 0, 0]");
    }
}

/// Controls that leave no light at all at 0.
constexpr std::array<const char*, 4> kLightControls = {"Star Brightness", "Maximum Luminance",
                                                       "Star Spot Size", "Star Aspect Ratio"};

void hint_at_light(const NamedValues& values, std::vector<std::string>& hints) {
    for (const char* const name : kLightControls) {
        if (values.always_is(name, 0.0)) {
            hints.push_back("\"" + std::string(name) +
                            "\" 0 leaves no star any light; set it above 0");
        }
    }
}

void hint_at_colour(const NamedValues& values, std::vector<std::string>& hints) {
    const bool tinted = !values.always_is("Tint Strength", 0.0);
    if (!tinted && values.has_other_colour("Tint Color")) {
        hints.emplace_back("\"Tint Color\" tints nothing: \"Tint Strength\" is 0; set it up to 1");
    }
    if (tinted && values.always_is("Star Saturation", 0.0)) {
        hints.emplace_back(
            "\"Tint Strength\" tints nothing: \"Star Saturation\" 0 makes every star grey; set it "
            "up to 1");
    }
}

void hint_at_controls_without_effect(const NamedValues& values, std::vector<std::string>& hints) {
    for (const char* const name : {"3D Stars", "Treat Pixels As", "Anamorphic DOF"}) {
        if (values.is_changed(name)) {
            hints.push_back("\"" + std::string(name) +
                            "\" changes nothing in the picture; leave it out");
        }
    }
}

}  // namespace

std::vector<std::string> setting_hints(const std::vector<host::DeclaredControl>& controls,
                                       const host::Scene& scene,
                                       const std::vector<host::Time>& times) {
    const NamedValues values(controls, scene, times);
    std::vector<std::string> hints;
    hint_at_lens(values, scene, times, hints);
    hint_at_motion_blur(values, scene, times, hints);
    hint_at_place(values, scene, times, hints);
    hint_at_light(values, hints);
    hint_at_colour(values, hints);
    hint_at_controls_without_effect(values, hints);
    return hints;
}

std::optional<std::string> black_frame_hint(const std::vector<host::DeclaredControl>& controls,
                                            const host::Scene& scene,
                                            const std::vector<host::Time>& times,
                                            const BlackFrames& frames) {
    const NamedValues values(controls, scene, times);
    const std::string start =
        times.size() == 1 ? "there is no star in the frame: " : "there is no star in any frame: ";
    if (frames.stars == 0) {
        return start + "the star database holds none; choose another with --catalogue";
    }
    if (std::any_of(kLightControls.begin(), kLightControls.end(),
                    [&values](const char* name) { return values.always_is(name, 0.0); })) {
        return std::nullopt;
    }
    const char* const threshold = "Luminance Threshold";
    if (frames.brightest &&
        values.always(threshold, [&frames](double number) { return number > *frames.brightest; })) {
        return start + "the brightest of the database has luminance " +
               short_number(*frames.brightest) + ", below \"" + threshold + "\" " +
               short_number(values.first(threshold)) + "; lower that";
    }
    if (scene.camera) {
        const auto parsecs = [&scene](host::Time time) {
            return distance(place_of(*scene.camera, time.seconds()));
        };
        if (values.always("Parallax Crush", [](double n) { return n < kAllAtInfinity; }) &&
            std::all_of(times.begin(), times.end(),
                        [&](host::Time time) { return parsecs(time) >= kOutsideTheStars; })) {
            return start + "the camera stands " + short_number(parsecs(times.front())) +
                   " parsecs from the Sun, outside the stars; move it nearer or set \"Parallax "
                   "Crush\" to 100";
        }
        const std::string projection = values.choice("Projection");
        constexpr double kNarrow = 2.0;  // degrees; there are catalogues of a star a square degree
        const auto degrees = [&scene](host::Time time) {
            return 2.0 *
                   std::atan(scene.composition.height / 2.0 / scene.camera->zoom(time.seconds())) *
                   180.0 / std::numbers::pi;
        };
        if (projection != "HemiSph" && projection != "AzEqu" &&
            std::all_of(times.begin(), times.end(),
                        [&](host::Time time) { return degrees(time) < kNarrow; })) {
            return start + "the lens shows only " + short_number(degrees(times.front())) +
                   " degrees from bottom to top; widen it, or lower \"" + threshold +
                   "\" with a deeper database";
        }
    }
    return start +
           "none that the camera sees is bright enough; raise \"Star Brightness\", lower \"" +
           threshold + "\", or turn the camera";
}

std::optional<std::string> black_picture_hint(double brightest, double least_visible) {
    if (!(brightest < least_visible)) {
        return std::nullopt;
    }
    const double stops = std::ceil(std::log2(least_visible / brightest));
    return "the picture is black, though the frame is not: its brightest light, " +
           short_number(brightest) + ", is too dark for it; raise --exposure by " +
           short_number(stops) + " stops or more";
}

}  // namespace lumivar
