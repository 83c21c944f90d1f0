// Linear light on its way from the plug-in's frame to a picture.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "frame_view.h"

namespace lumivar {

/// Rows from the top, a pixel's red, green and blue side by side. Scene-linear, primaries of sRGB;
/// 1 is the host's white.
struct LinearImage {
    int width = 0;
    int height = 0;
    std::vector<float> samples;  ///< 3 * width * height

    std::size_t pixels() const { return samples.size() / 3; }
};

/// The frame's light: floats as they are, the codes of an 8- or 16-bit frame divided by 255 or
/// 32768.
LinearImage linear_image(const FrameView& frame);

/// One sample of a frame as linear light; channels 0 to 3 are alpha, red, green, blue.
float linear_sample(const FrameView& frame, int x, int y, std::size_t channel);

}  // namespace lumivar
