#include <base/to_int.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr std::int32_t kMostNegative = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMostPositive = std::numeric_limits<std::int32_t>::max();
constexpr double kInf = std::numeric_limits<double>::infinity();

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
    EXPECT_EQ(s32_from_double(2147483647.0), kMostPositive);
    EXPECT_EQ(s32_from_double(std::nextafter(2147483648.0, 0.0)), kMostPositive);
    EXPECT_EQ(s32_from_double(-2147483647.0), -kMostPositive);
    EXPECT_EQ(s32_from_double(-2147483648.0), kMostNegative);
    EXPECT_EQ(s32_from_double(std::nextafter(-2147483649.0, 0.0)), kMostNegative);
}

TEST(S32FromDouble, GivesTheMostNegativeForWhatDoesNotFit) {
    EXPECT_EQ(s32_from_double(2147483648.0), kMostNegative);
    EXPECT_EQ(s32_from_double(-2147483649.0), kMostNegative);
    EXPECT_EQ(s32_from_double(1e300), kMostNegative);
    EXPECT_EQ(s32_from_double(-1e300), kMostNegative);
    EXPECT_EQ(s32_from_double(kInf), kMostNegative);
    EXPECT_EQ(s32_from_double(-kInf), kMostNegative);
    EXPECT_EQ(s32_from_double(std::numeric_limits<double>::quiet_NaN()), kMostNegative);
}

TEST(S32FromDouble, TakesSinglePrecisionAtItsOwnLimits) {
    // The largest single-precision number below 2^31 is 2^31 - 128.
    EXPECT_EQ(s32_from_double(std::nextafter(2147483648.0F, 0.0F)), 2147483520);
    EXPECT_EQ(s32_from_double(2147483648.0F), kMostNegative);
    EXPECT_EQ(s32_from_double(std::numeric_limits<float>::infinity()), kMostNegative);
}
