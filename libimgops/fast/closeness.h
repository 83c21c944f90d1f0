// Which segments the kernels draw within a millionth of the frame's brightest light from the plain
// streak's; the others are left to that.
#pragma once

#include "segment_shape.h"

/// Whether they do for a still spot at `at`. `spot_w`, `spot_h`: its radii in pixels.
bool kernels_draw_closely(const Vector2& at, float spot_w, float spot_h, const StarFramebuffer& fb);

/// Whether they do for a segment that moves. `length`, `swept`: of the segment from `a` to `b`,
/// pixels.
bool kernels_draw_closely(const Vector2& a, const Vector2& b, float length, const SweptSpot& swept,
                          const StarFramebuffer& fb);
