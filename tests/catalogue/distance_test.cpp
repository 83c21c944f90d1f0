#include "astronomy/distance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(Distance, IsTheInverseOfTheParallax) {
    EXPECT_DOUBLE_EQ(lumivar::distance_from_parallax(1000.0), 1.0);
    EXPECT_DOUBLE_EQ(lumivar::distance_from_parallax(0.5), 2000.0);
    EXPECT_NEAR(lumivar::distance_from_parallax(549.01), 1.82146, 1e-5);  // Barnard's star
}

TEST(Distance, IsUnknownAtTheFloorAndBelow) {
    EXPECT_EQ(lumivar::distance_from_parallax(0.0), -1.0);
    EXPECT_EQ(lumivar::distance_from_parallax(-0.3), -1.0);
    EXPECT_EQ(lumivar::distance_from_parallax(2.0, 2.0), -1.0);
    EXPECT_DOUBLE_EQ(lumivar::distance_from_parallax(2.5, 2.0), 400.0);
    // A floor below 0 does not let a negative distance through.
    EXPECT_EQ(lumivar::distance_from_parallax(-0.3, -1.0), -1.0);
}

TEST(Distance, IsFiniteOrUnknown) {
    EXPECT_EQ(lumivar::distance_from_parallax(std::nan("")), -1.0);
    EXPECT_EQ(lumivar::distance_from_parallax(std::numeric_limits<double>::denorm_min()), -1.0);
    EXPECT_EQ(lumivar::distance_from_parallax(std::numeric_limits<double>::infinity()), -1.0);
}

}  // namespace
