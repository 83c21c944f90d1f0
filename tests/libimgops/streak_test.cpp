// What the rasteriser touches and how it decides. How much light arrives is in streak_light_test.
#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <libimgops/streak.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "stars/streak_rows.h"
#include "support/guarded_frame.h"

namespace {

using support::GuardedFrame;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
const Color3 kWhite(1, 1, 1);
/// Times 6250 this is exactly 1, so the spot has no reach.
constexpr float kFaintest = 0.00016F;

bool draw(GuardedFrame& frame, const Vector2& a, const Vector2& b, float energy = 1,
          float spot_w = 1, float spot_h = 1, op_stars_lines lines = STARS_LINES_ALL,
          const Color3& colour = kWhite) {
    return op_star_streak(frame.view(), a, b, energy, colour, spot_w, spot_h, lines);
}

using Pixels = std::set<std::pair<int, int>>;

/// The pixels (x, y) that a call visits, whatever their weight: infinite red makes any of them
/// infinite or not a number.
Pixels visited(int width, int height, const Vector2& a, const Vector2& b, float energy,
               float spot_w = 1, float spot_h = 1, op_stars_lines lines = STARS_LINES_ALL) {
    GuardedFrame frame(width, height);
    draw(frame, a, b, energy, spot_w, spot_h, lines, Color3(kInf, 0, 0));
    EXPECT_TRUE(frame.guards_intact());
    Pixels pixels;
    support::for_each_pixel(width, height, [&](int x, int y) {
        if (!(frame.r(x, y) == 0)) {
            pixels.emplace(x, y);
        }
    });
    return pixels;
}

/// All pixels of columns x0...x1 and rows y0...y1.
Pixels rectangle(int x0, int x1, int y0, int y1) {
    Pixels pixels;
    for (int y = y0; y <= y1; ++y) {
        for (int x = x0; x <= x1; ++x) {
            pixels.emplace(x, y);
        }
    }
    return pixels;
}

/// First and last column visited in row `y`; (0, -1) for none.
std::pair<int, int> row_of(const Pixels& pixels, int y) {
    std::pair<int, int> ends(0, -1);
    for (const auto& [px, py] : pixels) {
        if (py == y) {
            ends = ends.second < ends.first
                       ? std::pair(px, px)
                       : std::pair(std::min(ends.first, px), std::max(ends.second, px));
        }
    }
    return ends;
}

}  // namespace

TEST(StillSpot, AddsExactlyTheEnergyTimesTheColourAtItsPeak) {
    GuardedFrame frame(40, 40);
    frame.g(10, 20) = 0.25F;
    const Color3 colour(0.3F, 1.9F, -0.5F);
    EXPECT_TRUE(draw(frame, {10, 20}, {10, 20}, 0.37F, 1.5F, 2.5F, STARS_LINES_ALL, colour));
    EXPECT_EQ(frame.r(10, 20), 0.37F * 0.3F);
    EXPECT_EQ(frame.g(10, 20), 0.25F + 0.37F * 1.9F);
    EXPECT_EQ(frame.b(10, 20), 0.37F * -0.5F);
    EXPECT_TRUE(frame.guards_intact());
}

TEST(Streak, IsTooFaintBelowOneInSixThousandTwoHundredAndFiftyAndNothingWhenInfinite) {
    ASSERT_EQ(6250.0F * kFaintest, 1.0F);
    GuardedFrame faint(40, 40);
    EXPECT_TRUE(draw(faint, {10, 20}, {10, 20}, kFaintest));
    EXPECT_EQ(faint.r(10, 20), kFaintest);
    float below = kFaintest;
    while (6250.0F * below >= 1.0F) {
        below = std::nextafter(below, 0.0F);
    }
    // 6250 times 3e38 is infinite.
    for (const float energy : {below, 0.0F, -1.0F, -kInf, kNotANumber, 3e38F, kInf}) {
        GuardedFrame frame(40, 40);
        EXPECT_FALSE(draw(frame, {10, 20}, {10, 20}, energy)) << energy;
        EXPECT_FALSE(draw(frame, {10, 20}, {12, 21}, energy)) << energy;
        EXPECT_TRUE(frame.is_blank());
    }
}

