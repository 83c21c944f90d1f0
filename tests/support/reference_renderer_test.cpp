#include "support/reference_renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using reference::Camera;
using reference::Projected;
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

TEST(ReferenceRenderer, ProjectsByHand) {
    Settings settings = plain();
    Camera camera;  // looks along +z, where lon is 90
    camera.focal = 2;
    const double root_third = std::sqrt(1 / 3.0);

    Projected p = project(star(90, 0), settings, camera);
    EXPECT_TRUE(p.visible);
    EXPECT_NEAR(p.place.x, 100, 1e-9);
    EXPECT_NEAR(p.place.y, 50, 1e-9);

    // 30 degrees off towards +x (lon falls): tan is sqrt(1/3), sin a half, the angle a third of 90.
    p = project(star(60, 0), settings, camera);
    EXPECT_NEAR(p.place.x, 100 + 50 * 2 * root_third, 1e-9);
    settings.projection = Projection::Hemisphere;
    p = project(star(60, 0), settings, camera);
    EXPECT_NEAR(p.place.x, 100 + 50 * 0.5, 1e-9);
    settings.projection = Projection::Equidistant;
    p = project(star(60, 0), settings, camera);
    EXPECT_NEAR(p.place.x, 100 + 50 / 3.0, 1e-9);
    // 45 degrees up: rows count downwards.
    p = project(star(90, 45), settings, camera);
    EXPECT_NEAR(p.place.x, 100, 1e-9);
    EXPECT_NEAR(p.place.y, 50 - 25, 1e-9);
}

