// One camera, one window and round numbers: what the shading's and the renderer's tests start from.
#pragma once

#include <base/array.h>
#include <gtest/gtest.h>
#include <libimgops/renderer.h>

#include <cmath>
#include <initializer_list>
#include <vector>

#include "support/guarded_frame.h"
#include "support/memory_stars.h"

namespace star_scene {

constexpr double PI = 3.14159265358979323846;
constexpr int kWidth = 100;
constexpr int kHeight = 50;
/// Where a star at longitude 0 and latitude 0 lands, exactly, through `facing_x`.
constexpr int kCentreX = 50;
constexpr int kCentreY = 25;

/// A camera that looks along the world's x axis, where longitude and latitude are 0, and is turned
/// from there by `yaw` degrees: stars move to the right by as much. A yaw of 0 is exact.
inline camera facing_x(double yaw = 0) {
    const double s = std::sin(yaw * PI / 180), c = std::cos(yaw * PI / 180);
    camera cam;
    cam.xform = Matrix4<double>(s, 0, c, 0,   //
                                0, 1, 0, 0,   //
                                -c, 0, s, 0,  //
                                0, 0, 0, 1);
    cam.focal = 2;
    return cam;
}

/// Settings under which a white star of luminance 1 draws with energy 1 and radii of 2 pixels.
inline StarRendererData plain_settings() {
    StarRendererData data;
    data.window_x0 = -2;
    data.window_x1 = 2;
    data.window_y0 = -1;
    data.window_y1 = 1;
    data.spot_size_x = 40;
    data.spot_size_y = 40;
    data.max_luminance = 1000;
    data.brightness = 0.25;
    data.saturation = 1;
    data.bias_exponent = 1;
    data.projection = Persp;
    data.use_depth = true;
    return data;
}

/// Draws all stars of `input` as a frame does, without rewinding it.
inline bool draw_all(const StarRendererData& data, support::GuardedFrame& frame, StarInput& input,
                     const Array<camera>& cams) {
    const StarFramebuffer fb = frame.view();
    StarRenderer renderer(data, fb, input, cams);
    bool drew = false;
    while (renderer.render_star(drew)) {
    }
    EXPECT_TRUE(frame.guards_intact());
    return drew;
}

/// A frame of stars in memory, seen through one camera ahead of them or through others.
struct StarFrame {
    StarFrame(const StarRendererData& data_, const std::vector<support::CatalogueStar>& stars,
              std::initializer_list<camera> samples = {facing_x()},
              const char* version = support::kVersion1)
        : data(data_), input(version, stars), frame(kWidth, kHeight), fb(frame.view()) {
        for (const camera& sample : samples) {
            cams.append(sample);
        }
    }
    StarRenderer renderer() { return StarRenderer(data, fb, input, cams); }
    bool draw() { return draw_all(data, frame, input, cams); }
    float centre() { return frame.r(kCentreX, kCentreY); }

    StarRendererData data;
    support::MemoryStars input;
    Array<camera> cams;
    support::GuardedFrame frame;
    StarFramebuffer fb;
};

}  // namespace star_scene
