// The fast path against the plain one, which defines the pixels: whole frames at random.
#include <gtest/gtest.h>

#include <algorithm>

#include "kernels/kernel_sets.h"
#include "plain_fast_scene.h"
#include "support/rounds.h"

namespace {

using namespace plain_fast;
using support::CatalogueStar;

}  // namespace

class RandomFrames : public testing::TestWithParam<unsigned> {};

TEST_P(RandomFrames, KeepThePromise) {
    RandomNumbers random(GetParam());
    int lit = 0;
    int by_kernels = 0;
    int crossing = 0;
    for (int i = 0; i < 60; ++i) {
        const Scene scene = random_scene(random);
        SCOPED_TRACE("scene " + std::to_string(i));
        lit += expect_promise(scene).peak > 0 ? 1 : 0;
        {
            const kernel_sets::Counted counted;
            draw(scene, DrawPath::Fast);
            by_kernels += counted.calls().drawing() > 0 ? 1 : 0;
        }
        crossing += std::any_of(scene.stars.begin(), scene.stars.end(),
                                [&](const CatalogueStar& star) {
                                    return crosses_camera_plane(scene, star);
                                })
                        ? 1
                        : 0;
        if (HasFailure()) {
            return;
        }
    }
    // Not empty skies, nor ones that the fast path leaves to the plain one.
    EXPECT_GE(lit, 20);
    EXPECT_GE(by_kernels, 12);
    EXPECT_GE(crossing, 3);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomFrames, testing::Range(1U, 1 + support::seeds(24)));

class RandomStars : public testing::TestWithParam<unsigned> {};

// With one star a frame every visit shows; in the frames above only the first of a pixel.
TEST_P(RandomStars, VisitTheSamePixelsOneByOne) {
    RandomNumbers random(GetParam());
    int visits = 0;
    int by_kernels = 0;
    for (int i = 0; i < 300; ++i) {
        Scene scene = random_scene(random);
        scene.stars.resize(1);
        if (random.chance(0.7) && scene.cams.size() > 2) {
            // One segment a frame.
            scene.cams.resize(2);
        }
        const std::vector<bool> plain = visited(scene, DrawPath::Plain);
        const kernel_sets::Counted counted;
        ASSERT_TRUE(plain == visited(scene, DrawPath::Fast)) << describe(scene);
        by_kernels += counted.calls().drawing() > 0 ? 1 : 0;
        visits += std::find(plain.begin(), plain.end(), true) != plain.end() ? 1 : 0;
    }
    EXPECT_GE(visits, 30);
    EXPECT_GE(by_kernels, 20);
}

// Nothing at all is added to a pixel of -0 unless it is visited: -0 + 0 is 0. Unlike the other
// sign of a visit this one also holds while the plain path still draws for the fast one, and with
// any coverage. Colours are positive, so that no product is -0.
TEST_P(RandomStars, LeaveMinusZeroWhereTheyDoNotPass) {
    RandomNumbers random(GetParam() + 100);
    int by_kernels = 0;
    for (int i = 0; i < 100; ++i) {
        Scene scene = random_scene(random);
        scene.data.saturation = std::min(scene.data.saturation, 1.0);
        scene.data.tint_strength = std::min(scene.data.tint_strength, 1.0);
        scene.coverage.assign(scene.coverage.size(), 0.5F);
        scene.background = -0.0F;
        Drawn plain = draw(scene, DrawPath::Plain);
        const kernel_sets::Counted counted;
        Drawn fast = draw(scene, DrawPath::Fast);
        by_kernels += counted.calls().drawing() > 0 ? 1 : 0;
        EXPECT_EQ(plain.drew, fast.drew) << describe(scene);
        for (int y = 0; y < scene.height; ++y) {
            for (int x = 0; x < scene.width; ++x) {
                ASSERT_EQ(std::signbit(plain.frame.r(x, y)), std::signbit(fast.frame.r(x, y)))
                    << x << " " << y << ": " << describe(scene);
            }
        }
    }
    EXPECT_GE(by_kernels, 20);
}

