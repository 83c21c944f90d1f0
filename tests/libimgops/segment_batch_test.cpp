// Batches of segments: each visits the pixels that the plain streak visits, with its light; and
// every pixel receives its light in the order in which segments came, whatever bands and batches
// they are drawn in.
#include "fast/segment_batch.h"

#include <gtest/gtest.h>
#include <libimgops/draw_path.h>
#include <libimgops/streak.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <utility>
#include <vector>

#include "kernels/kernel_sets.h"
#include "support/guarded_frame.h"
#include "support/random_numbers.h"
#include "support/rounds.h"

namespace {

using support::GuardedFrame;
using support::rounds;

struct TestSegment {
    Vector2 a;
    Vector2 b;
    float energy;
    u32 codes;
};

std::ostream& operator<<(std::ostream& out, const TestSegment& of) {
    out.precision(9);
    return out << of.a[0] << "," << of.a[1] << " to " << of.b[0] << "," << of.b[1] << ", energy "
               << of.energy;
}

/// One pixel's share of a segment's light.
struct Share {
    int x, y;
    float r, g, b;
};

/// Code 150 in each channel has these colours.
constexpr u32 kPlainCodes = 0x969696;
const Color3 kPlainColour(0.5F, 1, 1.5F);

const float* colours() {
    static const std::vector<float> all = [] {
        std::vector<float> of;
        for (const int channel : {1, 2, 3}) {
            for (int code = 0; code < 256; ++code) {
                of.push_back(static_cast<float>(code * channel) / 300);
            }
        }
        return of;
    }();
    return all.data();
}

/// Frames of one size with spots of one size.
struct Batches {
    int width, height;
    float spot_w = 1.5F, spot_h = 1.25F;

    void draw(GuardedFrame& frame, const std::vector<TestSegment>& segments) const {
        const StarFramebuffer fb = frame.view();
        SegmentBatch batch(fb, *star_kernels::in_use(), spot_w, spot_h, colours(), true);
        bool drew = true;
        for (const TestSegment& segment : segments) {
            batch.add(segment.a, segment.b, segment.energy, reach_of(segment.energy), segment.codes,
                      drew);
        }
        batch.draw();
    }

    /// What the segment adds to each pixel of a black frame: 0 + x is x, to the bit.
    std::vector<Share> shares(const TestSegment& segment) const {
        GuardedFrame frame(width, height);
        draw(frame, {segment});
        std::vector<Share> found;
        support::for_each_pixel(width, height, [&](int x, int y) {
            if (frame.r(x, y) != 0 || frame.g(x, y) != 0 || frame.b(x, y) != 0) {
                found.push_back({x, y, frame.r(x, y), frame.g(x, y), frame.b(x, y)});
            }
        });
        return found;
    }

    /// The segment, of the plain codes, on a frame of that coverage.
    GuardedFrame drawn(const TestSegment& segment, DrawPath path, float coverage = 0) const {
        GuardedFrame frame(width, height);
        frame.cover(coverage);
        if (path == DrawPath::Fast) {
            draw(frame, {segment});
        } else {
            op_star_streak(frame.view(), segment.a, segment.b, segment.energy, kPlainColour, spot_w,
                           spot_h, STARS_LINES_ALL);
        }
        return frame;
    }

    /// Expects that the segment visits the same pixels on both paths, those whose colours its
    /// light, times coverage that is not a number, makes not numbers; returns whether there are
    /// any.
    bool expect_same_visits(const TestSegment& segment) const {
        const float none = std::numeric_limits<float>::quiet_NaN();
        GuardedFrame plain = drawn(segment, DrawPath::Plain, none);
        GuardedFrame fast = drawn(segment, DrawPath::Fast, none);
        bool same = true;
        bool any = false;
        support::for_each_pixel(width, height, [&](int x, int y) {
            same = same && std::isnan(plain.r(x, y)) == std::isnan(fast.r(x, y));
            any = any || std::isnan(plain.r(x, y));
        });
        EXPECT_TRUE(same) << segment << ", spot " << spot_w << " x " << spot_h << ", frame "
                          << width << " x " << height;
        return any;
    }

