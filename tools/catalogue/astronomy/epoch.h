// Where a star stands at another time than that of its catalogue.
#pragma once

#include "astronomy/place.h"

namespace lumivar {

/// A star's place and motion at the epoch of its catalogue.
struct Motion {
    double ra = 0.0;               ///< degrees
    double dec = 0.0;              ///< degrees
    double pm_ra_cosdec = 0.0;     ///< proper motion in right ascension times cos(dec), mas a year
    double pm_dec = 0.0;           ///< proper motion in declination, mas a year
    double parallax = 0.0;         ///< mas; not above 0 or not a number: unknown
    double radial_velocity = 0.0;  ///< km/s, away from the Sun; 0 or not a number: unknown
};

/// The place `years` Julian years later (earlier where negative). A proper motion that is not a
/// number counts as 0, and a star that does not move keeps its place to the last bit.
///
/// The standard model of stellar motion (ESA, 1997, The Hipparcos and Tycho Catalogues, vol. 1,
/// sect. 1.5.5): the star moves through space on a straight line at constant speed. Seen from the
/// Sun a star that comes nearer moves ever faster; that term is left out where parallax or radial
/// velocity is unknown. That the light of a star on the move takes more or less time from year to
/// year is left out, as there: over a century it moves the fastest stars by 0.003 arcseconds.
Place move_to_epoch(const Motion& motion, double years);

}  // namespace lumivar
