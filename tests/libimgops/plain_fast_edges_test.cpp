// The fast path against the plain one where numbers are at the end of their range or beyond it, and
// stars at the end of the frame.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "plain_fast_scene.h"
#include "star_scene.h"
#include "support/rounds.h"

namespace {

using namespace plain_fast;
using support::CatalogueStar;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();
const double kLargest = std::numeric_limits<double>::max();

/// What no field should hold, and what it hardly should.
const double kSpecial[] = {kNone,   -kNone, kInfinite, -kInfinite, 0.0,      -0.0,     5e-324,
                           -5e-324, 1e-310, 1e-45,     -1e-45,     1e-38,    1e-30,    -1e-30,
                           1e-5,    -1e-5,  0.3,       -0.3,       1.0,      -1.0,     7.0,
                           -7.0,    1e5,    -1e5,      1e10,       -1e10,    1e30,     -1e30,
                           3e38,    -3e38,  1e300,     -1e300,     kLargest, -kLargest};

/// A small frame through a camera along x, a few stars in it and a few around it.
Scene small_scene(op_stars_projection projection, bool moves) {
    Scene scene;
    scene.width = 24;
    scene.height = 14;
    scene.data = star_scene::plain_settings();
    scene.data.spot_size_x = scene.data.spot_size_y = 150;
    scene.data.projection = projection;
    scene.data.tint_strength = 0.25;
    scene.data.tint_color = Color3(1, 0.5F, 0.25F);
    scene.cams = {star_scene::facing_x()};
    if (moves) {
        scene.cams.push_back(star_scene::facing_x(4));
        scene.cams.push_back(star_scene::facing_x(95));
    }
    for (int i = 0; i < 12; ++i) {
        CatalogueStar star;
        star.lon = 9 * i - 40;
        star.lat = 7 * i % 50 - 25;
        star.luminance = 0.5F + static_cast<float>(i);
        star.g = static_cast<unsigned char>(20 * i);
        star.distance = i % 3 == 0 ? -1 : 3 * i;
        scene.stars.push_back(star);
    }
    return scene;
}

/// Something of a scene that gets a value.
struct Special {
    const char* name;
    std::function<void(Scene&, double)> set;
};
void PrintTo(const Special& special, std::ostream* out) { *out << special.name; }

const Special kSettings[] = {
    {"window_x0", [](Scene& s, double v) { s.data.window_x0 = v; }},
    {"window_x1", [](Scene& s, double v) { s.data.window_x1 = v; }},
    {"window_y0", [](Scene& s, double v) { s.data.window_y0 = v; }},
    {"window_y1", [](Scene& s, double v) { s.data.window_y1 = v; }},
    {"spot_size_x", [](Scene& s, double v) { s.data.spot_size_x = v; }},
    {"spot_size_y", [](Scene& s, double v) { s.data.spot_size_y = v; }},
    {"threshold", [](Scene& s, double v) { s.data.threshold = v; }},
    {"max_luminance", [](Scene& s, double v) { s.data.max_luminance = v; }},
    {"brightness", [](Scene& s, double v) { s.data.brightness = v; }},
    {"saturation", [](Scene& s, double v) { s.data.saturation = v; }},
    {"bias_exponent", [](Scene& s, double v) { s.data.bias_exponent = v; }},
    {"tint_strength", [](Scene& s, double v) { s.data.tint_strength = v; }},
    {"parallax_crush", [](Scene& s, double v) { s.data.parallax_crush = v; }},
};

const Special kOthers[] = {
    {"tint", [](Scene& s, double v) { s.data.tint_color[1] = static_cast<float>(v); }},
    {"focal", [](Scene& s, double v) { s.cams.front().focal = v; }},
    {"near_clip", [](Scene& s, double v) { s.cams.front().near_clip = v; }},
    {"far_clip", [](Scene& s, double v) { s.cams.front().far_clip = v; }},
    {"lon", [](Scene& s, double v) { s.stars[5].lon = v; }},
    {"lat", [](Scene& s, double v) { s.stars[5].lat = v; }},
    {"distance", [](Scene& s, double v) { s.stars[5].distance = v; }},
    {"luminance",
     [](Scene& s, double v) {
         s.data.threshold = -kInfinite;
         s.stars[5].luminance = static_cast<float>(v);
     }},
    {"luminance_without_ceiling",
     [](Scene& s, double v) {
         s.data.max_luminance = kInfinite;
         s.data.spot_size_x = 1e7;
         s.stars[5].luminance = static_cast<float>(v);
     }},
};

/// Expects the promise of small scenes in which one thing has a special value, one after another.
void expect_with_every_value(const std::function<void(Scene&, double)>& set) {
    for (const op_stars_projection projection : {Persp, HemiSph, AzEqu}) {
        for (const bool moves : {false, true}) {
            for (const double value : kSpecial) {
                Scene scene = small_scene(projection, moves);
                set(scene, value);
                SCOPED_TRACE("the value is " + std::to_string(value));
                expect_promise(scene);
            }
        }
    }
}

}  // namespace

class SpecialValues : public testing::TestWithParam<Special> {};
const auto name_of_special = [](const auto& tested) { return std::string(tested.param.name); };

