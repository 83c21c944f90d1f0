// Where the fast path gives the plain path's very bits: places, shades, and the segments that it
// leaves to the plain streak.
#include <gtest/gtest.h>
#include <libimgops/projection.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <iostream>
#include <limits>

#include "plain_fast_scene.h"
#include "star_scene.h"

namespace {

using namespace plain_fast;
using support::CatalogueStar;

/// Bits are compared; of what is no number it only counts that it is none.
bool same(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

}  // namespace

TEST(Places, HaveTheWeightOfTheirDistance) {
    for (const double distance : {-1.0, 0.0, 0.5, 10.0, std::numeric_limits<double>::infinity()}) {
        for (const double crush : {0.0, 5.0, -5.0, 1000.0}) {
            const VectorN<double, 4> point = star_point(10, 20, distance, crush);
            EXPECT_EQ(point[3], weight_of_distance(distance, crush));
            // By hand: the inverse, less a hundredth a unit, down to nothing.
            const double inverse = distance > 0 ? 1 / distance : 0;
            EXPECT_EQ(point[3], std::max(0.0, inverse - 0.01 * crush));
        }
    }
}

// At a spot's very centre the weight is the energy alone, on either path: what is there is the
// shaded colour times the shaped luminance. An earlier star, elsewhere, makes the fast path draw.
TEST(Shades, AreTheSameForEveryCode) {
    RandomNumbers random(2);
    int lit = 0;
    for (int i = 0; i < 4000; ++i) {
        Scene scene;
        scene.width = star_scene::kWidth;
        scene.height = star_scene::kHeight;
        scene.data = star_scene::plain_settings();
        StarRendererData& data = scene.data;
        data.brightness = random.on_scale(0.01, 100);
        data.saturation = random.chance(0.3) ? 1 : random.between(-1, 4);
        data.bias_exponent = random.chance(0.3) ? 1 : random.between(-1, 3);
        data.max_luminance = random.on_scale(0.01, 1e5);
        data.tint_strength = random.chance(0.3) ? 0 : random.between(-1, 3);
        for (int channel = 0; channel < 3; ++channel) {
            data.tint_color[channel] = static_cast<float>(random.between(-1, 2));
        }
        scene.cams = {star_scene::facing_x()};
        CatalogueStar star;
        star.r = static_cast<unsigned char>(i);
        star.g = static_cast<unsigned char>(i / 2);
        star.b = static_cast<unsigned char>(random.bits());
        star.luminance = static_cast<float>(random.on_scale(1e-4, 1e6));
        scene.stars = {star};
        scene.drew_before = true;
        Drawn plain = draw(scene, DrawPath::Plain);
        Drawn fast = draw(scene, DrawPath::Fast);
        const int x = star_scene::kCentreX, y = star_scene::kCentreY;
        ASSERT_TRUE(same(plain.frame.r(x, y), fast.frame.r(x, y))) << describe(scene);
        ASSERT_TRUE(same(plain.frame.g(x, y), fast.frame.g(x, y))) << describe(scene);
        ASSERT_TRUE(same(plain.frame.b(x, y), fast.frame.b(x, y))) << describe(scene);
        lit += plain.frame.r(x, y) != 0 ? 1 : 0;
    }
    EXPECT_GT(lit, 3000);
}

// Shorter than half a pixel a segment: the difference of two error functions nearly cancels there.
TEST(ShortSegments, KeepTheirPromiseAndAreNearlyAllThePlainPathsToTheBit) {
    RandomNumbers random(3);
    SameValues values;
    for (int i = 0; i < 60; ++i) {
        Scene scene = default_scene(random, 160, 90);
        scene.data.brightness = random.on_scale(0.1, 30);
        // The focal length of 3.2 has 144 pixels a radian at the centre, and up to 1.5 times as
        // many at the corners.
        const int segments = random.whole(1, 20);
        pan(scene, random, segments, segments * random.between(0.01, 0.12));
        scene.drew_before = true;
        // On the frame or a little outside, where segments are short; far off they are longer.
        for (int k = 0; k < 30; ++k) {
            scatter_stars(scene, random, 1);
            set_angles(scene.stars.back(),
                       direction_of(scene.cams.front(), random.between(-2.1, 2.1),
                                    random.between(-1.2, 1.2)));
        }
        expect_promise(scene);
        count_same_values(draw(scene, DrawPath::Plain), draw(scene, DrawPath::Fast), values);
    }
    std::cout << "of " << values.lit << " colours with light " << 100 * values.same / values.lit
              << " % are the plain path's to the bit\n";
    EXPECT_GT(values.same, 0.5 * values.lit);
}

// Shorter than a quarter of the spot's radius it cancels as well.
TEST(ShortSegments, AreThePlainPathsToTheBitUnderLargeSpots) {
    RandomNumbers random(4);
    for (int i = 0; i < 25; ++i) {
        Scene scene = default_scene(random, 48, 27);
        const double radius = random.on_scale(20, 1e6);
        scene.data.spot_size_x = scene.data.spot_size_y = radius / (0.0005 * 48);
        // Up to 4.5 pixels a segment at the corners.
        pan(scene, random, 4, 4 * random.between(0.3, 4));
        for (int k = 0; k < 15; ++k) {
            CatalogueStar star;
            set_angles(star, direction_of(scene.cams[2], random.between(-1.7, 1.7),
                                          random.between(-1, 1)));
            star.g = static_cast<unsigned char>(random.bits());
            scene.stars.push_back(star);
        }
        scene.drew_before = true;
        expect_same_bits(scene);
    }
}

// And what is a little longer keeps the bound, alone on the frame.
TEST(ShortSegments, KeepTheBoundRightAboveTheirLength) {
    RandomNumbers random(5);
    double worst = 0;
    for (int i = 0; i < 150; ++i) {
        Scene scene = default_scene(random, 160, 90);
        const double radius = random.on_scale(1, 200);
        scene.data.spot_size_x = scene.data.spot_size_y = radius / (0.0005 * 160);
        const double pixels = std::max(0.5, radius / 4) * random.between(1, 1.5);
        pan(scene, random, 1, pixels / 144 * 57.2958);
        CatalogueStar star;
        set_angles(star, direction_of(scene.cams[0], random.between(-0.5, 0.5),
                                      random.between(-0.5, 0.5)));
        scene.stars = {star};
        scene.drew_before = true;
        worst = std::max(worst, expect_promise(scene).ordinary);
    }
    EXPECT_GT(worst, 0);
}
