// Frames of the sky, against places that are known and the ones that Astropy gives.
//
// Astropy 5.2 computed the stars' places: `SkyCoord(...).galactic` and `.barycentricmeanecliptic`.
// Its galactic pole is that of 1958 moved to J2000, which differs from the one used here by 0.02
// arcseconds.
#include "astronomy/frame.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using lumivar::Frame;
using lumivar::Place;

constexpr double kArcsecond = 1.0 / 3600.0;

TEST(Frames, PlaceKnownStars) {
    const struct {
        const char* name;
        Place icrs, galactic, ecliptic;
    } stars[] = {
        {"Sirius",
         {101.28716, -16.71612},
         {227.2302970001992, -8.890278981678621},
         {104.08167543183151, -39.60524130249557}},
        {"Vega",
         {279.23474, 38.78369},
         {67.44821063365063, 19.237248801820257},
         {285.31640415845925, 61.73285418371828}},
        {"Polaris",
         {37.95452, 89.26411},
         {123.28054865253196, 26.46139669086781},
         {88.56758369643354, 66.10147255289985}},
        {"Betelgeuse",
         {88.79294, 7.40706},
         {199.78724021360534, -8.958604352981355},
         {88.7546038300634, -16.027003367949817}},
    };
    for (const auto& star : stars) {
        SCOPED_TRACE(star.name);
        const Place galactic = to_frame(star.icrs, Frame::Galactic);
        EXPECT_NEAR(galactic.ra, star.galactic.ra, 0.1 * kArcsecond);
        EXPECT_NEAR(galactic.dec, star.galactic.dec, 0.1 * kArcsecond);
        const Place ecliptic = to_frame(star.icrs, Frame::Ecliptic);
        EXPECT_NEAR(ecliptic.ra, star.ecliptic.ra, 0.1 * kArcsecond);
        EXPECT_NEAR(ecliptic.dec, star.ecliptic.dec, 0.1 * kArcsecond);
        EXPECT_EQ(to_frame(star.icrs, Frame::Equatorial).ra, star.icrs.ra);
        EXPECT_EQ(to_frame(star.icrs, Frame::Equatorial).dec, star.icrs.dec);
    }
}

TEST(Frames, HaveTheirPolesAndOriginsWhereTheyAreDefined) {
    EXPECT_NEAR(to_frame({192.85948, 27.12825}, Frame::Galactic).dec, 90.0, 1e-6);
    EXPECT_NEAR(to_frame({12.85948, -27.12825}, Frame::Galactic).dec, -90.0, 1e-6);
    // The centre of the galaxy: 17 h 45 min 37.224 s, -28 degrees 56' 10.23".
    const Place centre = to_frame({266.4051, -28.936175}, Frame::Galactic);
    EXPECT_NEAR(std::remainder(centre.ra, 360.0), 0.0, 0.3 * kArcsecond);
    EXPECT_NEAR(centre.dec, 0.0, 0.3 * kArcsecond);
    // The north celestial pole: 122.93192 is the published longitude.
    EXPECT_NEAR(to_frame({0.0, 90.0}, Frame::Galactic).ra, 122.93192, 1e-9);
    EXPECT_NEAR(to_frame({0.0, 90.0}, Frame::Galactic).dec, 27.12825, 1e-9);
    // The Sun at the summer solstice stands the obliquity above the equator, at longitude 90.
    const Place solstice = to_frame({90.0, 84381.406 * kArcsecond}, Frame::Ecliptic);
    EXPECT_NEAR(solstice.ra, 90.0, 1e-9);
    EXPECT_NEAR(solstice.dec, 0.0, 1e-9);
    EXPECT_NEAR(to_frame({270.0, 66.5607}, Frame::Ecliptic).dec, 90.0, 0.2 * kArcsecond);
}

TEST(Frames, GiveLongitudesBelowAFullCircle) {
    for (const Frame frame : {Frame::Equatorial, Frame::Galactic, Frame::Ecliptic}) {
        for (const double ra : {0.0, 360.0, -1e-15, 359.99999999999994, 720.0, -90.0}) {
            const Place place = to_frame({ra, 0.0}, frame);
            EXPECT_GE(place.ra, 0.0) << ra;
            EXPECT_LT(place.ra, 360.0) << ra;
        }
    }
    EXPECT_EQ(to_frame({360.0, 5.0}, Frame::Equatorial).ra, 0.0);
    EXPECT_EQ(to_frame({-90.0, 5.0}, Frame::Equatorial).ra, 270.0);
    // The equinox lies on the seam.
    EXPECT_NEAR(std::remainder(to_frame({0.0, 0.0}, Frame::Ecliptic).ra, 360.0), 0.0, 1e-12);
}

}  // namespace
