// The records that the built module takes of a moving camera, against values by hand.
#include <AE/instance.h>

#include <algorithm>
#include <string>
#include <tuple>

#include "built_effect.h"

namespace {

/// The camera moves one unit a second to the right; its zoom of 100 pixels grows by 10 a second.
class CameraRecords : public BuiltEffect {
protected:
    CameraRecords() {
        host.has_camera = true;
        host.move_camera = [this](const FakeHost::Time& time) {
            const double seconds =
                static_cast<double>(time.value) / static_cast<double>(time.scale);
            host.camera_matrix.mat[3][0] = seconds;
            host.zoom = 100.0 + 10.0 * seconds;
        };
    }

    /// Takes the records; `angle` is that of the shutter in degrees, 0 for no motion blur.
    const Array<camera>& sample(int segments, int angle) {
        host.values[kMotionBlurSegments].u.sd.value = segments;
        host.in_data.shutter_angle = angle * 65536;
        EXPECT_EQ(pre_render(), 0);
        return static_cast<const MyInstance*>(host.pre_output.pre_render_data)->cameras;
    }

    /// The camera's place at a time, seen from the world with y up, and its lens in a composition
    /// of 1920 x 1080: 2 x (1920 / 1080) x zoom / 1920.
    static void expect_record(const camera& record, double seconds) {
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 4; ++column) {
                const bool moved = row == 3 && column == 0;
                const double expected = moved ? -seconds : (row == column ? 1.0 : 0.0);
                EXPECT_NEAR(record.xform(row, column), expected, 1e-14) << row << ", " << column;
            }
        }
        EXPECT_NEAR(record.focal, (100.0 + 10.0 * seconds) / 540.0, 1e-14);
        EXPECT_EQ(record.near_clip, 0.10000000149011612);
        EXPECT_EQ(record.far_clip, -1.0);
    }
};

/// Frames a second as a fraction, angle and phase in degrees, segments.
using Shutter = std::tuple<std::pair<unsigned, unsigned>, int, int, int>;

class CameraRecordsAcrossShutter : public CameraRecords,
                                   public testing::WithParamInterface<Shutter> {};

}  // namespace

