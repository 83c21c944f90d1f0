// What the benchmarks draw: the effect's frame at its default controls, by either path.
#pragma once

#include <base/array.h>
#include <libimgops/draw_path.h>
#include <libimgops/records.h>
#include <libkelvimage/image.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host_frame.h"
#include "sky.h"

namespace bench {

inline constexpr int kWidth = 1920;
inline constexpr int kHeight = 1080;
/// The default spot at that size, pixels; and the default energy of a star of luminance 1.
inline constexpr float kSpot = 2.4F;
inline constexpr float kEnergy = 20.0F;

/// Makes a path the one that draws, to the end of the scope.
class DrawBy {
public:
    explicit DrawBy(DrawPath path) { set_draw_path(path); }
    DrawBy(const DrawBy&) = delete;
    DrawBy& operator=(const DrawBy&) = delete;
    ~DrawBy() { set_draw_path(DrawPath::Fast); }
};

/// The effect's controls at their defaults, as they reach the renderer of a frame of that size.
StarRendererData default_settings(int width, int height);
/// The default camera, which stands still: one sample.
void hold(Array<camera>& cameras);
/// The default camera turning sideways: `segments` + 1 samples.
void pan(Array<camera>& cameras, int segments, double degrees = 5);
/// The same turning around the direction in which it looks.
void roll(Array<camera>& cameras, int segments, double degrees);

/// A float frame as the effect lays it out.
class FloatFrame {
public:
    FloatFrame(int width, int height);
    void clear() { image_.make_blank(); }
    const StarFramebuffer& view() const { return view_; }
    Kelv::Image& image() { return image_; }
    std::size_t floats() const;
    const float* data() { return image_.line_float(0); }

private:
    Kelv::Image image_;
    StarFramebuffer view_;
};

/// What a streak is drawn from: a star's path between two camera samples.
struct DrawnSegment {
    Vector2 a;
    Vector2 b;
    float energy;
    /// One end is ahead of the camera, the other behind and mirrored to the far side.
    bool crosses = false;
};

/// A frame from its settings to the host's pixels.
class Scene {
public:
    Scene(int width, int height, const std::vector<star>& stars);

    /// Adds all stars to `frame`; returns whether any left light.
    bool draw_stars();
    /// Clears, draws and converts to 8 bits.
    bool draw();
    /// Draws by both paths; returns what differs beyond the promise, or nothing. `peak_share`: how
    /// much a value may differ, as a part of the frame's largest value.
    std::string difference(double peak_share);
    /// Visits the segments that have pixels on the frame, in the order in which the plain path
    /// draws them, until `visit` returns false.
    void for_each_segment(const std::function<bool(const DrawnSegment&)>& visit);
    /// Radius of a spot, pixels.
    float spot() const;

    StarRendererData settings;
    Array<camera> cameras;
    FloatFrame frame;
    SkyFile sky;

private:
    HostFrame<unsigned char> codes_;
};

/// Compares two frames; returns what differs, or nothing.
std::string difference(const float* plain, const float* fast, std::size_t count, double peak_share);

/// Pixels that the plain streak visits: its rows, without its light. `spot`: its radius.
double visited_pixels(const StarFramebuffer& fb, const DrawnSegment& segment, float spot);

}  // namespace bench
