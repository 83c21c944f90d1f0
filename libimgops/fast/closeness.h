// Which segments the kernels may draw: those whose light differs from the plain streak's by no more
// than `libimgops/draw_path.h` promises. The plain streak draws the others.
#pragma once

#include "segment_shape.h"
#include "spot_light.h"

/// Whether the kernels may draw a still spot at `at`. `spot_w`, `spot_h`: its radii in pixels.
bool kernels_draw_closely(const Vector2& at, float spot_w, float spot_h, const StarFramebuffer& fb);

/// How near a moving segment's light the kernels come.
enum class Closeness {
    None,       ///< not near enough: the plain streak draws it
    ByLibrary,  ///< near enough with both error functions, which follow the C library's
    Any,        ///< near enough also where one or both of them are taken for 1
};

/// `length`, `swept`: of the segment from `a` to `b`, pixels.
Closeness closeness_of(const Vector2& a, const Vector2& b, float length, const SweptSpot& swept,
                       const StarFramebuffer& fb);
