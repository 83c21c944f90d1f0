// A table in a text: comma-separated and its kin, and columns at fixed bytes.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tables/fields.h"
#include "tables/line_reader.h"
#include "tables/table.h"
#include "tables/text_shape.h"

namespace lumivar {

class TextTable : public Table {
public:
    /// Reads the rows of `lines`, from its beginning, as a text of that shape. `lines` must outlive
    /// the table.
    TextTable(LineReader& lines, TextShape shape);

    const std::vector<TableColumn>& columns() const override { return shape_.columns; }
    bool has_names() const override { return shape_.has_names; }
    const TextShape& shape() const { return shape_; }

    Step next() override;
    FieldNumber number(ColumnIndex column) const override { return parse_number(text(column)); }
    std::string_view text(ColumnIndex column) const override {
        return shape_.ranges.empty() ? splitter_.fields()[column]
                                     : field_at(line_, shape_.ranges[column]);
    }
    std::string place() const override;
    const RowFault& fault() const override { return fault_; }
    std::uint64_t bytes_read() const override { return lines_.bytes().bytes_read(); }
    std::uint64_t bytes_in_all() const override { return lines_.bytes().bytes_in_all(); }

private:
    Step read_row();
    bool begins_new_table();
    Step faulty(FaultKind kind, std::string detail);

    LineReader& lines_;
    TextShape shape_;
    FieldSplitter splitter_;
    std::string_view line_;
    RowFault fault_;
    bool new_table_announced_ = false;
    std::optional<double> next_epoch_;  ///< what comments said for the table to come
};

}  // namespace lumivar
