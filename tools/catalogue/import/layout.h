// Which columns of a catalogue hold which quantity, and in which unit.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "import/units.h"
#include "tables/table.h"

namespace lumivar {

/// What a column can tell of a star. Places are those of the equator and equinox J2000 (ICRS; FK5
/// differs from it by less than 0.1 arcsecond).
enum class Quantity {
    RightAscension,
    Declination,
    // A place in six columns.
    RaHours,
    RaMinutes,
    RaSeconds,
    DecSign,
    DecDegrees,
    DecMinutes,
    DecSeconds,
    // Where there is no mean place.
    ObservedRightAscension,
    ObservedDeclination,
    ProperMotionRa,  ///< with the factor cos(declination) in it, as all catalogues give it
    ProperMotionDec,
    RadialVelocity,
    Epoch,
    Parallax,
    Distance,
    VMagnitude,
    HipparcosMagnitude,
    TychoBt,
    TychoVt,
    GaiaG,
    ColourIndex,  ///< B-V
    BpRp,
    Temperature,
    MagnitudeSource,  ///< "T" where magnitude and colour index are Tycho's VT and BT-VT
    // The fields of a star database.
    Luminance,
    Red,
    Green,
    Blue,
};
inline constexpr std::size_t kQuantities = static_cast<std::size_t>(Quantity::Blue) + 1;

struct ColumnUse {
    ColumnIndex column = 0;
    Unit unit = Unit::None;
};

struct Layout {
    /// What the file was taken for: "Hipparcos main catalogue".
    std::string title;
    std::array<std::optional<ColumnUse>, kQuantities> uses;
    /// Julian year of the places, where no column says it.
    double epoch = 2000.0;
    /// Distances from here on mean that none is known, in parsecs; 0 where there is no such mark.
    double unknown_distance = 0.0;
    /// Sexagesimal right ascension is in degrees, not in hours as usual.
    bool sexagesimal_in_degrees = false;
    /// Nothing but a column's name says that right ascension is in degrees.
    bool degrees_by_habit = false;
    /// The title is that of a published catalogue: several files may be parts of it.
    bool is_published = false;
    /// The catalogue has rows without a place that are no stars, and may have the Sun.
    bool has_entries_without_place = false;
    bool has_sun = false;
    /// The file is a dump of a version-1 database, whose distances are not used.
    bool without_depth = false;

    const std::optional<ColumnUse>& use(Quantity quantity) const {
        return uses[static_cast<std::size_t>(quantity)];
    }
    void set(Quantity quantity, ColumnIndex column, Unit unit) {
        uses[static_cast<std::size_t>(quantity)] = ColumnUse{column, unit};
    }
    void clear(Quantity quantity) { uses[static_cast<std::size_t>(quantity)].reset(); }
    bool has(Quantity quantity) const { return use(quantity).has_value(); }
};

/// What a layout lacks for making stars, in words for a user ("right ascension, magnitude"); empty
/// when it lacks nothing.
std::string missing_quantities(const Layout& layout);

/// One line: what the file was taken for, which columns are used for what, in which units.
std::string describe_layout(const Layout& layout, const Table& table);

}  // namespace lumivar
