// From scene-linear light to light on a display.
#pragma once

#include "linear_image.h"

namespace lumivar {

/// Multiplies all light by 2 to the power `stops`.
void expose(LinearImage& image, double stops);

/// The response of a photographic emulsion to an exposure m: each grain is struck or not, so what
/// is left unstruck falls off exponentially, and the density is 1 - exp(-m) of the greatest
/// (Silberstein, Philosophical Magazine 44, 257, 1922: for grains that one quantum suffices to
/// strike). A faint star, m much below 1, comes out as it is; white is reached by infinite light
/// alone.
double film_response(double exposure);

/// The photo view: a pixel's largest channel m becomes `film_response(m)`, the others keep their
/// proportion to it. So does hue, in every space in which it does not depend on the brightness of
/// linear light, hue angle of HSV and of Oklab among them; 8-bit codes of dim light can only be
/// near it. Negative channels become 0 first. What is not a number becomes 0; an infinite channel
/// 1, with those that are finite 0. The result is linear light from 0 to 1.
void view_as_photo(LinearImage& image);

}  // namespace lumivar