TEST_P(SpecialValues, AreDrawnAsThePlainPathDoes) { expect_with_every_value(GetParam().set); }

INSTANTIATE_TEST_SUITE_P(Settings, SpecialValues, testing::ValuesIn(kSettings), name_of_special);
INSTANTIATE_TEST_SUITE_P(Others, SpecialValues, testing::ValuesIn(kOthers), name_of_special);

// A negative brightness makes light of negative luminances.
TEST(SpecialSettings, AreDrawnAsThePlainPathDoesInNegativeLight) {
    for (const Special& special : kSettings) {
        SCOPED_TRACE(special.name);
        expect_with_every_value([&](Scene& scene, double value) {
            scene.data.brightness = -2;
            scene.data.threshold = -kInfinite;
            for (CatalogueStar& star : scene.stars) {
                star.luminance = -100 * star.luminance;
                // Of one colour, so that no star takes another one's light away: the largest value
                // of what is left would say nothing of the light that went into it.
                star.g = star.r;
            }
            special.set(scene, value);
        });
    }
}

// A disk's direction is one of length 1: where squares overflow it is none, and what is behind the
// camera is not.
TEST(SpecialCameras, SeeAsThePlainPathDoesAheadAndBehind) {
    const int step = support::kPlaysLess ? 3 : 1;  // 3 meets every row and every column
    for (const double turn : {0, 180}) {
        for (int element = 0; element < 16; element += step) {
            expect_with_every_value([&](Scene& scene, double value) {
                for (CatalogueStar& star : scene.stars) {
                    star.lon += turn;
                }
                scene.cams.back().xform(element / 4, element % 4) = value;
            });
        }
    }
}

// A pinhole's picture does not depend on its matrix's scale.
TEST(SpecialCameras, SeeAsThePlainPathDoesAtAnyScale) {
    for (const double scale : {1e-300, 1e-45, 1e-42, 1e-38, 1e-20, 1e20, 1e37, 1e45, 1e300}) {
        for (const bool moves : {false, true}) {
            Scene scene = small_scene(Persp, moves);
            scale_cameras(scene, scale);
            SCOPED_TRACE(std::to_string(scale));
            EXPECT_GT(expect_promise(scene).peak, 0);
        }
    }
}

// Where planes around the frame leave single precision, as a whole or in part.
TEST(SpecialCameras, SeeAsThePlainPathDoesWhereSinglePrecisionEnds) {
    RandomNumbers random(3);
    double brightest = 0;
    for (const double scale : {1e-45, 3e-45, 1e-44, 1e-40, 1e38, 3.5e38, 4.5e38, 1e39, 1e160}) {
        for (int i = 0; i < 30; ++i) {
            Scene scene = default_scene(random, 48, 27);
            scatter_stars(scene, random, 60);
            scale_cameras(scene, scale);
            SCOPED_TRACE(scale);
            brightest = std::max(brightest, expect_promise(scene).peak);
        }
    }
    EXPECT_GT(brightest, 0);
}

// Places whose squares overflow have no length; divided by it, a star behind comes out ahead.
TEST(SpecialCameras, SeeAsThePlainPathDoesWherePlacesHaveNoLength) {
    for (const op_stars_projection projection : {HemiSph, AzEqu}) {
        for (const double huge : {1e153, -1e153, 1e160, -1e160, 1e300}) {
            for (int element = 0; element < 16; ++element) {
                for (const double distance : {-1.0, 10.0, 1e-150}) {
                    Scene scene = small_scene(projection, false);
                    scene.cams.front().xform(element / 4, element % 4) = huge;
                    for (CatalogueStar& star : scene.stars) {
                        star.lon = 36 * star.lon;  // all around
                        star.distance = distance;
                    }
                    expect_promise(scene);
                }
            }
        }
    }
}

TEST(SpecialStars, PassAThresholdThatIsTheirOwn) {
    Scene scene = small_scene(Persp, false);
    for (const float luminance : {0.5F, 1e-30F, 3e38F}) {
        for (const float threshold : {luminance, std::nextafter(luminance, 3.4e38F)}) {
            scene.stars.resize(1);
            scene.stars[0] = CatalogueStar();
            scene.stars[0].luminance = luminance;
            scene.data.bias_exponent = 0.001;
            scene.data.threshold = static_cast<double>(threshold);
            expect_promise(scene);
            EXPECT_EQ(draw(scene, DrawPath::Fast).drew, threshold == luminance) << luminance;
        }
    }
}

// The plain path only reads coverage; so its bits stay whatever they mean.
TEST(SpecialCoverage, IsNeverWritten) {
    const float signalling = std::bit_cast<float>(0x7fa00001U);
    const float own = std::bit_cast<float>(0xffc12345U);
    for (const float coverage :
         {0.0F, -0.0F, 0.3F, 0.9999999F, 1.0F, 1.0000001F, -5.0F, 1e30F, -1e30F,
          static_cast<float>(kInfinite), own, signalling, 1e-45F, -1e-45F}) {
        for (const bool moves : {false, true}) {
            for (const double brightness : {0.25, 1e30, 3e37}) {
                for (const double saturation : {1.0, 0.0, 3.0}) {
                    Scene scene = small_scene(Persp, moves);
                    scene.drew_before = true;
                    scene.data.brightness = brightness;
                    scene.data.saturation = saturation;
                    scene.coverage.assign(24 * 14, coverage);
                    SCOPED_TRACE(coverage);
                    expect_promise(scene);
                }
            }
        }
    }
}

