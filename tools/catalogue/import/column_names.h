// Columns recognised by their names, as archives and people write them.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "import/layout.h"
#include "tables/table.h"

namespace lumivar {

/// The layout of any table whose columns have names that are in use for such things: `ra`,
/// `_RAJ2000`, `Vmag`, `phot_g_mean_mag`, `B-V`, `parallax_mas` and so on, in upper or lower case.
/// A unit in the table's header counts before the one that the name implies. What it finds nothing
/// for stays empty.
///
/// Throws `Failure` when two columns have the name that it would use.
Layout layout_by_names(const Table& table, const std::string& file);

/// Whether a header's unit is one that the quantity can be given in.
bool unit_fits(Quantity quantity, Unit unit);

/// "1 id, 2 ra, 3 dec": for messages.
std::string column_list(const Table& table);

/// Whether the table has a column of each of these names, which are in lower case, in any case.
bool has_columns(const Table& table, std::initializer_list<std::string_view> lower_names);

/// The column of that name: written just so, or else in another case. Nothing when there is none.
/// Throws `Failure` when there are two.
std::optional<ColumnIndex> find_column(const Table& table, std::string_view name,
                                       const std::string& file);

}  // namespace lumivar
