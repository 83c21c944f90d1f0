// The frames of the sky in which a star database may store its places.
#pragma once

#include "astronomy/place.h"

namespace lumivar {

enum class Frame {
    Equatorial,  ///< right ascension and declination of the ICRS, as catalogues give them
    Galactic,    ///< longitude from the galactic centre, latitude from the Milky Way's plane
    Ecliptic,    ///< longitude and latitude from the mean ecliptic and equinox of J2000
};

/// Longitude (as `ra`, in [0, 360)) and latitude (as `dec`) in `frame` of a place of the ICRS,
/// whose right ascension may be any number of degrees.
///
/// Galactic: pole at 192.85948, +27.12825 degrees, ascending node of the plane at longitude
/// 32.93192 (ESA, 1997, The Hipparcos and Tycho Catalogues, vol. 1, sect. 1.5.3). Ecliptic:
/// obliquity 84381.406 arcseconds (IAU 2006); the 0.02 arcseconds between the ICRS and the equator
/// and equinox of J2000 are left out.
Place to_frame(const Place& icrs, Frame frame);

}  // namespace lumivar
