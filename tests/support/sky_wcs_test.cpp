#include "support/sky_wcs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <utility>

#include "support/reference_renderer.h"

namespace {

using reference::Camera;
using reference::Projected;
using reference::Projection;
using reference::Settings;
using reference::Star;
using support::SkyProjection;
using support::SkyView;
using support::SkyWcs;

constexpr double degree = std::numbers::pi / 180;

SkyView view(SkyProjection projection) {
    return {.ra = 83,
            .dec = -1,
            .roll = 0,
            .width = 1920,
            .height = 1080,
            .projection = projection,
            .focal = 4.7};
}

TEST(SkyWcs, PutsTheLookAtPointAtTheCentre) {
    for (const auto projection : {SkyProjection::Tan, SkyProjection::Sin, SkyProjection::Arc}) {
        const auto pixel = SkyWcs(view(projection)).pixel(83, -1);
        ASSERT_TRUE(pixel);
        EXPECT_NEAR(pixel->x, 960, 1e-9);
        EXPECT_NEAR(pixel->y, 540, 1e-9);
    }
}

// Ten degrees north along the meridian, by the radii of the three projections.
TEST(SkyWcs, NorthIsUpByEachProjectionsRadius) {
    const auto up = [](SkyProjection projection) {
        const auto pixel = SkyWcs(view(projection)).pixel(83, 9);
        EXPECT_TRUE(pixel);
        EXPECT_NEAR(pixel->x, 960, 1e-9);
        return 540 - pixel->y;
    };
    EXPECT_NEAR(up(SkyProjection::Tan), 540 * 4.7 * std::tan(10 * degree), 1e-9);
    EXPECT_NEAR(up(SkyProjection::Sin), 540 * std::sin(10 * degree), 1e-9);
    EXPECT_NEAR(up(SkyProjection::Arc), 540 * 10 / 90.0, 1e-9);
}

TEST(SkyWcs, EastIsToTheLeft) {
    SkyView equator = view(SkyProjection::Sin);
    equator.dec = 0;
    const auto pixel = SkyWcs(equator).pixel(83 + 30, 0);
    ASSERT_TRUE(pixel);
    EXPECT_NEAR(pixel->x, 960 - 270, 1e-9);  // sin 30 degrees is a half
    EXPECT_NEAR(pixel->y, 540, 1e-9);
}

TEST(SkyWcs, RollTurnsThePicturesUpTowardsEast) {
    SkyView rolled = view(SkyProjection::Arc);
    rolled.dec = 0;
    rolled.roll = 90;
    const SkyWcs sky(rolled);
    const auto east = sky.pixel(83 + 9, 0);  // 9 degrees are 54 pixels
    ASSERT_TRUE(east);
    EXPECT_NEAR(east->x, 960, 1e-9);
    EXPECT_NEAR(east->y, 540 - 54, 1e-9);
    const auto north = sky.pixel(83, 9);
    ASSERT_TRUE(north);
    EXPECT_NEAR(north->x, 960 + 54, 1e-9);
    EXPECT_NEAR(north->y, 540, 1e-9);
}

TEST(SkyWcs, AtThePoleTheMeridianOfTheViewRunsDown) {
    SkyView pole = view(SkyProjection::Arc);
    pole.dec = 90;
    const auto pixel = SkyWcs(pole).pixel(83, 81);
    ASSERT_TRUE(pixel);
    EXPECT_NEAR(pixel->x, 960, 1e-9);
    EXPECT_NEAR(pixel->y, 540 + 54, 1e-9);
}

TEST(SkyWcs, SeesNothingBehind) {
    for (const auto projection : {SkyProjection::Tan, SkyProjection::Sin, SkyProjection::Arc}) {
        const SkyWcs sky(view(projection));
        EXPECT_FALSE(sky.pixel(263, 1));
        EXPECT_FALSE(sky.pixel(83 + 100, -1));
        EXPECT_TRUE(sky.pixel(83 + 89, -1));
    }
}

// The reference renderer's projections against the library's.
TEST(ReferenceRenderer, AgreesWithTheSkyProjectionsOfAstronomers) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> turn(0, 360);
    std::uniform_real_distribution<double> height(-1, 1);
    const auto latitude = [&] { return std::asin(height(random)) * 180 / std::numbers::pi; };
    const std::pair<Projection, SkyProjection> kinds[] = {
        {Projection::Perspective, SkyProjection::Tan},
        {Projection::Hemisphere, SkyProjection::Sin},
        {Projection::Equidistant, SkyProjection::Arc}};
    int seen = 0;
    for (int view = 0; view < 50; ++view) {
        const double ra = turn(random);
        const double dec = view == 0 ? 90 : view == 1 ? -90 : latitude();
        const double roll = turn(random);
        const Camera camera = reference::look_at(ra, dec, roll, 1.7);
        for (const auto& [projection, sky_projection] : kinds) {
            Settings settings;
            settings.width = 200;
            settings.height = 100;
            settings.projection = projection;
            const support::SkyWcs sky(
                {ra, dec, roll, settings.width, settings.height, sky_projection, camera.focal});
            for (int i = 0; i < 40; ++i) {
                const Star one{.lon = turn(random), .lat = latitude()};
                const auto expected = sky.pixel(one.lon, one.lat);
                const Projected found = project(one, settings, camera);
                ASSERT_EQ(found.visible, expected.has_value());
                if (expected && std::fabs(expected->x) < 1e4 && std::fabs(expected->y) < 1e4) {
                    EXPECT_NEAR(found.place.x, expected->x, 1e-6);
                    EXPECT_NEAR(found.place.y, expected->y, 1e-6);
                    ++seen;
                }
            }
        }
    }
    EXPECT_GT(seen, 2000);
}

}  // namespace
