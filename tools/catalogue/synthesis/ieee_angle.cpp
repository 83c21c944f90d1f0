#include "synthesis/ieee_angle.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace lumivar {
namespace {

/// The arcs of 0/16 to 16/16, in radians.
constexpr std::array<double, 17> kArcs = {0.0,
                                          0.062418809995957350,
                                          0.12435499454676144,
                                          0.18534794999569477,
                                          0.24497866312686414,
                                          0.30288486837497142,
                                          0.35877067027057225,
                                          0.41241044159738732,
                                          0.46364760900080609,
                                          0.51238946031073773,
                                          0.55859931534356244,
                                          0.60228734613496418,
                                          0.64350110879328437,
                                          0.68231655487474807,
                                          0.71882999962162453,
                                          0.75315128096219441,
                                          0.78539816339744828};

constexpr double kDegreesInARadian = 57.295779513082323;

/// The arc of a tangent of 0 to 1, in radians: that of the nearest sixteenth, and the arc of what
/// remains, at most 1/32, by its series (J. Gregory, 1671). The next term would be below 1e-19.
double arc_of(double tangent) {
    const double nearest = std::floor(16.0 * tangent + 0.5);
    const double middle = nearest / 16.0;
    const double t = (tangent - middle) / (1.0 + tangent * middle);
    const double s = t * t;
    const double series =
        1.0 -
        s * (1.0 / 3.0 - s * (1.0 / 5.0 - s * (1.0 / 7.0 - s * (1.0 / 9.0 - s * (1.0 / 11.0)))));
    return kArcs[static_cast<std::size_t>(nearest)] + t * series;
}

}  // namespace

double ieee_direction_degrees(double y, double x) {
    const double across = std::abs(y);
    const double along = std::abs(x);
    double degrees = across <= along ? kDegreesInARadian * arc_of(across / along)
                                     : 90.0 - kDegreesInARadian * arc_of(along / across);
    if (x < 0.0) {
        degrees = 180.0 - degrees;
    }
    if (y < 0.0) {
        degrees = 360.0 - degrees;
    }
    return degrees < 360.0 ? degrees : 0.0;  // a tiny negative angle is rounded to 360 itself
}

}  // namespace lumivar
