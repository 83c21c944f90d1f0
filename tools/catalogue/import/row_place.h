// Where the star of a row stands in the sky.
#pragma once

#include <optional>

#include "astronomy/place.h"
#include "import/import_options.h"
#include "import/row_values.h"

namespace lumivar {

struct RowPlace {
    Place place;  ///< degrees, in the frame and of the year that were asked for
    /// The year could not be reached: the row has no proper motion.
    bool left_behind = false;
    double ra_read = 0.0;  ///< right ascension as it was read, in degrees
};

/// Fills `result`. Returns why it cannot, or nothing.
std::optional<RowFault> read_place(const RowValues& row, const ImportOptions& options,
                                   RowPlace& result);

}  // namespace lumivar
