// From light on a display to the integer codes of a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "linear_image.h"

namespace lumivar {

/// Whether samples are encoded to sRGB on the way, or are on a display's scale already.
enum class Encoding { Srgb, Done };

/// 8-bit codes, rounded to nearest. Samples outside 0..1 are clamped; not a number gives 0.
std::vector<std::uint8_t> codes_8(const LinearImage& image, Encoding encoding);

/// 8-bit codes with dithering: a value between two codes becomes one or the other, by chance, so
/// that their mean over an area is the value. Black and white stay as they are. The chance is a
/// pattern that depends on the place in the file and the channel alone: the same frame gives the
/// same codes.
std::vector<std::uint8_t> dithered_codes_8(const LinearImage& image, Encoding encoding);

/// 16-bit codes, 65535 is white, rounded to nearest.
std::vector<std::uint16_t> codes_16(const LinearImage& image, Encoding encoding);

}  // namespace lumivar
