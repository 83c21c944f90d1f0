#include "closeness.h"

#include <algorithm>
#include <cmath>

namespace {

// The kernels' functions differ from the plain path's: exponentials by 2^-23 of themselves and of
// their argument, error functions by 2^-23. That has to be small beside the light in the frame.
//
// A short streak's light is the difference of two error functions that nearly cancel. There the
// kernels follow the C library's, in the plain streak's order: theirs are one unit in the last
// place from it at most, 2^-24. What is left to the plain streak: streaks that hardly move, short
// ones under spots so large that even this unit shows, and still spots far beside the frame.

/// Under large spots the last bit of an error function weighs too much for shorter streaks, in
/// pixels; and for those that move by fewer radii of the spot.
constexpr float kShortestFastStreak = 0.5F;
constexpr float kFewestRadii = 0.25F;
/// So it does for streaks of which less than this, in pixels, lies within the frame: the frame's
/// brightest pixel may be far from the streak's peak. With more in it, some pixel is at most half a
/// pixel from the segment's line.
constexpr double kLeastInFrame = 1.5;
/// Large: off by one unit, 2^-24, both error functions change the light by 2^-23 area / length of
/// the spot's peak, which is to be 6e-7 / length at most.
constexpr float kLargestArea = 5.0F;
/// The kernels draw no shorter streaks, in pixels: what that last bit makes of them would be more
/// than 6e-5 of the peak, two codes of 16 bits.
constexpr float kShortestByLibrary = 0.01F;
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

Closeness closeness_of(const Vector2& a, const Vector2& b, float length, const SweptSpot& swept,
                       const StarFramebuffer& fb) {
    if (length >= kShortestFastStreak && length * swept.q * swept.scale >= kFewestRadii &&
        ((is_in_frame(a, fb) && is_in_frame(b, fb)) ||
         length_in_frame(a, b, length, fb) >= kLeastInFrame)) {
        return Closeness::Any;
    }
    return length >= kShortestByLibrary && swept.area <= kLargestArea ? Closeness::ByLibrary
                                                                      : Closeness::None;
}
