// Stars outside the frame.
// For `kernel_source.h` alone.
#pragma once

#include "kernel_math.h"

namespace {

struct SineCosine {
    Floats sine;
    Floats cosine;
};
/// Both off by less than 5e-7 for magnitudes below 10000.
LANES_INLINE SineCosine sine_cosine(Floats x) {
    // x = n pi / 2 + r with |r| <= pi / 4; the first part of pi / 2 has few bits.
    const Floats rounded = x * splat(0.636619772F) + splat(kRounder);
    const Floats n = rounded - splat(kRounder);
    const Floats r =
        ((x - n * splat(1.5703125F)) - n * splat(4.83751297e-4F)) - n * splat(7.54978995e-8F);
    const Floats r2 = r * r;
    const Floats sine =
        r + r * r2 * (splat(-1.0F / 6) + r2 * (splat(1.0F / 120) + r2 * splat(-1.0F / 5040)));
    const Floats cosine =
        splat(1.0F) +
        r2 * (splat(-0.5F) +
              r2 * (splat(1.0F / 24) + r2 * (splat(-1.0F / 720) + r2 * splat(1.0F / 40320))));
    const Ints quarter = bits_of(rounded);
    const Ints swaps = splat(0) - (quarter & splat(1));
    const Ints sine_sign = (quarter & splat(2)) << 30;
    const Ints cosine_sign = ((quarter + splat(1)) & splat(2)) << 30;
    return {floats_of(bits_of(select(swaps, cosine, sine)) ^ sine_sign),
            floats_of(bits_of(select(swaps, sine, cosine)) ^ cosine_sign)};
}

template <bool kWeighted>
LANES_INLINE Ints is_beyond(const star_kernels::Plane& plane, Floats x, Floats y, Floats z,
                            Floats w) {
    Floats side = x * splat(plane.nx) + y * splat(plane.ny) + z * splat(plane.nz);
    if (kWeighted) {
        side = side + w * splat(plane.nw - plane.tolerance_w);
    }
    return side > splat(plane.tolerance);
}

template <bool kWeighted>
LANES_INLINE Ints outside_all(const star_kernels::Plane* planes, int samples, Floats x, Floats y,
                              Floats z, Floats w) {
    Ints behind = splat(-1);
    Ints beyond[star_kernels::kPlanes - 1];
    for (Ints& side : beyond) {
        side = splat(-1);
    }
    for (int sample = 0; sample < samples; ++sample, planes += star_kernels::kPlanes) {
        behind = behind & is_beyond<kWeighted>(planes[0], x, y, z, w);
        // Ahead: the same plane the other way round.
        const star_kernels::Plane turned = {-planes[0].nx,       -planes[0].ny,
                                            -planes[0].nz,       -planes[0].nw,
                                            planes[0].tolerance, planes[0].tolerance_w};
        const Ints ahead = is_beyond<kWeighted>(turned, x, y, z, w);
        Ints some = behind;
        for (int side = 0; side < star_kernels::kPlanes - 1; ++side) {
            beyond[side] =
                beyond[side] & ahead & is_beyond<kWeighted>(planes[side + 1], x, y, z, w);
            some = some | beyond[side];
        }
        if (!any(some)) {
            return some;
        }
    }
    return behind | beyond[0] | beyond[1] | beyond[2] | beyond[3];
}

void outside(const float* lon, const float* lat, const float* weight, int count,
             const star_kernels::Plane* planes, int samples, unsigned char* is_outside) {
    constexpr float kLargestAngle = 10000.0F;
    // Nearer stars may have no length even in double precision.
    constexpr float kLargestWeight = 1e30F;
    for (int i = 0; i < count; i += LANES) {
        const Floats longitude = load(lon + i);
        const Floats latitude = load(lat + i);
        const Floats w = load(weight + i);
        const SineCosine of_lon = sine_cosine(longitude);
        const SineCosine of_lat = sine_cosine(latitude);
        const Floats x = of_lat.cosine * of_lon.cosine;
        const Floats y = of_lat.sine;
        const Floats z = of_lat.cosine * of_lon.sine;
        const Ints known = (absolute(longitude) < splat(kLargestAngle)) &
                           (absolute(latitude) < splat(kLargestAngle)) &
                           (w < splat(kLargestWeight));
        const unsigned mask = mask_of(
            known & (any(w > splat(0.0F)) ? outside_all<true>(planes, samples, x, y, z, w)
                                          : outside_all<false>(planes, samples, x, y, z, w)));
        for (unsigned k = 0; k < LANES; ++k) {
            is_outside[i + static_cast<int>(k)] = static_cast<unsigned char>(mask >> k & 1U);
        }
    }
}

}  // namespace