TEST_P(CameraRecordsAcrossShutter, LieEvenlyFromItsOpeningToItsClosing) {
    const auto& [rate, angle, phase, segments] = GetParam();
    const auto& [frames, seconds] = rate;
    // Frame 31 in quarters of a frame: a quarter is `seconds` units of 1 / (4 x frames) seconds, so
    // that all these angles and phases are whole numbers.
    const int quarter = static_cast<int>(seconds);
    const unsigned scale = 4 * frames;
    const int start = (4 * 31 + phase / 90) * quarter;
    const int duration = angle / 90 * quarter;
    host.shutter_start = {start, scale};
    host.shutter_duration = {duration, scale};

    const Array<camera>& cameras = sample(segments, angle);
    const int n = angle == 0 ? 0 : segments;
    ASSERT_EQ(cameras.len(), static_cast<uword>(n) + 1);
    std::vector<FakeHost::Time> times = {{start, scale}};
    for (int k = 1; k <= n; ++k) {
        times.push_back({n * start + k * duration, scale * static_cast<unsigned>(n)});
    }
    EXPECT_EQ(host.matrix_times, times);
    EXPECT_EQ(host.zoom_times, times);
    for (int k = 0; k <= n; ++k) {
        SCOPED_TRACE(k);
        // In frames 31 + phase / 360 + (k / N) x angle / 360.
        const double frame = 31.0 + phase / 360.0 + (k == 0 ? 0.0 : k * (angle / 360.0) / n);
        expect_record(cameras[static_cast<uword>(k)], frame * seconds / frames);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, CameraRecordsAcrossShutter,
    testing::Combine(testing::Values(std::pair(24U, 1U), std::pair(24000U, 1001U)),
                     testing::Values(0, 90, 180, 360, 720), testing::Values(-90, 0),
                     testing::Values(0, 1, 4, 16, 100)));

TEST_F(CameraRecords, OfFourSegmentsByHand) {
    // Frame 31 at 24 a second, 180 degrees from -90 on: 30.75 to 31.25 frames, a step is an eighth.
    host.shutter_start = {123, 96};
    host.shutter_duration = {48, 2304};
    const Array<camera>& cameras = sample(4, 180);
    ASSERT_EQ(cameras.len(), 5U);
    const double seconds[] = {1.28125, 1.286458333333333, 1.291666666666667, 1.296875,
                              1.302083333333333};
    const double focals[] = {0.208912037037037, 0.209008487654321, 0.209104938271605,
                             0.209201388888889, 0.209297839506173};
    for (uword k = 0; k < 5; ++k) {
        EXPECT_NEAR(cameras[k].xform(3, 0), -seconds[k], 1e-14);
        EXPECT_NEAR(cameras[k].focal, focals[k], 1e-14);
    }
}

TEST_F(CameraRecords, AreTakenAtTheTimesOfOddShutters) {
    const struct {
        A_Time start, duration;
        int segments;
        std::vector<FakeHost::Time> times;
    } table[] = {
        // 1/24 s + k/192 s on scale 96 is 4 + k/2; half a unit more, cut: 5, 5, 6, 6.
        {{1, 24}, {1, 48}, 4, {{1, 24}, {5, 96}, {5, 96}, {6, 96}, {6, 96}}},
        // The end is -10/24 s + 1/72 s, -9 2/3 on scale 24: with the half -9 1/6, cut to -9.
        {{-10, 24}, {1, 72}, 1, {{-10, 24}, {-9, 24}}},
        // On scale 48: -19 2/3 and -19 1/3; with the half -19 1/6 and -18 5/6.
        {{-10, 24}, {1, 72}, 2, {{-10, 24}, {-19, 48}, {-18, 48}}},
        // 2^31 - 1 on scale 1 plus a second, on scale 2: over 2^32, which becomes the smallest.
        {{INT32_MAX, 1}, {1, 1}, 2, {{INT32_MAX, 1}, {INT32_MIN, 2}, {INT32_MIN, 2}}},
        {{0, 0}, {1, 48}, 1, {{0, 0}, {INT32_MIN, 0}}},
        // Open for no time, and fewer than no segments.
        {{1, 24}, {0, 48}, 4, {{1, 24}}},
        {{1, 24}, {1, 48}, -3, {{1, 24}}},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(&row - table);
        host.shutter_start = row.start;
        host.shutter_duration = row.duration;
        host.matrix_times.clear();
        const Array<camera>& cameras = sample(row.segments, 180);
        EXPECT_EQ(host.matrix_times, row.times);
        ASSERT_EQ(cameras.len(), row.times.size());
        for (uword k = 0; k < row.times.size() && row.start.scale == 24; ++k) {
            expect_record(cameras[k], static_cast<double>(row.times[k].value) / row.times[k].scale);
        }
    }
}

TEST_F(CameraRecords, HaveAScaleThatIsUnsignedAndWrapsAtThirtyTwoBits) {
    // Scale 3 x 10^9 is over 2^31; twice that is 6 x 10^9 - 2^32 = 1705032704.
    host.shutter_start = {300, 3000000000U};
    host.shutter_duration = {100, 3000000000U};
    sample(2, 180);
    // 300 + 50 k units of 1/3e9 s: twice 350 and twice 400, plus a half, cut (within one of it: the
    // times in seconds are rounded).
    ASSERT_EQ(host.matrix_times.size(), 3U);
    EXPECT_EQ(host.matrix_times[1].scale, 1705032704U);
    EXPECT_NEAR(host.matrix_times[1].value, 700, 1);
    EXPECT_NEAR(host.matrix_times[2].value, 800, 1);
}

TEST_F(CameraRecords, AreFromWorldToCameraWithYUp) {
    host.move_camera = [](const FakeHost::Time&) {};
    const struct {
        A_Matrix4 place;
        double expected[16];
    } table[] = {
        // 10 right, 20 down, 500 in front. Inverted, the translation changes sign; then y changes
        // sign: -10, +20, +500.
        {{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {10, 20, -500, 1}}},
         {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -10, 20, 500, 1}},
        // A quarter turn that takes x to y and y to -x. The inverse is the transpose: x to -y, y to
        // x. With y turned round on both sides: x to y, y to -x.
        {{{{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}},
         {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        // Turned about y so that the camera's z is the world's x, its x the world's -z, and moved
        // to (3, -4, 5). A point (x, y, z) of ours, whose y points up, stands 5 - z to its right,
        // y - 4 up, x - 3 ahead.
        {{{{0, 0, -1, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}, {3, -4, 5, 1}}},
         {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 5, -4, -3, 1}},
    };
    for (const auto& row : table) {
        host.camera_matrix = row.place;
        const Array<camera>& cameras = sample(0, 0);
        ASSERT_EQ(cameras.len(), 1U);
        for (int i = 0; i < 16; ++i) {
            EXPECT_NEAR(cameras[0].xform(i / 4, i % 4), row.expected[i], 1e-12)
                << "row " << i / 4 << ", column " << i % 4;
        }
    }
}

TEST_F(CameraRecords, AreTheDefaultCameraWhereThereIsNoneThoughTheCompositionIsAskedFor) {
    host.has_camera = false;
    const Array<camera>& cameras = sample(4, 180);
    ASSERT_EQ(cameras.len(), 1U);
    EXPECT_EQ(cameras[0].focal, 3.200000047683716);
    EXPECT_EQ(host.shutter_times.size(), 1U);
}

TEST_F(CameraRecords, KeepTheDefaultLensWhereTheZoomIsRefused) {
    host.failures["AEGP_GetLayerStreamValue"] = {3};
    const Array<camera>& cameras = sample(2, 180);
    ASSERT_EQ(cameras.len(), 3U) << "one that fails does not end the others";
    for (uword k = 0; k < 3; ++k) {
        EXPECT_EQ(cameras[k].focal, 3.200000047683716);
        EXPECT_LT(cameras[k].xform(3, 0), 0.0) << "the place is known";
    }
}

TEST_F(CameraRecords, StandAtTheOriginWhereThePlaceIsRefusedAndDoNotAskForTheLens) {
    host.failures["AEGP_GetLayerToWorldXform"] = {3};
    const Array<camera>& cameras = sample(2, 180);
    ASSERT_EQ(cameras.len(), 3U);
    EXPECT_EQ(host.matrix_times.size(), 3U);
    EXPECT_TRUE(host.zoom_times.empty());
    for (uword k = 0; k < 3; ++k) {
        EXPECT_EQ(cameras[k].focal, 3.200000047683716);
        EXPECT_EQ(cameras[k].xform(3, 0), 0.0);
        EXPECT_EQ(cameras[k].xform(3, 3), 1.0);
    }
}

TEST_F(CameraRecords, AreTheDefaultCameraWhereAnyQuestionIsRefused) {
    const auto is_the_layer = [](const std::string& call) {
        return call.rfind("checkout_layer", 0) == 0;
    };
    const auto is_no_question = [](const std::string& call) {
        return call.rfind("AEGP_", 0) != 0 && call.rfind("checkout_param", 0) != 0;
    };
    for (const char* question :
         {"checkout_param", "AEGP_ConvertEffectToCompTime", "AEGP_GetEffectCamera",
          "AEGP_GetEffectLayer", "AEGP_GetLayerParentComp", "AEGP_GetItemFromComp",
          "AEGP_GetItemDimensions", "AEGP_GetCompShutterFrameRange"}) {
        SCOPED_TRACE(question);
        host.failures = {{question, {3}}};
        host.log.clear();
        const Array<camera>& cameras = sample(4, 180);
        ASSERT_EQ(cameras.len(), 1U);
        // It is the last one asked, and the input layer is asked for all the same.
        EXPECT_EQ(std::count_if(host.log.begin(), host.log.end(), is_the_layer), 1);
        host.log.erase(std::remove_if(host.log.begin(), host.log.end(), is_no_question),
                       host.log.end());
        EXPECT_EQ(host.log.back().rfind(question, 0), 0U) << host.log.back();
        EXPECT_TRUE(host.suites_balanced());
        EXPECT_EQ(cameras[0].focal, 3.200000047683716);
        EXPECT_EQ(cameras[0].near_clip, 0.10000000149011612);
        EXPECT_EQ(cameras[0].far_clip, -1.0);
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(cameras[0].xform(i / 4, i % 4), i % 5 == 0 ? 1.0 : 0.0);
        }
    }
    EXPECT_TRUE(host.matrix_times.empty());
}
