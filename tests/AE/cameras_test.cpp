// Where shutters and cameras are out of the ordinary; the ordinary is in camera_records_test, what
// the host is asked in frames_test.
#include <AE/instance.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "fake_host.h"

namespace {

using Times = std::vector<FakeHost::Time>;

class Cameras : public testing::Test {
protected:
    void sample(int segments, bool motion_blur) {
        instance.mb_segments = segments;
        // 180 degrees, 16.16.
        host.in_data.shutter_angle = motion_blur ? 180 * 65536 : 0;
        AEGP_SuiteHandler suites(&host.basic);
        sample_cameras(&host.in_data, instance, suites);
    }
    void expect_xform(const camera& actual, const std::array<double, 16>& expected) const {
        for (int i = 0; i < 16; ++i) {
            EXPECT_NEAR(actual.xform(i / 4, i % 4), expected[i], 1e-12)
                << "row " << i / 4 << ", column " << i % 4;
        }
    }

    FakeHost host;
    MyInstance instance;
};

}  // namespace

TEST_F(Cameras, SampleTimesAreCutTowardsZero) {
    // The end is -10/24 s + 1/72 s, -9 2/3 on scale 24: with the half -9 1/6, cut to -9.
    host.shutter_start = {-10, 24};
    host.shutter_duration = {1, 72};
    sample(1, true);
    EXPECT_EQ(host.matrix_times, (Times{{-10, 24}, {-9, 24}}));
    // On scale 48: -19 2/3 and -19 1/3; with the half -19 1/6 and -18 5/6.
    host.matrix_times.clear();
    sample(2, true);
    EXPECT_EQ(host.matrix_times, (Times{{-10, 24}, {-19, 48}, {-18, 48}}));
}

TEST_F(Cameras, SampleTimesBeyondThirtyTwoBitsBecomeTheSmallest) {
    // 2^31 - 1 on scale 1 plus a second, on scale 2: over 2^32.
    host.shutter_start = {INT32_MAX, 1};
    host.shutter_duration = {1, 1};
    sample(2, true);
    EXPECT_EQ(host.matrix_times, (Times{{INT32_MAX, 1}, {INT32_MIN, 2}, {INT32_MIN, 2}}));
}

TEST_F(Cameras, ScaleIsUnsignedAndWrapsAtThirtyTwoBits) {
    // Scale 3 x 10^9 is over 2^31; twice that is 6 x 10^9 - 2^32 = 1705032704.
    host.shutter_start = {300, 3000000000U};
    host.shutter_duration = {100, 3000000000U};
    sample(2, true);
    // 300 + 50 k units of 1/3e9 s: twice 350 and twice 400, plus a half, cut (within one of it: the
    // times in seconds are rounded).
    ASSERT_EQ(host.matrix_times.size(), 3U);
    EXPECT_EQ(host.matrix_times[1].scale, 1705032704U);
    EXPECT_NEAR(host.matrix_times[1].value, 700, 1);
    EXPECT_NEAR(host.matrix_times[2].value, 800, 1);
}

TEST_F(Cameras, ZeroScaleIsSurvived) {
    host.shutter_start = {0, 0};
    sample(1, true);
    EXPECT_EQ(host.matrix_times, (Times{{0, 0}, {INT32_MIN, 0}}));
}

TEST_F(Cameras, SamplesAreAppendedOneForNegativeSegments) {
    instance.cameras.append();
    sample(-3, true);
    EXPECT_EQ(instance.cameras.len(), 2U);
}

TEST_F(Cameras, NoCameraGivesNoSampleThoughTheCompositionIsAskedFor) {
    host.has_camera = false;
    sample(4, true);
    EXPECT_EQ(instance.cameras.len(), 0U);
    EXPECT_EQ(host.shutter_times.size(), 1U);
}

TEST_F(Cameras, WorldToCameraOfAMovedCameraWithYUp) {
    // The camera's place in the host's world: 10 right, 20 down, 500 in front. Inverted, the
    // translation changes sign; then y changes sign: -10, +20, +500.
    host.camera_matrix.mat[3][0] = 10.0;
    host.camera_matrix.mat[3][1] = 20.0;
    host.camera_matrix.mat[3][2] = -500.0;
    sample(0, false);
    ASSERT_EQ(instance.cameras.len(), 1U);
    expect_xform(instance.cameras[0], {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -10, 20, 500, 1});
}

TEST_F(Cameras, WorldToCameraOfATurnedCamera) {
    // A quarter turn that takes x to y and y to -x. The inverse is the transpose: x to -y, y to x.
    // With y turned round on both sides: x to y, y to -x.
    host.camera_matrix = {{{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
    sample(0, false);
    ASSERT_EQ(instance.cameras.len(), 1U);
    expect_xform(instance.cameras[0], {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

TEST_F(Cameras, WorldToCameraTakesThePlaceInThePicture) {
    // Turned about y so that the camera's z is the world's x, its x the world's -z, and moved to
    // (3, -4, 5): the host's point 7 units along x, 2 down and 1 to the camera's right of it must
    // come out at x = 1, y = -2 (up is positive), z = 7.
    host.camera_matrix = {{{0, 0, -1, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}, {3, -4, 5, 1}}};
    sample(0, false);
    ASSERT_EQ(instance.cameras.len(), 1U);
    // In our world, whose y points up: (3 + 7, -(-4 + 2), 5 - 1).
    const VectorN<double, 4> world(10, 2, 4, 1);
    VectorN<double, 4> seen;
    transform(instance.cameras[0].xform, world, seen);
    EXPECT_NEAR(seen[0], 1, 1e-12);
    EXPECT_NEAR(seen[1], -2, 1e-12);
    EXPECT_NEAR(seen[2], 7, 1e-12);
    EXPECT_EQ(seen[3], 1.0);
}
