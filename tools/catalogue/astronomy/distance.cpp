#include "astronomy/distance.h"

#include <cmath>

namespace lumivar {

double distance_from_parallax(double mas, double floor_mas) {
    if (!(mas > 0.0) || !(mas > floor_mas)) {
        return kUnknownDistance;
    }
    const double parsecs = 1000.0 / mas;
    // The smallest numbers of the type have no finite inverse, an infinite one has no distance.
    return std::isfinite(parsecs) && parsecs > 0.0 ? parsecs : kUnknownDistance;
}

}  // namespace lumivar
