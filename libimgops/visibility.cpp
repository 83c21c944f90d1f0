#include "visibility.h"

#include <cmath>
#include <limits>

namespace {

using star_kernels::Plane;

/// Pixels that the frame's sides move out beyond the light: a box has one more, roundings need
/// less.
constexpr double MARGIN = 3.0;

/// The plane where `sign` x (column `c` of `m` - `limit` x column `by`) is 0.
Plane plane_of(const Matrix4<double>& m, double sign, int c, double limit, int by) {
    double n[4];
    for (int i = 0; i < 4; ++i) {
        n[i] = sign * (m(i, c) - (limit != 0.0 ? limit * m(i, by) : 0.0));
    }
    const double size = std::fabs(n[0]) + std::fabs(n[1]) + std::fabs(n[2]);
    const auto tolerance = static_cast<double>(star_kernels::DIRECTION_TOLERANCE);
    return {static_cast<float>(n[0]),
            static_cast<float>(n[1]),
            static_cast<float>(n[2]),
            static_cast<float>(n[3]),
            static_cast<float>(size * tolerance),
            static_cast<float>(std::fabs(n[3]) * tolerance)};
}

/// Nothing is beyond it.
Plane nowhere() { return {0, 0, 0, 0, std::numeric_limits<float>::infinity(), 0}; }

}  // namespace

void find_planes_around_frame(const StarRendererData& data, const StarFramebuffer& fb,
                              const Array<Matrix4<double>>& mats, double reach_x, double reach_y,
                              Array<Plane>& planes) {
    const double per_pixel_x = (data.window_x1 - data.window_x0) / fb.width;
    const double per_pixel_y = (data.window_y1 - data.window_y0) / fb.height;
    const double out_x = (reach_x + MARGIN) * per_pixel_x;
    const double out_y = (reach_y + MARGIN) * per_pixel_y;
    // A pinhole's matrix has the distance ahead in its last column; the others keep it in the
    // third, and their disk fills the window, so that only what is behind is outside.
    const bool pinhole = data.projection == Persp;
    const bool has_sides = pinhole && per_pixel_x > 0 && per_pixel_y > 0;
    const int ahead = pinhole ? 3 : 2;

    for (uword i = 0; i < mats.len(); ++i) {
        const Matrix4<double>& m = mats[i];
        planes.append(plane_of(m, -1, ahead, 0, ahead));
        if (has_sides) {
            planes.append(plane_of(m, -1, 0, data.window_x0 - out_x, 3));
            planes.append(plane_of(m, 1, 0, data.window_x1 + out_x, 3));
            planes.append(plane_of(m, 1, 1, data.window_y1 + out_y, 3));
            planes.append(plane_of(m, -1, 1, data.window_y0 - out_y, 3));
        } else {
            for (int side = 1; side < star_kernels::PLANES; ++side) {
                planes.append(nowhere());
            }
        }
    }
}
