// Every set of kernels gives the same bits: those of the instruction sets and the same source over
// plain arrays.
#include <gtest/gtest.h>
#include <libimgops/codes.h>
#include <libimgops/renderer.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kernels/kernel_sets.h"
#include "plain_fast_scene.h"
#include "support/memory_stars.h"
#include "support/rounds.h"

namespace {

using namespace plain_fast;
using kernel_sets::EachSet;
using star_kernels::Kernels;

/// Four lanes, one after the other: the judge of the others.
const Kernels& judge() { return kernel_sets::array4; }

bool same_bits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), sizeof(float) * a.size()) == 0;
}

/// An interleaved frame of noise: light, and coverage of all kinds.
struct Noise {
    Noise(RandomNumbers& random, int width_, int height_)
        : width(width_), floats(static_cast<std::size_t>(4 * width_ * height_)) {
        for (std::size_t i = 0; i < floats.size(); ++i) {
            static constexpr float kCoverage[] = {0, 0, 0.5F, 1, 1.5F, -1};
            floats[i] =
                i % 4 == 0 ? random.of(kCoverage) : static_cast<float>(random.between(-0.2, 1));
        }
    }
    /// `is_covered` has to be true unless all coverage is 0.
    star_kernels::Pixels pixels(bool is_covered = true) {
        return {floats.data(), 4 * width, width, is_covered};
    }
    void uncover() {
        for (std::size_t i = 0; i < floats.size(); i += 4) {
            floats[i] = 0;
        }
    }

    int width;
    std::vector<float> floats;
};

template <class Segment>
void set_common(Segment& segment, RandomNumbers& random, int width) {
    segment.mid_x = static_cast<float>(random.between(-30, width + 30));
    segment.mid_y = static_cast<float>(random.between(-30, 60));
    segment.x0 = random.whole(0, width - 1);
    segment.x1 = random.whole(segment.x0, width - 1);
    segment.energy = static_cast<float>(random.on_scale(1e-3, 1e3));
    for (float& channel : segment.colour) {
        channel = static_cast<float>(random.between(-0.5, 2));
    }
}

star_kernels::Spot random_spot(RandomNumbers& random, int width) {
    star_kernels::Spot spot{};
    set_common(spot, random, width);
    spot.w2 = static_cast<float>(random.on_scale(1, 1e4));
    spot.h2 = static_cast<float>(random.on_scale(1, 1e4));
    return spot;
}

constexpr star_kernels::ErrorFunctions kErrorFunctions[] = {star_kernels::ErrorFunctions::None,
                                                            star_kernels::ErrorFunctions::Nearer,
                                                            star_kernels::ErrorFunctions::Both};

star_kernels::Streak random_streak(RandomNumbers& random, int width) {
    star_kernels::Streak streak{};
    set_common(streak, random, width);
    const double a = random.between(0, 6.2832);
    const double length = random.on_scale(0.5, random.chance(0.2) ? 1e9 : 100);
    const double w = random.on_scale(1, 10), h = random.on_scale(1, 10);
    const double x = std::cos(a), y = std::sin(a);
    streak.a_x = static_cast<float>(streak.mid_x - x * length / 2);
    streak.a_y = static_cast<float>(streak.mid_y - y * length / 2);
    streak.slope = static_cast<float>(random.chance(0.1) ? 1e20 : x / y);
    streak.is_flat = !(streak.slope < 100000.0F);
    streak.half =
        static_cast<float>(random.chance(0.1) ? 1e20 : 4 * w * w + 4 * w * h * std::fabs(x / y));
    streak.dir_x = static_cast<float>(x);
    streak.dir_y = static_cast<float>(y);
    streak.along_x = static_cast<float>(h * h * x);
    streak.along_y = static_cast<float>(w * w * y);
    streak.q = static_cast<float>(h * h * x * x + w * w * y * y);
    streak.half_way = static_cast<float>(length / 2) * streak.q;
    streak.scale = static_cast<float>(1 / (w * h)) / std::sqrt(streak.q);
    streak.area = static_cast<float>(0.886 * w * h) / std::sqrt(streak.q);
    streak.energy_a_pixel = streak.energy / static_cast<float>(length);
    streak.ends = random.of(kErrorFunctions);
    // Then the offsets are no larger than the midpoint, and multiples of its lowest bit.
    streak.has_exact_columns = static_cast<float>(streak.x1) <= 2 * streak.mid_x;
    return streak;
}

