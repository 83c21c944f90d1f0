// Of what kind stars of a magnitude are: their colours, and how bright they really are.
#pragma once

#include <array>
#include <cstdint>

#include "synthesis/random_stream.h"

namespace lumivar {

/// A Johnson colour index B-V of -0.3 to 1.9. Down to magnitude 8.5 the mix is that of the stars in
/// data/hip.csv; for fainter ones, which are more and more reddish dwarfs, it is a guess.
double draw_colour_index(double magnitude, RandomStream& random);

/// The sRGB code of a star with a colour index: that of `black_body_code` (astronomy/star_light.h)
/// at tenths of a magnitude, and straight lines between. From a table, as the formulas need an
/// exponential function.
std::array<std::uint8_t, 3> synthetic_colour(double colour_index);

/// How bright the star would be at 10 parsecs, as a luminance. A reddish star is a giant or a
/// dwarf; among bright stars nearly all are giants (nine in ten of those in data/hip.csv at
/// magnitude 7), among faint ones hardly any. Main sequence and giants after the medians in
/// data/hip.csv, the faintest dwarfs after M. J. Pecaut and E. E. Mamajek, 2013, ApJS 208, 9, in
/// half magnitudes.
double draw_intrinsic_luminance(double magnitude, double colour_index, RandomStream& random);

}  // namespace lumivar
