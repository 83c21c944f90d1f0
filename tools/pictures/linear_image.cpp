#include "linear_image.h"

#include <cstdint>

namespace lumivar {

using host::Depth;

float linear_sample(const FrameView& frame, int x, int y, std::size_t channel) {
    switch (frame.depth) {
        case Depth::Bits8:
            return static_cast<float>(stored_sample<std::uint8_t>(frame, x, y, channel)) / 255.0F;
        case Depth::Bits16:
            return static_cast<float>(stored_sample<std::uint16_t>(frame, x, y, channel)) /
                   32768.0F;
        case Depth::Float:
            break;
    }
    return stored_sample<float>(frame, x, y, channel);
}

LinearImage linear_image(const FrameView& frame) {
    LinearImage image{frame.width, frame.height, {}};
    image.samples.resize(3 * static_cast<std::size_t>(frame.width) *
                         static_cast<std::size_t>(frame.height));
    float* out = image.samples.data();
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            for (std::size_t channel = 1; channel <= 3; ++channel) {
                *out++ = linear_sample(frame, x, y, channel);
            }
        }
    }
    return image;
}

}  // namespace lumivar
