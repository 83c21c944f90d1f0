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

constexpr SkyProjection kAll[] = {SkyProjection::Tan, SkyProjection::Sin, SkyProjection::Arc};

/// A view of longitude 83.
SkyView view(SkyProjection projection, double dec = -1, double roll = 0) {
    return {.ra = 83,
            .dec = dec,
            .roll = roll,
            .width = 1920,
            .height = 1080,
            .projection = projection,
            .focal = 4.7};
}

TEST(SkyWcs, PutsStarsWhereTheyAreByHand) {
    const struct {
        const char* what;
        SkyView seen;
        double ra, dec;
        double right, up;  ///< of the frame's centre, pixels
    } rows[] = {
        {"the centre", view(SkyProjection::Tan), 83, -1, 0, 0},
        {"the centre", view(SkyProjection::Sin), 83, -1, 0, 0},
        {"the centre", view(SkyProjection::Arc), 83, -1, 0, 0},
        // Ten degrees along the meridian, by the radii of the three projections.
        {"north", view(SkyProjection::Tan), 83, 9, 0, 540 * 4.7 * std::tan(10 * degree)},
        {"north", view(SkyProjection::Sin), 83, 9, 0, 540 * std::sin(10 * degree)},
        {"north", view(SkyProjection::Arc), 83, 9, 0, 60},
        // The sine of 30 degrees is a half.
        {"east is to the left", view(SkyProjection::Sin, 0), 83 + 30, 0, -270, 0},
        // 9 degrees are 54 pixels.
        {"east is up after a roll of 90", view(SkyProjection::Arc, 0, 90), 83 + 9, 0, 0, 54},
        {"north is to the right then", view(SkyProjection::Arc, 0, 90), 83, 9, 54, 0},
        {"at the pole the meridian runs down", view(SkyProjection::Arc, 90), 83, 81, 0, -54},
    };
    for (const auto& row : rows) {
        const auto pixel = SkyWcs(row.seen).pixel(row.ra, row.dec);
        ASSERT_TRUE(pixel) << row.what;
        EXPECT_NEAR(pixel->x, 960 + row.right, 1e-9) << row.what;
        EXPECT_NEAR(pixel->y, 540 - row.up, 1e-9) << row.what;
    }
}

TEST(SkyWcs, SeesNothingBehind) {
    for (const SkyProjection projection : kAll) {
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
