#include "display_codes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "srgb.h"

namespace lumivar {
namespace {

double encoded(float sample, Encoding encoding) {
    const double value = static_cast<double>(sample);
    if (encoding == Encoding::Srgb) {
        return srgb_encode(value);
    }
    return value > 0.0 ? std::min(value, 1.0) : 0.0;  // 0 also for what is not a number
}

/// Evenly spread over 0 to 1, 1 left out: the counter of the sample with its bits mixed (the
/// finaliser of MurmurHash3, by A. Appleby, which is in the public domain).
double chance_of(std::size_t sample) {
    auto bits = static_cast<std::uint32_t>(sample);
    bits ^= bits >> 16U;
    bits *= 0x85EBCA6BU;
    bits ^= bits >> 13U;
    bits *= 0xC2B2AE35U;
    bits ^= bits >> 16U;
    return bits * 0x1p-32;
}

template <class Code, class Rounding>
std::vector<Code> codes(const LinearImage& image, double white, Encoding encoding,
                        Rounding rounding) {
    std::vector<Code> all(image.samples.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (image.samples[i] != 0.0F) {  // most of a sky is black
            all[i] = static_cast<Code>(rounding(white * encoded(image.samples[i], encoding), i));
        }
    }
    return all;
}

double nearest(double value, std::size_t /*sample*/) { return std::floor(value + 0.5); }

}  // namespace

std::vector<std::uint8_t> codes_8(const LinearImage& image, Encoding encoding) {
    return codes<std::uint8_t>(image, 255.0, encoding, nearest);
}

std::vector<std::uint8_t> dithered_codes_8(const LinearImage& image, Encoding encoding) {
    return codes<std::uint8_t>(image, 255.0, encoding, [](double value, std::size_t sample) {
        return std::floor(value + chance_of(sample));
    });
}

std::vector<std::uint16_t> codes_16(const LinearImage& image, Encoding encoding) {
    return codes<std::uint16_t>(image, 65535.0, encoding, nearest);
}

}  // namespace lumivar
