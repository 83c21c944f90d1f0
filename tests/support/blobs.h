// Finds the images of stars in a frame, to a small fraction of a pixel.
#pragma once

#include <optional>

#include "support/picture.h"

namespace support {

/// The centre of a star's image, a Gaussian with axes along the picture's in the sum of all
/// channels. Pixels; pixel centres are integers.
struct Blob {
    double x = 0;
    double y = 0;
};

/// The brightest spot whose highest pixel is within `radius` pixels of (`x`, `y`).
///
/// The logarithm of a Gaussian is a parabola, so three pixels around the highest one give the
/// centre on each axis exactly, as long as neither a neighbour nor a background adds light
/// there. None when there is no such peak: nothing lit, the highest pixel on the picture's edge, a
/// neighbour dark or brighter (the flank of a spot outside the search).
std::optional<Blob> find_blob(const Picture& picture, double x, double y, double radius);

}  // namespace support
