#include "astronomy/separation.h"

#include <cmath>

#include "astronomy/place.h"

namespace lumivar {
namespace {}  // namespace

double separation_measure(double degrees) {
    const double sine = std::sin(0.5 * kRadiansInDegree * degrees);
    return sine * sine;
}

double separation_measure(double declination_a, double declination_b, double difference) {
    return separation_measure(declination_a - declination_b) +
           std::cos(declination_a * kRadiansInDegree) * std::cos(declination_b * kRadiansInDegree) *
               separation_measure(difference);
}

}  // namespace lumivar