    /// Expects also that its light is within the bound, a millionth of the plain picture's
    /// brightest pixel or of `least_peak`, or 6e-7 / length of the spot's peak; returns whether
    /// there is any.
    bool expect_alike(const TestSegment& segment, double least_peak = 0) const {
        expect_same_visits(segment);
        GuardedFrame plain = drawn(segment, DrawPath::Plain);
        GuardedFrame fast = drawn(segment, DrawPath::Fast);
        double worst = 0;
        double peak = 0;
        support::for_each_pixel(width, height, [&](int x, int y) {
            const auto of_plain = static_cast<double>(plain.g(x, y));
            peak = std::max(peak, of_plain);
            worst = std::max(worst, std::fabs(of_plain - static_cast<double>(fast.g(x, y))));
        });
        const auto length = static_cast<double>(Vector2(segment.b - segment.a).normalize());
        // The plain code draws what is shorter.
        const double of_spot = length >= static_cast<double>(0.01F)
                                   ? 6e-7 / length * static_cast<double>(segment.energy)
                                   : 0;
        EXPECT_LE(worst, std::max(1e-6 * std::max(peak, least_peak), of_spot))
            << segment << ", spot " << spot_w << " x " << spot_h << ", frame " << width << " x "
            << height;
        return peak > 0;
    }
};

/// The place `length` away from `from`, in any direction.
Vector2 away(RandomNumbers& random, const Vector2& from, double length) {
    const double angle = random.between(0, 6.2832);
    return {from[0] + static_cast<float>(length * std::cos(angle)),
            from[1] + static_cast<float>(length * std::sin(angle))};
}

/// A place on a frame of that size or up to `margin` pixels outside.
Vector2 around(RandomNumbers& random, int width, int height, double margin) {
    return {static_cast<float>(random.between(-margin, width + margin)),
            static_cast<float>(random.between(-margin, height + margin))};
}

/// Spots, streaks as long as `longest`, ones that are the plain path's, and, unless that is short,
/// ones without an end.
TestSegment random_segment(RandomNumbers& random, int width, int height, int longest) {
    TestSegment segment;
    segment.a = around(random, width, height, 3);
    const int kind = random.whole(0, 5);
    segment.b = away(random, segment.a,
                     kind == 0                   ? 0
                     : kind == 1                 ? 0.3
                     : kind == 2                 ? longest
                     : kind == 3 && longest > 10 ? 1e13
                                                 : random.between(0.5, longest));
    // Of all sizes, so that sums hang on their order.
    segment.energy = static_cast<float>(random.on_scale(1e-2, 1e3));
    segment.codes = random.bits() & 0xffffffU;
    return segment;
}

/// Draws `count` segments, each one of `kinds` different ones, and compares with the sum of their
/// single shares, added pixel by pixel in the same order.
void expect_sums_in_order(int width, int height, int kinds, int count, int longest, unsigned seed) {
    const Batches batches{width, height};
    RandomNumbers random(seed);
    std::vector<TestSegment> different;
    std::vector<std::vector<Share>> shares;
    for (int i = 0; i < kinds; ++i) {
        different.push_back(random_segment(random, width, height, longest));
        shares.push_back(batches.shares(different.back()));
    }
    std::vector<TestSegment> segments;
    std::vector<std::size_t> order;
    for (int i = 0; i < count; ++i) {
        order.push_back(random.bits() % different.size());
        segments.push_back(different[order.back()]);
    }
    const auto sum = [&] {
        GuardedFrame total(width, height);
        for (const std::size_t kind : order) {
            for (const Share& share : shares[kind]) {
                total.r(share.x, share.y) += share.r;
                total.g(share.x, share.y) += share.g;
                total.b(share.x, share.y) += share.b;
            }
        }
        return total;
    };
    const GuardedFrame expected = sum();
    std::reverse(order.begin(), order.end());
    ASSERT_FALSE(expected.same_bits(sum())) << "the order shows";
    GuardedFrame drawn(width, height);
    batches.draw(drawn, segments);
    EXPECT_TRUE(drawn.guards_intact());
    EXPECT_TRUE(drawn.same_bits(expected));
}

}  // namespace

// A band holds half a MiB: four rows here.
TEST(Bands, AddUpInOrderOverManyOfThem) { expect_sums_in_order(8000, 20, 30, 300, 20, 1); }

