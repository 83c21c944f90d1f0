#include "support/blobs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/pixels.h"

namespace {

using support::Picture;

void add_spot(Picture& picture, double x, double y, double w, double h, double peak) {
    support::for_each_pixel(picture.width, picture.height, [&](int column, int row) {
        const double value =
            peak * std::exp(-std::pow((column - x) / w, 2) - std::pow((row - y) / h, 2));
        for (int channel = 0; channel < picture.channels; ++channel) {
            picture.at(column, row, channel) += value / picture.channels;
        }
    });
}

TEST(Blobs, FindsTheCentreOfAnySpotAnywhere) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(10, 30);
    std::uniform_real_distribution<double> radius(1, 4);
    for (int i = 0; i < 200; ++i) {
        Picture picture(40, 40, 3);
        const double x = place(random);
        const double y = place(random);
        add_spot(picture, x, y, radius(random), radius(random), 0.7);
        const auto blob = support::find_blob(picture, std::round(x) + 1, std::round(y) - 1, 4);
        ASSERT_TRUE(blob) << x << ", " << y;
        EXPECT_NEAR(blob->x, x, 1e-9);
        EXPECT_NEAR(blob->y, y, 1e-9);
    }
}

TEST(Blobs, BearsSinglePrecision) {
    Picture picture(20, 20, 1);
    add_spot(picture, 9.37, 10.81, 1, 1, 5);
    for (double& value : picture.values) {
        value = static_cast<double>(static_cast<float>(value));
    }
    const auto blob = support::find_blob(picture, 9, 11, 3);
    ASSERT_TRUE(blob);
    EXPECT_NEAR(blob->x, 9.37, 1e-6);
    EXPECT_NEAR(blob->y, 10.81, 1e-6);
}

TEST(Blobs, TakesTheBrightestWithinTheRadiusOnly) {
    Picture picture(60, 40, 3);
    add_spot(picture, 15, 20, 1.5, 1.5, 1);
    add_spot(picture, 22, 20, 1.5, 1.5, 2);
    add_spot(picture, 45, 20, 1.5, 1.5, 9);
    const auto near = support::find_blob(picture, 17, 20, 8);
    ASSERT_TRUE(near);
    EXPECT_NEAR(near->x, 22, 1e-3);
    const auto nearer = support::find_blob(picture, 15, 20, 3);
    ASSERT_TRUE(nearer);
    EXPECT_NEAR(nearer->x, 15, 1e-3);
}

TEST(Blobs, RefusesWhatIsNoPeak) {
    const Picture dark(20, 20, 3);
    EXPECT_FALSE(support::find_blob(dark, 10, 10, 5));

    Picture flank(40, 20, 3);
    add_spot(flank, 20, 10, 3, 3, 1);
    EXPECT_FALSE(support::find_blob(flank, 14, 10, 2)) << "the spot's peak is outside the search";
    EXPECT_FALSE(support::find_blob(flank, -50, 10, 3)) << "outside the picture";
    EXPECT_FALSE(support::find_blob(flank, NAN, 10, 3));

    Picture edge(20, 20, 3);
    add_spot(edge, 0, 10, 2, 2, 1);
    EXPECT_FALSE(support::find_blob(edge, 0, 10, 3)) << "a neighbour is missing";

    Picture lone(20, 20, 1);
    lone.at(10, 10, 0) = 1;
    EXPECT_FALSE(support::find_blob(lone, 10, 10, 3)) << "its neighbours are dark";

    Picture broken(20, 20, 1);
    add_spot(broken, 10, 10, 2, 2, 1);
    broken.at(11, 10, 0) = NAN;
    EXPECT_FALSE(support::find_blob(broken, 10, 10, 3));
}

}  // namespace
