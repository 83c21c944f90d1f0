// Distances and the allowance by hand. Directions are judged by a public library in sky_wcs_test;
// light and colour by the real renderer, whose own tests are by hand, in frames_test.
#include "support/reference_renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/pixels.h"

namespace {

using reference::Camera;
using reference::Projection;
using reference::Rendering;
using reference::Settings;
using reference::Star;

// 200x100, plain colours, spots of 2 by 2 pixels, peak 4 x 0.25 = 1 for a star of luminance 1.
Settings plain() {
    Settings settings;
    settings.width = 200;
    settings.height = 100;
    settings.spot_size = 20;
    settings.threshold = 0;
    settings.max_luminance = 10;
    settings.brightness = 0.25;
    settings.saturation = 1;
    settings.parallax_crush = 0;
    return settings;
}

Star star(double lon, double lat, double distance = -1) {
    return {.lon = lon, .lat = lat, .luminance = 1, .distance = distance};
}

TEST(ReferenceRenderer, MovesNearStarsOnlyUnderAMovingCamera) {
    Settings settings = plain();
    Camera camera;
    camera.focal = 2;
    camera.position = {1, 0, 0};
    // Straight ahead at 10, seen from 1 to the right: a tenth to the left, times the focal length.
    EXPECT_NEAR(project(star(90, 0, 10), settings, camera).place.x, 100 - 50 * 2 / 10.0, 1e-9);
    EXPECT_NEAR(project(star(90, 0), settings, camera).place.x, 100, 1e-9);
    EXPECT_NEAR(project(star(90, 0, 0), settings, camera).place.x, 100, 1e-9);
    // A crush of 5 takes 0.05 from 1/10: the star is at 20. A crush of 10 or more sends it away.
    settings.parallax_crush = 5;
    EXPECT_NEAR(project(star(90, 0, 10), settings, camera).place.x, 100 - 50 * 2 / 20.0, 1e-9);
    settings.parallax_crush = 11;
    EXPECT_NEAR(project(star(90, 0, 10), settings, camera).place.x, 100, 1e-9);
    // Passed by: the star is behind.
    settings.parallax_crush = 0;
    camera.position = {0, 0, 11};
    EXPECT_FALSE(project(star(90, 0, 10), settings, camera).visible);
    // Nearer than the near plane, in perspective only.
    camera.position = {0, 0, 9.95};
    EXPECT_FALSE(project(star(90, 0, 10), settings, camera).visible);
    settings.projection = Projection::Hemisphere;
    EXPECT_TRUE(project(star(90, 0, 10), settings, camera).visible);
}

// What the real renderer may lack of one still star is the light beyond its reach, and no more than
// the reach at any pixel.
TEST(ReferenceRenderer, AllowsForTheReachWhereTheSpotIsFaintOnly) {
    const Rendering frame = render({star(90, 0)}, plain(), {Camera{}});
    EXPECT_LT(frame.allowance.at(100, 50, 0), 2e-5) << "the peak is well known";
    support::for_each_pixel(200, 100, [&](int x, int y) {
        const double light = frame.light.at(x, y, 0);
        EXPECT_LT(frame.allowance.at(x, y, 0), std::max(reference::reach, 4e-4 * light) + 1e-6);
    });
    // ln(6250) is 8.74: the spot of 2 pixels reaches 5.9.
    EXPECT_GT(frame.allowance.at(106, 50, 0), 0.9 * frame.light.at(106, 50, 0));
    EXPECT_LT(frame.allowance.at(105, 50, 0), 0.01 * frame.light.at(105, 50, 0));
}

TEST(ReferenceRenderer, DrawsNothingOfWhatDoesNotShine) {
    Settings settings = plain();
    Star none = star(90, 0);
    none.luminance = NAN;
    EXPECT_EQ(render({none}, settings, {Camera{}}).light.total(0), 0);
    none.luminance = 0;
    EXPECT_EQ(render({none}, settings, {Camera{}}).light.total(0), 0);
    settings.brightness = 0;
    EXPECT_EQ(render({star(90, 0)}, settings, {Camera{}}).light.total(0), 0);
}

}  // namespace
