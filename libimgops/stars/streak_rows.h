// The plain streak, a run of rows at a time: for the segments that the fast path does not draw
// itself.
#pragma once

#include "segment_shape.h"

struct PlainSegment {
    Vector2 a;
    Vector2 b;
    float energy;
    Color3 colour;
    float spot_w;
    float spot_h;
    float reach;  ///< `reach_of(energy)`, not negative
    Box box;      ///< clipped to the frame
};

/// Draws rows `y0` to `y1` of the segment, `times` times over. `ry`: the first row's offset from
/// the midpoint, which starts at the box's first row and is carried by adding 1 a row; becomes that
/// of the row after the last. Returns whether any pixel received a weight above 0. Throws as
/// `op_star_streak`, and names that function.
bool draw_rows_plainly(const StarFramebuffer& dst, const PlainSegment& segment,
                       op_stars_lines lines, int times, int y0, int y1, float& ry);
