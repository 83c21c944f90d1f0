// The reference renderer's projections against those of a public library.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <utility>

#include "support/reference_renderer.h"
#include "support/sky_wcs.h"

namespace {

using reference::Camera;
using reference::Projected;
using reference::Projection;
using reference::Settings;
using reference::Star;
using support::SkyProjection;

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
