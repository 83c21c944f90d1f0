// The files that Blender wrote of one camera show the stars where Blender's own matrices have them.
#include <gtest/gtest.h>
#include <host/camera.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "camera_opening.h"
#include "support/scratch.h"
#include "usd_here.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr double kFrameRate = 24.0;
constexpr std::size_t kFrames = 25;
constexpr double kGlbLens = 50.0;  // millimetres; the format has no animated lens

struct BlenderFrame {
    double lens = 0.0;        ///< millimetres, of a film 36 mm wide
    host::Matrix to_world{};  ///< z up, looks along -z with y up; row vectors
};

std::vector<BlenderFrame> blender_frames() {
    std::istringstream lines(read_file(CAMERA_SAMPLES "/blender/expected.csv"));
    std::string line;
    std::getline(lines, line);
    std::vector<BlenderFrame> frames;
    while (std::getline(lines, line)) {
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream numbers(line);
        double frame = 0.0;
        BlenderFrame found;
        numbers >> frame >> found.lens;
        for (double& element : found.to_world) {
            numbers >> element;
        }
        EXPECT_TRUE(numbers && frame == static_cast<double>(frames.size())) << line;
        frames.push_back(found);
    }
    return frames;
}

using Point = std::array<double, 3>;
using Pixel = std::array<double, 2>;

/// A point of the world in the camera's axes.
Point seen_from(const host::Matrix& to_world, const Point& point) {
    Point seen{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (std::size_t i = 0; i < 3; ++i) {
            seen[axis] += (point[i] - to_world[12 + i]) * to_world[4 * axis + i];
        }
    }
    return seen;
}

struct SkyPlace {
    double ra = 0.0;
    double dec = 0.0;
    double parsecs = 0.0;
};

/// Where Blender sees a point of the equatorial axes: x to 0 h, y to 6 h, z north.
std::optional<Pixel> in_blender(const SkyPlace& star, const host::Matrix& to_world, double lens) {
    const Point p = seen_from(to_world, {star.parsecs * std::cos(star.dec) * std::cos(star.ra),
                                         star.parsecs * std::cos(star.dec) * std::sin(star.ra),
                                         star.parsecs * std::sin(star.dec)});
    const double image = kWidth * lens / 36.0;
    const Pixel pixel = {kWidth / 2.0 - image * p[0] / p[2], kHeight / 2.0 + image * p[1] / p[2]};
    const bool seen = p[2] < 0.0 && pixel[0] >= 0.0 && pixel[0] <= kWidth && pixel[1] >= 0.0 &&
                      pixel[1] <= kHeight;
    return seen ? std::optional(pixel) : std::nullopt;
}

/// Where the host's camera sees it: y down, looks along +z.
Pixel in_host(const SkyPlace& star, const host::Matrix& to_world, double zoom) {
    const Point p = seen_from(to_world, {star.parsecs * std::cos(star.dec) * std::cos(star.ra),
                                         -star.parsecs * std::sin(star.dec),
                                         star.parsecs * std::cos(star.dec) * std::sin(star.ra)});
    return {kWidth / 2.0 + zoom * p[0] / p[2], kHeight / 2.0 + zoom * p[1] / p[2]};
}

std::vector<SkyPlace> stars() {
    std::vector<SkyPlace> all;
    for (int ra = 0; ra < 360; ra += 5) {
        for (int dec = -85; dec <= 85; dec += 5) {
            for (const double parsecs : {20.0, 1e6}) {
                all.push_back(
                    {ra * std::numbers::pi / 180.0, dec * std::numbers::pi / 180.0, parsecs});
            }
        }
    }
    return all;
}

std::shared_ptr<const host::Camera> camera_of(const std::string& name) {
    const lumivar::CameraPaths file =
        lumivar::read_camera_paths({std::string(CAMERA_SAMPLES "/blender/") + name, ""}, {});
    EXPECT_EQ(file.paths.size(), 1U);
    const auto other = host::look_at_camera(0.0, 0.0, 0.0, host::Lens::new_camera(kWidth));
    return host::path_camera(
        lumivar::samples_on_picture(file.paths.front(), kWidth, kHeight, *other));
}

void expect_blenders_stars(const std::string& name, std::optional<double> lens = {}) {
    const auto camera = camera_of(name);
    const std::vector<BlenderFrame> frames = blender_frames();
    ASSERT_EQ(frames.size(), kFrames);
    const std::vector<SkyPlace> sky = stars();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const double seconds = static_cast<double>(i) / kFrameRate;
        const host::Matrix to_world = camera->layer_to_world(seconds);
        const double zoom = camera->zoom(seconds);
        int compared = 0;
        double largest = 0.0;
        for (const SkyPlace& star : sky) {
            const auto expected =
                in_blender(star, frames[i].to_world, lens.value_or(frames[i].lens));
            if (expected) {
                const Pixel seen = in_host(star, to_world, zoom);
                largest = std::max(largest,
                                   std::hypot(seen[0] - (*expected)[0], seen[1] - (*expected)[1]));
                ++compared;
            }
        }
        EXPECT_GE(compared, 10) << "frame " << i;
        EXPECT_LE(largest, 0.02) << "frame " << i;
    }
}

}  // namespace

TEST(BlenderFiles, Chan) { expect_blenders_stars("shot.chan"); }

TEST(BlenderFiles, Gltf) { expect_blenders_stars("shot.glb", kGlbLens); }

TEST(BlenderFiles, UsdTextWithZUpAndAngles) {
    SKIP_WITHOUT_USD();
    expect_blenders_stars("shot_z_up.usda");
}

TEST(BlenderFiles, UsdCrateWithYUpAndMatrices) {
    SKIP_WITHOUT_USD();
    expect_blenders_stars("shot_y_up.usdc");
}

TEST(BlenderFiles, AnglesThatWrapRoundDoNotWhirlTheCamera) {
    SKIP_WITHOUT_USD();
    // The rig's angle goes from 175 to -176.67 degrees from frame 21 to 22.
    const auto angles = camera_of("shot_z_up.usda");
    const auto quaternions = camera_of("shot.glb");
    for (double frame = 20.5; frame < 24.0; frame += 1.0) {
        const host::Matrix a = angles->layer_to_world(frame / kFrameRate);
        const host::Matrix b = quaternions->layer_to_world(frame / kFrameRate);
        const double cosine = a[8] * b[8] + a[9] * b[9] + a[10] * b[10];
        EXPECT_GT(cosine, std::cos(0.5 * std::numbers::pi / 180.0)) << frame;
    }
}
