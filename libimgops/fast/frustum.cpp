#include "frustum.h"

#include <cmath>
#include <limits>

namespace {

using star_kernels::Plane;

/// Pixels that the frame's sides move out beyond the brightest star's light. A star's box has one
/// column and one row more than its light: 1. Single precision rounds three places on the frame
/// (the star's own and the two sides of its light), which are below 2^15, by 2^-24 of each: 0.006.
/// What it rounds of the reach itself is in `longest_reach`.
constexpr double kMargin = 1.1;

/// Cameras with larger numbers, or planes with smaller ones, reject nothing: the plain projection's
/// own squares and quotients may overflow there or lose bits, and what is behind may show.
constexpr double kLargestElement = 1e100;
constexpr double kSmallestPlane = 1e-100;

/// An offset is multiplied by a star's weight, in single precision. A near star's weight may be as
/// large as the largest float: smaller offsets, other than 0, would be lost.
constexpr double kSmallestOffset = 1e-30;
/// A far star's weight may be as small as the smallest float: larger offsets would not do.
constexpr double kLargestOffset = 1e30;

/// A plane that rejects no star.
Plane nowhere() { return {0, 0, 0, 0, std::numeric_limits<float>::infinity(), 0}; }

bool is_ordinary(const Matrix4<double>& m) {
    for (int element = 0; element < 16; ++element) {
        // False for what is not a number.
        if (!(std::fabs(m(element / 4, element % 4)) <= kLargestElement)) {
            return false;
        }
    }
    return true;
}

/// The plane where `sign` x (column `c` of `m` - `limit` x column `by`) is 0; `nowhere` if single
/// precision does not hold it.
Plane plane_of(const Matrix4<double>& m, double sign, int c, double limit, int by) {
    double n[4];
    for (int i = 0; i < 4; ++i) {
        n[i] = sign * (m(i, c) - (limit != 0.0 ? limit * m(i, by) : 0.0));
    }
    // The same plane at a scale where single precision is precise, whatever the camera's is.
    const double size = std::fabs(n[0]) + std::fabs(n[1]) + std::fabs(n[2]);
    if (size < kSmallestPlane) {
        return nowhere();
    }
    const double offset = n[3] / size;
    if ((offset != 0.0 && std::fabs(offset) < kSmallestOffset) ||
        !(std::fabs(offset) <= kLargestOffset)) {
        return nowhere();
    }
    return {static_cast<float>(n[0] / size),
            static_cast<float>(n[1] / size),
            static_cast<float>(n[2] / size),
            static_cast<float>(offset),
            star_kernels::kDirectionTolerance,
            std::fabs(static_cast<float>(offset)) * star_kernels::kDirectionTolerance};
}

}  // namespace

void find_frustum_planes(const StarRendererData& data, const StarFramebuffer& fb,
                         const Array<Matrix4<double>>& mats, double reach_x, double reach_y,
                         Plane* planes) {
    const double per_pixel_x = (data.window_x1 - data.window_x0) / fb.width;
    const double per_pixel_y = (data.window_y1 - data.window_y0) / fb.height;
    const double out_x = (reach_x + kMargin) * per_pixel_x;
    const double out_y = (reach_y + kMargin) * per_pixel_y;
    // A pinhole's matrix has the distance ahead in its last column; the others keep it in the
    // third, and their disk fills the window, so that only what is behind is outside.
    const bool pinhole = data.projection == Persp;
    const bool has_sides = pinhole && per_pixel_x > 0 && per_pixel_y > 0;
    const int ahead = pinhole ? 3 : 2;

    for (uword i = 0; i < mats.len(); ++i, planes += star_kernels::kPlanes) {
        const Matrix4<double>& m = mats[i];
        const bool is_known = is_ordinary(m);
        planes[0] = is_known ? plane_of(m, -1, ahead, 0, ahead) : nowhere();
        if (is_known && has_sides) {
            planes[1] = plane_of(m, -1, 0, data.window_x0 - out_x, 3);
            planes[2] = plane_of(m, 1, 0, data.window_x1 + out_x, 3);
            planes[3] = plane_of(m, 1, 1, data.window_y1 + out_y, 3);
            planes[4] = plane_of(m, -1, 1, data.window_y0 - out_y, 3);
        } else {
            for (int side = 1; side < star_kernels::kPlanes; ++side) {
                planes[side] = nowhere();
            }
        }
    }
}
