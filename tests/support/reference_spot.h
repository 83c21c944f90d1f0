// The light of a star's image at one point, standing or moving, in double precision: once in closed
// form and once by integrating the moving spot over time, so that each judges the other.
#pragma once

namespace reference {

/// A position on the frame in pixels; pixel centres are integers, y runs downwards.
struct Point {
    double x = 0;
    double y = 0;
};

/// The Gaussian image of a star, exp(-(x / width)^2 - (y / height)^2), with a peak of 1: both radii
/// in pixels, to where the light falls to 1/e. Its total light is pi x width x height.
struct Spot {
    double width = 1;
    double height = 1;
};

/// The light at `pixel` of a spot standing at `centre`.
double still_spot(Point pixel, Point centre, Spot spot);

/// The mean light at `pixel` of a spot that moves from `a` to `b` at constant speed.
///
/// In units of the spot's radii, P is the pixel and V = B the way, both from `a`. The square of the
/// distance at time t of 0 to 1 is |V|^2 (t - t0)^2 + d^2 with t0 = P.V / |V|^2 the time of nearest
/// approach and d = P x V / |V| the distance then, so the mean is
///
///     exp(-d^2) sqrt(pi) / (2 |V|) (erf(|V| (1 - t0)) + erf(|V| t0)).
///
/// Absolute error below 1e-15 (1 + 1 / |V|) of the peak; ways shorter than 1e-9 radii count as
/// none.
double moving_spot(Point pixel, Point a, Point b, Spot spot);

/// The same mean by Gauss-Legendre quadrature over time, in panels short against the spot. Slow;
/// absolute error below 1e-13 of the peak.
double moving_spot_by_quadrature(Point pixel, Point a, Point b, Spot spot);

/// How near to `pixel` the spot's centre comes on the way from `a` to `b`, in units of its radii.
double distance_from_way(Point pixel, Point a, Point b, Spot spot);

}  // namespace reference
