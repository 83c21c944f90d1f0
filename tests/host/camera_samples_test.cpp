// When and how often the plug-in asks where a moving camera is.
#include <gtest/gtest.h>
#include <host/session.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "starry.h"

namespace {

using namespace starry;

/// Remembers when it was asked; moves one unit a second, its zoom grows by ten.
class WatchedCamera : public host::Camera {
public:
    host::Matrix layer_to_world(double seconds) const override {
        matrix_times.push_back(seconds);
        return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, seconds, 0, 0, 1};
    }
    double zoom(double seconds) const override {
        zoom_times.push_back(seconds);
        return 100.0 + 10.0 * seconds;
    }

    mutable std::vector<double> matrix_times;
    mutable std::vector<double> zoom_times;
};

/// Frames a second, angle and phase in degrees, segments.
using Shutter = std::tuple<host::FrameRate, int, int, int>;

class CameraSamples : public Lumivar, public testing::WithParamInterface<Shutter> {};

TEST_P(CameraSamples, LieEvenlyFromTheShuttersOpeningToItsClosing) {
    const auto& [rate, angle, phase, segments] = GetParam();
    add_stars();
    const auto camera = std::make_shared<WatchedCamera>();
    host::Scene scene = starry_scene();
    scene.camera = camera;
    scene.composition.frame_rate = rate;
    scene.composition.motion_blur = true;
    scene.composition.shutter_angle = static_cast<double>(angle);
    scene.composition.shutter_phase = static_cast<double>(phase);
    set(scene, "Motion Blur Segments", host::Track(static_cast<double>(segments)));

    constexpr int kFrame = 31;
    host::Session session(bundle());
    const host::Frame frame = session.render(scene, scene.composition.frame_time(kFrame));
    EXPECT_EQ(joined(frame.violations), "");

    // The first sample always; one more at the end of each segment while the shutter is open.
    const int more = angle == 0 ? 0 : segments;
    ASSERT_EQ(frame.camera_times.size(), static_cast<std::size_t>(more) + 1);
    const std::int64_t scale = frame.camera_times[0].scale;
    for (int k = 0; k <= more; ++k) {
        const host::Time& time = frame.camera_times[static_cast<std::size_t>(k)];
        // In frames: 31 + phase / 360 + k / N * angle / 360, exactly, so in seconds
        // (31 * 360 N + phase N + k angle) den / (360 N num). Compared as whole numbers.
        const std::int64_t n = more == 0 ? 1 : more;
        const std::int64_t above =
            (std::int64_t{kFrame} * 360 * n + phase * n + std::int64_t{k} * angle) *
            std::int64_t{rate.den};
        const std::int64_t below = 360 * n * std::int64_t{rate.num};
        EXPECT_EQ(std::int64_t{time.value} * below, above * std::int64_t{time.scale}) << k;
        EXPECT_EQ(std::int64_t{time.scale}, k == 0 ? scale : scale * n) << k;
        // Place and lens are asked for at that time, one after the other.
        ASSERT_EQ(camera->matrix_times.size(), frame.camera_times.size());
        ASSERT_EQ(camera->zoom_times.size(), frame.camera_times.size());
        EXPECT_DOUBLE_EQ(camera->matrix_times[static_cast<std::size_t>(k)],
                         static_cast<double>(above) / static_cast<double>(below));
        EXPECT_EQ(camera->zoom_times[static_cast<std::size_t>(k)],
                  camera->matrix_times[static_cast<std::size_t>(k)]);
    }
}

std::string test_name(const testing::TestParamInfo<Shutter>& row) {
    const auto& [rate, angle, phase, segments] = row.param;
    return std::string(rate.den == 1 ? "At24" : "At23976") + "Angle" + std::to_string(angle) +
           "Phase" + (phase < 0 ? "Minus" : "") + std::to_string(std::abs(phase)) + "Segments" +
           std::to_string(segments);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CameraSamples,
    testing::Combine(testing::Values(host::FrameRate{24, 1}, host::FrameRate{24000, 1001}),
                     testing::Values(0, 90, 180, 360, 720), testing::Values(-90, 0),
                     testing::Values(0, 1, 4, 16, 100)),
    test_name);

/// The outermost columns with at least half the light of the brightest: a streak of even light
/// falls to half at its ends, however wide its spot.
struct Extent {
    int first = -1;
    int last = -1;
};

Extent half_lit(const host::Frame& frame) {
    std::vector<double> light(static_cast<std::size_t>(frame.world.width()));
    for (std::size_t x = 0; x < light.size(); ++x) {
        for (int y = 0; y < frame.world.height(); ++y) {
            light[x] += static_cast<double>(frame.world.pixel<float>(static_cast<int>(x), y)[1]);
        }
    }
    const double half = *std::max_element(light.begin(), light.end()) / 2.0;
    Extent extent;
    for (std::size_t x = 0; x < light.size(); ++x) {
        if (light[x] > 0.0 && light[x] >= half) {
            extent.first = extent.first < 0 ? static_cast<int>(x) : extent.first;
            extent.last = static_cast<int>(x);
        }
    }
    return extent;
}

class MovingCamera : public Lumivar {};

TEST_F(MovingCamera, DrawsTheStreakBetweenTheSampledPlaces) {
    add_stars("sky.stars", {star_at(kRa, kDec, 1.0F)});
    // Turns 96 degrees a second to the west, along a circle of declination 1 degree off a great
    // one: 4 degrees a frame.
    host::Scene scene = starry_scene();
    scene.composition.motion_blur = true;
    scene.composition.shutter_angle = 360.0;
    scene.composition.shutter_phase = 0.0;
    scene.camera = host::look_at_camera(host::Track({{0.0, kRa}, {1.0, kRa - 96.0}}), kDec, 0.0,
                                        host::Lens::vertical_fov(24.0, 54));
    set(scene, "Motion Blur Segments", host::Track(16.0));
    set(scene, "Maximum Luminance", host::Track(10.0));
    // 27 / tan(12 deg) = 127.02 pixels a unit. The camera turns away westward (to the right), so
    // the star runs from the middle, column 48, to the left: 127.02 x tan(4 deg) = 8.88 pixels.
    const Extent streak = half_lit(render(scene));
    EXPECT_NEAR(streak.first, 48.0 - 8.88, 1.0);
    EXPECT_NEAR(streak.last, 48.0, 1.0);
    scene.composition.motion_blur = false;
    const Extent spot = half_lit(render(scene));
    EXPECT_NEAR(spot.first, 48.0, 1.0);
    EXPECT_NEAR(spot.last, 48.0, 1.0);
}

}  // namespace
