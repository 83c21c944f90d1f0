// From two angles on the sky to a place on the frame.
#pragma once

#include <base/newmatrix.h>
#include <libimgops/records.h>

/// World to camera, for `Persp` followed by the perspective: only the pinhole's projection is a
/// matrix, the others happen star by star. The `m` of the functions below.
Matrix4<double> projection_matrix(const camera& cam, op_stars_projection projection);

/// Maps one star through one camera sample onto the frame.
///
/// A star is a point at infinity in the direction
///
///     (cos lat cos lon, sin lat, cos lat sin lon)      y up
///
/// or, with a distance, a point whose homogeneous weight is 1 / distance: only such stars shift
/// when the camera moves.
///
/// `lon`, `lat`   degrees; only single precision of them is used.
/// `distance`     0 or less for none.
/// `crush`        takes 0.01 x `crush` off the inverse distance, down to 0 (infinity).
/// `m`            `projection_matrix` of the camera sample.
/// `width`...`y1` frame in pixels, and the window of the image plane that fills it (y1 on top).
/// `out`          pixels, x to the right and y down; written whatever the result, but not limited
///                to the frame, and possibly infinite or not a number.
///
/// Returns whether the star is in front of the camera and in the projection's domain. Throws
/// `StrXception` "unknown projection" for a `proj` that is none, before `out` is written.
bool world_to_screen(double lon, double lat, double distance, double crush, DblMatrix4 m,
                     op_stars_projection proj, int width, int height, double x0, double x1,
                     double y0, double y1, Vector2& out);

// The same in two steps, for a star that is seen by several cameras.

/// The star's weight as a homogeneous point: 0 at infinity.
double weight_of_distance(double distance, double crush);
/// The star as a homogeneous point of the world: direction and weight.
VectorN<double, 4> star_point(double lon, double lat, double distance, double crush);
/// Maps that point. Everything else as `world_to_screen`, whose pixels these are to the bit.
bool point_to_screen(const VectorN<double, 4>& point, const DblMatrix4& m, op_stars_projection proj,
                     int width, int height, double x0, double x1, double y0, double y1,
                     Vector2& out);
