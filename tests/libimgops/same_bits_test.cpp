// Where the fast path gives the plain path's very bits: places, shades, and the segments that it
// leaves to the plain streak.
#include <gtest/gtest.h>
#include <libimgops/projection.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "plain_fast_scene.h"
#include "star_scene.h"

namespace {

using namespace plain_fast;
using support::CatalogueStar;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
const double kSpecial[] = {kNone, kInf, -kInf, 0.0, -0.0, 5e-324, -5e-324,
                           1e-30, 90,   -90,   180, 1e30, -1e300};

/// Bits are compared; of what is no number it only counts that it is none.
bool same(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

}  // namespace

TEST(Places, AreTheSameInOneStepAndInTwo) {
    RandomNumbers random(1);
    const auto number = [&](double low, double high) {
        return random.chance(0.02) ? random.of(kSpecial) : random.between(low, high);
    };
    int visible = 0;
    for (int i = 0; i < 200000; ++i) {
        const double lon = number(-400, 400), lat = number(-100, 100);
        const double distance = random.chance(0.5) ? number(-1, 100) : random.on_scale(1e-3, 1e6);
        const double crush = random.chance(0.5) ? 0 : number(-10, 50);
        Matrix4<double> m = random_rotation(random);
        for (int axis = 0; axis < 3; ++axis) {
            m(3, axis) = number(-10, 10);
        }
        const auto projection = static_cast<op_stars_projection>(random.whole(0, 2));
        if (projection == Persp) {
            m = m * Matrix4<double>::perspective(random.on_scale(0.1, 10), 0.1, -1);
        }
        const double x1 = number(0.1, 4), y1 = number(0.1, 4);
        const int width = random.whole(1, 5000), height = random.whole(1, 5000);
        Vector2 whole, steps;
        const bool in_one = world_to_screen(lon, lat, distance, crush, m, projection, width, height,
                                            -x1, x1, -y1, y1, whole);
        const bool in_two = point_to_screen(star_point(lon, lat, distance, crush), m, projection,
                                            width, height, -x1, x1, -y1, y1, steps);
        ASSERT_EQ(in_one, in_two);
        ASSERT_TRUE(same(whole[0], steps[0]) && same(whole[1], steps[1]));
        visible += in_one ? 1 : 0;
    }
    EXPECT_GT(visible, 50000);
}

TEST(Places, HaveTheWeightOfTheirDistance) {
    for (const double distance : {-1.0, 0.0, 0.5, 10.0, kInf}) {
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

// Shorter than half a pixel a segment: the difference of two error functions cancels there.
TEST(ShortSegments, AreThePlainPathsToTheBit) {
    RandomNumbers random(3);
    for (int i = 0; i < 60; ++i) {
        Scene scene = default_scene(random, 160, 90);
        scene.data.brightness = random.on_scale(0.1, 30);
        // The focal length of 3.2 has 144 pixels a radian at the centre, and up to 1.5 times as
        // many at the corners.
        const int segments = random.whole(1, 20);
        pan(scene, random, segments, segments * random.between(0.01, 0.12));
        scatter_stars(scene, random, 60);
        scene.drew_before = true;
        // Those on the frame, whose segments are short; far off they are longer.
        std::vector<CatalogueStar> on_frame;
        for (const CatalogueStar& star : scene.stars) {
            Vector2 at;
            const camera& cam = scene.cams.front();
            if (world_to_screen(star.lon, star.lat, -1, 0, projection_matrix(cam, Persp), Persp,
                                160, 90, scene.data.window_x0, scene.data.window_x1, -1, 1, at) &&
                at[0] > -20 && at[0] < 180 && at[1] > -20 && at[1] < 110) {
                on_frame.push_back(star);
            }
        }
        scene.stars = on_frame;
        expect_same_bits(scene);
    }
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
    RecordProperty("worst", std::to_string(worst));
}
