// Proper motion to another epoch, against places worked out on the sphere.
//
// The expected places come from spherical trigonometry, where the program adds vectors: with the
// whole proper motion m at the position angle t, the star has moved by the angle
// atan(m y / (1 + z y)) after y years, z being the share of its distance that it gains in a year;
// sine and cosine rule give the place at the end of that arc. The
// numbers are those of Python's mpmath with 40 digits.
#include "astronomy/epoch.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr lumivar::Motion kBarnard = {.ra = 269.45402305,
                                      .dec = 4.66828815,
                                      .pm_ra_cosdec = -797.84,
                                      .pm_dec = 10326.93,
                                      .parallax = 549.01};

TEST(Epoch, MovesBarnardsStarTo2050) {
    const lumivar::Place place = lumivar::move_to_epoch(kBarnard, 2050.0 - 1991.25);
    EXPECT_NEAR(place.ra, 269.440956268662206, 1e-10);
    EXPECT_NEAR(place.dec, 4.83681729920276887, 1e-10);
}

TEST(Epoch, SpeedsUpAStarThatComesNearer) {
    lumivar::Motion nearing = kBarnard;
    nearing.radial_velocity = -110.51;
    const lumivar::Place place = lumivar::move_to_epoch(nearing, 2050.0 - 1991.25);
    EXPECT_NEAR(place.ra, 269.440908449440245, 1e-10);
    EXPECT_NEAR(place.dec, 4.83743389614267041, 1e-10);
}

TEST(Epoch, LeavesThatOutWhereTheParallaxIsUnknown) {
    const lumivar::Place without = lumivar::move_to_epoch(kBarnard, 100.0);
    lumivar::Motion star = kBarnard;
    star.radial_velocity = -110.51;
    for (const double parallax : {0.0, -3.0, std::nan("")}) {
        star.parallax = parallax;
        const lumivar::Place place = lumivar::move_to_epoch(star, 100.0);
        EXPECT_EQ(place.ra, without.ra);
        EXPECT_EQ(place.dec, without.dec);
    }
    star = kBarnard;
    star.radial_velocity = std::nan("");
    EXPECT_EQ(lumivar::move_to_epoch(star, 100.0).dec, without.dec);
}

TEST(Epoch, PassesThePoleAndTheFirstMeridian) {
    // 0.36 arcseconds from the pole, 20 a year northward and 3 eastward.
    lumivar::Motion star = {.ra = 0.01, .dec = 89.9999, .pm_ra_cosdec = 3000, .pm_dec = 20000};
    lumivar::Place place = lumivar::move_to_epoch(star, 50.0);
    EXPECT_NEAR(place.ra, 171.476207434738582, 1e-10);
    EXPECT_NEAR(place.dec, 89.7192157487412868, 1e-10);
    // From the pole itself the right ascension says which way north was: 90 degrees of it away.
    star = {.ra = 90.0, .dec = 90.0, .pm_dec = 3600.0 * 1000.0};
    place = lumivar::move_to_epoch(star, 1.0);
    EXPECT_NEAR(place.ra, 270.0, 1e-10);
    EXPECT_NEAR(place.dec, 89.0001015205856115, 1e-10);
    // Westward over the first meridian, and back.
    star = {.ra = 0.0, .dec = 0.0, .pm_ra_cosdec = -3600.0};
    place = lumivar::move_to_epoch(star, 10.0);
    // The arc of a straight line is a little shorter than 0.01 degrees.
    EXPECT_NEAR(place.ra, 360.0 - 0.00999999989846086193, 1e-10);
    EXPECT_NEAR(lumivar::move_to_epoch(star, -10.0).ra, 0.00999999989846086193, 1e-10);
}

TEST(Epoch, LeavesAStarWithoutMotionWhereItIs) {
    const lumivar::Motion star = {
        .ra = 101.28715533, .dec = -16.71611586, .parallax = 379.21, .radial_velocity = -5.5};
    const lumivar::Place place = lumivar::move_to_epoch(star, 50.0);
    EXPECT_EQ(place.ra, 101.28715533);
    EXPECT_EQ(place.dec, -16.71611586);
    const lumivar::Place then = lumivar::move_to_epoch(kBarnard, 0.0);
    EXPECT_EQ(then.ra, kBarnard.ra);
    EXPECT_EQ(then.dec, kBarnard.dec);
    lumivar::Motion unknown = kBarnard;
    unknown.pm_ra_cosdec = std::nan("");
    unknown.pm_dec = std::nan("");
    EXPECT_EQ(lumivar::move_to_epoch(unknown, 50.0).ra, kBarnard.ra);
    EXPECT_EQ(lumivar::move_to_epoch({.ra = 360.0}, 1.0).ra, 0.0);
}

}  // namespace
