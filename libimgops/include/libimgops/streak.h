// The light of one moving star, added to the frame.
#pragma once

#include <base/newmatrix.h>
#include <libimgops/records.h>

/// Adds a Gaussian spot that moves evenly from `a` to `b` during the exposure; equal ends are a
/// still star. At offset (x, y) from its centre the spot is
///
///     energy x exp(-(x / spot_w)^2 - (y / spot_h)^2)
///
/// and a pixel receives its average over the segment, times `color`, times 1 - alpha. Pixel (x, y)
/// is sampled at exactly (x, y). The spot is followed out to 1 / 6250 of the framebuffer's unit.
///
/// `a`, `b`           pixels; any value, infinities and NaN included. A length beyond some 1e19
///                    overflows and may leave light that is not a number.
/// `energy`           peak of the still spot; below 1 / 6250 nothing is drawn.
/// `color`            linear; may be negative or above 1.
/// `spot_w`, `spot_h` Gaussian radii in pixels, at least 1.
///
/// Returns whether any pixel received a weight above 0. Throws `AssertXception` when an index is
/// about to leave the framebuffer; rows drawn until then stay.
bool op_star_streak(const StarFramebuffer& dst, const Vector2& a, const Vector2& b, float energy,
                    const Color3& color, float spot_w, float spot_h, op_stars_lines lines);
