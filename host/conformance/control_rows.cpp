// Rows of the controls that the effect declares.
#include "controls.h"

#include <conformance/deviations.h>
#include <host/controls.h>

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
    {"controls.texts", "add_param", "names of 1 to 31 characters, and no text is null"},
    {"controls.ids", "add_param", "each has an id of its own, not 0"},
    {"controls.ranges", "add_param", "sliders and defaults lie within the valid range"},
    {"controls.popup-defaults", "add_param", "a popup's default is one of its choices, from 1"},
    {"controls.choice-counts", "add_param", "a popup's count is that of its choices"},
};

bool is_slider(const DeclaredControl& control) {
    return control.kind == ControlKind::Slider || control.kind == ControlKind::FloatSlider;
}

std::string quoted(const std::string& name) { return "\"" + name + "\""; }

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
    const auto declared = static_cast<std::size_t>(popup.declared_choices);
    if (declared != popup.choices.size()) {
        notes.find("controls.choice-counts",
                   quoted(popup.name) + " declares " + std::to_string(popup.declared_choices) +
                       " choices and names " + std::to_string(popup.choices.size()),
                   declared == popup.choice_text.size() ? kChoiceCount : std::string_view());
    }
}

void inspect_slider(const DeclaredControl& slider, Notes& notes) {
    const host::Range start{slider.default_value, slider.default_value};
    if (!within(slider.slider, slider.valid) || !within(start, slider.valid)) {
        notes.find("controls.ranges", quoted(slider.name) + ": slider or default is outside");
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
        if (control.id == 0 || !ids.insert(control.id).second) {
            notes.find("controls.ids", quoted(control.name) + " has the id " +
                                           std::to_string(control.id) +
                                           (control.id == 0 ? "" : ", as another has"));
        }
        if (is_slider(control)) {
            inspect_slider(control, notes);
        } else if (control.kind == ControlKind::Popup) {
            inspect_popup(control, notes);
        }
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
