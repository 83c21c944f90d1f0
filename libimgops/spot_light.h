// How far a spot's light reaches, and the constants of its light along a segment: shared by the
// plain streak and the fast path.
#pragma once

#include <base/newmatrix.h>

#include <cmath>

/// Light is followed out to one part in this of the framebuffer's unit.
inline constexpr float kUnitPerFaintest = 6250.0F;

/// How many spot radii away `energy` x exp(-reach^2) is the faintest light. Negative when there is
/// nothing to draw; energies that are not a number draw nothing.
inline float reach_of(float energy) {
    const float brightness = kUnitPerFaintest * energy;
    return brightness >= 1.0F ? std::sqrt(std::log(brightness)) : -1.0F;
}

/// The constants of a swept spot's light. `dir` has length 1.
struct SweptSpot {
    float q;
    float along_x;
    float along_y;
    float scale;
    float area;

    SweptSpot(const Vector2& dir, float spot_w, float spot_h) {
        const float w2 = spot_w * spot_w;
        const float h2 = spot_h * spot_h;
        q = h2 * (dir[0] * dir[0]) + w2 * (dir[1] * dir[1]);
        const float k = 1.0F / std::sqrt(q);
        along_x = h2 * dir[0];
        along_y = w2 * dir[1];
        scale = k / (spot_w * spot_h);
        // sqrt(pi) / 2
        area = 0.886226952F * spot_w * spot_h * k;
    }
};
