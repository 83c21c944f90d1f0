#include <base/exceptions.h>
#include <libimgops/projection.h>

#include <cmath>

#include "message_source.h"

namespace {

constexpr int kUnknownProjectionLine = 290;

/// Sine and cosine of an angle in degrees. The detour through single precision is kept: saved
/// projects have their stars at these very angles.
void sincos_of_degrees(double degrees, double* s, double* c) {
    Sincos(static_cast<double>(deg_to_rad(static_cast<float>(degrees))), s, c);
}

double radius_squared(const VectorN<double, 3>& q) { return q[0] * q[0] + q[1] * q[1]; }

/// The direction (first three elements) of `p`, of length 1.
VectorN<double, 3> unit_direction(const VectorN<double, 4>& p) {
    VectorN<double, 3> q(p[0], p[1], p[2]);
    q.normalize();
    return q;
}

// Both steps of the projection are inlined into each function that takes them: calls cost a tenth
// more.
#define PART_OF_ITS_CALLERS inline __attribute__((always_inline))

/// The star's weight as a homogeneous point: 0 at infinity.
PART_OF_ITS_CALLERS double weight_of(double distance, double crush) {
    double w = distance <= 0 ? 0 : 1 / distance;
    w = w + crush * -0.01;
    return w < 0 ? 0 : w;
}

PART_OF_ITS_CALLERS VectorN<double, 4> point_of(double lon, double lat, double distance,
                                                double crush) {
    double sin_lon, cos_lon, sin_lat, cos_lat;
    sincos_of_degrees(lon, &sin_lon, &cos_lon);
    sincos_of_degrees(lat, &sin_lat, &cos_lat);
    return {cos_lat * cos_lon, sin_lat, cos_lat * sin_lon, weight_of(distance, crush)};
}

/// Maps a point of the world; a failure names the function `signature`.
PART_OF_ITS_CALLERS bool map_point(VectorN<double, 4> p, const DblMatrix4& m,
                                   op_stars_projection proj, int width, int height, double x0,
                                   double x1, double y0, double y1, Vector2& out,
                                   const char* signature) {
    bool visible = true;
    transform(m, p);
    // Behind a pinhole; the other projections' matrices are affine and keep the weight.
    if (p[3] < 0) {
        visible = false;
    }

    VectorN<double, 3> q;
    switch (proj) {
        case Persp:
            q = hpoint_to_point(p);
            break;
        case HemiSph:
            q = unit_direction(p);
            if (radius_squared(q) > 1.0) {
                visible = false;
            }
            break;
        case AzEqu: {
            q = unit_direction(p);
            const double r = std::sqrt(radius_squared(q));
            // 2 / pi in single precision, widened: 1 at 90 degrees from the axis. On the axis this
            // divides 0 by 0, and where r rounds above 1 it is not a number either; both count as
            // visible and leave no light.
            const double s = 0.6366197466850281 * std::asin(r);
            q[0] = q[0] * s / r;
            q[1] = q[1] * s / r;
            if (radius_squared(q) > 1.0) {
                visible = false;
            }
            break;
        }
        default:
            throw StrXception(kStarsSource, signature, kUnknownProjectionLine,
                              "unknown projection");
    }

    q[0] = (q[0] - x0) / (x1 - x0);
    q[1] = (y1 - q[1]) / (y1 - y0);
    // Behind the camera, which looks along +z.
    if (q[2] < 0) {
        visible = false;
    }
    out = Vector2(static_cast<float>(q[0] * width), static_cast<float>(q[1] * height));
    return visible;
}

}  // namespace

Matrix4<double> projection_matrix(const camera& cam, op_stars_projection projection) {
    if (projection == Persp) {
        return cam.xform * Matrix4<double>::perspective(cam.focal, cam.near_clip, cam.far_clip);
    }
    return cam.xform;
}

double weight_of_distance(double distance, double crush) { return weight_of(distance, crush); }

VectorN<double, 4> star_point(double lon, double lat, double distance, double crush) {
    return point_of(lon, lat, distance, crush);
}

bool point_to_screen(const VectorN<double, 4>& point, const DblMatrix4& m, op_stars_projection proj,
                     int width, int height, double x0, double x1, double y0, double y1,
                     Vector2& out) {
    return map_point(point, m, proj, width, height, x0, x1, y0, y1, out, __PRETTY_FUNCTION__);
}

bool world_to_screen(double lon, double lat, double distance, double crush, DblMatrix4 m,
                     op_stars_projection proj, int width, int height, double x0, double x1,
                     double y0, double y1, Vector2& out) {
    return map_point(point_of(lon, lat, distance, crush), m, proj, width, height, x0, x1, y0, y1,
                     out, __PRETTY_FUNCTION__);
}