/// Puts the streak into a box around `x`, `y`, within as much as its offsets need no rounding.
void put_near(star_kernels::Streak& streak, RandomNumbers& random, int x, int y, int width,
              int height) {
    streak.x0 = std::clamp(x - random.whole(0, 4), 0, width - 1);
    streak.x1 = std::clamp(x + random.whole(0, 4), streak.x0, width - 1);
    streak.y0 = std::clamp(y - random.whole(0, 4), 0, height - 1);
    streak.y1 = std::clamp(y + random.whole(0, 4), streak.y0, height - 1);
    const double left = std::max(streak.x0 - 1.0, streak.x1 * 0.5);
    const double top = std::max(streak.y0 - 1.0, streak.y1 * 0.5);
    const auto mid_x = static_cast<float>(random.between(left, streak.x1 + 1.0));
    const auto mid_y = static_cast<float>(random.between(top, streak.y1 + 1.0));
    streak.a_x += mid_x - streak.mid_x;
    streak.a_y += mid_y - streak.mid_y;
    streak.mid_x = mid_x;
    streak.mid_y = mid_y;
    streak.has_exact_columns = true;
    // Rows of small spots are narrower than their box.
    streak.half = static_cast<float>(random.chance(0.5) ? 1e20 : random.between(0, 6));
}

/// Up to 16 streaks of one colour around one place.
star_kernels::Trail random_trail(RandomNumbers& random, int width, int height) {
    star_kernels::Trail trail{};
    trail.count = random.whole(1, star_kernels::kMostInTrail);
    const int x = random.whole(0, width - 1);
    const int y = random.whole(0, height - 1);
    const int apart = random.chance(0.2) ? 25 : 2;
    trail.x0 = width;
    trail.y0 = height;
    for (int i = 0; i < trail.count; ++i) {
        star_kernels::Streak& streak = trail.streaks[i];
        streak = random_streak(random, width);
        streak.ends = star_kernels::ErrorFunctions::Both;
        for (int channel = 0; channel < 3; ++channel) {
            streak.colour[channel] = 0.5F + 0.25F * static_cast<float>(channel);
        }
        put_near(streak, random, x + random.whole(-apart, apart), y + random.whole(-apart, apart),
                 width, height);
        trail.x0 = std::min(trail.x0, streak.x0);
        trail.y0 = std::min(trail.y0, streak.y0);
        trail.x1 = std::max(trail.x1, streak.x1);
        trail.y1 = std::max(trail.y1, streak.y1);
    }
    return trail;
}

constexpr int kWidths[] = {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 31, 33, 64, 100, 257, 600};

}  // namespace

// Whatever runs the rows are drawn in; and where nothing is covered, knowing that saves work and
// changes nothing.
TEST_P(EachSet, DrawsSpotsAndStreaksAsTheOthersInAnyRuns) {
    RandomNumbers random(1);
    for (int i = 0; i < support::rounds(5000); ++i) {
        const int width = random.of(kWidths);
        const int height = random.whole(1, 60);
        const bool is_covered = i % 3 != 0;
        Noise expected(random, width, height);
        if (!is_covered) {
            expected.uncover();
        }
        Noise actual = expected;
        star_kernels::Spot spot = random_spot(random, width);
        star_kernels::Streak streak = random_streak(random, width);
        const int first = random.whole(0, height - 1);
        const int end = random.whole(first, height);
        const float offset = static_cast<float>(first) - streak.mid_y;
        spot.y0 = streak.y0 = first;
        spot.y1 = streak.y1 = end - 1;
        judge().draw_spot(expected.pixels(), spot, offset);
        judge().draw_streak(expected.pixels(), streak, offset);
        float of_spot = offset;
        float of_streak = offset;
        float carried = offset;
        for (int y = first; y < end;) {
            const int rows = random.whole(0, end - y);
            spot.y0 = streak.y0 = y;
            spot.y1 = streak.y1 = y + rows - 1;
            of_spot = set->draw_spot(actual.pixels(is_covered), spot, of_spot);
            of_streak = set->draw_streak(actual.pixels(is_covered), streak, of_streak);
            for (int row = 0; row < rows; ++row) {
                carried += 1.0F;
            }
            ASSERT_EQ(of_spot, carried) << i;
            ASSERT_EQ(of_streak, carried) << i;
            y += rows;
        }
        ASSERT_TRUE(same_bits(actual.floats, expected.floats)) << i;
    }
}

