#include "support/reference_spot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace {

using reference::Point;
using reference::Spot;

// The sum over the pixel grid of a Gaussian of radius w is sqrt(pi) w (1 + 2 exp(-pi^2 w^2) + ...)
// an axis (Poisson's summation); at 2 pixels the excess is below 1e-16.
TEST(ReferenceSpot, GivesPiTimesItsRadiiOfLight) {
    double still = 0;
    double moving = 0;
    const Spot spot{2, 2.5};
    for (int y = -40; y <= 40; ++y) {
        for (int x = -40; x <= 40; ++x) {
            const Point pixel{static_cast<double>(x), static_cast<double>(y)};
            still += still_spot(pixel, {0.3, -0.6}, spot);
            moving += moving_spot(pixel, {-12.3, 5.5}, {14.1, -7}, spot);
        }
    }
    EXPECT_NEAR(still, std::numbers::pi * 2 * 2.5, 1e-12);
    EXPECT_NEAR(moving, std::numbers::pi * 2 * 2.5, 1e-12);
}

TEST(ReferenceSpot, ClosedFormAgreesWithQuadrature) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> place(-8, 8);
    std::uniform_real_distribution<double> radius(1, 5);
    std::uniform_real_distribution<double> exponent(-7, 0);
    for (int i = 0; i < 3000; ++i) {
        const Spot spot{radius(random), radius(random)};
        const Point a{place(random), place(random)};
        Point b{place(random), place(random)};
        // From ways of 16 pixels down to a millionth of one.
        const double shrink = std::pow(10, exponent(random));
        b = {a.x + (b.x - a.x) * shrink, a.y + (b.y - a.y) * shrink};
        const Point pixel{place(random), place(random)};
        const double way = std::hypot((b.x - a.x) / spot.width, (b.y - a.y) / spot.height);
        EXPECT_NEAR(moving_spot(pixel, a, b, spot), moving_spot_by_quadrature(pixel, a, b, spot),
                    1e-13 + 1e-15 / way)
            << "way " << way;
    }
}

TEST(ReferenceSpot, StandsStillWhenBothEndsMeet) {
    const Spot spot{1.5, 2};
    const Point place{3.25, 4.5};
    const Point pixel{4, 6};
    const double still = still_spot(pixel, place, spot);
    EXPECT_EQ(moving_spot(pixel, place, place, spot), still);
    EXPECT_NEAR(moving_spot_by_quadrature(pixel, place, place, spot), still, 1e-14);
    EXPECT_NEAR(moving_spot(pixel, place, {3.25 + 1e-8, 4.5}, spot), still, 2e-7);
}

TEST(ReferenceSpot, KnowsHowNearItComes) {
    const Spot spot{2, 3};
    const Point a{0, 0};
    const Point b{10, 0};
    EXPECT_EQ(distance_from_way({5, 6}, a, b, spot), 2);     // beside the way
    EXPECT_EQ(distance_from_way({14, 0}, a, b, spot), 2);    // past its end
    EXPECT_EQ(distance_from_way({-6, -12}, a, b, spot), 5);  // before its start: 3 and 4 radii
    EXPECT_EQ(distance_from_way({2, 3}, a, a, spot), std::numbers::sqrt2);
}

}  // namespace
