// The streak: a Gaussian spot swept along a segment.
//
// The spot's centre moves from -L/2 to +L/2 along dir through the segment's midpoint. With (rx, ry)
// the pixel from the midpoint and t the travel, the spot's exponent is
//
//     -((rx - t dir.x) / w)^2 - ((ry - t dir.y) / h)^2  =  -u^2 / q - ((t q - v) / (w h sqrt q))^2
//
//     u = dir.y rx - dir.x ry               distance across the segment
//     v = h^2 dir.x rx + w^2 dir.y ry       place along it
//     q = h^2 dir.x^2 + w^2 dir.y^2
//
// The first part does not depend on t; the second is a Gaussian in t, whose integral over the
// segment is sqrt(pi) / 2 x w h / sqrt q times a difference of two error functions. Divided by L
// that is the pixel's average over the exposure. For L near 0 the two error functions cancel, so
// what hardly moves is drawn as a still spot.
//
// This code defines the pixels: single precision in exactly the order written.
#include <libimgops/streak.h>

#include "stars_source.h"

#include <base/to_int.h>
#include <base/words.h>

#include <cfloat>
#include <cmath>

static_assert(FLT_EVAL_METHOD == 0, "floats must be rounded at every step");

namespace {

/// Light is followed out to one part in this of the framebuffer's unit.
constexpr float UNIT_PER_FAINTEST = 6250.0F;
/// Shorter segments, in pixels, are still spots.
constexpr float SHORTEST_STREAK = 0.00001F;
/// Segments that climb less than this, in pixels, are horizontal.
constexpr float SMALLEST_CLIMB = 0.000001F;
/// From this slope on, in pixels a row, the line's place on a row is the midpoint's.
constexpr float STEEPEST_SLOPE = 100000.0F;
/// Slope and half span of a horizontal segment: the whole box.
constexpr float WHOLE_ROW = 1e20F;

/// Columns and rows, both ends included.
struct Box {
    int x0;
    int y0;
    int x1;
    int y1;
};

/// Floor of `x`, plus `more`, as an index. What does not fit 32 bits becomes the most negative
/// integer.
int pixel_index(float x, float more = 0.0F) {
    return s32_from_double(static_cast<double>(std::floor(x) + more));
}

/// The pixels around `bounds`, one more than needed to the right and below. A right or lower side
/// that does not fit comes out left of or above the frame, which rejects the segment.
Box pixel_box(const BoundN<float, 2>& bounds) {
    return {pixel_index(bounds[0].min()), pixel_index(bounds[1].min()),
            pixel_index(bounds[0].max(), 1.0F), pixel_index(bounds[1].max(), 1.0F)};
}

bool is_off_frame(const Box& box, const StarFramebuffer& dst) {
    return box.x1 < 0 || box.x0 >= dst.width || box.y1 < 0 || box.y0 >= dst.height;
}

Box clipped(const Box& box, const StarFramebuffer& dst) {
    return {clamp(box.x0, 0, dst.width - 1), clamp(box.y0, 0, dst.height - 1),
            clamp(box.x1, 0, dst.width - 1), clamp(box.y1, 0, dst.height - 1)};
}

bool is_skipped(int iy, op_stars_lines lines) {
    if (lines == STARS_LINES_ALL) {
        return false;
    }
    const bool odd = (iy & 1) != 0;
    return lines == STARS_LINES_EVEN ? odd : !odd;
}

/// Which columns of a row lie near the segment's line.
class RowSpan {
public:
    /// `reach_x`: the spot's reach along x, in pixels.
    RowSpan(const Vector2& a, const Vector2& b, float mid_x, float reach_x, float spot_w,
            float spot_h)
        : a_(a), mid_x_(mid_x) {
        const float climb = b[1] - a[1];
        if (std::fabs(climb) > SMALLEST_CLIMB) {
            slope_ = (b[0] - a[0]) / climb;
            // The reach holds spot_w already and is widened by it once more: saved projects have
            // their faint rims that wide.
            const double reach = static_cast<double>(reach_x);
            half_ = static_cast<float>(
                reach * static_cast<double>(spot_w) +
                std::fabs(reach * static_cast<double>(spot_h) * static_cast<double>(slope_)));
        }
    }