// Pixels that a streak does not visit keep every bit, also those of -0.
TEST_P(EachSet, DrawsTrailsAsTheirStreaksOneAfterTheOther) {
    RandomNumbers random(2);
    for (int i = 0; i < support::rounds(4000); ++i) {
        const int width = random.of(kWidths);
        const int height = random.whole(1, 60);
        Noise expected(random, width, height);
        expected.uncover();
        for (std::size_t at = 0; at < expected.floats.size(); at += 3) {
            expected.floats[at] = -0.0F;
        }
        Noise actual = expected;
        const star_kernels::Trail trail = random_trail(random, width, height);
        for (int k = 0; k < trail.count; ++k) {
            const star_kernels::Streak& streak = trail.streaks[k];
            judge().draw_streak(expected.pixels(false), streak,
                                static_cast<float>(streak.y0) - streak.mid_y);
        }
        set->draw_trail(actual.pixels(false), trail);
        ASSERT_TRUE(same_bits(actual.floats, expected.floats)) << i;
    }
}

TEST_P(EachSet, FetchesRowsAndFindsAnyCoverage) {
    RandomNumbers random(8);
    for (int i = 0; i < 1000; ++i) {
        const int width = random.of(kWidths);
        const int height = random.whole(1, 9);
        Noise noise(random, width, height);
        noise.uncover();
        const int y = random.whole(0, height - 1);
        const int rows = random.whole(1, height - y);
        const Noise before = noise;
        EXPECT_FALSE(set->fetch(noise.pixels(), y, rows));
        EXPECT_TRUE(same_bits(noise.floats, before.floats));
        // A covered pixel counts in its own row only.
        const int row = random.whole(0, height - 1);
        const int at = random.whole(0, width - 1);
        static constexpr float kCovered[] = {1, 0.25F, -1, 1e-45F, NAN, INFINITY};
        noise.floats[static_cast<std::size_t>(4 * (row * width + at))] = random.of(kCovered);
        EXPECT_EQ(set->fetch(noise.pixels(), y, rows), row >= y && row < y + rows)
            << width << " wide, pixel " << at;
    }
}

TEST_P(EachSet, RejectsStarsAsTheOthers) {
    RandomNumbers random(4);
    constexpr int kCount = star_kernels::kStarsAtOnce;
    int outside = 0;
    for (int i = 0; i < 300; ++i) {
        std::vector<float> lon(kCount), lat(kCount), weight(kCount);
        for (std::size_t k = 0; k < kCount; ++k) {
            static constexpr float kSpecial[] = {NAN,   INFINITY, -INFINITY, 9999,
                                                 10001, -1e30F,   1e-40F};
            lon[k] = random.chance(0.05) ? random.of(kSpecial)
                                         : static_cast<float>(random.between(-7, 7));
            lat[k] = random.chance(0.05) ? random.of(kSpecial)
                                         : static_cast<float>(random.between(-1.6, 1.6));
            weight[k] = random.chance(0.5) ? 0 : static_cast<float>(random.on_scale(1e-4, 10));
        }
        std::vector<star_kernels::Plane> planes;
        const int samples = random.whole(1, 5);
        for (int k = 0; k < samples * star_kernels::kPlanes; ++k) {
            star_kernels::Plane plane{};
            for (float* n : {&plane.nx, &plane.ny, &plane.nz, &plane.nw}) {
                *n = static_cast<float>(random.between(-1, 1));
            }
            plane.tolerance = plane.tolerance_w = static_cast<float>(random.between(0, 0.01));
            planes.push_back(plane);
        }
        std::vector<unsigned char> expected(kCount, 7), actual(kCount, 7);
        const int count = random.whole(1, kCount);
        judge().outside(lon.data(), lat.data(), weight.data(), count, planes.data(), samples,
                        expected.data());
        set->outside(lon.data(), lat.data(), weight.data(), count, planes.data(), samples,
                     actual.data());
        for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
            ASSERT_EQ(actual[k], expected[k]) << i << " " << k;
            outside += actual[k];
        }
    }
    EXPECT_GT(outside, 1000);
}

TEST_P(EachSet, DrawsWholeFramesAsTheOthers) {
    const PathInUse fast(DrawPath::Fast);
    RandomNumbers random(5);
    for (int i = 0; i < support::rounds(250); ++i) {
        const Scene scene = random_scene(random);
        const auto frame_of = [&](const Kernels& kernels) {
            const kernel_sets::InUse in_use(&kernels);
            return draw(scene, DrawPath::Fast);
        };
        const Drawn expected = frame_of(judge());
        const Drawn actual = frame_of(*set);
        EXPECT_EQ(actual.drew, expected.drew);
        ASSERT_TRUE(actual.frame.same_bits(expected.frame)) << describe(scene);
    }
}