// A camera that stands still with motion blur on: each star is as many equal spots, whose sum would
// round the same small difference the same way each time.
TEST(StandingCamera, IsDrawnToTheBitWhateverTheSamples) {
    RandomNumbers random(9);
    for (const std::size_t samples : {2U, 17U, 33U, 65U, 101U, 300U}) {
        for (const int stars : {1, 30, 500}) {
            Scene scene = default_scene(random, 64, 36);
            scene.cams.assign(samples, scene.cams.front());
            scatter_stars(scene, random, stars);
            scene.drew_before = true;
            const kernel_sets::Counted counted;
            expect_same_bits(scene);
            EXPECT_GT(counted.calls().outside, 0) << "the fast path";
        }
    }
}

// One that hardly turns: stars stay for some of the samples.
TEST(StandingCamera, KeepsTheBoundWhenItHardlyTurns) {
    RandomNumbers random(10);
    for (int i = 0; i < support::rounds(150); ++i) {
        Scene scene = random_scene(random);
        scene.cams.resize(1);
        scene.stars.clear();
        pan(scene, random, 100, random.on_scale(1e-8, 1e-2));
        scatter_stars(scene, random, 20);
        expect_promise(scene);
    }
}

// Moves of 1 to 100 segments of up to 2 pixels each, in every projection, of stars alone and close
// together.
class SlowMoves : public testing::TestWithParam<unsigned> {};
TEST_P(SlowMoves, KeepThePromise) {
    RandomNumbers random(1000 + GetParam());
    for (int i = 0; i < support::rounds(40); ++i) {
        Scene scene = default_scene(random, random.whole(8, 64), random.whole(8, 40));
        scene.data.projection = static_cast<op_stars_projection>(random.whole(0, 2));
        const double radius = random.on_scale(0.5, 12);
        scene.data.spot_size_x = radius / (0.0005 * scene.width);
        scene.data.spot_size_y = scene.data.spot_size_x * (random.chance(0.5) ? 1 : 1.7);
        scene.data.brightness = random.on_scale(0.1, 1000);
        const int segments = random.chance(0.3) ? random.whole(1, 3) : random.whole(1, 100);
        // About as many pixels a radian as the frame's height, times the focal length.
        const double pixels = random.chance(0.5) ? random.between(0, 2) : random.on_scale(1e-3, 2);
        pan(scene, random, segments, segments * pixels / (1.6 * scene.height) * 57.3);
        scene.drew_before = true;
        scatter_stars(scene, random, random.chance(0.3) ? 1 : random.whole(2, 12));
        SCOPED_TRACE(i);
        expect_promise(scene);
    }
}
INSTANTIATE_TEST_SUITE_P(Seeds, SlowMoves, testing::Range(1U, 1 + support::seeds(16)));

// Equal stars on one place: every sum of theirs is rounded the same way.
TEST(EqualStars, KeepTheBoundOfTheirNumber) {
    RandomNumbers random(11);
    double most_of_1000 = 0;
    for (const int count : {16, 40, 200, 1000}) {
        const double bound = std::max(kOrdinaryBound, count * kEqualPartBound);
        // How many scenes it takes until one needs the larger bound differs with the compiler.
        const auto shows_its_need = [&] { return count < 1000 || most_of_1000 > kOrdinaryBound; };
        for (int i = 0; i < support::rounds(60) || (!shows_its_need() && i < 300); ++i) {
            Scene scene = default_scene(random, 24, 16);
            scene.data.brightness = random.on_scale(0.1, 10);
            if (random.chance(0.5)) {
                pan(scene, random, random.whole(1, 4), random.on_scale(0.05, 4));
            }
            scatter_stars(scene, random, 1);
            scene.stars.assign(static_cast<std::size_t>(count), scene.stars.front());
            scene.drew_before = true;
            const Drawn plain = draw(scene, DrawPath::Plain);
            const Difference off =
                difference(plain, draw(scene, DrawPath::Fast),
                           std::vector<bool>(static_cast<std::size_t>(scene.width * scene.height)));
            const double allowed = count * short_segment_allowance(scene) / off.peak;
            ASSERT_LE(off.ordinary, std::max(bound, allowed)) << count << ": " << describe(scene);
            if (count == 1000) {
                most_of_1000 = std::max(most_of_1000, off.ordinary);
            }
        }
    }
    // What the bound is for.
    EXPECT_GT(most_of_1000, kOrdinaryBound);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomStars, testing::Range(1U, 1 + support::seeds(8)));
