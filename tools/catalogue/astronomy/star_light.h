// From a star's magnitude and colour to the light that a star file stores.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumivar {

/// The colour index used for a star without one: a neutral white, close to the mean of the bright
/// stars.
inline constexpr double kNeutralColourIndex = 0.6;

/// 10^(-0.4 (`magnitude` - `zero_point`)): Pogson's scale, on which a star of the magnitude
/// `zero_point` is 1. Finite and above 0 in single precision for differences from -30 to 90.
double luminance_from_magnitude(double magnitude, double zero_point = 0.0);
/// The inverse for a zero point of 0; plus infinity for a luminance of 0, not a number below 0.
double magnitude_from_luminance(double luminance);

/// Effective temperature in kelvin of a star with Johnson colour index B-V in magnitudes, clamped
/// to -0.4..2 where the formula holds (F. J. Ballesteros, 2012, EPL 97, 34008).
double temperature_from_colour_index(double colour_index);

/// Effective temperature in kelvin of a star with Gaia's colour BP-RP in magnitudes, clamped to
/// -0.6..5: 5040 K / (0.4929 + 0.5092 c - 0.0353 c^2), for dwarfs of the Sun's metal content (A.
/// Mucciarelli, M. Bellazzini and D. Massari, 2021, A&A 653, A90, table 1).
///
/// Published for 0.39..1.50 (7,300 to 4,300 K), with a scatter of 61 K. Beyond it the formula is
/// continued: it falls all the way, and stays near what is known of main-sequence stars (M. J.
/// Pecaut and E. E. Mamajek, 2013, ApJS 208, 9). It is 5 % too high at A0 and up to a tenth too low
/// for M dwarfs. For O and B stars it is up to a third too low, of which little is seen: the colour
/// of a black body hardly changes there. No ordinary star lies beyond -0.6, and the parabola turns
/// back at 7.2.
double temperature_from_bp_rp(double bp_rp);

/// Colour of a black body in linear sRGB (D65), scaled so that the largest channel is 1; negative
/// channels are 0. `kelvin` must be above 0. Planck's law summed over 380..780 nm in steps of 5 nm
/// with the analytic CIE 1931 matching functions of C. Wyman, P.-P. Sloan and P. Shirley, 2013,
/// Journal of Computer Graphics Techniques 2(2), 1-11.
std::array<double, 3> black_body_colour(double kelvin);

/// What light is stored as white.
enum class WhitePoint {
    D65,  ///< daylight, the white of the screen itself: the Sun comes out slightly warm
    Sun,  ///< a black body of 5,772 K, the Sun's effective temperature (IAU 2015, resolution B3)
};

/// The same relative to `white`: each channel is divided by that of the white, and the largest
/// scaled to 1 again.
std::array<double, 3> black_body_colour(double kelvin, WhitePoint white);

/// The 8-bit sRGB code of a black body. It takes microseconds; `StarColours` has it for many stars.
std::array<std::uint8_t, 3> black_body_code(double kelvin, WhitePoint white);

/// The codes of `black_body_code` for millions of stars, in tens of nanoseconds each. Making one
/// takes some 20 ms and 100 KiB. `code_at` may be called from several threads at a time.
class StarColours {
public:
    explicit StarColours(WhitePoint white);

    /// The code of a black body of `kelvin`, clamped to 1,000..100,000, within which the stars lie.
    /// What is not a number counts as 1,000.
    ///
    /// It equals `black_body_code`: where a value lies too near to the border of two codes for the
    /// table to decide, that function is asked.
    std::array<std::uint8_t, 3> code_at(double kelvin) const;

private:
    /// Codes before they are rounded.
    using Values = std::array<double, 3>;

    WhitePoint white_;
    /// At equal steps of 1 / temperature, in which the colour changes evenly.
    std::vector<Values> values_;
    /// Whether the values between entry i and the next lie on the straight line between both. They
    /// do not where a channel becomes 0 or another becomes the largest.
    std::vector<bool> straight_;
};

}  // namespace lumivar
