// From the bands of a survey to Johnson's V and B-V, by the relations that the surveys publish.
//
// All magnitudes and colours are in magnitudes. Where a survey gives no colour for a star, its own
// band is taken as V.
#pragma once

namespace lumivar {

/// V = VT - 0.090 (BT - VT), from the two bands of the Tycho catalogues (ESA, 1997, The Hipparcos
/// and Tycho Catalogues, vol. 1, sect. 1.3). Published for BT - VT from -0.2 to 1.8; beyond it the
/// line is continued, since the reddest stars need a correction too.
double v_from_tycho(double bt, double vt);
/// B-V = 0.850 (BT - VT), from the same place and with the same range.
double bv_from_tycho(double bt, double vt);

/// V from Gaia's G and BP-RP: the cubic of Riello et al., 2021, A&A 649, A3, table C.2 (table 5.9
/// of the documentation of Gaia DR3), scatter 0.03. Published for BP-RP from -0.5 to 5; beyond it
/// the colour is taken as the nearer end, since a cubic runs away.
double v_from_gaia(double g, double bp_rp);

}  // namespace lumivar
