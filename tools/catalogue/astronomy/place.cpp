#include "astronomy/place.h"

#include <cmath>

namespace lumivar {
namespace {}  // namespace

double turned_into_circle(double degrees) {
    double turned = std::fmod(degrees, 360.0);
    if (turned < 0.0) {
        turned += 360.0;
    }
    // A tiny angle below 0 has become 360 by rounding. Adding 0 turns -0 into 0.
    return turned < 360.0 ? turned + 0.0 : 0.0;
}

Direction direction_of(const Place& place) {
    const double ra = place.ra * kRadiansInDegree;
    const double dec = place.dec * kRadiansInDegree;
    return {std::cos(dec) * std::cos(ra), std::cos(dec) * std::sin(ra), std::sin(dec)};
}

Place place_of(const Direction& direction) {
    const auto [x, y, z] = direction;
    const double in_equator = std::hypot(x, y);
    // The arc tangent of both keeps all digits near the poles, where the arc sine loses half.
    return {turned_into_circle(std::atan2(y, x) / kRadiansInDegree),
            std::atan2(z, in_equator) / kRadiansInDegree};
}

}  // namespace lumivar
