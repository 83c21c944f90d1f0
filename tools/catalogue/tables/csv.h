// Comma-separated text with a header line that names the columns.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "failure.h"
#include "tables/line_reader.h"

namespace lumivar {

/// Splits one line at its commas. Blanks round a field do not count; a field in double quotes may
/// hold commas, and doubled quotes for one. A quoted field ends with its line. False when a quote
/// is left open or followed by other text.
bool split_csv_line(std::string_view line, std::vector<std::string>& fields);

class CsvReader {
public:
    /// Reads the header. Throws `Failure` for an empty file. `example` is a header line as it
    /// should be, for that message.
    CsvReader(LineReader& lines, const std::string& example);

    std::optional<std::size_t> column(std::string_view name) const;
    /// The column of that name; throws `Failure` when there is none.
    std::size_t required_column(std::string_view name) const;

    /// Reads the next row that is not blank. False at the end. Throws `Failure` for a row with more
    /// or fewer fields than the header.
    bool next();
    const std::string& field(std::size_t column) const { return fields_[column]; }

    /// The field as a number, finite and within [low, high]; throws `Failure` otherwise, naming
    /// file, line and column and adding `remedy`.
    double number(std::size_t column, double low, double high, const char* remedy) const;
    /// A failure at the current row: "FILE:LINE: TEXT".
    Failure failure(const std::string& text) const;

private:
    LineReader& lines_;
    std::vector<std::string> header_;
    std::vector<std::string> fields_;
};

}  // namespace lumivar
