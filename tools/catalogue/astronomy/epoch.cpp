#include "astronomy/epoch.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace lumivar {
namespace {

constexpr double kRadiansPerMas = std::numbers::pi / (180.0 * 3600.0 * 1000.0);
/// One astronomical unit a Julian year, in km/s: 149,597,870.7 km over 31,557,600 s.
constexpr double kAstronomicalUnitPerYear = 4.740470446;

/// Radial velocity in distances a year: how much of its distance the star gains in a year.
double radial_motion(const Motion& motion) {
    if (!(motion.parallax > 0.0) || !std::isfinite(motion.radial_velocity)) {
        return 0.0;
    }
    // A parallax in radians is one astronomical unit in units of the distance.
    return motion.radial_velocity * motion.parallax * kRadiansPerMas / kAstronomicalUnitPerYear;
}

double known_or_zero(double value) { return std::isfinite(value) ? value : 0.0; }

}  // namespace

Place move_to_epoch(const Motion& motion, double years) {
    const double east = known_or_zero(motion.pm_ra_cosdec) * kRadiansPerMas * years;
    const double north = known_or_zero(motion.pm_dec) * kRadiansPerMas * years;
    // Without motion across the line of sight the radial one changes the distance alone.
    if (east == 0.0 && north == 0.0) {
        return {turned_into_circle(motion.ra), motion.dec};
    }
    const Direction star = direction_of({motion.ra, motion.dec});
    // Unit vectors toward growing right ascension and growing declination: the directions 90
    // degrees further along each. They are defined at the poles too.
    const Direction to_east = direction_of({motion.ra + 90.0, 0.0});
    const Direction to_north = direction_of({motion.ra, motion.dec + 90.0});
    const double along = 1.0 + radial_motion(motion) * years;
    Direction moved{};
    for (std::size_t i = 0; i < moved.size(); ++i) {
        moved[i] = along * star[i] + east * to_east[i] + north * to_north[i];
    }
    return place_of(moved);
}

}  // namespace lumivar
