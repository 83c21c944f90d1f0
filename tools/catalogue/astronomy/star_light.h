// From a star's magnitude and colour index to the light that a star file stores.
#pragma once

#include <array>
#include <cstdint>

namespace lumivar {

/// The colour index used for a star without one: a neutral white, close to the mean of the bright
/// stars.
inline constexpr double kNeutralColourIndex = 0.6;

/// 10^(-0.4 `magnitude`): Pogson's scale with magnitude 0 as 1. Finite and above 0 in single
/// precision for magnitudes from -30 to 90.
double luminance_from_magnitude(double magnitude);
/// The inverse; plus infinity for a luminance of 0, not a number below 0.
double magnitude_from_luminance(double luminance);

/// Effective temperature in kelvin of a star with Johnson colour index B-V in magnitudes, clamped
/// to -0.4..2 where the formula holds (F. J. Ballesteros, 2012, EPL 97, 34008).
double temperature_from_colour_index(double colour_index);

/// Colour of a black body in linear sRGB (D65), scaled so that the largest channel is 1; negative
/// channels are 0. `kelvin` must be above 0. Planck's law summed over 380..780 nm in steps of 5 nm
/// with the analytic CIE 1931 matching functions of C. Wyman, P.-P. Sloan and P. Shirley, 2013,
/// Journal of Computer Graphics Techniques 2(2), 1-11.
std::array<double, 3> black_body_colour(double kelvin);

/// The 8-bit sRGB code of a star with that colour index.
std::array<std::uint8_t, 3> code_from_colour_index(double colour_index);

}  // namespace lumivar