    /// Leftmost and rightmost place on the row at `y`, within x0...x1. NaN for a line that is
    /// nowhere.
    void at(float y, const Box& box, float* left, float* right) const {
        // One-sided on purpose: a line that leans far to the left takes the formula.
        const float centre = slope_ < STEEPEST_SLOPE ? a_[0] + (y - a_[1]) * slope_ : mid_x_;
        *left = max(static_cast<float>(box.x0), centre - half_);
        *right = min(static_cast<float>(box.x1), centre + half_);
    }

private:
    Vector2 a_;
    float mid_x_;
    /// Pixels along x a row.
    float slope_ = WHOLE_ROW;
    float half_ = WHOLE_ROW;
};

/// The spot's light at an offset from the segment's midpoint.
class SpotWeight {
public:
    /// `length` and `dir` of the segment, in pixels.
    SpotWeight(float length, const Vector2& dir, float energy, float spot_w, float spot_h)
        : moves_(length > SHORTEST_STREAK),
          dir_(dir),
          energy_(energy),
          spot_w_(spot_w),
          spot_h_(spot_h),
          length_(length) {
        const float w2 = spot_w * spot_w;
        const float h2 = spot_h * spot_h;
        q_ = h2 * (dir[0] * dir[0]) + w2 * (dir[1] * dir[1]);
        const float k = 1.0F / std::sqrt(q_);
        along_x_ = h2 * dir[0];
        along_y_ = w2 * dir[1];
        scale_ = k / (spot_w * spot_h);
        // sqrt(pi) / 2
        area_ = 0.886226952F * spot_w * spot_h * k;
    }

    float at(float rx, float ry) const { return moves_ ? moving(rx, ry) : still(rx, ry); }

private:
    float moving(float rx, float ry) const {
        const float u = dir_[1] * rx - dir_[0] * ry;
        const float v = along_x_ * rx + along_y_ * ry;
        const float ends = std::erf((0.5F * length_ * q_ - v) * scale_) -
                           std::erf((-0.5F * length_ * q_ - v) * scale_);
        return std::exp(-(u * u) / q_) * area_ * ends * (energy_ / length_);
    }
    float still(float rx, float ry) const {
        return std::exp(-(rx * rx) / (spot_w_ * spot_w_) - (ry * ry) / (spot_h_ * spot_h_)) *
               energy_;
    }

    bool moves_;
    Vector2 dir_;
    float energy_;
    float spot_w_;
    float spot_h_;
    float length_;
    float q_;
    float along_x_;
    float along_y_;
    float scale_;
    float area_;
};

/// Adds `weight` of `color`, as far as the pixel at offset `at` is not covered. Returns whether
/// that was any light.
bool add_light(const StarFramebuffer& dst, s64 at, const Color3& color, float weight,
               float coverage) {
    weight = weight * (1.0F - coverage);
    dst.r[at] += color[0] * weight;
    dst.g[at] += color[1] * weight;
    dst.b[at] += color[2] * weight;
    return weight > 0.0F;
}

}  // namespace

bool op_star_streak(const StarFramebuffer& dst, const Vector2& a, const Vector2& b, float energy,
                    const Color3& color, float spot_w, float spot_h, op_stars_lines lines) {
    // Where energy x exp(-reach^2) is the faintest light. Not a number: nothing to draw.
    const float brightness = UNIT_PER_FAINTEST * energy;
    if (!(brightness >= 1.0F)) {
        return false;
    }
    const float reach = std::sqrt(std::log(brightness));
    const Vector2 radius(spot_w * reach, spot_h * reach);

    BoundN<float, 2> bounds(a);
    bounds.include(b);
    bounds.expand(radius);
    Box box = pixel_box(bounds);
    if (is_off_frame(box, dst)) {
        return false;
    }
    box = clipped(box, dst);

    Vector2 dir = b - a;
    const float length = dir.normalize();
    const Vector2 middle(0.5F * (a[0] + b[0]), 0.5F * (a[1] + b[1]));
    const SpotWeight spot(length, dir, energy, spot_w, spot_h);
    const RowSpan span(a, b, middle[0], radius[0], spot_w, spot_h);

    bool drew = false;
    // Offsets from the midpoint are carried from row to row and pixel to pixel by adding 1, and a
    // row ends by the carried offset: its rounding decides about the last column.
    float ry = static_cast<float>(box.y0) - middle[1];
    for (int iy = box.y0; iy <= box.y1; ++iy, ry += 1.0F) {
        STARS_ASSERT_AT(__LINE__, iy >= 0 && iy < dst.height);
        if (is_skipped(iy, lines)) {
            continue;
        }
        float left, right;
        span.at(ry + middle[1], box, &left, &right);

        const float last_rx = std::ceil(right) - middle[0];
        float rx = std::floor(left) - middle[0];
        int ix = pixel_index(left);
        // One running place in all four channels.
        s64 at = s64{dst.pixel_stride} * ix + s64{dst.stride} * iy;
        for (; last_rx >= rx && ix < dst.width; ++ix, rx += 1.0F, at += dst.pixel_stride) {
            STARS_ASSERT_AT(__LINE__, ix >= 0 && ix < dst.width);
            const float coverage = dst.a[at];
            if (coverage >= 1.0F) {
                continue;
            }
            const bool lit = add_light(dst, at, color, spot.at(rx, ry), coverage);
            drew = drew || lit;
        }
    }
    return drew;
}
