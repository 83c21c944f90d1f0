#include "magnitudes.h"

#include <base/string.h>
#include <host/controls.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "astronomy/star_light.h"
#include "failure.h"

namespace lumivar {
namespace {

constexpr char kThreshold[] = "Luminance Threshold";
constexpr char kCeiling[] = "Maximum Luminance";
constexpr char kBias[] = "Brightness Bias";
constexpr char kBrightness[] = "Star Brightness";

constexpr char kSpotSize[] = "Star Spot Size";
constexpr char kAspect[] = "Star Aspect Ratio";
constexpr char kSegments[] = "Motion Blur Segments";

/// Of the framebuffer's unit: a spot that is nowhere brighter is not drawn.
constexpr double kFaintestLight = 1.0 / 6250.0;
/// The brightest light of a spot is so many times "Star Brightness", for a star of luminance 1.
constexpr double kLightPerBrightness = 4.0;
/// "Star Spot Size" is in thousandths of half the frame's width.
constexpr double kWidthPerSpotSize = 0.0005;
/// The effect adds this to "Brightness Bias" before it divides by it.
constexpr double kBiasOffset = 0.000001;
/// The range of "Star Brightness" ends here.
constexpr double kLargestBrightness = 1000.0;
/// Well before the smallest normal number of single precision, at magnitude 94.8.
constexpr double kFaintestMagnitude = 90.0;

bool sets_threshold(const host::ControlSetting& setting) { return setting.name == kThreshold; }

bool reaches(double magnitude) { return magnitude >= 0.0 && magnitude <= kFaintestMagnitude; }

std::string unreachable(const std::string& place, double magnitude) {
    return place + ": " + String::fmt("%.7g", magnitude).c_str() +
           " is out of range; give a magnitude from 0 to 90, as the control \"" + kThreshold +
           "\" ends at luminance 1, which is magnitude 0";
}

std::string two_decimals(double number) {
    const std::string text = String::fmt("%.2f", number).c_str();
    return text == "-0.00" ? "0.00" : text;
}

std::string shortest(double number) { return String::fmt("%.7g", number).c_str(); }

struct StarControls {
    double threshold;
    double ceiling;
    double bias;
    double brightness;
    double spot_size;
    double aspect;
    double segments;  ///< of the camera's path, into which a star's light is parted
};

std::optional<StarControls> controls_at(const host::Session& session, const host::Scene& scene,
                                        host::Time time) {
    const std::vector<host::DeclaredControl>& declared = session.controls();
    const host::ControlValues values(declared, scene.controls);
    std::vector<double> numbers;
    for (const char* name :
         {kThreshold, kCeiling, kBias, kBrightness, kSpotSize, kAspect, kSegments}) {
        const auto found = std::find_if(
            declared.begin(), declared.end(), [name](const host::DeclaredControl& one) {
                return one.name == name && one.kind != host::ControlKind::Colour;
            });
        if (found == declared.end()) {
            return std::nullopt;
        }
        numbers.push_back(
            values.number(static_cast<std::size_t>(found - declared.begin()), time.seconds()));
    }
    const bool blurs = scene.composition.motion_blur && scene.camera &&
                       scene.composition.shutter_angle.at(time.seconds()) > 0.0;
    return StarControls{numbers[0],
                        numbers[1],
                        numbers[2],
                        numbers[3],
                        numbers[4],
                        numbers[5],
                        blurs ? std::max(1.0, numbers[6]) : 1.0};
}

/// ", but those fainter than 12.74 are too dark to be drawn"; empty where the threshold, or the
/// ceiling, says all.
std::string darkness_text(const StarControls& controls, int width) {
    // A spot is never smaller than a pixel; a smaller one is darker instead.
    const double height = width * controls.spot_size * kWidthPerSpotSize;
    const double light = kLightPerBrightness * controls.brightness / controls.segments *
                         std::min(1.0, height) * std::min(1.0, height * controls.aspect);
    const double needed = kFaintestLight / light;  // after the bias
    if (!(light > 0.0) || needed >= controls.ceiling) {
        return ", but all are too dark to be drawn";
    }
    const double luminance = std::pow(needed, controls.bias + kBiasOffset);
    if (luminance <= controls.threshold) {
        return "";
    }
    return ", but those fainter than " + two_decimals(magnitude_from_luminance(luminance)) +
           " are too dark to be drawn";
}

std::string faintest_text(double threshold, bool by_magnitude) {
    if (threshold <= 0.0) {
        return std::string("stars of every magnitude (") + kThreshold + " 0)";
    }
    std::string text = "stars to magnitude " + two_decimals(magnitude_from_luminance(threshold));
    if (!by_magnitude) {
        return text + " (" + kThreshold + " " + shortest(threshold) + ")";
    }
    double typed = std::round(threshold * 1e6) / 1e6;
    if (static_cast<double>(static_cast<float>(typed)) > threshold) {
        typed = std::floor(threshold * 1e6) / 1e6;  // no star may be lost
    }
    text += std::string(" (in the host: ") + kThreshold + " " + String::fmt("%.6f", typed).c_str();
    // The control's six decimals are coarse for faint stars: say where they lead elsewhere.
    if (typed <= 0.0) {
        text += ", which draws every star";
    } else if (two_decimals(magnitude_from_luminance(typed)) !=
               two_decimals(magnitude_from_luminance(threshold))) {
        text += ", which is magnitude " + two_decimals(magnitude_from_luminance(typed));
    }
    return text + ")";
}

std::string ceiling_text(const StarControls& controls) {
    const std::string control = std::string(" (") + kCeiling + " " + shortest(controls.ceiling);
    if (controls.ceiling <= 0.0) {
        return "all black" + control + ")";
    }
    // L^(1 / (bias + offset)) reaches the ceiling where L = ceiling^(bias + offset).
    const double magnitude =
        (controls.bias + kBiasOffset) * magnitude_from_luminance(controls.ceiling);
    if (controls.threshold > 0.0 && magnitude >= magnitude_from_luminance(controls.threshold)) {
        return "all alike" + control + ")";
    }
    return "those brighter than " + two_decimals(magnitude) + " all alike" + control + ")";
}

std::string stars_text(const StarControls& controls, int width, bool by_magnitude) {
    const std::string ceiling = ceiling_text(controls);
    return faintest_text(controls.threshold, by_magnitude) +
           (controls.ceiling > 0.0 ? darkness_text(controls, width) : "") + "; " + ceiling;
}

std::string exposure_text(double brightness, double exposure) {
    const double magnitudes = 2.5 * std::log10(2.0) * exposure;
    const double same = brightness * std::exp2(exposure);
    std::string text = "exposure " + std::string(exposure > 0 ? "+" : "") + shortest(exposure) +
                       ": " + two_decimals(std::fabs(magnitudes)) + " magnitudes " +
                       (exposure > 0 ? "brighter" : "darker") + " (in the host: ";
    if (same > kLargestBrightness) {
        return text + "beyond " + kBrightness + ", which ends at 1000)";
    }
    return text + kBrightness + " " +
           (same >= 1.0 ? two_decimals(same) : String::fmt("%.4g", same).c_str()) + " instead of " +
           shortest(brightness) + ")";
}

}  // namespace

void add_magnitude_arguments(Command& command, MagnitudeArguments& arguments) {
    command.add("--limiting-magnitude", arguments.limiting_magnitude,
                "Draws no star fainter than this magnitude, 0 or more; sets \"Luminance "
                "Threshold\" in place of the scene's");
}

double threshold_of_magnitude(double magnitude) {
    return static_cast<double>(static_cast<float>(luminance_from_magnitude(magnitude)));
}

bool bring_limiting_magnitude(const MagnitudeArguments& arguments,
                              const std::vector<host::ControlSetting>& settings,
                              const std::vector<host::Time>& times, host::Scene& scene) {
    const host::Picture& picture = scene.picture;
    const auto in_scene =
        std::find_if(scene.controls.begin(), scene.controls.end(), sets_threshold);
    if (picture.limiting_magnitude && in_scene != scene.controls.end()) {
        throw Failure(picture.limiting_magnitude_place +
                      ": expected one way to say the faintest star, found \"limiting_magnitude\" "
                      "and the control \"" +
                      kThreshold + "\"; remove one of them");
    }
    const auto set = std::find_if(settings.begin(), settings.end(), sets_threshold);
    host::Track limit;
    std::string place = "--limiting-magnitude";
    if (arguments.limiting_magnitude) {
        if (set != settings.end()) {
            throw UsageError(place + " and " + set->place +
                             " both say the faintest star; remove one of them");
        }
        if (!reaches(*arguments.limiting_magnitude)) {
            throw UsageError(unreachable(place, *arguments.limiting_magnitude));
        }
        limit = *arguments.limiting_magnitude;
    } else if (picture.limiting_magnitude) {
        limit = *picture.limiting_magnitude;
        place = picture.limiting_magnitude_place;
        for (const host::Track::Key& key : limit.keys()) {
            if (!reaches(key.value)) {
                throw Failure(unreachable(place, key.value));
            }
        }
        if (set != settings.end()) {
            return false;
        }
    } else {
        return false;
    }
    // Magnitudes move in straight lines between keys, thresholds then do not: the control gets a
    // key of its own for each frame.
    std::vector<host::Track::Key> keys;
    keys.reserve(times.size());
    for (const host::Time& time : times) {
        keys.push_back({time.seconds(), threshold_of_magnitude(limit.at(time.seconds()))});
    }
    std::erase_if(scene.controls, sets_threshold);
    scene.controls.push_back({kThreshold, place, host::Track(std::move(keys))});
    return true;
}

std::vector<std::string> magnitude_lines(const host::Session& session, const host::Scene& scene,
                                         host::Time first, host::Time last, int width,
                                         bool by_magnitude, double exposure) {
    const std::optional<StarControls> at_first = controls_at(session, scene, first);
    const std::optional<StarControls> at_last = controls_at(session, scene, last);
    if (!at_first || !at_last) {
        return {};
    }
    std::vector<std::string> lines;
    const auto add = [&lines](const std::string& now, const std::string& then) {
        lines.push_back(now);
        if (then != now) {
            lines.push_back("at the end " + then);
        }
    };
    add(stars_text(*at_first, width, by_magnitude), stars_text(*at_last, width, by_magnitude));
    if (exposure != 0.0) {
        add(exposure_text(at_first->brightness, exposure),
            exposure_text(at_last->brightness, exposure));
    }
    return lines;
}

}  // namespace lumivar
