// Batches of segments: each visits the pixels that the plain streak visits, with its light; and
// every pixel receives its light in the order in which segments came, whatever bands and batches
// they are drawn in.
#include "fast/segment_batch.h"

#include <gtest/gtest.h>
#include <libimgops/streak.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kernels/kernel_sets.h"
#include "support/guarded_frame.h"
#include "support/random_numbers.h"
#include "support/rounds.h"

namespace {

using support::GuardedFrame;
using support::rounds;

constexpr float kSpotW = 1.5F;
constexpr float kSpotH = 1.25F;

struct TestSegment {
    Vector2 a;
    Vector2 b;
    float energy;
    u32 codes;
};

/// One pixel's share of a segment's light.
struct Share {
    int x, y;
    float r, g, b;
};

/// Which pixels a segment visits: those whose colours its light, times coverage that is not a
/// number, makes not numbers.
template <class Draw>
std::vector<bool> visited(int width, int height, Draw draw) {
    GuardedFrame frame(width, height);
    frame.cover(std::numeric_limits<float>::quiet_NaN());
    draw(frame);
    std::vector<bool> found;
    support::for_each_pixel(width, height,
                            [&](int x, int y) { found.push_back(std::isnan(frame.r(x, y))); });
    return found;
}

class Batches {
public:
    Batches(int width, int height) : width_(width), height_(height) {
        for (int code = 0; code < 256; ++code) {
            for (int channel = 0; channel < 3; ++channel) {
                colours_[256 * channel + code] = static_cast<float>(code * (channel + 1)) / 300;
            }
        }
    }

    void draw(GuardedFrame& frame, const std::vector<TestSegment>& segments) const {
        const StarFramebuffer fb = frame.view();
        SegmentBatch batch(fb, *star_kernels::in_use(), kSpotW, kSpotH, colours_, true);
        bool drew = true;
        for (const TestSegment& segment : segments) {
            batch.add(segment.a, segment.b, segment.energy, reach_of(segment.energy), segment.codes,
                      drew);
        }
        batch.draw();
    }

    /// What the segment adds to each pixel of a black frame: 0 + x is x, to the bit.
    std::vector<Share> shares(const TestSegment& segment) const {
        GuardedFrame frame(width_, height_);
        draw(frame, {segment});
        std::vector<Share> found;
        support::for_each_pixel(width_, height_, [&](int x, int y) {
            if (frame.r(x, y) != 0 || frame.g(x, y) != 0 || frame.b(x, y) != 0) {
                found.push_back({x, y, frame.r(x, y), frame.g(x, y), frame.b(x, y)});
            }
        });
        return found;
    }

