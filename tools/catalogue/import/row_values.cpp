#include "import/row_values.h"

#include "tables/fields.h"

namespace lumivar {

std::string RowValues::column_text(Quantity quantity) const {
    const std::optional<ColumnUse>& use = layout_.use(quantity);
    if (!use) {
        return "a column";
    }
    std::string text = "column " + std::to_string(use->column + 1);
    const std::string& name = table_.columns()[use->column].name;
    if (!name.empty()) {
        text += " (" + shown_field(name) + ")";
    }
    return text;
}

RowFault RowValues::missing(FaultKind kind, Quantity quantity) const {
    return {kind, column_text(quantity) + ": is empty"};
}

RowFault RowValues::malformed(FaultKind kind, Quantity quantity, const char* remedy) const {
    return {kind, column_text(quantity) + ": \"" + shown_field(text(quantity)) +
                      "\" is not a number" + remedy};
}

RowFault RowValues::no_angle(Quantity quantity) const {
    return {FaultKind::PlaceMalformed,
            column_text(quantity) + ": \"" + shown_field(text(quantity)) +
                "\" is no angle; give a number, or hours or degrees, minutes and seconds"};
}

RowFault RowValues::out_of_range(FaultKind kind, Quantity quantity, double value,
                                 const char* remedy) const {
    const std::string shown = shown_field(text(quantity));
    return {kind, column_text(quantity) + ": " + (shown.empty() ? std::to_string(value) : shown) +
                      " is out of range" + remedy};
}

}  // namespace lumivar
