#include "database/sky_curve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "astronomy/place.h"

namespace lumivar {
namespace {

constexpr unsigned kBits = 30;

/// Cell of a coordinate of -1 to 1 on a cube's face.
std::uint32_t cell_of(double coordinate) {
    constexpr double kCells = 1U << kBits;
    const double cell = (coordinate + 1.0) * 0.5 * kCells;
    return static_cast<std::uint32_t>(std::clamp(cell, 0.0, kCells - 1.0));
}

}  // namespace

std::uint64_t hilbert_place(std::uint32_t x, std::uint32_t y, unsigned bits) {
    // D. Hilbert, 1891, Mathematische Annalen 38, 459: the curve passes through the four quarters
    // of a square one after the other, turned or mirrored in each so that the ends meet.
    std::uint64_t place = 0;
    for (unsigned bit = bits; bit-- > 0;) {
        const std::uint32_t right = x >> bit & 1U;
        const std::uint32_t upper = y >> bit & 1U;
        place = place << 2U | (3 * right ^ upper);
        if (upper == 0) {
            if (right == 1) {
                x = ~x;
                y = ~y;
            }
            std::swap(x, y);
        }
    }
    return place;
}

std::uint64_t sky_curve_place(double right_ascension, double declination) {
    const Direction direction = direction_of({right_ascension, declination});
    std::size_t axis = 0;
    for (std::size_t i = 1; i < direction.size(); ++i) {
        if (std::abs(direction[i]) > std::abs(direction[axis])) {
            axis = i;
        }
    }
    const double depth = std::abs(direction[axis]);
    const double u = direction[(axis + 1) % 3] / depth;
    const double v = direction[(axis + 2) % 3] / depth;
    const std::uint64_t face = 2 * axis + (direction[axis] < 0.0 ? 1 : 0);
    return face << (2 * kBits) | hilbert_place(cell_of(u), cell_of(v), kBits);
}

}  // namespace lumivar
