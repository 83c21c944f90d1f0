#include <base/to_int.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr std::int32_t MOST_NEGATIVE = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t MOST_POSITIVE = std::numeric_limits<std::int32_t>::max();
constexpr double INF = std::numeric_limits<double>::infinity();

}  // namespace

TEST(S32FromDouble, DropsTheFractionTowardZero) {
    EXPECT_EQ(s32_from_double(0.0), 0);
    EXPECT_EQ(s32_from_double(-0.0), 0);
    EXPECT_EQ(s32_from_double(0.999), 0);
    EXPECT_EQ(s32_from_double(-0.999), 0);
    EXPECT_EQ(s32_from_double(7.5), 7);
    EXPECT_EQ(s32_from_double(-7.5), -7);
}

TEST(S32FromDouble, KeepsAllThatTruncatesIntoRange) {
    EXPECT_EQ(s32_from_double(2147483647.0), MOST_POSITIVE);
    EXPECT_EQ(s32_from_double(std::nextafter(2147483648.0, 0.0)), MOST_POSITIVE);
    EXPECT_EQ(s32_from_double(-2147483647.0), -MOST_POSITIVE);
    EXPECT_EQ(s32_from_double(-2147483648.0), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(std::nextafter(-2147483649.0, 0.0)), MOST_NEGATIVE);
}

TEST(S32FromDouble, GivesTheMostNegativeForWhatDoesNotFit) {
    EXPECT_EQ(s32_from_double(2147483648.0), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(-2147483649.0), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(1e300), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(-1e300), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(INF), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(-INF), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(std::numeric_limits<double>::quiet_NaN()), MOST_NEGATIVE);
}

TEST(S32FromDouble, TakesSinglePrecisionAtItsOwnLimits) {
    // The largest single-precision number below 2^31 is 2^31 - 128.
    EXPECT_EQ(s32_from_double(std::nextafter(2147483648.0F, 0.0F)), 2147483520);
    EXPECT_EQ(s32_from_double(2147483648.0F), MOST_NEGATIVE);
    EXPECT_EQ(s32_from_double(std::numeric_limits<float>::infinity()), MOST_NEGATIVE);
}
