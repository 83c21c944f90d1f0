#include <host/controls.h>
#include <host/nearest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

namespace host {
namespace {

std::string in_quotes(const std::string& text) { return "\"" + text + "\""; }

std::string shown(double number) {
    std::ostringstream text;
    text << number;
    return text.str();
}

[[noreturn]] void refuse(const ControlSetting& setting, const std::string& reason) {
    throw SceneError(setting.place + ": " + reason);
}

std::string suggestion(const std::string& name, const std::vector<std::string>& candidates) {
    const auto likely = nearest(name, candidates);
    return likely ? "; did you mean " + in_quotes(*likely) + "?" : std::string();
}

std::string list(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + in_quotes(name);
    }
    return text;
}

const DeclaredControl& control_of(const ControlSetting& setting,
                                  const std::vector<DeclaredControl>& controls) {
    std::vector<std::string> names;
    for (const DeclaredControl& control : controls) {
        if (control.kind == ControlKind::Layer) {
            continue;
        }
        if (control.name == setting.name) {
            return control;
        }
        names.push_back(control.name);
    }
    refuse(setting, "the effect has no control " + in_quotes(setting.name) +
                        suggestion(setting.name, names));
}

/// What a control of this kind can be set to, for messages.
std::string wanted(const DeclaredControl& control) {
    switch (control.kind) {
        case ControlKind::Slider:
        case ControlKind::FloatSlider:
            return "a number from " + shown(control.valid.min) + " to " + shown(control.valid.max);
        case ControlKind::Checkbox:
            return "true or false";
        case ControlKind::Colour:
            return "a colour of red, green and blue from 0 to 255";
        case ControlKind::Popup:
            return "one of " + list(control.choices) + " or its number from 1 to " +
                   std::to_string(control.choices.size());
        case ControlKind::Layer:
        case ControlKind::Other:
            break;
    }
    return "nothing: a control of this kind cannot be set";
}

[[noreturn]] void refuse_kind(const ControlSetting& setting, const DeclaredControl& control) {
    refuse(setting, in_quotes(control.name) + " is a " + name_of(control.kind) + " and takes " +
                        wanted(control));
}

void check_track(const ControlSetting& setting, const DeclaredControl& control, const Track& track,
                 const Range& range, bool whole) {
    // Between keys the value is interpolated linearly, so it is in range if the keys are.
    for (const Track::Key& key : track.keys()) {
        if (!(key.value >= range.min && key.value <= range.max) ||
            (whole && key.value != std::floor(key.value))) {
            refuse(setting, in_quotes(control.name) + " takes " + wanted(control) + ", not " +
                                shown(key.value));
        }
    }
}

double choice_number(const ControlSetting& setting, const DeclaredControl& control,
                     const std::string& choice) {
    const auto found = std::find(control.choices.begin(), control.choices.end(), choice);
    if (found == control.choices.end()) {
        refuse(setting,
               in_quotes(control.name) + " has no choice " + in_quotes(choice) +
                   (nearest(choice, control.choices) ? suggestion(choice, control.choices)
                                                     : "; it has " + list(control.choices)));
    }
    return static_cast<double>(found - control.choices.begin() + 1);
}

std::variant<std::monostate, Track, Colour> checked(const ControlSetting& setting,
                                                    const DeclaredControl& control) {
    if (const auto* choice = std::get_if<std::string>(&setting.value)) {
        if (control.kind != ControlKind::Popup) {
            refuse_kind(setting, control);
        }
        return Track(choice_number(setting, control, *choice));
    }
    if (const auto* colour = std::get_if<Colour>(&setting.value)) {
        if (control.kind != ControlKind::Colour) {
            refuse_kind(setting, control);
        }
        for (const Track& channel : colour->channels) {
            check_track(setting, control, channel, {0.0, 255.0}, false);
        }
        return *colour;
    }
    const Track& track = std::get<Track>(setting.value);
    switch (control.kind) {
        case ControlKind::Slider:
        case ControlKind::FloatSlider:
            check_track(setting, control, track, control.valid, false);
            return track;
        case ControlKind::Checkbox:
            check_track(setting, control, track, {0.0, 1.0}, true);
            return track;
        case ControlKind::Popup:
            check_track(setting, control, track, {1.0, static_cast<double>(control.choices.size())},
                        true);
            return track;
        case ControlKind::Layer:
        case ControlKind::Colour:
        case ControlKind::Other:
            break;
    }
    refuse_kind(setting, control);
}

/// A control that cannot be interpolated keeps a key's value until the next.
double held(const Track& track, double seconds) {
    double value = track.keys().front().value;
    for (const Track::Key& key : track.keys()) {
        if (key.time <= seconds) {
            value = key.value;
        }
    }
    return value;
}

int channel_at(const Track& track, double seconds) {
    return static_cast<int>(std::lround(track.at(seconds)));
}

}  // namespace

const char* name_of(ControlKind kind) {
    switch (kind) {
        case ControlKind::Layer:
            return "layer";
        case ControlKind::Slider:
            return "integer slider";
        case ControlKind::FloatSlider:
            return "float slider";
        case ControlKind::Checkbox:
            return "checkbox";
        case ControlKind::Colour:
            return "colour";
        case ControlKind::Popup:
            return "popup";
        case ControlKind::Other:
            break;
    }
    return "control of another kind";
}

ControlValues::ControlValues(const std::vector<DeclaredControl>& controls,
                             const std::vector<ControlSetting>& settings) {
    values_.reserve(controls.size());
    for (const DeclaredControl& control : controls) {
        values_.push_back({control.kind, control.value, control.colour, {}});
    }
    for (const ControlSetting& setting : settings) {
        const DeclaredControl& control = control_of(setting, controls);
        values_[static_cast<std::size_t>(&control - controls.data())].set =
            checked(setting, control);
    }
}

double ControlValues::number(std::size_t place, double seconds) const {
    const Value& value = values_.at(place);
    const Track* const track = std::get_if<Track>(&value.set);
    if (track == nullptr) {
        return value.declared;
    }
    switch (value.kind) {
        case ControlKind::Slider:
            return std::round(track->at(seconds));
        case ControlKind::Checkbox:
        case ControlKind::Popup:
            return held(*track, seconds);
        default:
            return track->at(seconds);
    }
}

Argb ControlValues::colour(std::size_t place, double seconds) const {
    const Value& value = values_.at(place);
    const Colour* const set = std::get_if<Colour>(&value.set);
    if (set == nullptr) {
        return value.declared_colour;
    }
    return {value.declared_colour.alpha, channel_at(set->channels[0], seconds),
            channel_at(set->channels[1], seconds), channel_at(set->channels[2], seconds)};
}

}  // namespace host
