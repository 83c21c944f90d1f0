#include "controls_table.h"

#include <base/string.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <tuple>

#include "picture_info.h"

namespace lumivar {
namespace {

using TableRow = std::array<std::string, 5>;

bool is_slider(const host::DeclaredControl& control) {
    return control.kind == host::ControlKind::Slider ||
           control.kind == host::ControlKind::FloatSlider;
}

std::string range_text(const host::Range& range) {
    return String::fmt("%.7g to %.7g", range.min, range.max).c_str();
}

std::string choices_text(const host::DeclaredControl& control) {
    std::string text;
    for (const std::string& choice : control.choices) {
        text += (text.empty() ? "" : " | ") + choice;
    }
    return text;
}

TableRow row_of(const host::DeclaredControl& control) {
    TableRow row = {control.name, host::name_of(control.kind), "", "",
                    value_text(control, control.default_value, control.default_colour)};
    if (is_slider(control)) {
        row[2] = range_text(control.valid);
        row[3] = range_text(control.slider);
    } else if (control.kind == host::ControlKind::Popup) {
        row[2] = choices_text(control);
    } else if (control.kind == host::ControlKind::Colour) {
        row[2] = "0 to 255 each";
    } else if (control.kind == host::ControlKind::Checkbox) {
        row[2] = "off, on";
    }
    return row;
}

}  // namespace

std::string controls_as_text(const std::vector<host::DeclaredControl>& controls) {
    std::vector<TableRow> rows = {{"Control", "Kind", "Values", "Slider", "Default"}};
    for (const host::DeclaredControl& control : controls) {
        rows.push_back(row_of(control));
    }
    std::array<std::size_t, std::tuple_size_v<TableRow>> widths{};
    for (const TableRow& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    std::string text;
    for (const TableRow& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column) {
            line += row[column] + std::string(widths[column] - row[column].size() + 2, ' ');
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string controls_as_json(const std::vector<host::DeclaredControl>& controls) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const host::DeclaredControl& control : controls) {
        nlohmann::ordered_json one;
        one["id"] = control.id;
        one["name"] = control.name;
        one["kind"] = host::name_of(control.kind);
        if (is_slider(control)) {
            one["valid"] = {{"min", control.valid.min}, {"max", control.valid.max}};
            one["slider"] = {{"min", control.slider.min}, {"max", control.slider.max}};
            one["precision"] = control.precision;
        }
        if (control.kind == host::ControlKind::Popup) {
            one["choices"] = control.choices;
        }
        if (control.kind == host::ControlKind::Colour) {
            const host::Argb& colour = control.default_colour;
            one["default"] = {colour.red, colour.green, colour.blue};
        } else {
            one["default"] = control.default_value;
        }
        json.push_back(one);
    }
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace lumivar
