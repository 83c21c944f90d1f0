#include "astronomy/separation.h"

#include <cmath>
#include <numbers>

namespace lumivar {
namespace {

constexpr double kRadiansInADegree = std::numbers::pi / 180.0;

}  // namespace

double separation_measure(double degrees) {
    const double sine = std::sin(0.5 * kRadiansInADegree * degrees);
    return sine * sine;
}

double separation_measure(double declination_a, double declination_b, double difference) {
    return separation_measure(declination_a - declination_b) +
           std::cos(declination_a * kRadiansInADegree) *
               std::cos(declination_b * kRadiansInADegree) * separation_measure(difference);
}

}  // namespace lumivar
