// Which segments the kernels may draw: those whose light differs from the plain streak's by a
// millionth of the frame's brightest light at most. The plain streak draws the others.
#pragma once

#include "segment_shape.h"

/// Whether the kernels may draw a still spot at `at`. `spot_w`, `spot_h`: its radii in pixels.
bool kernels_draw_closely(const Vector2& at, float spot_w, float spot_h, const StarFramebuffer& fb);

/// Whether the kernels may draw a segment that moves. `length`, `swept`: of the segment from `a` to
/// `b`, pixels.
bool kernels_draw_closely(const Vector2& a, const Vector2& b, float length, const SweptSpot& swept,
                          const StarFramebuffer& fb);
