// How a text is made up of columns: found out from its beginning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tables/fields.h"
#include "tables/table.h"

namespace lumivar {

/// A text table's make-up.
struct TextShape {
    /// Between fields; of no meaning where `ranges` are given.
    char separator = ',';
    /// Where the fields stand, one for each column, in a text without separators.
    std::vector<ByteRange> ranges;
    std::vector<TableColumn> columns;
    bool has_names = false;
    /// Lines from the beginning of the text up to its first row: comments, names, units, dashes.
    std::uint64_t lines_before_rows = 0;
    /// Lines beginning with "#" are comments, wherever they stand, and a new table may follow them.
    bool has_comments = false;
    /// Of the places, as far as the comments tell (a Julian year).
    std::optional<double> epoch;
    /// The line of names has a double quote that is not closed: there are no columns then.
    bool quote_open = false;
};

/// Lines other than comments that tell a shape: names, units, dashes and a row.
inline constexpr std::size_t kRowsForShape = 4;

/// The epoch that a comment of VizieR tells, "#Coosys J2000_1991.250: eq_FK5 J2000": a Julian year.
std::optional<double> epoch_of_comment(std::string_view line);

/// The make-up of a text that begins with `head`: comments, then a line of names, perhaps one of
/// units above one of dashes, then rows; or rows at once. `separator` is the field separator where
/// the user said so. Understands the comments of ECSV (name and unit of each column, the delimiter)
/// and the lines of VizieR (comments beginning with #, names, units, dashes).
///
/// A first line in which no field is a number is a line of names. Empty columns mean that `head`
/// holds no line that is no comment.
TextShape find_text_shape(std::string_view head, std::optional<char> separator);

}  // namespace lumivar
