// From linear light to the integer codes of hosts.
#pragma once

#include <cstddef>

// Both take `count` pixels of four floats, coverage first, and write the same channels to `codes`,
// of any alignment: each colour times full scale rounded half up, what lies beyond becomes the
// range's end, what is not a number 0; coverage is full whatever it was. Both draw paths give the
// same codes.

/// Codes 0 to 255, a byte each.
void to_8_bit_codes(const float* pixels, void* codes, std::size_t count);
/// Codes 0 to 32768, two bytes each in the processor's order.
void to_16_bit_codes(const float* pixels, void* codes, std::size_t count);
