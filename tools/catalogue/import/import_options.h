// What the user asks of an import.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "astronomy/frame.h"
#include "astronomy/star_light.h"
#include "import/known_formats.h"
#include "import/layout.h"

namespace lumivar {

/// A column that the user names for a quantity.
struct NamedColumn {
    Quantity quantity = Quantity::RightAscension;
    std::string name;  ///< or its number from 1
};

struct ImportOptions {
    Format format = Format::Auto;
    /// Empty: the columns are found by their names.
    std::vector<NamedColumn> columns;
    /// Of right ascension and declination both, whatever the file says; hours mean hours of right
    /// ascension and degrees of declination.
    std::optional<Unit> angle_unit;
    /// Julian year of the places in the tables, where the user knows better.
    std::optional<double> catalogue_epoch;
    /// Julian year to which proper motion takes them.
    double epoch = 2000.0;
    Frame frame = Frame::Equatorial;
    WhitePoint white_point = WhitePoint::D65;
    /// The magnitude of luminance 1.
    double zero_point = 0.0;
    /// Parallaxes up to this one give no distance, in milliarcseconds.
    double parallax_floor = 0.0;
    /// Stars of several inputs within so many arcseconds are one.
    std::optional<double> dedupe;
    /// The first row that is at fault ends the import.
    bool strict = false;
};

/// "ra=RAdeg,dec=DEdeg,mag=5": throws `UsageError` for a word that is no quantity's and for a
/// quantity named twice.
std::vector<NamedColumn> parse_columns(const std::string& text);
/// The words for quantities that it knows.
inline constexpr const char* kColumnWords =
    "ra, dec (or rah, ram, ras, design, ded, dem, des), mag, bv, bprp, teff, distance, parallax, "
    "pmra, pmdec, rv, epoch, g, bt, vt";

/// Puts the named columns into a layout, in the units that the table's header says or that are
/// usual. What a column replaces leaves it: another colour, the other kind of distance, magnitudes
/// of other bands, the other way to give a place. Throws `Failure` when the table has no such
/// column or two, when one column is to be two quantities, or when its unit is of another quantity.
void choose_columns(Layout& layout, const Table& table, const std::vector<NamedColumn>& columns,
                    const std::string& file);

}  // namespace lumivar
