#include "closeness.h"

#include <algorithm>
#include <cmath>

namespace {

// The kernels' functions differ from the plain path's: exponentials by 2^-23 of themselves and of
// their argument, error functions by 2^-23. That has to be small beside the light in the frame.

/// The kernels draw no shorter streaks, in pixels: the two error functions nearly cancel there.
constexpr float kShortestFastStreak = 0.5F;
/// The kernels draw no streaks that move by fewer radii of the spot. The light of 400000 streaks of
/// 0.25 to 0.3 radii differed by 9.2e-7 of its peak at most.
constexpr float kFewestRadii = 0.25F;
/// The kernels draw no streaks of which less than this, in pixels, lies within the frame: the
/// frame's brightest pixel may be far from the streak's peak. With more in it, some pixel is at
/// most half a pixel from the segment's line.
constexpr double kLeastInFrame = 1.5;
/// The kernels draw no still spots that are farther from the frame, in radii.
constexpr float kFarthestSpot = 2.0F;

/// Narrows the part from `from` to `to` of a line, in shares of its length, to what lies between 0
/// and `last`. `start`, `way`: coordinate of the line's start, and from there to its end.
void narrow(double start, double way, double last, double& from, double& to) {
    if (way == 0) {
        if (start < 0 || start > last) {
            to = from;
        }
        return;
    }
    const double at_first = -start / way;
    const double at_last = (last - start) / way;
    from = std::max(from, std::min(at_first, at_last));
    to = std::min(to, std::max(at_first, at_last));
}

/// How many pixels of the segment lie among the centres of the frame's pixels.
double length_in_frame(const Vector2& a, const Vector2& b, float length,
                       const StarFramebuffer& fb) {
    double from = 0;
    double to = 1;
    for (int axis = 0; axis < 2; ++axis) {
        const auto start = static_cast<double>(a[axis]);
        narrow(start, static_cast<double>(b[axis]) - start, (axis == 0 ? fb.width : fb.height) - 1,
               from, to);
    }
    return (to - from) * static_cast<double>(length);
}

/// How far outside 0 to `last` a coordinate lies.
float outside(float at, int last) { return max(max(-at, at - static_cast<float>(last)), 0.0F); }

bool is_in_frame(const Vector2& at, const StarFramebuffer& fb) {
    return outside(at[0], fb.width - 1) == 0 && outside(at[1], fb.height - 1) == 0;
}

}  // namespace

bool kernels_draw_closely(const Vector2& at, float spot_w, float spot_h,
                          const StarFramebuffer& fb) {
    const float x = outside(at[0], fb.width - 1) / spot_w;
    const float y = outside(at[1], fb.height - 1) / spot_h;
    return x * x + y * y <= kFarthestSpot * kFarthestSpot;
}

bool kernels_draw_closely(const Vector2& a, const Vector2& b, float length, const SweptSpot& swept,
                          const StarFramebuffer& fb) {
    return length >= kShortestFastStreak && length * swept.q * swept.scale >= kFewestRadii &&
           ((is_in_frame(a, fb) && is_in_frame(b, fb)) ||
            length_in_frame(a, b, length, fb) >= kLeastInFrame);
}
