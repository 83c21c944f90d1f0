// How far two places on the sky are apart.
#pragma once

namespace lumivar {

/// The square of the sine of half of an angle of 0 to 180 degrees. It rises with the angle, so that
/// two angles can be compared by it.
double separation_measure(double degrees);

/// The same of the angle between two places, by the haversine formula, which keeps its precision at
/// small angles. All in degrees; `difference`: of the right ascensions, either way round.
double separation_measure(double declination_a, double declination_b, double difference);

}  // namespace lumivar
