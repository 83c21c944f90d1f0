// A projection and a camera of the double-precision renderer as the real one takes them.
#pragma once

#include <libimgops/records.h>

#include <cstddef>

#include "support/reference_renderer.h"

inline op_stars_projection product_projection(reference::Projection from) {
    return from == reference::Projection::Perspective  ? Persp
           : from == reference::Projection::Hemisphere ? HemiSph
                                                       : AzEqu;
}

/// The camera record of the same sample.
inline ::camera product_camera(const reference::Camera& from) {
    ::camera to;
    const reference::Triple* axes[] = {&from.right, &from.up, &from.forward};
    for (int column = 0; column < 3; ++column) {
        const reference::Triple& axis = *axes[column];
        double offset = 0;
        for (int row = 0; row < 3; ++row) {
            const auto i = static_cast<std::size_t>(row);
            to.xform(row, column) = axis[i];
            offset -= from.position[i] * axis[i];
        }
        to.xform(3, column) = offset;
    }
    to.focal = from.focal;
    to.near_clip = from.near_clip;
    return to;
}
