// Colour of a star: sRGB codes to linear light, and blends. Single precision throughout.
#pragma once

#include <base/newmatrix.h>

#include <cmath>

/// 0 to 1 for code `c`.
inline float u8_to_float(unsigned char c) { return static_cast<float>(c) * 0.0039215689F; }

/// sRGB to linear. The breakpoint is the older 0.03928, on purpose; codes 10 and 11 lie on either
/// side of it as of the newer one.
inline float sRGB_decode(float x) {
    if (x <= 0.03928F) {
        return x * 0.07739938F;
    }
    return std::pow((x + 0.055F) * 0.94786733F, 2.4F);
}

/// Linear light of sRGB code `c`.
inline float sRGB_to_float(unsigned char c) { return sRGB_decode(u8_to_float(c)); }

/// `a` at t = 0, `b` at t = 1, in the form that is exact at both; `t` is not limited to that.
inline VectorN<float, 3> lerp(const VectorN<float, 3>& a, const VectorN<float, 3>& b, float t) {
    VectorN<float, 3> mix;
    for (int i = 0; i < 3; ++i) {
        mix[i] = a[i] * (1.0F - t) + b[i] * t;
    }
    return mix;
}