    int width() const { return width_; }
    int height() const { return height_; }

private:
    int width_;
    int height_;
    float colours_[3 * 256];
};

/// Spots, streaks as long as `longest`, ones that are the plain path's, and, unless that is short,
/// ones without an end.
TestSegment random_segment(RandomNumbers& random, int width, int height, int longest) {
    TestSegment segment;
    segment.a = Vector2(static_cast<float>(random.between(-3, width + 3)),
                        static_cast<float>(random.between(-3, height + 3)));
    segment.b = segment.a;
    const int kind = random.whole(0, 5);
    const double length = kind == 0                   ? 0
                          : kind == 1                 ? 0.3
                          : kind == 2                 ? longest
                          : kind == 3 && longest > 10 ? 1e13
                                                      : random.between(0.5, longest);
    const double angle = random.between(0, 6.2832);
    segment.b = Vector2(segment.a[0] + static_cast<float>(length * std::cos(angle)),
                        segment.a[1] + static_cast<float>(length * std::sin(angle)));
    // Of all sizes, so that sums hang on their order.
    segment.energy = static_cast<float>(random.on_scale(1e-2, 1e3));
    segment.codes = random.bits() & 0xffffffU;
    return segment;
}

/// Draws `count` segments, each one of `kinds` different ones, and compares with the sum of their
/// single shares, added pixel by pixel in the same order.
void expect_sums_in_order(int width, int height, int kinds, int count, int longest, unsigned seed) {
    const Batches batches(width, height);
    RandomNumbers random(seed);
    std::vector<TestSegment> different;
    std::vector<std::vector<Share>> shares;
    for (int i = 0; i < kinds; ++i) {
        different.push_back(random_segment(random, width, height, longest));
        shares.push_back(batches.shares(different.back()));
    }
    std::vector<TestSegment> segments;
    GuardedFrame expected(width, height);
    GuardedFrame backwards(width, height);
    std::vector<std::size_t> order;
    for (int i = 0; i < count; ++i) {
        order.push_back(random.bits() % different.size());
        segments.push_back(different[order.back()]);
    }
    const auto add = [&](GuardedFrame& to, std::size_t kind) {
        for (const Share& share : shares[kind]) {
            to.r(share.x, share.y) += share.r;
            to.g(share.x, share.y) += share.g;
            to.b(share.x, share.y) += share.b;
        }
    };
    for (std::size_t i = 0; i < order.size(); ++i) {
        add(expected, order[i]);
        add(backwards, order[order.size() - 1 - i]);
    }
    ASSERT_FALSE(expected.same_bits(backwards)) << "the order shows";
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

// More segments than a batch of 80000 holds, twice over; then over bands of 33 rows.
TEST(Batches, AddUpInOrderFromOneToTheNext) { expect_sums_in_order(40, 30, 300, 170000, 3, 5); }

TEST(Batches, AddUpInOrderFromOneToTheNextOverManyBands) {
    expect_sums_in_order(1000, 100, 50, 90000, 3, 6);
}

// --- single segments --------------------------------------------------------------------------

namespace {

/// A segment and its frame.
struct Alone {
    int width, height;
    float spot_w, spot_h;
    Vector2 a, b;
    float energy;

    GuardedFrame drawn(bool plainly) const {
        GuardedFrame frame(width, height);
        draw(frame, plainly);
        return frame;
    }
    void draw(GuardedFrame& frame, bool plainly) const {
        const StarFramebuffer fb = frame.view();
        if (plainly) {
            op_star_streak(fb, a, b, energy, {0.5F, 1, 0.25F}, spot_w, spot_h, STARS_LINES_ALL);
            return;
        }
        float colours[3 * 256] = {};
        colours[1] = 0.5F;
        colours[256 + 2] = 1;
        colours[512 + 3] = 0.25F;
        SegmentBatch batch(fb, *star_kernels::in_use(), spot_w, spot_h, colours, true);
        bool drew = true;
        if (reach_of(energy) >= 0) {
            batch.add(a, b, energy, reach_of(energy), 0x030201, drew);
        }
        batch.draw();
    }
    std::string text() const {
        std::ostringstream out;
        out.precision(9);
        out << a[0] << "," << a[1] << " to " << b[0] << "," << b[1] << ", energy " << energy
            << ", spot " << spot_w << " x " << spot_h << ", frame " << width << " x " << height;
        return out.str();
    }
};

/// How the fast picture differs, in parts of the plain one's brightest pixel.
double expect_alike(const Alone& segment, double least_peak = 0) {
    GuardedFrame plain = segment.drawn(true);
    GuardedFrame fast = segment.drawn(false);
    double worst = 0;
    double peak = 0;
    support::for_each_pixel(segment.width, segment.height, [&](int x, int y) {
        peak = std::max(peak, static_cast<double>(plain.g(x, y)));
        worst = std::max(worst, std::fabs(static_cast<double>(plain.g(x, y)) -
                                          static_cast<double>(fast.g(x, y))));
    });
    EXPECT_LE(worst, 1e-6 * std::max(peak, least_peak)) << segment.text();
    const auto visited_by = [&](bool plainly) {
        return visited(segment.width, segment.height,
                       [&](GuardedFrame& frame) { segment.draw(frame, plainly); });
    };
    EXPECT_TRUE(visited_by(true) == visited_by(false)) << segment.text();
    return peak;
}

Alone random_alone(RandomNumbers& random) {
    Alone segment{};
    segment.width = random.whole(1, 40);
    segment.height = random.whole(1, 40);
    segment.spot_w = static_cast<float>(random.on_scale(1, 6));
    segment.spot_h =
        random.chance(0.5) ? segment.spot_w : static_cast<float>(random.on_scale(1, 6));
    segment.energy = static_cast<float>(random.on_scale(1.7e-4, 4e4));
    return segment;
}

}  // namespace

// A segment that hardly moves has a still spot's light, on the rows and columns of a line.
TEST(SingleSegments, VisitAndLightAsThePlainStreakWhenTheyHardlyMove) {
    RandomNumbers random(11);
    int lit = 0;
    for (int i = 0; i < rounds(20000); ++i) {
        Alone segment = random_alone(random);
        // Near the origin, where single precision tells such places apart.
        segment.a = Vector2(static_cast<float>(random.between(-2, 16)),
                            static_cast<float>(random.between(-2, 16)));
        const double length = random.on_scale(1e-7, 1e-3);
        const double angle = random.between(0, 6.2832);
        segment.b = Vector2(segment.a[0] + static_cast<float>(length * std::cos(angle)),
                            segment.a[1] + static_cast<float>(length * std::sin(angle)));
        lit += expect_alike(segment) > 0 ? 1 : 0;
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(lit, rounds(10000));
}

namespace {

/// Draws segments from around the frame, up to `margin` pixels outside, to `shortest` to `longest`
/// pixels away. The bound is of the frame's brightest pixel, or of the segment's own brightest
/// light where `of_own` says so and that is more. Returns how many leave light.
int try_around_the_frame(unsigned seed, double margin, double shortest, double longest,
                         bool of_own) {
    RandomNumbers random(seed);
    int lit = 0;
    for (int i = 0; i < rounds(30000) && !testing::Test::HasFailure(); ++i) {
        Alone segment = random_alone(random);
        segment.a = Vector2(static_cast<float>(random.between(-margin, segment.width + margin)),
                            static_cast<float>(random.between(-margin, segment.height + margin)));
        const double length = random.on_scale(shortest, longest);
        const double angle = random.between(0, 6.2832);
        segment.b = Vector2(segment.a[0] + static_cast<float>(length * std::cos(angle)),
                            segment.a[1] + static_cast<float>(length * std::sin(angle)));
        if (random.chance(0.5)) {
            std::swap(segment.a, segment.b);
        }
        // What the narrower radius sweeps past a pixel in the middle: sqrt(pi) radii of the length.
        const double own = static_cast<double>(segment.energy) * 1.7724538509055159 *
                           static_cast<double>(std::min(segment.spot_w, segment.spot_h)) / length;
        lit += expect_alike(segment, of_own ? own : 0) > 0 ? 1 : 0;
    }
    return lit;
}

}  // namespace

// Bright ends of segments whose middle lies outside: their light falls off so far towards the frame
// that the last bits of the error functions show.
TEST(SingleSegments, KeepTheBoundWhereOnlyTheirEndsAreSeen) {
    EXPECT_GT(try_around_the_frame(12, 12, 0.3, 40, false), rounds(10000));
}

// Ends so far off that single precision no longer tells where between them the frame is: it may
// show nothing but their tails.
TEST(SingleSegments, KeepTheBoundWithFarEnds) {
    EXPECT_GT(try_around_the_frame(13, 40, 1e4, 1e12, true), rounds(3000));
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
    constexpr int kWidth = 40, kHeight = 24;
    const Batches batches(kWidth, kHeight);
    RandomNumbers random(7);
    int seen[2] = {0, 0};
    for (int i = 0; i < rounds(20000); ++i) {
        const double exponent = random.chance(0.5) ? random.between(38, 42) : random.between(8, 40);
        const double length = std::exp2(exponent);
        // Steep and flat ones among them, which come near the largest and the smallest slope.
        const double angle = random.chance(0.5) ? random.between(0, 6.2832)
                                                : random.whole(0, 3) * 1.5707963267948966 +
                                                      random.on_scale(1e-12, 1e-2);
        const double x = random.between(-20, kWidth + 20), y = random.between(-20, kHeight + 20);
        const auto at = [&](double way) {
            return Vector2(static_cast<float>(x + way * std::cos(angle)),
                           static_cast<float>(y + way * std::sin(angle)));
        };
        TestSegment segment = {at(random.chance(0.5) ? -random.between(0, 1) * length : 0),
                               at(length), static_cast<float>(random.on_scale(1, 1e9)), 0xffffff};
        if (random.chance(0.5)) {
            std::swap(segment.a, segment.b);
        }
        const kernel_sets::Counted counted;
        const std::vector<bool> fast =
            visited(kWidth, kHeight, [&](GuardedFrame& frame) { batches.draw(frame, {segment}); });
        const std::vector<bool> plain = visited(kWidth, kHeight, [&](GuardedFrame& frame) {
            op_star_streak(frame.view(), segment.a, segment.b, segment.energy, Color3(1, 1, 1),
                           kSpotW, kSpotH, STARS_LINES_ALL);
        });
        ASSERT_TRUE(fast == plain) << segment.a[0] << " " << segment.a[1] << " to " << segment.b[0]
                                   << " " << segment.b[1] << " of " << segment.energy;
        if (std::find(plain.begin(), plain.end(), true) != plain.end()) {
            ++seen[counted.calls().streak > 0 ? 1 : 0];
        }
    }
    // By the plain streak, and by the kernels.
    EXPECT_GT(seen[0], rounds(300));
    EXPECT_GT(seen[1], rounds(3000));
}
