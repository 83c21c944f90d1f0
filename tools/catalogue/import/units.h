// The units in which catalogues give what they measure.
#pragma once

#include <optional>
#include <string_view>

namespace lumivar {

enum class Unit {
    None,
    Degrees,
    Hours,
    Radians,
    MilliarcsecondsPerYear,
    ArcsecondsPerYear,
    Milliarcseconds,
    Arcseconds,
    Parsecs,
    Kiloparsecs,
    LightYears,
    KilometresPerSecond,
    Years,
    Magnitudes,
    Kelvins,
};

/// "deg", as the announcement of an import shows it; empty for `Unit::None`.
const char* unit_text(Unit unit);
/// The unit that a header's text means, in the spellings of FITS, VizieR and ECSV; "h:m:s" is
/// hours and "d:m:s" degrees, since sexagesimal numbers are read wherever an angle is. Nothing when
/// the text is empty or not known.
std::optional<Unit> unit_of(std::string_view text);

/// The factor from that unit to milliarcseconds, or to milliarcseconds a year; 1 where it is no
/// such unit.
double milliarcseconds_in(Unit unit);
/// The factor from that unit to parsecs; 1 where it is no unit of length.
double parsecs_in(Unit unit);
/// The factor from that unit to degrees; 1 where it is no unit of angles on the sky.
double degrees_in(Unit unit);

}  // namespace lumivar
