// The published relations between the bands, worked out by hand.
#include "astronomy/photometry.h"

#include <gtest/gtest.h>

namespace {

TEST(TychoBands, GiveVAndColourIndex) {
    // BT 10.488, VT 8.670: the colour is 1.818, V = 8.670 - 0.090 x 1.818 and B-V = 0.850 x 1.818.
    EXPECT_NEAR(lumivar::v_from_tycho(10.488, 8.670), 8.50638, 1e-9);
    EXPECT_NEAR(lumivar::bv_from_tycho(10.488, 8.670), 1.5453, 1e-9);
    EXPECT_NEAR(lumivar::v_from_tycho(9.9, 10.0), 10.009, 1e-9);
    EXPECT_NEAR(lumivar::bv_from_tycho(9.9, 10.0), -0.085, 1e-9);
}

TEST(TychoBands, ContinueTheLineBeyondItsRange) {
    EXPECT_NEAR(lumivar::v_from_tycho(12.5, 10.0), 9.775, 1e-9);
    EXPECT_NEAR(lumivar::bv_from_tycho(12.5, 10.0), 2.125, 1e-9);
}

TEST(GaiaBands, GiveV) {
    // G - V at BP-RP 0 is the constant; at 1: -0.02704 + 0.01424 - 0.2156 + 0.01426 = -0.21414;
    // at 2: -0.02704 + 0.02848 - 0.8624 + 0.11408 = -0.74688.
    EXPECT_NEAR(lumivar::v_from_gaia(12.0, 0.0), 12.02704, 1e-9);
    EXPECT_NEAR(lumivar::v_from_gaia(12.0, 1.0), 12.21414, 1e-9);
    EXPECT_NEAR(lumivar::v_from_gaia(12.0, 2.0), 12.74688, 1e-9);
}

TEST(GaiaBands, ClampTheColourToItsRange) {
    // At -0.5: -0.02704 - 0.00712 - 0.0539 - 0.0017825 = -0.0898425.
    EXPECT_NEAR(lumivar::v_from_gaia(12.0, -2.0), 12.0898425, 1e-9);
    // At 5: -0.02704 + 0.0712 - 5.39 + 1.7825 = -3.56334.
    EXPECT_NEAR(lumivar::v_from_gaia(12.0, 9.0), 15.56334, 1e-9);
}

}  // namespace