TEST(Streak, VisitsThePixelsByHand) {
    // A climb of 1000 pixels in 1/128 of a row.
    const float steep = 0.0078125F;
    const struct {
        const char* what;
        Vector2 a, b;
        float energy, spot_w, spot_h;
        Pixels pixels;
    } rows[] = {
        // One column and one row more on the far sides.
        {"still, no reach", {10, 20}, {10, 20}, kFaintest, 1, 1, rectangle(10, 11, 20, 21)},
        {"no reach", {10.5F, 20.25F}, {14.5F, 20.25F}, kFaintest, 1, 1, rectangle(10, 15, 20, 21)},
        // sqrt(ln 6250) = 2.9565: with radii 2 and 1 it is 20 +- 5.913 and 20 +- 2.957.
        {"reach", {20, 20}, {20, 20}, 1, 2, 1, rectangle(14, 26, 17, 23)},
        // sqrt(ln 625000) = 3.6533 for a hundred times the light: 20 +- 7.31 and 20 +- 3.65.
        {"bright", {20, 20}, {20, 20}, 100, 2, 1, rectangle(12, 28, 16, 24)},
        {"the whole box", {20, 30}, {60, 30}, 1, 1, 1, rectangle(17, 63, 27, 33)},
        {"a millionth is no climb", {20, 0}, {60, 0.0000009F}, 1, 1, 1, rectangle(17, 63, 0, 3)},
        // Without reach a row holds just the line's own place: for a steep slope to the right the
        // midpoint, to the left the line's formula (the start, and far off on row 11); half the
        // slope is below the limit.
        {"right", {0, 10}, {1000, 10 + steep}, kFaintest, 1, 1, {{500, 10}, {500, 11}}},
        {"left", {1000, 10}, {0, 10 + steep}, kFaintest, 1, 1, {{1000, 10}}},
        {"gentle", {0, 10}, {1000, 10 + 2 * steep}, kFaintest, 1, 1, {{0, 10}}},
        // 5e-6 of a pixel up: too short for a streak, but enough for a slope (0) and a half span,
        // which is 0 for want of reach. A still spot visits column 11 as well.
        {"nearly still", {10, 0}, {10, 0.000005F}, kFaintest, 1, 1, rectangle(10, 10, 0, 1)},
        {"still", {10, 0}, {10, 0}, kFaintest, 1, 1, rectangle(10, 11, 0, 1)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(visited(1100, 40, row.a, row.b, row.energy, row.spot_w, row.spot_h), row.pixels)
            << row.what;
    }
}

// The row span is around the line only, and counts the spot's width twice.
TEST(Streak, VisitsASpanAroundASlopeOfOne) {
    const struct {
        float spot_w, spot_h;
        int row;
        std::pair<int, int> columns;
    } rows[] = {{1, 1, 50, {44, 56}},  // half = 2.9565 + 2.9565
                {1, 1, 20, {14, 26}},
                {2, 1, 50, {32, 68}},   // 5.913 x 2 + 5.913 x 1; the width once: 38 to 61
                {1, 2, 50, {41, 59}}};  // 2.9565 x 1 + 2.9565 x 2
    for (const auto& row : rows) {
        EXPECT_EQ(row_of(visited(110, 110, {0, 0}, {100, 100}, 1, row.spot_w, row.spot_h), row.row),
                  row.columns)
            << row.spot_w << " x " << row.spot_h;
    }
}

TEST(StillSpot, IsOneThatHardlyMoves) {
    // At this length a streak's weight would be off by several per cent.
    GuardedFrame frame(40, 40);
    EXPECT_TRUE(draw(frame, {10, 0}, {10, 0.000005F}));
    EXPECT_EQ(frame.r(10, 0), 1.0F);
}

TEST(Streak, MissesTheFrameSilently) {
    const struct {
        Vector2 a, b;
    } segments[] = {{{-30, 10}, {-10, 12}},
                    {{50, 10}, {60, 5}},
                    {{10, -30}, {12, -10}},
                    {{10, 50}, {5, 60}},
                    {{-30, -30}, {-20, -20}}};
    for (const auto& segment : segments) {
        GuardedFrame frame(40, 40);
        EXPECT_FALSE(draw(frame, segment.a, segment.b));
        EXPECT_FALSE(draw(frame, segment.b, segment.a));
        EXPECT_TRUE(frame.is_blank());
    }
}

TEST(Streak, IsClippedAtTheEdges) {
    // The same light in a frame that holds all of it, 30 pixels to the right and down.
    const struct {
        Vector2 a, b;
    } segments[] = {{{-20, 10}, {15, 13}}, {{30, 22}, {60, 30}},  {{12, -18}, {14, 16}},
                    {{25, 30}, {20, 55}},  {{-20, -9}, {60, 55}}, {{-1, -1}, {-1, -1}}};
    for (const auto& segment : segments) {
        GuardedFrame frame(40, 40);
        GuardedFrame whole(100, 100);
        const Vector2 shift(30, 30);
        EXPECT_TRUE(draw(frame, segment.a, segment.b, 1, 1.5F, 2));
        EXPECT_TRUE(draw(whole, {segment.a[0] + 30, segment.a[1] + 30},
                         {segment.b[0] + 30, segment.b[1] + 30}, 1, 1.5F, 2));
        EXPECT_TRUE(frame.guards_intact());
        EXPECT_FALSE(frame.is_blank());
        support::for_each_pixel(40, 40, [&](int x, int y) {
            // Coordinates below 128 are carried to a few 1e-6.
            EXPECT_NEAR(frame.r(x, y), whole.r(x + 30, y + 30), 1e-5) << x << ' ' << y;
        });
    }
}

TEST(Streak, DrawsEvenOrOddRows) {
    const Vector2 a(5.3F, 4.1F), b(31.7F, 28.9F);
    GuardedFrame all(40, 40), even(40, 40), odd(40, 40), both(40, 40);
    EXPECT_TRUE(draw(all, a, b, 2, 1.5F, 2));
    EXPECT_TRUE(draw(even, a, b, 2, 1.5F, 2, STARS_LINES_EVEN));
    EXPECT_TRUE(draw(odd, a, b, 2, 1.5F, 2, STARS_LINES_ODD));
    draw(both, a, b, 2, 1.5F, 2, STARS_LINES_EVEN);
    draw(both, a, b, 2, 1.5F, 2, STARS_LINES_ODD);
    support::for_each_pixel(40, 40, [&](int x, int y) {
        const bool is_even = y % 2 == 0;
        EXPECT_EQ(even.r(x, y), is_even ? all.r(x, y) : 0.0F) << x << ' ' << y;
        EXPECT_EQ(odd.r(x, y), is_even ? 0.0F : all.r(x, y)) << x << ' ' << y;
    });
    EXPECT_TRUE(both.same_bits(all)) << "a skipped row must not disturb those after it";
}

TEST(Streak, TakesAnyOtherLineChoiceForTheOddRows) {
    for (const int other : {2, 3, -1, 1 << 30}) {
        const Pixels pixels =
            visited(40, 40, {20, 20}, {20, 20}, 1, 1, 1, static_cast<op_stars_lines>(other));
        for (const auto& [x, y] : pixels) {
            EXPECT_EQ(y % 2, 1);
        }
        EXPECT_FALSE(pixels.empty());
    }
}

TEST(Streak, DrewNothingWhenAllVisitedRowsAreSkipped) {
    // One row high, so that the box is cut down to row 0.
    GuardedFrame frame(40, 1);
    EXPECT_FALSE(draw(frame, {10, 0}, {10, 0}, 1, 1, 1, STARS_LINES_ODD));
    EXPECT_TRUE(frame.is_blank());
    EXPECT_TRUE(draw(frame, {10, 0}, {10, 0}, 1, 1, 1, STARS_LINES_EVEN));
}

TEST(Streak, ScalesLightByWhatIsNotCovered) {
    for (const Vector2& b : {Vector2(20, 20), Vector2(25, 23)}) {
        GuardedFrame open(40, 40), half(40, 40), covered(40, 40), over(40, 40);
        half.cover(0.5F);
        covered.cover(1.0F);
        over.cover(1.5F);
        EXPECT_TRUE(draw(open, {20, 20}, b));
        EXPECT_TRUE(draw(half, {20, 20}, b));
        EXPECT_FALSE(draw(covered, {20, 20}, b));
        EXPECT_FALSE(draw(over, {20, 20}, b));
        support::for_each_pixel(40, 40, [&](int x, int y) {
            EXPECT_EQ(half.r(x, y), 0.5F * open.r(x, y));
            EXPECT_EQ(covered.r(x, y), 0.0F);
            EXPECT_EQ(over.r(x, y), 0.0F);
            // Alpha is only read.
            EXPECT_EQ(open.a(x, y), 0.0F);
            EXPECT_EQ(half.a(x, y), 0.5F);
            EXPECT_EQ(covered.a(x, y), 1.0F);
            EXPECT_EQ(over.a(x, y), 1.5F);
        });
    }
}

TEST(Streak, SkipsCoveredPixelsWithoutLosingItsPlace) {
    GuardedFrame open(40, 40), spotted(40, 40);
    spotted.a(19, 20) = 1.0F;
    const Vector2 a(14.4F, 17.2F), b(27.1F, 22.6F);
    draw(open, a, b);
    draw(spotted, a, b);
    ASSERT_GT(open.r(19, 20), 0.0F);
    support::for_each_pixel(40, 40, [&](int x, int y) {
        EXPECT_EQ(spotted.r(x, y), x == 19 && y == 20 ? 0.0F : open.r(x, y));
    });
}

TEST(Streak, DrawsIntoSeparatePlanes) {
    GuardedFrame interleaved(40, 30);
    std::vector<float> planes(4 * 40 * 30);
    StarFramebuffer fb;
    fb.r = planes.data();
    fb.g = fb.r + 40 * 30;
    fb.b = fb.g + 40 * 30;
    fb.a = fb.b + 40 * 30;
    fb.width = 40;
    fb.height = 30;
    fb.stride = 40;
    fb.pixel_stride = 1;
    const Vector2 a(-3, 8.5F), b(33, 29);
    const Color3 colour(1, 0.5F, 0.25F);
    draw(interleaved, a, b, 3, 1.25F, 1.75F, STARS_LINES_ALL, colour);
    EXPECT_TRUE(op_star_streak(fb, a, b, 3, colour, 1.25F, 1.75F, STARS_LINES_ALL));
    support::for_each_pixel(40, 30, [&](int x, int y) {
        EXPECT_EQ(fb.r[40 * y + x], interleaved.r(x, y));
        EXPECT_EQ(fb.g[40 * y + x], interleaved.g(x, y));
        EXPECT_EQ(fb.b[40 * y + x], interleaved.b(x, y));
        EXPECT_EQ(fb.a[40 * y + x], 0.0F);
    });
}

TEST(Offsets, AreCarriedFromPixelToPixel) {
    // Wide still spots whose centre lies off the left edge: each step to the right rounds again.
    int differ = 0;
    for (int i = 1; i < 50; ++i) {
        const float centre = -0.0037F * static_cast<float>(i);
        GuardedFrame frame(80, 1);
        draw(frame, {centre, 0}, {centre, 0}, 1, 30, 30);
        float carried = 0.0F - centre;
        for (int x = 0; x < 79; ++x) {
            EXPECT_EQ(frame.r(x, 0), std::exp(-(carried * carried) / 900.0F)) << centre << ' ' << x;
            differ += carried != static_cast<float>(x) - centre ? 1 : 0;
            carried += 1.0F;
        }
    }
    EXPECT_GT(differ, 0) << "these centres do not tell carried offsets from fresh ones";
}

TEST(Offsets, DecideAboutTheLastColumn) {
    // The right side of the box is visited unless the carried offset has come out larger than the
    // fresh one. Both occur.
    const float reach = std::sqrt(std::log(6250.0F));
    int reached = 0, missed = 0;
    for (int i = 0; i < 200; ++i) {
        const float centre = -0.0037F * static_cast<float>(i);
        const int last = static_cast<int>(std::floor(centre + 30 * reach)) + 1;
        float carried = 0.0F - centre;
        for (int x = 0; x < last; ++x) {
            carried += 1.0F;
        }
        const bool expected = static_cast<float>(last) - centre >= carried;
        const Pixels pixels = visited(120, 1, {centre, 0}, {centre, 0}, 1, 30, 30);
        EXPECT_EQ(row_of(pixels, 0), std::pair(0, expected ? last : last - 1)) << centre;
        ++(expected ? reached : missed);
    }
    EXPECT_GT(reached, 0);
    EXPECT_GT(missed, 0);
}

TEST(Box, RejectsWhatDoesNotFitThirtyTwoBitsOnTheRightOrBelow) {
    for (const float far : {2147483648.0F, 1e20F, kInf}) {
        GuardedFrame frame(40, 40);
        EXPECT_FALSE(draw(frame, {10, 10}, {far, 10}));
        EXPECT_FALSE(draw(frame, {10, 10}, {10, far}));
        EXPECT_FALSE(draw(frame, {far, 10}, {10, 10}));
        EXPECT_TRUE(frame.is_blank());
    }
    // The largest float that fits is drawn: every pixel of the row gets its small part.
    GuardedFrame frame(40, 40);
    EXPECT_TRUE(draw(frame, {-10, 10}, {2147483520.0F, 10}, 1e6F));
    EXPECT_GT(frame.r(20, 10), 0.0F);
    // To the left and above it is clipped instead.
    GuardedFrame clipped(40, 40);
    EXPECT_TRUE(draw(clipped, {10, 10}, {-1e10F, 10}, 1e6F));
    EXPECT_GT(clipped.r(5, 10), 0.0F);
}

TEST(Streak, IsNoNumberWhereItsLengthOverflows) {
    // The square of 1e20 is beyond single precision: the direction comes out 0, the light 0 / 0.
    GuardedFrame frame(40, 40);
    EXPECT_FALSE(draw(frame, {10, 10}, {-1e20F, 10}));
    EXPECT_TRUE(std::isnan(frame.r(5, 10)));
    EXPECT_EQ(frame.r(5, 20), 0.0F) << "rows beyond the reach stay";
}

TEST(Streak, HasNothingToDrawInAFrameWithoutPixels) {
    for (const auto& [width, height] : {std::pair(0, 10), std::pair(10, 0), std::pair(0, 0)}) {
        GuardedFrame frame(width, height);
        EXPECT_FALSE(draw(frame, {0, 0}, {0, 0}));
        EXPECT_FALSE(draw(frame, {-5, -5}, {5, 5}));
        EXPECT_TRUE(frame.guards_intact());
    }
}

TEST(Streak, StaysInTheFrameForAnyNumbers) {
    const float values[] = {0.0F,  -0.0F,         3.5F,  -7.0F, 1e-40F,     0.000005F, 1e6F,
                            -1e6F, 2147483648.0F, -3e9F, 1e10F, -1e10F,     1e20F,     -1e20F,
                            3e38F, -3e38F,        kInf,  -kInf, kNotANumber};
    int lit = 0;
    for (const float ax : values) {
        for (const float ay : values) {
            for (const float bx : values) {
                for (const float by : values) {
                    GuardedFrame frame(8, 6);
                    frame.a(2, 3) = 0.5F;
                    try {
                        lit += draw(frame, {ax, ay}, {bx, by}, 1, 1, 1.5F) ? 1 : 0;
                    } catch (const AssertXception& x) {
                        // The guard of the next test.
                        EXPECT_STREQ(x.expression(), "ix >= 0 && ix < dst.width");
                    }
                    ASSERT_TRUE(frame.guards_intact()) << ax << ' ' << ay << ' ' << bx << ' ' << by;
                    ASSERT_EQ(frame.a(2, 3), 0.5F);
                }
            }
        }
    }
    EXPECT_GT(lit, 0);
}

namespace {

/// Expects that `draw` is refused by the assertion `condition`, in the name of `op_star_streak` and
/// with the source and the line where that assertion stands.
template <class Draw>
void expect_refused(const std::string& condition, Draw draw) {
    try {
        draw();
        ADD_FAILURE() << "drawn";
    } catch (const AssertXception& x) {
        EXPECT_EQ(x.expression(), condition);
        EXPECT_EQ(std::string(x.function()).find("bool op_star_streak(const StarFramebuffer"), 0U);
        EXPECT_EQ(std::string(x.file()).find("libimgops/stars"), 0U) << x.file();
        std::ifstream source(std::string(LUMIVAR_SOURCE_DIR "/") + x.file());
        std::string line;
        for (int i = 0; i < x.line(); ++i) {
            std::getline(source, line);
        }
        EXPECT_NE(line.find("(" + condition + ")"), std::string::npos) << x.line() << ": " << line;
    }
}

}  // namespace

TEST(Streak, GuardsAgainstAColumnOffTheFrame) {
    // A line so far off that its place on the row, rounded, is beyond 32 bits while the row still
    // seems to reach it: the column becomes the most negative integer.
    GuardedFrame frame(64, 48);
    expect_refused("ix >= 0 && ix < dst.width", [&] {
        draw(frame, {95.7740784F, 19.8893127F}, {-3.77907028e+19F, 542380928.0F}, 1, 1.01231F,
             3.90956F);
    });
    EXPECT_TRUE(frame.guards_intact());
}

// The box is clipped to the frame, so that only a caller of the rows themselves can get there.
TEST(Streak, GuardsAgainstARowOffTheFrame) {
    GuardedFrame frame(64, 48);
    const Vector2 at(10, 40);
    const PlainSegment segment{at, at, 1, kWhite, 1, 1, 3, {7, 37, 13, 43}};
    for (const int first : {-1, 40}) {
        const int last = first + 8;
        float ry = static_cast<float>(first) - at[1];
        expect_refused("iy >= 0 && iy < dst.height", [&] {
            draw_rows_plainly(frame.view(), segment, STARS_LINES_ALL, 1, first, last, ry);
        });
        EXPECT_TRUE(frame.guards_intact());
    }
}
