// A line that passes through the whole sky without leaving a neighbourhood before it is done there.
#pragma once

#include <cstdint>

namespace lumivar {

/// Where Hilbert's curve passes through a cell of a square of 2^`bits` by 2^`bits` cells: 0 to
/// 4^`bits` - 1. Cells that follow each other share an edge, which Morton's order, cheaper by some
/// nanoseconds, does not promise: its jumps would tear neighbourhoods apart. `bits`: 1 to 30.
std::uint64_t hilbert_place(std::uint32_t x, std::uint32_t y, unsigned bits);

/// Where the curve passes through a place on the sky, both angles finite and in degrees: one
/// Hilbert curve on each face of a cube round the observer, in cells of a thousandth of an
/// arcsecond. A cube has no poles, at which cells of right ascension and declination become
/// slivers.
std::uint64_t sky_curve_place(double right_ascension, double declination);

}  // namespace lumivar
