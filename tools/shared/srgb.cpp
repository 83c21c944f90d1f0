#include "srgb.h"

#include <cmath>

namespace lumivar {

double srgb_encode(double linear) {
    if (!(linear > 0.0)) {
        return 0.0;
    }
    if (linear >= 1.0) {
        return 1.0;
    }
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

std::uint8_t srgb_code(double linear) {
    return static_cast<std::uint8_t>(std::lround(255.0 * srgb_encode(linear)));
}

}  // namespace lumivar
