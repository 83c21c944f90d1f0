#include "astronomy/frame.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace lumivar {
namespace {

/// The axes x, y, z of a frame as directions in the ICRS.
using Axes = std::array<Direction, 3>;

Direction cross(const Direction& a, const Direction& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The frame with this pole whose plane crosses the equator upward at longitude `node`; degrees.
Axes axes_of(const Place& pole, double node) {
    const Direction z = direction_of(pole);
    const Direction at_node = direction_of({pole.ra + 90.0, 0.0});
    const Direction beyond = cross(z, at_node);  // 90 degrees further along the plane
    const double c = std::cos(node * kRadiansInDegree);
    const double s = std::sin(node * kRadiansInDegree);
    Axes axes{};
    for (std::size_t i = 0; i < z.size(); ++i) {
        axes[0][i] = c * at_node[i] - s * beyond[i];
        axes[1][i] = s * at_node[i] + c * beyond[i];
    }
    axes[2] = z;
    return axes;
}

Place in_axes(const Axes& axes, const Place& icrs) {
    const Direction direction = direction_of(icrs);
    Direction turned{};
    for (std::size_t i = 0; i < turned.size(); ++i) {
        turned[i] =
            axes[i][0] * direction[0] + axes[i][1] * direction[1] + axes[i][2] * direction[2];
    }
    return place_of(turned);
}

}  // namespace

Place to_frame(const Place& icrs, Frame frame) {
    static const Axes galactic = axes_of({192.85948, 27.12825}, 32.93192);
    static const Axes ecliptic = axes_of({270.0, 90.0 - 84381.406 / 3600.0}, 0.0);
    switch (frame) {
        case Frame::Galactic:
            return in_axes(galactic, icrs);
        case Frame::Ecliptic:
            return in_axes(ecliptic, icrs);
        case Frame::Equatorial:
            break;
    }
    return {turned_into_circle(icrs.ra), icrs.dec};
}

}  // namespace lumivar
