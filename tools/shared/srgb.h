// The display encoding of IEC 61966-2-1.
#pragma once

#include <cstdint>

namespace lumivar {

/// Linear light to the encoded scale, both 0..1. Outside it clamps; not a number gives 0.
double srgb_encode(double linear);
/// The same as an 8-bit code, rounded to nearest.
std::uint8_t srgb_code(double linear);

}  // namespace lumivar
