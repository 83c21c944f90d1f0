#include "declared_control.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace host {
namespace {

Argb argb(const PF_Pixel& pixel) { return {pixel.alpha, pixel.red, pixel.green, pixel.blue}; }

PF_Pixel pixel(const Argb& colour) {
    return {static_cast<A_u_char>(colour.alpha), static_cast<A_u_char>(colour.red),
            static_cast<A_u_char>(colour.green), static_cast<A_u_char>(colour.blue)};
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (begin <= text.size() && !text.empty()) {
        const std::size_t end = std::min(text.find('|', begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

std::string text_or_empty(const char* text, const char* what, const std::string& name,
                          std::vector<Violation>& violations) {
    if (text == nullptr) {
        violations.push_back({Rule::ControlTexts, "add_param: the " + std::string(what) + " of \"" +
                                                      name + "\" is null"});
        return {};
    }
    return text;
}

void describe_value(const PF_ParamDef& record, DeclaredControl& control,
                    std::vector<Violation>& violations) {
    switch (record.param_type) {
        case PF_Param_LAYER:
            control.kind = ControlKind::Layer;
            break;
        case PF_Param_SLIDER: {
            const PF_SliderDef& slider = record.u.sd;
            control.kind = ControlKind::Slider;
            control.valid = {static_cast<double>(slider.valid_min),
                             static_cast<double>(slider.valid_max)};
            control.slider = {static_cast<double>(slider.slider_min),
                              static_cast<double>(slider.slider_max)};
            control.value = slider.value;
            control.default_value = slider.dephault;
            break;
        }
        case PF_Param_FLOAT_SLIDER: {
            const PF_FloatSliderDef& slider = record.u.fs_d;
            control.kind = ControlKind::FloatSlider;
            control.valid = {static_cast<double>(slider.valid_min),
                             static_cast<double>(slider.valid_max)};
            control.slider = {static_cast<double>(slider.slider_min),
                              static_cast<double>(slider.slider_max)};
            control.value = slider.value;
            control.default_value = static_cast<double>(slider.dephault);
            control.precision = slider.precision;
            control.display_flags = slider.display_flags;
            control.slider_flags = slider.fs_flags;
            control.curve_tolerance = static_cast<double>(slider.curve_tolerance);
            break;
        }
        case PF_Param_CHECKBOX:
            control.kind = ControlKind::Checkbox;
            control.value = record.u.bd.value;
            control.default_value = record.u.bd.dephault;
            control.label = text_or_empty(record.u.bd.u.nameptr, "label", control.name, violations);
            break;
        case PF_Param_COLOR:
            control.kind = ControlKind::Colour;
            control.colour = argb(record.u.cd.value);
            control.default_colour = argb(record.u.cd.dephault);
            break;
        case PF_Param_POPUP:
            control.kind = ControlKind::Popup;
            // A value of 0 and a count other than the number of names are accepted.
            control.value = record.u.pd.value;
            control.default_value = record.u.pd.dephault;
            control.declared_choices = record.u.pd.num_choices;
            control.choice_text =
                text_or_empty(record.u.pd.u.namesptr, "choice text", control.name, violations);
            control.choices = split(control.choice_text);
            break;
        default:
            control.kind = ControlKind::Other;
            break;
    }
}

}  // namespace

Parameter input_layer_parameter() {
    Parameter parameter;
    parameter.record.param_type = PF_Param_LAYER;
    parameter.record.u.ld.dephault = PF_LayerDefault_MYSELF;
    parameter.declared.kind = ControlKind::Layer;
    return parameter;
}

Parameter declared_parameter(const PF_ParamDef& record, int index,
                             std::vector<Violation>& violations) {
    Parameter parameter;
    parameter.record = record;
    DeclaredControl& control = parameter.declared;
    const A_char* const name_end = std::end(record.name);
    const A_char* const terminator = std::find(std::begin(record.name), name_end, '\0');
    control.name.assign(std::begin(record.name), terminator);
    if (terminator == name_end) {
        violations.push_back(
            {Rule::ControlTexts, "add_param: the name \"" + control.name + "\" has no terminator"});
    }
    control.index = index;
    control.id = record.uu.id_or_change_flags;
    control.type = record.param_type;
    control.flags = record.flags;
    control.ui_flags = record.ui_flags;
    describe_value(record, control, violations);
    return parameter;
}

PF_ParamDef initial_record(const Parameter& parameter) {
    PF_ParamDef record = parameter.record;
    if (parameter.declared.kind == ControlKind::Checkbox) {
        record.u.bd.u.nameptr = parameter.declared.label.c_str();
    } else if (parameter.declared.kind == ControlKind::Popup) {
        record.u.pd.u.namesptr = parameter.declared.choice_text.c_str();
    }
    return record;
}

PF_ParamDef valued_record(const Parameter& parameter, const ControlValues& values, double seconds) {
    PF_ParamDef record = initial_record(parameter);
    // The list of values begins after the input layer, which is never looked up in it.
    const std::size_t position = static_cast<std::size_t>(parameter.declared.index) - 1;
    const auto whole = [&] {
        const double number = values.number(position, seconds);
        return static_cast<A_long>(std::clamp(number, double{std::numeric_limits<A_long>::min()},
                                              double{std::numeric_limits<A_long>::max()}));
    };
    switch (parameter.declared.kind) {
        case ControlKind::Slider:
            record.u.sd.value = whole();
            break;
        case ControlKind::FloatSlider:
            record.u.fs_d.value = values.number(position, seconds);
            break;
        case ControlKind::Checkbox:
            record.u.bd.value = whole();
            break;
        case ControlKind::Colour:
            record.u.cd.value = pixel(values.colour(position, seconds));
            break;
        case ControlKind::Popup:
            record.u.pd.value = whole();
            break;
        case ControlKind::Layer:
        case ControlKind::Other:
            break;
    }
    return record;
}

}  // namespace host
