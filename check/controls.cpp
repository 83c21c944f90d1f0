// Rows of the controls that the effect declares.
#include <check/report.h>
#include <host/controls.h>
#include <host_api/effect_interface.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <set>

#include "run.h"

namespace check {
namespace {

using host::ControlKind;
using host::DeclaredControl;
using host::Rule;

constexpr RuleRow kRows[] = {
    {"count", "num_params is their number, the input layer included", Rule::ControlCount},
    {"texts", "names of 1 to 31 characters, choices have texts, none is null", Rule::ControlTexts},
    {"kinds", "each is of a type that the interface has", Rule::ControlKinds},
    {"ids", "each that has a value has an id of its own", Rule::ControlIds},
    {"ranges", "sliders, their starts and defaults lie within the valid range",
     Rule::ControlRanges},
    {"checkboxes", "a checkbox starts at 0 or 1, its default too", Rule::Checkboxes},
    {"popup-defaults", "a popup's default is one of its choices, from 1", Rule::PopupDefaults},
    {"choice-counts", "a popup's count is that of its choices", Rule::ChoiceCounts},
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

std::string text_of(const host::Range& range) {
    return number(range.min) + " to " + number(range.max);
}

bool within(const host::Range& inner, const host::Range& outer) {
    return outer.min <= inner.min && inner.min <= inner.max && inner.max <= outer.max;
}

void inspect_popup(const DeclaredControl& popup, Notes& notes) {
    const auto choices = static_cast<double>(popup.choices.size());
    for (const double value : {popup.default_value, popup.value}) {
        if (!(value >= 1.0 && value <= choices)) {
            notes.find(Rule::PopupDefaults,
                       quoted(popup.name) + " starts at " +
                           std::to_string(static_cast<int>(value)) + " of " +
                           std::to_string(popup.choices.size()),
                       value == 0.0 ? kPopupDefaultZero : std::string_view());
        }
    }
    for (std::size_t i = 0; i < popup.choices.size(); ++i) {
        if (popup.choices[i].empty()) {
            notes.find(Rule::ControlTexts, "choice " + std::to_string(i + 1) + " of " +
                                               quoted(popup.name) + " has no text");
        }
    }
    const auto declared = static_cast<std::size_t>(popup.declared_choices);
    if (declared != popup.choices.size()) {
        notes.find(Rule::ChoiceCounts,
                   quoted(popup.name) + " declares " + std::to_string(popup.declared_choices) +
                       " choices and names " + std::to_string(popup.choices.size()),
                   declared == popup.choice_text.size() ? kChoiceCount : std::string_view());
    }
}

void inspect_slider(const DeclaredControl& slider, Notes& notes) {
    const auto look_at = [&](const host::Range& range, const std::string& has, const char* where) {
        if (!within(range, slider.valid)) {
            notes.find(Rule::ControlRanges, quoted(slider.name) + has + ", " + where +
                                                " its valid range, " + text_of(slider.valid));
        }
    };
    const double start =
        slider.kind == ControlKind::FloatSlider ? as_float(slider.value) : slider.value;
    const double usual = slider.default_value;
    look_at({start, start}, " starts at " + number(slider.value), "outside");
    look_at({usual, usual}, " has the default " + number(usual), "outside");
    look_at(slider.slider, " has a slider from " + text_of(slider.slider), "beyond");
}

void inspect_checkbox(const DeclaredControl& box, Notes& notes) {
    const auto is_state = [](double value) { return value == 0.0 || value == 1.0; };
    if (!is_state(box.value) || !is_state(box.default_value)) {
        notes.find(Rule::Checkboxes, quoted(box.name) + " starts at " + number(box.value) +
                                         ", with default " + number(box.default_value));
    }
}

}  // namespace

void inspect_controls(const host::Session& session, Notes& notes) {
    std::set<int> ids;
    for (const DeclaredControl& control : session.controls()) {
        // Kinds that are not looked into may go without a name: ends of groups do.
        if (control.name.empty() && control.kind != ControlKind::Other) {
            notes.find(Rule::ControlTexts,
                       "control " + std::to_string(control.index) + " has no name");
        }
        if (has_value(control) && !ids.insert(control.id).second) {
            notes.find(Rule::ControlIds, quoted(control.name) + " has the id " +
                                             std::to_string(control.id) + ", as another has");
        }
        if (control.kind == ControlKind::Slider || control.kind == ControlKind::FloatSlider) {
            inspect_slider(control, notes);
        } else if (control.kind == ControlKind::Checkbox) {
            inspect_checkbox(control, notes);
        } else if (control.kind == ControlKind::Popup) {
            inspect_popup(control, notes);
        }
        if (!is_known(control.type)) {
            notes.find(Rule::ControlKinds,
                       quoted(control.name) + " is of the type " + std::to_string(control.type));
        }
    }
}

void check_controls(Run& run) {
    const std::string count = std::to_string(run.declared->controls) + " controls";
    for (const RuleRow& row : kRows) {
        std::vector<Finding> found = run.set_up.findings;
        std::erase_if(found, [&](const Finding& one) { return one.rule != row.rule; });
        run.enter({"controls." + std::string(row.name), "add_param", std::string(row.promise)},
                  found, count);
    }
}

}  // namespace check
