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
// This code defines the pixels: single precision in exactly the order written. The fast path has
// the same with functions of its own. Whoever changes one of these changes the other:
//
//     weight, still       `draw_columns` in fast/kernels/kernel_spot.h
//     weight, moving      `find_arguments` and `weights_at` in fast/kernels/kernel_streak.h
//     its constants       spot_light.h; `Streak` in fast/kernels/kernels.h
//     error functions     fast/kernels/kernel_erf.h, which follows the C library's
//     where both are 1    `is_saturated` in fast/segment_batch.cpp
//     rows and columns    segment_shape.h; `find_spans` in fast/kernels/kernel_streak.h
//                         and `visits` in fast/kernels/kernel_trail.h
//     reach               spot_light.h; `longest_reach` in fast/fast_frame.cpp, which rejects by it
//     drawn only here     fast/closeness.cpp
#include <base/exceptions.h>
#include <base/words.h>
#include <libimgops/streak.h>

#include <cfloat>
#include <cmath>

#include "segment_shape.h"
#include "spot_light.h"
#include "streak_rows.h"

static_assert(FLT_EVAL_METHOD == 0, "floats must be rounded at every step");

namespace {

// The steps of a pixel are inlined into the loop over pixels: calls would cost instructions.
#define PART_OF_ITS_CALLERS inline __attribute__((always_inline))

/// The function that a failed assertion names, whichever function draws the rows.
constexpr char kSignature[] =
    "bool op_star_streak(const StarFramebuffer&, const Vector2&, const Vector2&, float, const "
    "Color3&, float, float, op_stars_lines)";

/// `XASSERT` that names it.
#define STREAK_ASSERT(condition)                                              \
    do {                                                                      \
        if (!(condition)) {                                                   \
            throw AssertXception(#condition, __FILE__, kSignature, __LINE__); \
        }                                                                     \
    } while (false)

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
        : a_(a), mid_x_(mid_x), line_(a, b, reach_x, spot_w, spot_h) {}

    /// Leftmost and rightmost place on the row at `y`, within x0...x1; NaN where an end of the
    /// segment is.
    void at(float y, const Box& box, float* left, float* right) const {
        // One-sided on purpose: a line that leans far to the left takes the formula.
        const float centre =
            line_.slope < kSteepestSlope ? a_[0] + (y - a_[1]) * line_.slope : mid_x_;
        *left = max(static_cast<float>(box.x0), centre - line_.half);
        *right = min(static_cast<float>(box.x1), centre + line_.half);
    }

private:
    Vector2 a_;
    float mid_x_;
    RowLine line_;
};

/// The spot's light at an offset from the segment's midpoint.
class SpotWeight {
public:
    /// `length` and `dir` of the segment, in pixels.
    SpotWeight(float length, const Vector2& dir, float energy, float spot_w, float spot_h)
        : moves_(length > kShortestStreak),
          dir_(dir),
          energy_(energy),
          spot_w_(spot_w),
          spot_h_(spot_h),
          length_(length),
          swept_(dir, spot_w, spot_h) {}

    PART_OF_ITS_CALLERS float at(float rx, float ry) const {
        return moves_ ? moving(rx, ry) : still(rx, ry);
    }

private:
    PART_OF_ITS_CALLERS float moving(float rx, float ry) const {
        const float u = dir_[1] * rx - dir_[0] * ry;
        const float v = swept_.along_x * rx + swept_.along_y * ry;
        const float ends = std::erf((0.5F * length_ * swept_.q - v) * swept_.scale) -
                           std::erf((-0.5F * length_ * swept_.q - v) * swept_.scale);
        return std::exp(-(u * u) / swept_.q) * swept_.area * ends * (energy_ / length_);
    }
    PART_OF_ITS_CALLERS float still(float rx, float ry) const {
        return std::exp(-(rx * rx) / (spot_w_ * spot_w_) - (ry * ry) / (spot_h_ * spot_h_)) *
               energy_;
    }

    bool moves_;
    Vector2 dir_;
    float energy_;
    float spot_w_;
    float spot_h_;
    float length_;
    SweptSpot swept_;
};

/// Adds `weight` of `colour`, as far as the pixel at offset `at` is not covered. Returns whether
/// that was any light.
PART_OF_ITS_CALLERS bool add_light(const StarFramebuffer& dst, s64 at, const Color3& colour,
                                   float weight, float coverage) {
    weight = weight * (1.0F - coverage);
    dst.r[at] += colour[0] * weight;
    dst.g[at] += colour[1] * weight;
    dst.b[at] += colour[2] * weight;
    return weight > 0.0F;
}

/// `kOnce`: whether `times` is 1.
template <bool kOnce>
bool draw_rows(const StarFramebuffer& dst, const PlainSegment& segment, op_stars_lines lines,
               int times, int y0, int y1, float& ry) {
    const auto& [a, b, energy, colour, spot_w, spot_h, reach, box] = segment;
    Vector2 dir = b - a;
    const float length = dir.normalize();
    const Vector2 middle = midpoint(a, b);
    const SpotWeight spot(length, dir, energy, spot_w, spot_h);
    const RowSpan span(a, b, middle[0], spot_w * reach, spot_w, spot_h);

    bool drew = false;
    // Offsets from the midpoint are carried from row to row and pixel to pixel by adding 1, and a
    // row ends by the carried offset: its rounding decides about the last column.
    for (int iy = y0; iy <= y1; ++iy, ry += 1.0F) {
        STREAK_ASSERT(iy >= 0 && iy < dst.height);
        if (is_skipped(iy, lines)) {
            continue;
        }
        float left, right;
        span.at(ry + middle[1], box, &left, &right);

        const float last_rx = std::ceil(right) - middle[0];
        float rx = std::floor(left) - middle[0];
        int ix = pixel_index(left);
        // The pixel's offset, the same in all four channels.
        s64 at = s64{dst.pixel_stride} * ix + s64{dst.stride} * iy;
        for (; last_rx >= rx && ix < dst.width; ++ix, rx += 1.0F, at += dst.pixel_stride) {
            STREAK_ASSERT(ix >= 0 && ix < dst.width);
            const float coverage = dst.a[at];
            if (coverage >= 1.0F) {
                continue;
            }
            const float weight = spot.at(rx, ry);
            const bool lit = add_light(dst, at, colour, weight, coverage);
            drew = drew || lit;
            if constexpr (!kOnce) {
                for (int more = 1; more < times; ++more) {
                    add_light(dst, at, colour, weight, coverage);
                }
            }
        }
    }
    return drew;
}

}  // namespace

bool draw_rows_plainly(const StarFramebuffer& dst, const PlainSegment& segment,
                       op_stars_lines lines, int times, int y0, int y1, float& ry) {
    return times == 1 ? draw_rows<true>(dst, segment, lines, times, y0, y1, ry)
                      : draw_rows<false>(dst, segment, lines, times, y0, y1, ry);
}

bool op_star_streak(const StarFramebuffer& dst, const Vector2& a, const Vector2& b, float energy,
                    const Color3& color, float spot_w, float spot_h, op_stars_lines lines) {
    const float reach = reach_of(energy);
    if (reach < 0.0F) {
        return false;
    }
    Box box = pixel_box(a, b, Vector2(spot_w * reach, spot_h * reach));
    if (is_off_frame(box, dst)) {
        return false;
    }
    box = clipped(box, dst);
    float ry = static_cast<float>(box.y0) - midpoint(a, b)[1];
    return draw_rows_plainly(dst, {a, b, energy, color, spot_w, spot_h, reach, box}, lines, 1,
                             box.y0, box.y1, ry);
}
