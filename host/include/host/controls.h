// The effect's controls: as the plug-in declares them, and as a scene sets them.
#pragma once

#include <host/scene.h>

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace host {

enum class ControlKind { Layer, Slider, FloatSlider, Checkbox, Colour, Popup, Other };

/// In words, e.g. "float slider".
const char* name_of(ControlKind kind);

/// Bounds, both included.
struct Range {
    double min = 0.0;
    double max = 0.0;
};

/// Channels 0..255.
struct Argb {
    int alpha = 0;
    int red = 0;
    int green = 0;
    int blue = 0;
    bool operator==(const Argb&) const = default;
};

/// A control exactly as the plug-in delivered it. Members that its kind has no use for stay 0 or
/// empty.
struct DeclaredControl {
    int index = 0;  ///< place among the parameters; 0 is the layer that carries the effect
    int id = 0;
    std::string name;
    ControlKind kind = ControlKind::Other;
    int type = 0;  ///< the interface's number for the kind
    int flags = 0;
    int ui_flags = 0;

    Range valid;   ///< sliders
    Range slider;  ///< sliders: the part that the slider's track covers
    double value = 0.0;
    double default_value = 0.0;
    int precision = 0;  ///< float sliders: digits shown after the point
    int display_flags = 0;
    unsigned slider_flags = 0;
    double curve_tolerance = 0.0;

    Argb colour;  ///< value
    Argb default_colour;

    std::string label;                 ///< checkboxes: the text beside the box
    std::string choice_text;           ///< popups: the choices as delivered, joined by "|"
    std::vector<std::string> choices;  ///< popups: the same, split
    int declared_choices = 0;          ///< popups: the count delivered, which may be another
};

/// A value for every declared control at every time: what a scene sets, else the initial value.
class ControlValues {
public:
    /// Matches the scene's settings with the controls by name; of two settings of one control the
    /// later holds. Throws `SceneError`, naming the setting's place, for a control that the effect
    /// does not have, a value of the wrong kind and a value outside the control's valid range.
    ///
    /// Popups take the text of a choice or its number, counted from 1; checkboxes 0 and 1; colours
    /// channels of 0..255.
    ControlValues(const std::vector<DeclaredControl>& controls,
                  const std::vector<ControlSetting>& settings);

    // `place` is a control's place in the list that the constructor was given.

    /// A number at a time: as it is for float sliders, rounded to the nearest integer for integer
    /// ones. Popups and checkboxes hold each key's value until the next key.
    double number(std::size_t place, double seconds) const;
    /// A colour at a time, each channel rounded to 8 bits; alpha is the declared one.
    Argb colour(std::size_t place, double seconds) const;

private:
    struct Value {
        ControlKind kind;
        double declared;
        Argb declared_colour;
        std::variant<std::monostate, Track, Colour> set;
    };
    std::vector<Value> values_;
};

}  // namespace host
