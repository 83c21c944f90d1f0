// Rows of the controls that the effect declares.
#include "controls.h"

#include <conformance/deviations.h>
#include <host/controls.h>
#include <host_api/effect_interface.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "examination.h"

namespace conformance {
namespace {

using host::ControlKind;
using host::DeclaredControl;

constexpr RowText kRows[] = {
    {"controls.count", "add_param", "num_params is their number, the input layer included"},
    {"controls.texts", "add_param",
     "names of 1 to 31 characters, choices have texts, none is null"},
    {"controls.kinds", "add_param", "each is of a type that the interface has"},
    {"controls.ids", "add_param", "each that has a value has an id of its own"},
    {"controls.ranges", "add_param",
     "sliders, their starts and defaults lie within the valid range"},
    {"controls.checkboxes", "add_param", "a checkbox starts at 0 or 1, its default too"},
    {"controls.popup-defaults", "add_param", "a popup's default is one of its choices, from 1"},
    {"controls.choice-counts", "add_param", "a popup's count is that of its choices"},
};

std::string quoted(const std::string& name) { return "\"" + name + "\""; }

bool is_known(int type) {
    return (type >= PF_Param_LAYER && type <= PF_Param_BUTTON) || type == PF_Param_POINT_3D;
}

/// What has none is no control that a project stores: groups and their ends, and labels.
bool has_value(const DeclaredControl& control) {
    return control.type != PF_Param_GROUP_START && control.type != PF_Param_GROUP_END &&
           control.type != PF_Param_NO_DATA;
}

/// As a float holds it, where it can: bounds are floats, and a value beside them is none.
double as_float(double value) {
    constexpr auto kLargest = static_cast<double>(std::numeric_limits<float>::max());
    return std::fabs(value) <= kLargest ? static_cast<double>(static_cast<float>(value)) : value;
}

/// With the fewest digits that tell it.
std::string number(double value) {
    char text[32];
    const bool is_float = as_float(value) == value && std::isfinite(value);
    const auto end =
        is_float ? std::to_chars(std::begin(text), std::end(text), static_cast<float>(value))
                 : std::to_chars(std::begin(text), std::end(text), value);
    return {text, end.ptr};
}

std::string range(const host::Range& range) {
    return number(range.min) + " to " + number(range.max);
}

bool within(const host::Range& inner, const host::Range& outer) {
    return outer.min <= inner.min && inner.min <= inner.max && inner.max <= outer.max;
}

void inspect_popup(const DeclaredControl& popup, Notes& notes) {
    const auto choices = static_cast<double>(popup.choices.size());
    for (const double value : {popup.default_value, popup.value}) {
        if (!(value >= 1.0 && value <= choices)) {
            notes.find("controls.popup-defaults",
                       quoted(popup.name) + " starts at " +
                           std::to_string(static_cast<int>(value)) + " of " +
                           std::to_string(popup.choices.size()),
                       value == 0.0 ? kPopupDefaultZero : std::string_view());
        }
    }
    for (std::size_t i = 0; i < popup.choices.size(); ++i) {
        if (popup.choices[i].empty()) {
            notes.find("controls.texts", "choice " + std::to_string(i + 1) + " of " +
                                             quoted(popup.name) + " has no text");
        }
    }
    const auto declared = static_cast<std::size_t>(popup.declared_choices);
    if (declared != popup.choices.size()) {
        notes.find("controls.choice-counts",
                   quoted(popup.name) + " declares " + std::to_string(popup.declared_choices) +
                       " choices and names " + std::to_string(popup.choices.size()),
                   declared == popup.choice_text.size() ? kChoiceCount : std::string_view());
    }
}

void inspect_slider(const DeclaredControl& slider, Notes& notes) {
    const std::string name = quoted(slider.name);
    const std::string valid = " its valid range, " + range(slider.valid);
    const auto outside = [&](double value) { return !within({value, value}, slider.valid); };
    const double start =
        slider.kind == ControlKind::FloatSlider ? as_float(slider.value) : slider.value;
    if (outside(start)) {
        notes.find("controls.ranges",
                   name + " starts at " + number(slider.value) + ", outside" + valid);
    }
    if (outside(slider.default_value)) {
        notes.find("controls.ranges",
                   name + " has the default " + number(slider.default_value) + ", outside" + valid);
    }
    if (!within(slider.slider, slider.valid)) {
        notes.find("controls.ranges",
                   name + " has a slider from " + range(slider.slider) + ", beyond" + valid);
    }
}

void inspect_checkbox(const DeclaredControl& box, Notes& notes) {
    const auto is_state = [](double value) { return value == 0.0 || value == 1.0; };
    if (!is_state(box.value) || !is_state(box.default_value)) {
        notes.find("controls.checkboxes", quoted(box.name) + " starts at " + number(box.value) +
                                              ", with default " + number(box.default_value));
    }
}

void inspect_kind(const DeclaredControl& control, Notes& notes) {
    switch (control.kind) {
        case ControlKind::Slider:
        case ControlKind::FloatSlider:
            inspect_slider(control, notes);
            break;
        case ControlKind::Checkbox:
            inspect_checkbox(control, notes);
            break;
        case ControlKind::Popup:
            inspect_popup(control, notes);
            break;
        case ControlKind::Layer:
        case ControlKind::Colour:
        case ControlKind::Other:
            break;
    }
    if (!is_known(control.type)) {
        notes.find("controls.kinds",
                   quoted(control.name) + " is of the type " + std::to_string(control.type));
    }
}

}  // namespace

bool told_by_controls(std::string_view violation) {
    return violation.find("num_params is") != std::string_view::npos ||
           violation.find("has no terminator") != std::string_view::npos ||
           (violation.find("add_param: the ") == 0 &&
            violation.find(" is null") != std::string_view::npos);
}

void inspect_controls(const host::Session& session, Notes& notes) {
    for (const std::string& violation : session.violations()) {
        if (told_by_controls(violation)) {
            const bool count = violation.find("num_params is") != std::string::npos;
            notes.find(count ? "controls.count" : "controls.texts", violation);
        }
    }
    std::set<int> ids;
    for (const DeclaredControl& control : session.controls()) {
        // Kinds that are not looked into may go without a name: ends of groups do.
        if (control.name.empty() && control.kind != ControlKind::Other) {
            notes.find("controls.texts",
                       "control " + std::to_string(control.index) + " has no name");
        }
        if (has_value(control) && !ids.insert(control.id).second) {
            notes.find("controls.ids", quoted(control.name) + " has the id " +
                                           std::to_string(control.id) + ", as another has");
        }
        inspect_kind(control, notes);
    }
    notes.keep("controls", session.controls().size());
}

void examine_controls(Examination& run) {
    if (!run.declared) {
        run.leave_out("controls", run.why_not_declared);
        return;
    }
    const auto count = run.set_up.kept.at("controls").get<std::size_t>();
    for (const RowText& row : kRows) {
        run.enter(row, Examination::under(run.set_up, row.id), std::to_string(count) + " controls");
    }
}

}  // namespace conformance