TEST(ReferenceRenderer, PlacesStarsBehindWhereStreaksMayBegin) {
    Settings settings = plain();
    Camera camera;
    camera.focal = 2;
    // 150 degrees from the axis towards +x: mirrored through the centre in perspective, folded back
    // to 30 degrees on the disks.
    const Star behind = star(-60, 0);
    Projected p = project(behind, settings, camera);
    EXPECT_FALSE(p.visible);
    EXPECT_NEAR(p.place.x, 100 - 100 * std::sqrt(1 / 3.0), 1e-9);
    settings.projection = Projection::Hemisphere;
    p = project(behind, settings, camera);
    EXPECT_FALSE(p.visible);
    EXPECT_NEAR(p.place.x, 100 + 25, 1e-9);
    settings.projection = Projection::Equidistant;
    p = project(behind, settings, camera);
    EXPECT_FALSE(p.visible);
    EXPECT_NEAR(p.place.x, 100 + 50 / 3.0, 1e-9);
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

TEST(ReferenceRenderer, ShapesLuminanceInTheOrderThresholdBiasCeiling) {
    Settings settings = plain();
    Star one = star(0, 0);
    one.luminance = 0.25F;
    settings.threshold = 0.25;
    settings.bias = 2;  // the square root
    EXPECT_NEAR(shade(one, settings).luminance, 0.5, 1e-6);
    settings.threshold = 0.2500001;
    EXPECT_EQ(shade(one, settings).luminance, 0);
    settings.threshold = 0;
    settings.max_luminance = 0.4;
    EXPECT_EQ(shade(one, settings).luminance, 0.4);
}

TEST(ReferenceRenderer, ShapesColourInTheOrderTintSaturation) {
    Settings settings = plain();
    Star one = star(0, 0);
    one.srgb = {255, 0, 10};
    auto colour = shade(one, settings).colour;
    EXPECT_NEAR(colour[0], 1, 1e-15);
    EXPECT_NEAR(colour[1], 0, 1e-15);
    EXPECT_NEAR(colour[2], 10 / 255.0 / 12.92, 1e-15);

    settings.saturation = 2;
    colour = shade(one, settings).colour;
    EXPECT_NEAR(colour[0], 1.5, 1e-15);
    EXPECT_NEAR(colour[1], -0.5, 1e-15);

    settings.tint_strength = 0.25;
    settings.tint = {0, 1, 0};
    settings.saturation = 0.5;
    colour = shade(one, settings).colour;  // (0.75, 0.25, ...), half way to grey
    EXPECT_NEAR(colour[0], 0.625, 1e-15);
    EXPECT_NEAR(colour[1], 0.375, 1e-15);

    settings.saturation = 0;
    EXPECT_EQ(shade(one, settings).colour, (reference::Triple{0.5, 0.5, 0.5}));
}

TEST(ReferenceRenderer, DimsSpotsBelowOnePixelInsteadOfShrinkingThem) {
    Settings settings = plain();
    EXPECT_NEAR(frame_spot(settings).spot.width, 2, 1e-15);
    EXPECT_NEAR(frame_spot(settings).intensity, 1, 1e-15);
    settings.aspect_ratio = 3;
    EXPECT_NEAR(frame_spot(settings).spot.width, 6, 1e-15);
    EXPECT_NEAR(frame_spot(settings).spot.height, 2, 1e-15);
    settings.spot_size = 2.5;  // 0.75 by 0.25 pixels
    EXPECT_EQ(frame_spot(settings).spot.width, 1);
    EXPECT_EQ(frame_spot(settings).spot.height, 1);
    EXPECT_NEAR(frame_spot(settings).intensity, 0.75 * 0.25, 1e-15);
}

TEST(ReferenceRenderer, AStillStarGivesItsPeakAndItsTotal) {
    Settings settings = plain();
    Star one = star(90, 0);
    one.srgb = {255, 255, 0};
    const Rendering frame = render({one}, settings, {Camera{}});
    EXPECT_NEAR(frame.light.at(100, 50, 0), 1, 1e-9);
    EXPECT_NEAR(frame.light.at(102, 50, 1), 1 / std::numbers::e, 1e-9);
    EXPECT_NEAR(frame.light.total(0), std::numbers::pi * 2 * 2, 1e-6);
    EXPECT_EQ(frame.light.total(2), 0);
}

TEST(ReferenceRenderer, AMovingStarKeepsItsTotalOverAllSegments) {
    std::vector<Camera> cameras;
    for (int i = 0; i <= 4; ++i) {
        cameras.push_back(reference::look_at(80 + 4 * i, 2 * i, 10 * i, 2));
    }
    const Rendering frame = render({star(88, 3)}, plain(), cameras);
    EXPECT_NEAR(frame.light.total(0), std::numbers::pi * 2 * 2, 1e-5);
}

TEST(ReferenceRenderer, DrawsSegmentsWithOneVisibleEndOnly) {
    const auto total = [](std::initializer_list<double> longitudes) {
        std::vector<Camera> cameras;
        for (const double lon : longitudes) {
            cameras.push_back(reference::look_at(lon, 0, 0, 2));
        }
        Settings settings = plain();
        settings.projection = Projection::Hemisphere;
        return render({star(0, 0)}, settings, cameras).light.total(0);
    };
    EXPECT_EQ(total({120, 100}), 0);
    EXPECT_NEAR(total({80, 100}), std::numbers::pi * 4, 1e-5);
    EXPECT_NEAR(total({80, 100, 120}), std::numbers::pi * 4 / 2, 1e-5);
    EXPECT_NEAR(total({100, 80, 100}), std::numbers::pi * 4, 1e-5);
}

// What the real renderer may lack of one still star is the light beyond its reach, and no more than
// the reach at any pixel.
TEST(ReferenceRenderer, AllowsForTheReachWhereTheSpotIsFaintOnly) {
    const Rendering frame = render({star(90, 0)}, plain(), {Camera{}});
    EXPECT_LT(frame.allowance.at(100, 50, 0), 2e-5) << "the peak is well known";
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 200; ++x) {
            const double light = frame.light.at(x, y, 0);
            EXPECT_LT(frame.allowance.at(x, y, 0), std::max(reference::reach, 4e-4 * light) + 1e-6);
        }
    }
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
