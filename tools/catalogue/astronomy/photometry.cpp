#include "astronomy/photometry.h"

#include <algorithm>

namespace lumivar {

double v_from_tycho(double bt, double vt) { return vt - 0.090 * (bt - vt); }

double bv_from_tycho(double bt, double vt) { return 0.850 * (bt - vt); }

double v_from_gaia(double g, double bp_rp) {
    const double c = std::clamp(bp_rp, -0.5, 5.0);
    return g - (-0.02704 + c * (0.01424 + c * (-0.2156 + c * 0.01426)));
}

}  // namespace lumivar
