// Where stars of a magnitude stand: crowded in the Milky Way, the more so the fainter they are.
#pragma once

#include <array>
#include <cstdint>

#include "synthesis/random_stream.h"

namespace lumivar {

/// A model to look at, not one to count in. Three parts:
///
/// - stars near the Sun, all over the sky;
/// - the disc of the Milky Way, whose density falls with z, the sine of the galactic latitude, as
///   (1 + z^2 / 2h^2)^(-3/2), and a little from the galactic centre to its opposite;
/// - the bulge round the centre.
///
/// Their shares and h depend on the magnitude. The density in the plane is 2.5 times that at the
/// poles for naked-eye stars (2.5 in data/hip.csv too), 6 at magnitude 12 and some 30 at 20. Clouds
/// of dust, made of random numbers on a lattice, hide part of the stars close to the plane.
class MilkyWay {
public:
    explicit MilkyWay(std::uint64_t seed) : seed_(seed) {}

    /// A place: x, y and z toward right ascension 0, right ascension 90 degrees, and the pole. Of
    /// any length above 0.
    std::array<double, 3> place_of_star(double magnitude, RandomStream& random) const;

private:
    std::uint64_t seed_;  ///< of the dust
};

}  // namespace lumivar