TEST(Bands, AddUpInOrderOfARowEach) { expect_sums_in_order(32767, 7, 20, 300, 10000, 2); }

TEST(Bands, AddUpInOrderInASingleOne) { expect_sums_in_order(60, 50, 200, 3000, 50, 3); }

TEST(Bands, AddUpInOrderOnATallFrame) { expect_sums_in_order(5, 20000, 30, 500, 15000, 4); }

// More segments than a batch of 75000 holds, twice over; then over bands of 33 rows.
TEST(Batches, AddUpInOrderFromOneToTheNext) { expect_sums_in_order(40, 30, 300, 170000, 3, 5); }

TEST(Batches, AddUpInOrderFromOneToTheNextOverManyBands) {
    expect_sums_in_order(1000, 100, 50, 90000, 3, 6);
}

// Stars that move little by little, whose segments lie on one another; more of them in a row than
// the kernels take at once, and some that other stars cut off.
TEST(Batches, AddUpInOrderOverStarsThatHardlyMove) {
    // Three bands of 33 rows.
    const Batches batches{1000, 99};
    const kernel_sets::Counted counted;
    RandomNumbers random(8);
    std::vector<TestSegment> segments;
    for (int star = 0; star < 60; ++star) {
        TestSegment segment;
        segment.b = around(random, star < 20 ? 20 : 200, star < 20 ? 20 : 99, 3);
        segment.energy = static_cast<float>(random.on_scale(1e-2, 1e2));
        segment.codes = random.bits() & 0xffffffU;
        const double step = random.on_scale(0.01, 1);
        for (int i = random.whole(1, 30); i > 0; --i) {
            segment.a = segment.b;
            segment.b = away(random, segment.a, step);
            segments.push_back(segment);
        }
    }
    GuardedFrame expected(batches.width, batches.height);
    for (const TestSegment& segment : segments) {
        for (const Share& share : batches.shares(segment)) {
            expected.r(share.x, share.y) += share.r;
            expected.g(share.x, share.y) += share.g;
            expected.b(share.x, share.y) += share.b;
        }
    }
    EXPECT_EQ(counted.calls().trail, 0) << "single segments";
    GuardedFrame drawn(batches.width, batches.height);
    batches.draw(drawn, segments);
    EXPECT_TRUE(drawn.same_bits(expected));
    EXPECT_GT(counted.calls().trail, 60);
}

// --- single segments --------------------------------------------------------------------------

namespace {

using Start = Vector2(RandomNumbers& random, int width, int height);

/// Draws a segment on each of `count` random frames, from `start` to `shortest` to `longest` pixels
/// away. The bound is of the frame's brightest pixel, or of the segment's own brightest light where
/// `of_own` says so and that is more. Returns how many leave light.
int try_segments(unsigned seed, int count, Start* start, double shortest, double longest,
                 bool of_own) {
    RandomNumbers random(seed);
    int lit = 0;
    for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        Batches one{random.whole(1, 40), random.whole(1, 40)};
        one.spot_w = static_cast<float>(random.on_scale(1, 6));
        one.spot_h = random.chance(0.5) ? one.spot_w : static_cast<float>(random.on_scale(1, 6));
        TestSegment segment;
        segment.energy = static_cast<float>(random.on_scale(1.7e-4, 4e4));
        segment.codes = kPlainCodes;
        segment.a = start(random, one.width, one.height);
        const double length = random.on_scale(shortest, longest);
        segment.b = away(random, segment.a, length);
        if (random.chance(0.5)) {
            std::swap(segment.a, segment.b);
        }
        // What the narrower radius sweeps past a pixel in the middle: sqrt(pi) radii of the length.
        const double own = static_cast<double>(segment.energy) * 1.7724538509055159 *
                           static_cast<double>(std::min(one.spot_w, one.spot_h)) / length;
        lit += one.expect_alike(segment, of_own ? own : 0) ? 1 : 0;
    }
    return lit;
}

}  // namespace

// A segment that hardly moves has a still spot's light, on the rows and columns of a line. It is
// near the origin, where single precision tells such places apart.
TEST(SingleSegments, VisitAndLightAsThePlainStreakWhenTheyHardlyMove) {
    const auto start = [](RandomNumbers& random, int, int) { return around(random, 14, 14, 2); };
    EXPECT_GT(try_segments(11, rounds(20000), start, 1e-7, 1e-3, false), rounds(10000));
}

