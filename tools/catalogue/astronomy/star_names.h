// Stars by their names: the 8,870 to magnitude 6.5 of data/bright-stars.csv, built into the
// program.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace lumivar {

/// A star of the table.
struct NamedStar {
    double ra;         ///< right ascension, degrees, ICRS, J2000
    double dec;        ///< declination, degrees
    double distance;   ///< parsecs; 0: not known
    int hip;           ///< number in the Hipparcos catalogue
    int hr;            ///< number in the Bright Star Catalogue; 0: none
    const char* name;  ///< proper name, else Bayer or Flamsteed designation; empty: none
};

/// The star of this name: as the table has it, or "HIP" or "HR" and a number, or a designation with
/// Greek letter and constellation written out ("Gamma2 Velorum"). Upper and lower case, blanks and
/// hyphens do not matter. The brightest of several. Null when there is none.
const NamedStar* find_star(std::string_view name);

/// All of them, the brightest first.
std::span<const NamedStar> named_stars();

/// How to call a star so that it is found again: its name, else its Hipparcos number.
std::string star_label(const NamedStar& star);

}  // namespace lumivar
