// How much light a streak brings, against what is known on paper and against a numerical integral
// of the moving spot in double precision.
#include <gtest/gtest.h>
#include <libimgops/streak.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "support/guarded_frame.h"
#include "support/reference_spot.h"

namespace {

using support::GuardedFrame;

bool add_streak(GuardedFrame& frame, const Vector2& a, const Vector2& b, float energy, float spot_w,
                float spot_h) {
    return op_star_streak(frame.view(), a, b, energy, Color3(1, 1, 1), spot_w, spot_h,
                          STARS_LINES_ALL);
}

double still_spot(double x, double y, double w, double h) {
    return reference::still_spot({x, y}, {0, 0}, {w, h});
}

reference::Point point(const Vector2& at) { return {double{at[0]}, double{at[1]}}; }

double length(const Vector2& a, const Vector2& b) {
    return std::hypot(double{b[0]} - double{a[0]}, double{b[1]} - double{a[1]});
}

/// What a pixel may be off, of the spot's peak: the difference of two single-precision error
/// functions is divided by the length, which for slow motion is all that counts.
double allowance(double pixels) { return std::max(1e-5, 6e-7 / pixels); }

/// Compares a frame with the integral: pixels with light by value, dark ones by what they may miss.
void expect_integral(GuardedFrame& frame, const Vector2& a, const Vector2& b, double energy,
                     double w, double h) {
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            const double expected =
                energy * reference::moving_spot_by_quadrature({double(x), double(y)}, point(a),
                                                              point(b), {w, h});
            const double tolerance = energy * allowance(length(a, b));
            const double actual = static_cast<double>(frame.r(x, y));
            if (actual == 0) {
                // Outside the reach of every place of the spot, which is 1/6250 of the unit.
                ASSERT_LE(expected, 1.0 / 6250 + tolerance) << x << ' ' << y;
            } else {
                ASSERT_NEAR(actual, expected, tolerance)
                    << x << ' ' << y << " from " << a[0] << ' ' << a[1] << " to " << b[0] << ' '
                    << b[1] << " energy " << energy << " radii " << w << ' ' << h;
            }
        }
    }
}

/// Largest share of the light that the cut may take: the reach rho = sqrt(ln(6250 energy)) keeps at
/// least the box of +-rho radii around every place of the spot, which holds erf(rho)^2 of its
/// light.
double cut_off_share(double energy) {
    const double kept = std::erf(std::sqrt(std::log(6250 * energy)));
    return 1 - kept * kept;
}

}  // namespace

TEST(StreakLight, IsSqrtPiOverTheLengthInTheMiddle) {
    GuardedFrame frame(110, 110);
    EXPECT_TRUE(add_streak(frame, {0, 0}, {100, 100}, 1, 1, 1));
    // L = 141.42, q = 1; both error functions are 1 at the midpoint.
    EXPECT_NEAR(frame.r(50, 50), std::sqrt(std::numbers::pi) / std::sqrt(20000.0), 1e-8);
    EXPECT_NEAR(frame.r(50, 50), 0.0125331, 5e-8);
    EXPECT_EQ(frame.r(50, 57), 0.0F) << "beyond the row span";
}

TEST(StreakLight, OfAStillSpotIsTheGaussian) {
    GuardedFrame frame(60, 60);
    const Vector2 centre(30.25F, 29.5F);
    add_streak(frame, centre, centre, 5, 3, 1.5F);
    support::for_each_pixel(60, 60, [&](int x, int y) {
        const double expected = 5 * still_spot(x - 30.25, y - 29.5, 3, 1.5);
        const double actual = static_cast<double>(frame.r(x, y));
        EXPECT_NEAR(actual, expected, actual == 0 ? 1.0 / 6250 : 5e-6) << x << ' ' << y;
    });
}

TEST(StreakLight, TotalsPiTimesRadiiTimesEnergy) {
    const struct {
        Vector2 a, b;
        float energy, w, h;
    } rows[] = {{{100, 80}, {100, 80}, 1, 1, 1},
                {{100.3F, 80.7F}, {100.3F, 80.7F}, 0.01F, 2, 1},
                {{100.5F, 80.5F}, {100.5F, 80.5F}, 50, 1, 3},
                {{99, 80}, {99.01F, 80.02F}, 1, 1, 1},
                {{50, 80}, {150, 80}, 3, 1, 1},
                {{100, 30}, {100, 130}, 1, 1.5F, 1},
                {{60, 40}, {140.5F, 121.25F}, 10, 1, 1},
                {{140, 40}, {60, 110}, 0.5F, 4, 2},
                {{60, 75}, {140, 84}, 0.2F, 1, 2.5F},
                {{97, 30}, {103, 130}, 1, 3, 1}};
    for (const auto& row : rows) {
        GuardedFrame frame(200, 160);
        EXPECT_TRUE(add_streak(frame, row.a, row.b, row.energy, row.w, row.h));
        const double expected = std::numbers::pi * row.w * row.h * row.energy;
        const double share = frame.total_red() / expected;
        EXPECT_LE(share, 1 + 0.001);
        EXPECT_GE(share, 1 - 0.001 - cut_off_share(row.energy));
    }
}

