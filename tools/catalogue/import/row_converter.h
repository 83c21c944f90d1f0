// One row of a catalogue to one star.
#pragma once

#include <cstdint>

#include "astronomy/star_light.h"
#include "database/catalogue_star.h"
#include "import/import_options.h"
#include "import/layout.h"
#include "tables/table.h"

namespace lumivar {

/// What was not in the rows that have become stars.
struct UnknownValues {
    std::uint64_t colours = 0;    ///< drawn as `kNeutralColourIndex`
    std::uint64_t distances = 0;  ///< distance -1
    std::uint64_t motions = 0;    ///< the place stays that of the catalogue's epoch
};

class RowConverter {
public:
    /// `options` must outlive it.
    explicit RowConverter(const ImportOptions& options);

    /// The rows that follow are laid out so.
    void use(const Layout& layout) { layout_ = layout; }

    /// The star of the row that `table` read last. False when it is none: `fault` says why.
    bool convert(const Table& table, CatalogueStar& star, RowFault& fault);

    const UnknownValues& unknown() const { return unknown_; }
    /// The largest right ascension that has been read, in degrees, whatever became of it then.
    double largest_ra() const { return largest_ra_; }
    void forget_largest_ra() { largest_ra_ = 0.0; }

private:
    const ImportOptions& options_;
    const StarColours& colours_;
    Layout layout_;
    UnknownValues unknown_;
    double largest_ra_ = 0.0;
};

}  // namespace lumivar
