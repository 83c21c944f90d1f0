// A table of stars, row by row, whatever kind of file it comes from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tables/number.h"
#include "tables/row_fault.h"

namespace lumivar {

struct TableColumn {
    std::string name;      ///< empty where the file names none
    std::string unit;      ///< as the file writes it; empty where it does not say
    std::string sample{};  ///< of a column without a name: what its first row holds, for messages
};

/// The position of a column, from 0.
using ColumnIndex = std::size_t;

class Table {
public:
    enum class Step {
        Row,
        Faulty,      ///< a row that is none; `fault` says why
        NewColumns,  ///< another table begins in the same file: `columns` has changed
        End,
    };

    Table() = default;
    virtual ~Table() = default;
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    virtual const std::vector<TableColumn>& columns() const = 0;
    /// Whether the columns have names. Without, they are known by their numbers from 1.
    virtual bool has_names() const = 0;

    /// Reads the next row. Throws `Failure` when the file cannot be read on.
    virtual Step next() = 0;
    /// Of the row read last. `column` is one of `columns`.
    virtual FieldNumber number(ColumnIndex column) const = 0;
    /// Without blanks round it. Valid until the next call of `next`; of a numeric column of a
    /// binary table empty.
    virtual std::string_view text(ColumnIndex column) const = 0;

    /// Where the row read last stands: "FILE:LINE", of a binary table "FILE, row N".
    virtual std::string place() const = 0;
    /// Why the row read last is none.
    virtual const RowFault& fault() const = 0;

    /// Of the file, as it lies on the disk: read so far, and in all, 0 when nobody knows.
    virtual std::uint64_t bytes_read() const = 0;
    virtual std::uint64_t bytes_in_all() const = 0;
};

}  // namespace lumivar