// Infinitely less than covered: whether a pixel becomes infinite or not a number hangs on whether
// its weight is the smallest number or nothing, so that only the coverage itself is compared.
TEST(SpecialCoverage, IsNeverWrittenByInfiniteLight) {
    for (const bool moves : {false, true}) {
        Scene scene = small_scene(Persp, moves);
        scene.drew_before = true;
        scene.coverage.assign(24 * 14, static_cast<float>(-kInfinite));
        Drawn fast = draw(scene, DrawPath::Fast);
        for (int x = 0; x < scene.width; ++x) {
            for (int y = 0; y < scene.height; ++y) {
                ASSERT_EQ(fast.frame.a(x, y), -kInfinite);
            }
        }
        EXPECT_FALSE(fast.frame.is_blank());
    }
}

// Every place around the frame's sides, a hundredth of a pixel apart where the light ends.
TEST(FrameSides, CutTheLightOfStillAndMovingStarsAlike) {
    for (const double radius : {1.0, 2.4, 6.5}) {
        for (const bool moves : {false, true}) {
            Scene scene;
            scene.width = 40;
            scene.height = 20;
            scene.data = star_scene::plain_settings();
            scene.data.spot_size_x = scene.data.spot_size_y = radius / (0.0005 * 40);
            scene.cams = {star_scene::facing_x()};
            if (moves) {
                scene.cams.push_back(star_scene::facing_x(1.5));
            }
            scene.drew_before = true;
            CatalogueStar star;
            const double reach = radius * std::sqrt(std::log(6250.0));
            int lit = 0;
            int dark = 0;
            for (int i = -150; i < 150; ++i) {
                // The window is 4 wide and 2 high: 10 pixels a unit.
                const double out = (reach + 1 + 0.01 * i) / 10;
                for (const auto& [u, v] : {std::pair(-2 - out, 0.31), std::pair(2 + out, -0.2),
                                           std::pair(0.1, 1 + out), std::pair(-0.7, -1 - out)}) {
                    set_angles(star, direction_of(scene.cams.front(), u, v));
                    scene.stars = {star};
                    const std::vector<bool> plain = visited(scene, DrawPath::Plain);
                    ASSERT_TRUE(plain == visited(scene, DrawPath::Fast)) << describe(scene);
                    (plain == std::vector<bool>(plain.size()) ? dark : lit)++;
                }
            }
            EXPECT_GT(lit, 100);
            EXPECT_GT(dark, 100);
        }
    }
}

// Streaks beside the frame of which only what lies before or behind them reaches it: the frame's
// largest value is that faint light itself.
TEST(FrameSides, ShowTheLightBesideStreaksAsThePlainPathDoes) {
    RandomNumbers random(5);
    int lit = 0;
    for (int i = 0; i < support::rounds(3000); ++i) {
        Scene scene = default_scene(random, 64, 36);
        scene.data.brightness = random.on_scale(0.1, 1000);
        scene.drew_before = true;
        pan(scene, random, 1, random.on_scale(0.5, 20));
        const double aspect = 64.0 / 36;
        const double off = random.between(-1, 0.8);
        const bool beside = random.chance(0.5);
        const double side = random.chance(0.5) ? 1 : -1;
        CatalogueStar star;
        set_angles(star, direction_of(scene.cams.front(),
                                      beside ? side * (aspect + off) : random.between(-2, 2),
                                      beside ? random.between(-1, 1) : side * (1 + off)));
        scene.stars = {star};
        lit += expect_promise(scene).peak > 0 ? 1 : 0;
    }
    EXPECT_GT(lit, support::rounds(1000));
}

// One end in front of the camera and one behind it: straight to the mirrored place, which lies the
// farther off the nearer the hidden end is to the camera's plane.
TEST(CameraPlane, IsCrossedAsThePlainPathDoes) {
    RandomNumbers random(7);
    int lit = 0;
    for (int i = 0; i < 400; ++i) {
        Scene scene = default_scene(random, 160, 90);
        scene.data.brightness = random.on_scale(0.25, 100);
        scene.cams.push_back(scene.cams.front());
        scene.cams[1].xform = scene.cams[1].xform * random_turn(random, random.between(50, 179));
        CatalogueStar star;
        // In the first picture, and behind the second camera by down to a billionth.
        const double a = random.between(0, 6.28318);
        const double far = random.on_scale(0.1, 1e9);
        scene.cams[1].focal *= random.chance(0.5) ? 1 : -1;
        set_angles(star, direction_of(scene.cams[random.bits() % 2], far * std::cos(a),
                                      far * std::sin(a)));
        scene.stars = {star};
        lit += expect_promise(scene).peak > 0 ? 1 : 0;
    }
    EXPECT_GE(lit, 40);
}