TEST(StreakLight, OfSegmentsAddsUpToOneStar) {
    const Vector2 a(30.2F, 25.6F), b(128.7F, 71.3F);
    const float energy = 6;
    GuardedFrame whole(160, 100);
    add_streak(whole, a, b, energy, 1.5F, 2);
    for (const int samples : {2, 3, 5, 17}) {
        const int segments = samples - 1;
        const float part = energy / static_cast<float>(segments);
        GuardedFrame frame(160, 100);
        Vector2 from = a;
        for (int i = 1; i <= segments; ++i) {
            const float t = static_cast<float>(i) / static_cast<float>(segments);
            const Vector2 to(a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t);
            add_streak(frame, from, to, part, 1.5F, 2);
            from = to;
        }
        const double expected = std::numbers::pi * 1.5 * 2 * energy;
        EXPECT_NEAR(frame.total_red(), expected, (0.001 + cut_off_share(part)) * expected)
            << samples;
        support::for_each_pixel(160, 100, [&](int x, int y) {
            // A segment that ends before a pixel leaves out 1/6250 at most; joints are rounded
            // to 1e-5 pixel, which shifts light by less than that share of the peak.
            EXPECT_NEAR(frame.r(x, y), whole.r(x, y), segments / 6250.0 + 1e-5 * energy);
        });
    }
}

TEST(StreakLight, IsTheWrittenFormulaToTheLastBit) {
    // Every faster path is held to these bits, so the order of the operations counts: in q the
    // squares come first. Offsets are exact here, for the midpoint is a multiple of 1/64.
    std::mt19937 random(1905);
    const auto place = [&random] { return static_cast<float>(random() % 2048) / 32.0F; };
    int differ = 0;
    for (int i = 0; i < 40; ++i) {
        const Vector2 a(place(), place()), b(place(), place());
        const float w = 1.0F + static_cast<float>(random() % 1000) / 301.0F;
        const float h = 1.0F + static_cast<float>(random() % 1000) / 307.0F;
        const float energy = 3.7F;
        GuardedFrame frame(64, 64);
        add_streak(frame, a, b, energy, w, h);
        const float dx = b[0] - a[0], dy = b[1] - a[1];
        const float L = std::sqrt(dx * dx + dy * dy);
        ASSERT_GT(L, 0.1F);
        const float cx = dx / L, cy = dy / L;
        const float q = (h * h) * (cx * cx) + (w * w) * (cy * cy);
        differ += q != h * h * cx * cx + w * w * cy * cy ? 1 : 0;
        const float k = 1.0F / std::sqrt(q);
        const float s = k / (w * h);
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                if (frame.r(x, y) == 0) {
                    continue;
                }
                const float rx = static_cast<float>(x) - 0.5F * (a[0] + b[0]);
                const float ry = static_cast<float>(y) - 0.5F * (a[1] + b[1]);
                const float u = cy * rx - cx * ry;
                const float v = h * h * cx * rx + w * w * cy * ry;
                const float expected =
                    std::exp(-(u * u) / q) * (0.886226952F * w * h * k) *
                    (std::erf((0.5F * L * q - v) * s) - std::erf((-0.5F * L * q - v) * s)) *
                    (energy / L);
                ASSERT_EQ(frame.r(x, y), expected) << i << ": " << x << ' ' << y;
            }
        }
    }
    EXPECT_GT(differ, 0) << "these directions do not tell the orders apart";
}

TEST(StreakLight, AgreesWithTheIntegralForEveryDirectionAndLength) {
    struct Row {
        Vector2 a, b;
        float energy, w, h;
    };
    std::vector<Row> rows;
    for (int degrees = 0; degrees < 360; degrees += 15) {
        const float x = static_cast<float>(9 * std::cos(degrees * std::numbers::pi / 180));
        const float y = static_cast<float>(9 * std::sin(degrees * std::numbers::pi / 180));
        rows.push_back({{20.3F - x, 17.8F - y}, {20.3F + x, 17.8F + y}, 2, 2, 1.25F});
    }
    for (const float pixels :
         {0.00002F, 0.0001F, 0.001F, 0.01F, 0.06F, 0.1F, 1.0F, 5.0F, 20.0F, 60.0F, 300.0F}) {
        // Near the origin, where a float still tells such places apart.
        const Vector2 a(0.25F, 0.125F);
        rows.push_back({a, {a[0] + 0.8F * pixels, a[1] + 0.6F * pixels}, 1, 1.5F, 1});
    }
    for (const Row& row : rows) {
        GuardedFrame frame(40, 36);
        EXPECT_TRUE(add_streak(frame, row.a, row.b, row.energy, row.w, row.h));
        expect_integral(frame, row.a, row.b, row.energy, row.w, row.h);
    }
}

TEST(StreakLight, AgreesWithTheIntegralForRandomStreaks) {
    std::mt19937 random(1889);
    std::uniform_real_distribution<float> place_x(-20, 60), place_y(-20, 50), decades(-3, 2),
        radius(1, 6);
    int lit = 0;
    for (int i = 0; i < 60; ++i) {
        const Vector2 a(place_x(random), place_y(random)), b(place_x(random), place_y(random));
        const float energy = std::pow(10.0F, decades(random));
        const float w = radius(random), h = radius(random);
        GuardedFrame frame(40, 30);
        lit += add_streak(frame, a, b, energy, w, h) ? 1 : 0;
        EXPECT_TRUE(frame.guards_intact());
        expect_integral(frame, a, b, energy, w, h);
    }
    EXPECT_GT(lit, 30);
}
