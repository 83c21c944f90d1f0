// What a renderer keeps for its frame; shared by the set-up and the shading.
#pragma once

#include <libimgops/renderer.h>
#include <libimgops/star_input.h>

struct StarRenderer::PrivateData {
    const StarFramebuffer& fb;
    StarInput& input;
    const Array<camera>& cams;
    /// One projection matrix per camera sample, in the order of `cams`.
    Array<Matrix4<double>> mats{};
    /// Brightness of one drawn segment.
    float intensity = 0;
    /// Gaussian radii in pixels, at least 1.
    float spot_w = 0;
    float spot_h = 0;
    /// Number of the next record to draw.
    u32 index = 0;
};