TEST_P(EachSet, StaysInUseUntilAnotherIsChosen) {
    const Kernels* widest = star_kernels::in_use();
    {
        const kernel_sets::InUse in_use(set);
        EXPECT_EQ(star_kernels::in_use(), set);
        EXPECT_EQ(star_kernels::in_use()->name, GetParam());
    }
    EXPECT_EQ(star_kernels::in_use(), widest);
}

INSTANTIATE_TEST_SUITE_P(Kernels, EachSet, testing::ValuesIn(kernel_sets::all_sets()),
                         [](const auto& tested) { return tested.param; });

// --- which set runs ---------------------------------------------------------------------------

TEST(Choice, DecidesWhatDrawsAndConvertsOnTheFastPathAlone) {
    const kernel_sets::Counted counted;
    const kernel_sets::Calls& calls = counted.calls();
    RandomNumbers random(6);
    Scene still = default_scene(random, 64, 36);
    scatter_stars(still, random, 100);
    Scene moving = still;
    pan(moving, random, 3, 20);
    const float pixel[4] = {};
    unsigned short codes[4];
    for (const DrawPath path : support::kBothPaths) {
        const int times = path == DrawPath::Fast ? 1 : 0;
        EXPECT_TRUE(draw(still, path).drew);
        EXPECT_EQ(calls.outside > 0, times > 0);
        EXPECT_EQ(calls.spot > 0, times > 0);
        EXPECT_EQ(calls.streak, 0);
        EXPECT_TRUE(draw(moving, path).drew);
        EXPECT_EQ(calls.streak + calls.trail > 0, times > 0);
        const PathInUse in_use(path);
        to_8_bit_codes(pixel, codes, 1);
        EXPECT_EQ(calls.to_8_bits, times);
        to_16_bit_codes(pixel, codes, 1);
        EXPECT_EQ(calls.to_16_bits, times);
    }
}

// Code of its own for each: the same function would prove nothing about the other.
TEST(Choice, IsBetweenFunctionsOfTheirOwn) {
    std::set<float (*)(const star_kernels::Pixels&, const star_kernels::Streak&, float)> functions;
    std::set<std::string> names;
    for (const Kernels* set : kernel_sets::all_runnable()) {
        functions.insert(set->draw_streak);
        names.insert(set->name);
    }
    EXPECT_EQ(functions.size(), kernel_sets::all_runnable().size());
    EXPECT_EQ(names.size(), functions.size());
}

TEST(Choice, KnowsTheSetsOfThisProcessorByWidth) {
    int lanes = 1000;
    for (const Kernels* const* set = star_kernels::built(); *set != nullptr; ++set) {
        EXPECT_LT((*set)->lanes, lanes) << "the widest first";
        lanes = (*set)->lanes;
        EXPECT_EQ(star_kernels::kStarsAtOnce % lanes, 0);
    }
    for (const char* array : {"array4", "array8", "array16"}) {
        const Kernels* set = kernel_sets::runnable(array);
        ASSERT_NE(set, nullptr);
        EXPECT_EQ(array, "array" + std::to_string(set->lanes));
    }
}

// What Linux says of the processor, as a second opinion.
TEST(Choice, FallsOnTheWidestThatTheSystemReports) {
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::set<std::string> flags;
    for (std::string line; std::getline(cpuinfo, line);) {
        if (line.rfind("flags", 0) == 0) {
            std::istringstream words(line);
            for (std::string word; words >> word;) {
                flags.insert(word);
            }
            break;
        }
    }
    if (flags.empty()) {
        std::cout << "[ NOT RUN  ] the system tells no processor flags\n";
        return;
    }
    // All arm64 processors have the one, all x86 processors of these builds the other.
    std::string expected = kernel_sets::runnable("neon") != nullptr ? "neon" : "sse2";
    if (kernel_sets::why_not_run("avx2").find("another processor") == std::string::npos) {
        if (flags.count("avx2") != 0) {
            expected = "avx2";
        }
        if (flags.count("avx512f") != 0 && flags.count("avx512dq") != 0 &&
            flags.count("avx512bw") != 0 && flags.count("avx512vl") != 0) {
            expected = "avx512";
        }
    }
    ASSERT_NE(star_kernels::in_use(), nullptr);
    EXPECT_EQ(star_kernels::in_use()->name, expected);
}
