// A table in a FITS file, binary or in ASCII.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tables/table.h"

namespace lumivar {

/// The first table of the file. Rows come in blocks of some hundred kilobytes.
class FitsTable : public Table {
public:
    /// Opens the file at `path`, which is no pipe. `name` is what messages call it. Throws
    /// `Failure` when it holds no table or is damaged.
    FitsTable(const std::string& path, std::string name);
    ~FitsTable() override;

    /// The columns that will be asked for. Call it once, before the first row.
    void choose(const std::vector<ColumnIndex>& columns);

    const std::vector<TableColumn>& columns() const override;
    bool has_names() const override { return true; }
    Step next() override;
    FieldNumber number(ColumnIndex column) const override;
    std::string_view text(ColumnIndex column) const override;
    std::string place() const override;
    const RowFault& fault() const override;
    std::uint64_t bytes_read() const override;
    std::uint64_t bytes_in_all() const override;

private:
    class File;
    std::unique_ptr<File> file_;
};

}  // namespace lumivar
