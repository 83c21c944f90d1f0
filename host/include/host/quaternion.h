// Turns as unit quaternions, which a path goes through at an even pace.
#pragma once

#include <host/scene.h>

#include <array>

namespace host {

/// w, x, y, z. One of length 1 is a turn, and its negative the same turn.
using Quaternion = std::array<double, 4>;

/// Of length 1; no turn for one of length 0.
Quaternion normalized(const Quaternion& q);

/// The turn of a matrix for row vectors that turns and moves alone.
Quaternion quaternion_of(const Matrix& matrix);
/// The matrix for row vectors that turns, and then moves to `position`.
Matrix matrix_of(const Quaternion& turn, const std::array<double, 3>& position);

/// Spherical linear interpolation of turns, the short way: the part `t` of the way from `a` to `b`.
Quaternion slerp(const Quaternion& a, const Quaternion& b, double t);

}  // namespace host
