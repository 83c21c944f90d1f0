// The light of one star before it is drawn: how bright, which colour.
#pragma once

#include <libimgops/records.h>

#include <cmath>

#include "star_colour.h"

/// The luminance that is drawn, of a catalogue luminance that has passed the threshold.
inline float shaped_luminance(float luminance, const StarRendererData& data) {
    if (data.bias_exponent != 1.0) {
        luminance = std::pow(luminance, static_cast<float>(data.bias_exponent));
    }
    if (static_cast<double>(luminance) > data.max_luminance) {
        luminance = static_cast<float>(data.max_luminance);
    }
    return luminance;
}

/// The linear colour that is drawn, of the star's own codes. Those are decoded, the tint is not;
/// saturation moves from mid-grey instead of the star's own grey, without limits, and comes after
/// the tint. All of that is meant: saved projects look so.
inline Color3 shaped_colour(unsigned char r, unsigned char g, unsigned char b,
                            const StarRendererData& data) {
    const Color3 own(sRGB_to_float(r), sRGB_to_float(g), sRGB_to_float(b));
    const Color3 tinted = lerp(own, data.tint_color, static_cast<float>(data.tint_strength));
    return lerp(Color3(0.5F, 0.5F, 0.5F), tinted, static_cast<float>(data.saturation));
}
