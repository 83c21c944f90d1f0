// Angles whose every bit is the same on every machine.
#pragma once

namespace lumivar {

/// The direction of (x, y) in degrees, from 0 along +x up to 360, counted toward +y. Right to some
/// units in the last place. Of additions, multiplications and divisions alone: the C library's
/// function may differ from system to system. Not for (0, 0).
double ieee_direction_degrees(double y, double x);

}  // namespace lumivar
