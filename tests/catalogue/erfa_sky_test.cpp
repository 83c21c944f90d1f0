// Frames and motions at random places, against ERFA, a public library of fundamental astronomy.
#include <erfa.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "../support/random_numbers.h"
#include "astronomy/epoch.h"
#include "astronomy/frame.h"

namespace {

using lumivar::Frame;
using lumivar::Place;

constexpr double kRadian = 180.0 / std::numbers::pi;
constexpr double kArcsecondsPerRadian = kRadian * 3600.0;
constexpr double kRadiansPerMas = 0.001 / kArcsecondsPerRadian;
constexpr double kJ2000 = 2451545.0;

/// Arcseconds between two places.
double between(const Place& place, double ra, double dec) {
    return eraSeps(place.ra / kRadian, place.dec / kRadian, ra, dec) * kArcsecondsPerRadian;
}

/// Random places, and all that are special.
std::vector<Place> places() {
    std::vector<Place> all;
    for (const double ra : {0.0, 90.0, 180.0, 270.0, 359.9999999, 1e-9}) {
        for (const double dec : {-90.0, -89.9999999, 0.0, 1e-9, 89.9999999, 90.0}) {
            all.push_back({ra, dec});
        }
    }
    all.insert(all.end(), {{192.85948, 27.12825},
                           {12.85948, -27.12825},
                           {282.85948, 0.0},
                           {266.4051, -28.936175},
                           {270.0, 66.560721},
                           {90.0, -66.560721}});
    RandomNumbers random(5);
    for (int i = 0; i < 2000; ++i) {
        all.push_back({random.between(0.0, 360.0), std::asin(random.between(-1.0, 1.0)) * kRadian});
    }
    return all;
}

TEST(ErfaSky, HasTheSameFrames) {
    for (const Place& place : places()) {
        double longitude = 0.0;
        double latitude = 0.0;
        eraIcrs2g(place.ra / kRadian, place.dec / kRadian, &longitude, &latitude);
        EXPECT_LT(between(to_frame(place, Frame::Galactic), longitude, latitude), 0.001)
            << place.ra << " " << place.dec;
        // That function moves from the ICRS to the equinox of J2000 first, by 0.02 arcseconds.
        eraEqec06(kJ2000, 0.0, place.ra / kRadian, place.dec / kRadian, &longitude, &latitude);
        EXPECT_LT(between(to_frame(place, Frame::Ecliptic), longitude, latitude), 0.03)
            << place.ra << " " << place.dec;
    }
}

TEST(ErfaSky, HasTheSameMotions) {
    RandomNumbers random(6);
    for (const Place& place : places()) {
        if (std::abs(place.dec) == 90.0) {
            continue;  // the change of right ascension that ERFA asks for is infinite there
        }
        const double speed = random.on_scale(1.0, 10000.0);
        const double angle = random.between(0.0, 2.0 * std::numbers::pi);
        lumivar::Motion motion = {.ra = place.ra,
                                  .dec = place.dec,
                                  .pm_ra_cosdec = speed * std::sin(angle),
                                  .pm_dec = speed * std::cos(angle)};
        // Of every star at most 500 km/s across the line of sight: ERFA would slow a faster one.
        motion.parallax = random.on_scale(4.74 * speed / 500.0, 1000.0);
        motion.radial_velocity = random.between(-300.0, 300.0);
        const double years = random.between(-100.0, 100.0);
        const double dec = place.dec / kRadian;
        double found[6];
        const int status =
            eraPmsafe(place.ra / kRadian, dec, motion.pm_ra_cosdec * kRadiansPerMas / std::cos(dec),
                      motion.pm_dec * kRadiansPerMas, motion.parallax / 1000.0,
                      motion.radial_velocity, kJ2000, 0.0, kJ2000, years * 365.25, &found[0],
                      &found[1], &found[2], &found[3], &found[4], &found[5]);
        ASSERT_EQ(status, 0) << place.ra << " " << place.dec;
        // ERFA adds the time that light takes.
        EXPECT_LT(between(move_to_epoch(motion, years), found[0], found[1]), 0.1)
            << place.ra << " " << place.dec << " moved by " << speed << " mas in " << years;
    }
}

TEST(ErfaSky, MovesBarnardsStarToTheSamePlace) {
    const double dec = 4.66828815 / kRadian;
    for (const double radial_velocity : {0.0, -110.51}) {
        double found[6];
        ASSERT_EQ(0,
                  eraPmsafe(269.45402305 / kRadian, dec, -797.84 * kRadiansPerMas / std::cos(dec),
                            10326.93 * kRadiansPerMas, 0.54901, radial_velocity, kJ2000,
                            -8.75 * 365.25, kJ2000, 50.0 * 365.25, &found[0], &found[1], &found[2],
                            &found[3], &found[4], &found[5]));
        const Place place = lumivar::move_to_epoch(
            {269.45402305, 4.66828815, -797.84, 10326.93, 549.01, radial_velocity}, 58.75);
        EXPECT_LT(between(place, found[0], found[1]), 0.001) << radial_velocity;
    }
}

}  // namespace
