// A place on the sky, as two angles or as a direction in space.
#pragma once

#include <array>
#include <numbers>

namespace lumivar {

inline constexpr double kRadiansInDegree = std::numbers::pi / 180.0;

/// Right ascension and declination in degrees; in another frame its longitude and latitude. What
/// the functions of this folder return has `ra` in [0, 360) and `dec` in [-90, 90].
struct Place {
    double ra = 0.0;
    double dec = 0.0;
};

/// x, y, z: x toward right ascension 0 on the equator, y toward 90 degrees, z toward the pole.
using Direction = std::array<double, 3>;

/// The same angle in [0, 360).
double turned_into_circle(double degrees);

/// Unit vector toward `place`.
Direction direction_of(const Place& place);
/// Where `direction`, of any length above 0, points. The pole gets right ascension 0.
Place place_of(const Direction& direction);

}  // namespace lumivar
