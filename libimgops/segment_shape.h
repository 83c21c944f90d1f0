// Which pixels one segment's light covers: shared by the plain streak, which draws it, and the fast
// path, which draws the same.
#pragma once

#include <base/newmatrix.h>
#include <base/to_int.h>
#include <libimgops/records.h>

#include <cmath>

/// Shorter segments, in pixels, are still spots.
inline constexpr float kShortestStreak = 0.00001F;
/// Segments that climb less than this, in pixels, are horizontal.
inline constexpr float kSmallestClimb = 0.000001F;
/// From this slope on, in pixels a row, the line's place on a row is the midpoint's.
inline constexpr float kSteepestSlope = 100000.0F;
/// Slope and half span of a horizontal segment: the whole box.
inline constexpr float kWholeRow = 1e20F;

/// Columns and rows, both ends included.
struct Box {
    int x0;
    int y0;
    int x1;
    int y1;
};

/// Floor of `x`, plus `more`, as an index. What does not fit 32 bits becomes the most negative
/// integer.
inline int pixel_index(float x, float more = 0.0F) {
    return s32_from_double(static_cast<double>(std::floor(x) + more));
}

/// Floor of `x`, of a magnitude below 2^22, as the library's `floor` gives it, without a call.
inline int floor_of_near(float x) {
    const int truncated = static_cast<int>(x);
    return truncated - (x < static_cast<float>(truncated) ? 1 : 0);
}

/// The pixels around the segment's light, one more than needed to the right and below. A right or
/// lower side that does not fit comes out left of or above the frame, which rejects the segment.
/// `radius`: of the light, in pixels along x and y.
inline Box pixel_box(const Vector2& a, const Vector2& b, const Vector2& radius) {
    BoundN<float, 2> bounds(a);
    bounds.include(b);
    bounds.expand(radius);
    constexpr float kFar = 4194304.0F;  // 2^22: below it sums with 1 are exact
    if (bounds[0].min() > -kFar && bounds[1].min() > -kFar && bounds[0].max() < kFar &&
        bounds[1].max() < kFar) {
        return {floor_of_near(bounds[0].min()), floor_of_near(bounds[1].min()),
                floor_of_near(bounds[0].max()) + 1, floor_of_near(bounds[1].max()) + 1};
    }
    return {pixel_index(bounds[0].min()), pixel_index(bounds[1].min()),
            pixel_index(bounds[0].max(), 1.0F), pixel_index(bounds[1].max(), 1.0F)};
}

inline bool is_off_frame(const Box& box, const StarFramebuffer& dst) {
    return box.x1 < 0 || box.x0 >= dst.width || box.y1 < 0 || box.y0 >= dst.height;
}

inline Box clipped(const Box& box, const StarFramebuffer& dst) {
    return {clamp(box.x0, 0, dst.width - 1), clamp(box.y0, 0, dst.height - 1),
            clamp(box.x1, 0, dst.width - 1), clamp(box.y1, 0, dst.height - 1)};
}

inline Vector2 midpoint(const Vector2& a, const Vector2& b) {
    return {0.5F * (a[0] + b[0]), 0.5F * (a[1] + b[1])};
}

/// How a segment's line leans, and how far on either side of it a row is drawn.
struct RowLine {
    /// Pixels along x a row.
    float slope = kWholeRow;
    float half = kWholeRow;

    /// `reach_x`: the spot's reach along x, in pixels.
    RowLine(const Vector2& a, const Vector2& b, float reach_x, float spot_w, float spot_h) {
        const float climb = b[1] - a[1];
        if (std::fabs(climb) > kSmallestClimb) {
            slope = (b[0] - a[0]) / climb;
            // The reach holds spot_w already and is widened by it once more: saved projects have
            // their faint rims that wide.
            const double reach = static_cast<double>(reach_x);
            half = static_cast<float>(
                reach * static_cast<double>(spot_w) +
                std::fabs(reach * static_cast<double>(spot_h) * static_cast<double>(slope)));
        }
    }
};
