// The halo of a lens: light of a point that is scattered on its way spreads around it, so that a
// brighter star is a larger glow.
#pragma once

#include <array>

#include "linear_image.h"

namespace lumivar {

/// A share of the light, and how far it spreads.
struct HaloPart {
    double share = 0.0;  ///< of a star's light, at strength 1
    double sigma = 0.0;  ///< of the Gaussian, in pixels of a frame 1920 pixels wide
};

/// Chosen by eye: a sum of Gaussians stands for the steep middle and the long tail of the scattered
/// light. 0.77 of the light stays where it is.
inline constexpr std::array<HaloPart, 4> kHaloParts = {
    {{0.10, 3.0}, {0.06, 8.0}, {0.04, 24.0}, {0.03, 70.0}}};

/// At this strength no light stays where it is.
inline constexpr double kStrongestHalo = 1.0 / 0.23;

/// Puts a halo around all light of the image: the shares times `strength` (0 to `kStrongestHalo`)
/// go into Gaussians whose sizes are parts of the frame's width, the rest stays. The light of the
/// frame is kept, but for what falls beyond its edges. A sample that is not finite stays as it is
/// and has no halo.
///
/// Wide Gaussians are drawn in smaller images, halved again and again, and enlarged smoothly. What
/// that spreads by itself is known, and taken off the Gaussian: the sum is within 0.6 % of what
/// their peaks are together, in frames at least 320 pixels wide. In narrow frames, below some 1000
/// pixels, the narrowest Gaussian is hardly wider than a pixel, and its values are those at the
/// pixels' middles.
void add_halo(LinearImage& image, double strength);

}  // namespace lumivar