// Slow stars, singly.
TEST(SingleSegments, KeepTheBoundWhereTheyAreShort) {
    const auto start = [](RandomNumbers& random, int w, int h) { return around(random, w, h, 8); };
    EXPECT_GT(try_segments(14, rounds(20000), start, 0.01, 0.5, false), rounds(5000));
}

// Bright ends of segments whose middle lies outside: their light falls off so far towards the frame
// that the last bits of the error functions show.
TEST(SingleSegments, KeepTheBoundWhereOnlyTheirEndsAreSeen) {
    const auto start = [](RandomNumbers& random, int w, int h) { return around(random, w, h, 12); };
    EXPECT_GT(try_segments(12, rounds(30000), start, 0.3, 40, false), rounds(10000));
}

// Ends so far off that single precision no longer tells where between them the frame is: it may
// show nothing but their tails.
TEST(SingleSegments, KeepTheBoundWithFarEnds) {
    const auto start = [](RandomNumbers& random, int w, int h) { return around(random, w, h, 40); };
    EXPECT_GT(try_segments(13, rounds(30000), start, 1e4, 1e12, true), rounds(3000));
}

// --- the first light --------------------------------------------------------------------------

// Until the frame has light the plain streak draws, and says when that is.
TEST(Batches, LeaveTheFirstLightToThePlainStreak) {
    GuardedFrame frame(40, 30);
    const StarFramebuffer fb = frame.view();
    const float colours[3 * 256] = {0, 1};
    SegmentBatch batch(fb, *star_kernels::in_use(), 1, 1, colours, true);
    bool drew = false;
    batch.add({-50, 5}, {-50, 5}, 1, reach_of(1), 1, drew);
    EXPECT_FALSE(drew) << "off the frame";
    frame.a(10, 5) = 1;
    batch.add({10, 5}, {10, 5}, 0.00017F, reach_of(0.00017F), 1, drew);
    EXPECT_TRUE(drew) << "beside the covered pixel";
    EXPECT_GT(frame.r(11, 5), 0.0F) << "drawn at once";
    batch.add({20, 15}, {20, 15}, 1, reach_of(1), 1, drew);
    EXPECT_EQ(frame.r(20, 15), 0.0F) << "kept";
    batch.draw();
    EXPECT_EQ(frame.r(20, 15), 1.0F);
    batch.draw();
    EXPECT_EQ(frame.r(20, 15), 1.0F) << "drawn once";
}

// Up to 2^40 pixels away, beyond which the plain streak draws, and past that.
TEST(FarEnds, VisitThePixelsOfThePlainStreak) {
    const Batches batches{40, 24};
    RandomNumbers random(7);
    int seen[2] = {0, 0};
    for (int i = 0; i < rounds(20000) && !HasFailure(); ++i) {
        const double exponent = random.chance(0.5) ? random.between(38, 42) : random.between(8, 40);
        const double length = std::exp2(exponent);
        // Steep and flat ones among them, which come near the largest and the smallest slope.
        const double angle = random.chance(0.5) ? random.between(0, 6.2832)
                                                : random.whole(0, 3) * 1.5707963267948966 +
                                                      random.on_scale(1e-12, 1e-2);
        const Vector2 middle = around(random, batches.width, batches.height, 20);
        const auto at = [&](double way) {
            return Vector2(static_cast<float>(double{middle[0]} + way * std::cos(angle)),
                           static_cast<float>(double{middle[1]} + way * std::sin(angle)));
        };
        TestSegment segment = {at(random.chance(0.5) ? -random.between(0, 1) * length : 0),
                               at(length), static_cast<float>(random.on_scale(1, 1e9)),
                               kPlainCodes};
        if (random.chance(0.5)) {
            std::swap(segment.a, segment.b);
        }
        const kernel_sets::Counted counted;
        if (batches.expect_same_visits(segment)) {
            ++seen[counted.calls().streak > 0 ? 1 : 0];
        }
    }
    // By the plain streak, and by the kernels.
    EXPECT_GT(seen[0], rounds(300));
    EXPECT_GT(seen[1], rounds(3000));
}
