#include "support/compare.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "support/pixels.h"

namespace {

using support::Comparison;
using support::Limits;
using support::Picture;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

Picture ramp(int width = 8, int height = 4) {
    Picture picture(width, height, 3);
    support::for_each_pixel(width, height, [&](int x, int y) {
        for (int channel = 0; channel < 3; ++channel) {
            picture.at(x, y, channel) = x + 10.0 * y + 0.1 * channel;
        }
    });
    return picture;
}

TEST(Compare, AcceptsTheSamePicture) {
    const Comparison same = compare(ramp(), ramp(), Limits{});
    EXPECT_TRUE(same.passed) << same.report;
}

TEST(Compare, RejectsOtherSizesBeforeAllElse) {
    EXPECT_FALSE(compare(ramp(8, 4), ramp(4, 8), {.per_value = inf}).passed);
    EXPECT_FALSE(compare(Picture(4, 4, 3), Picture(4, 3, 4), {.per_value = inf}).passed)
        << "as many values, but other pixels";
    EXPECT_EQ(compare(Picture(2, 2, 3), Picture(2, 3, 3), Limits{}).report,
              "sizes differ: 2x2 with 3 channels, expected 2x3 with 3 channels");
    EXPECT_FALSE(compare_within(ramp(), ramp(), Picture(8, 4, 1)).passed);
    EXPECT_FALSE(compare_within(ramp(), ramp(8, 5), ramp()).passed);
}

TEST(Compare, RejectsPicturesWithoutAPixel) {
    EXPECT_FALSE(compare(Picture(), Picture(), {.per_value = inf}).passed);
    EXPECT_FALSE(compare(Picture(0, 4, 3), Picture(0, 4, 3), {.per_value = inf}).passed);
    EXPECT_FALSE(compare_within(Picture(), Picture(), Picture()).passed);
}

TEST(Compare, RejectsAPictureThatIsNoNumber) {
    Picture broken = ramp();
    for (double& value : broken.values) {
        value = nan;
    }
    EXPECT_FALSE(compare(broken, ramp(), {.per_value = 1e300}).passed);
    EXPECT_FALSE(compare(broken, ramp(), {.per_value = inf}).passed);
    EXPECT_FALSE(compare(ramp(), broken, {.per_value = 1e300}).passed);
    EXPECT_FALSE(compare(broken, ramp(), {.per_value = 1e300, .share = 1}).passed)
        << "the hard limit holds for what is not a number";
    EXPECT_FALSE(compare_within(broken, ramp(), ramp()).passed);
    EXPECT_FALSE(compare_within(ramp(), ramp(), broken).passed) << "nothing is within no number";
    EXPECT_TRUE(compare(broken, broken, Limits{}).passed) << "both are no number";
}

TEST(Compare, TellsInfinitiesApart) {
    Picture high = ramp();
    high.values[5] = inf;
    Picture low = ramp();
    low.values[5] = -inf;
    EXPECT_TRUE(compare(high, high, Limits{}).passed);
    EXPECT_FALSE(compare(high, low, {.per_value = 1e300}).passed);
    EXPECT_FALSE(compare(high, ramp(), {.per_value = 1e300}).passed);
}

TEST(Compare, CountsPixelsOffAndHoldsTheHardLimit) {
    Picture off = ramp();  // 32 pixels
    off.at(2, 1, 0) += 0.25;
    off.at(2, 1, 2) -= 0.25;
    off.at(5, 3, 1) += 0.5;
    EXPECT_FALSE(compare(off, ramp(), {.per_value = 0.1}).passed);
    EXPECT_FALSE(compare(off, ramp(), {.per_value = 0.1, .share = 1 / 32.0}).passed);
    EXPECT_TRUE(compare(off, ramp(), {.per_value = 0.1, .share = 2 / 32.0}).passed);
    EXPECT_TRUE(compare(off, ramp(), {.per_value = 0.1, .share = 1, .hard = 0.5}).passed);
    EXPECT_FALSE(compare(off, ramp(), {.per_value = 0.1, .share = 1, .hard = 0.4}).passed);
    EXPECT_TRUE(compare(off, ramp(), {.per_value = 0.5}).passed) << "the limit itself passes";
    EXPECT_EQ(compare(off, ramp(), {.per_value = 0.1, .share = 1, .hard = 0.4}).report,
              "2 of 32 pixels off, some beyond the hard limit 0.4; worst at (5, 3) channel 1: "
              "35.6, expected 35.1 within 0.1");
}

TEST(Compare, HoldsEachValueToItsOwnLimit) {
    Picture allowance(8, 4, 3);
    allowance.at(3, 2, 1) = 0.25;
    Picture off = ramp();
    off.at(3, 2, 1) += 0.125;
    EXPECT_TRUE(compare_within(off, ramp(), allowance).passed);
    off.at(3, 2, 0) += 0.125;
    EXPECT_FALSE(compare_within(off, ramp(), allowance).passed);
    EXPECT_NE(compare_within(off, ramp(), allowance).report.find("worst at (3, 2) channel 0"),
              std::string::npos);
}

TEST(Picture, TakesColoursOutOfAPaddedImage) {
    // Two pixels a row, alpha first, and two floats of padding.
    const std::array<float, 20> pixels{1, 11, 12, 13, 1, 21, 22, 23, -1, -1,
                                       1, 31, 32, 33, 1, 41, 42, 43, -1, -1};
    const Picture picture = support::picture_from_argb(pixels.data(), 2, 2, 10);
    EXPECT_EQ(picture.values,
              (std::vector<double>{11, 12, 13, 21, 22, 23, 31, 32, 33, 41, 42, 43}));
    EXPECT_EQ(picture.total(1), 12 + 22 + 32 + 42);
}

}  // namespace
