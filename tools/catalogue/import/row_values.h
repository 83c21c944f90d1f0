// The values of one row by what they mean, and the words for those that are wrong.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "import/layout.h"
#include "tables/row_fault.h"
#include "tables/table.h"

namespace lumivar {

/// Of the row that the table read last. Refers to both.
class RowValues {
public:
    RowValues(const Table& table, const Layout& layout) : table_(table), layout_(layout) {}

    const Layout& layout() const { return layout_; }
    bool has_column(Quantity quantity) const { return layout_.has(quantity); }
    /// `Unit::None` where there is no column.
    Unit unit(Quantity quantity) const {
        const std::optional<ColumnUse>& use = layout_.use(quantity);
        return use ? use->unit : Unit::None;
    }
    /// Missing, also where there is no column.
    FieldNumber number(Quantity quantity) const {
        const std::optional<ColumnUse>& use = layout_.use(quantity);
        return use ? table_.number(use->column) : FieldNumber{};
    }
    /// Empty where there is no column.
    std::string_view text(Quantity quantity) const {
        const std::optional<ColumnUse>& use = layout_.use(quantity);
        return use ? table_.text(use->column) : std::string_view();
    }

    // Faults that name the column and what stands there. `remedy` follows: "; give ...".
    RowFault missing(FaultKind kind, Quantity quantity) const;
    RowFault malformed(FaultKind kind, Quantity quantity, const char* remedy) const;
    RowFault no_angle(Quantity quantity) const;
    /// `value` is shown where the table has no text for it.
    RowFault out_of_range(FaultKind kind, Quantity quantity, double value,
                          const char* remedy) const;

private:
    std::string column_text(Quantity quantity) const;

    const Table& table_;
    const Layout& layout_;
};

}  // namespace lumivar
