// The plain conversion, which defines the codes, and the choice between it and the kernels', which
// is in `fast/kernels/kernel_codes.h`.
#include <libimgops/codes.h>

#include <cstdint>
#include <cstring>

#include "fast/kernels/choice.h"

namespace {

using star_kernels::Kernels;
using star_kernels::kFloatsPerPixel;

/// `f` of full scale `kMost`, rounded half up and clamped; 0 when it is not a number. Compared as a
/// number before it becomes an integer, so that nothing is out of the integer's range.
template <class Code, int kMost>
Code to_code(float f) {
    const float scaled = 0.5F + f * static_cast<float>(kMost);
    if (scaled > 0.0F) {
        return static_cast<Code>(scaled < static_cast<float>(kMost) ? static_cast<int>(scaled)
                                                                    : kMost);
    }
    return 0;
}

template <class Code, int kMost>
void to_codes_plainly(const float* pixels, void* codes, std::size_t count) {
    auto* to = static_cast<unsigned char*>(codes);
    for (; count > 0; --count, pixels += kFloatsPerPixel) {
        const Code pixel[kFloatsPerPixel] = {kMost, to_code<Code, kMost>(pixels[1]),
                                             to_code<Code, kMost>(pixels[2]),
                                             to_code<Code, kMost>(pixels[3])};
        // As bytes, because nothing says how a host aligns its rows.
        std::memcpy(to, pixel, sizeof pixel);
        to += sizeof pixel;
    }
}

}  // namespace

void to_8_bit_codes(const float* pixels, void* codes, std::size_t count) {
    const Kernels* kernels = star_kernels::of_draw_path();
    const auto convert =
        kernels != nullptr ? kernels->to_8_bits : to_codes_plainly<std::uint8_t, 255>;
    convert(pixels, codes, count);
}

void to_16_bit_codes(const float* pixels, void* codes, std::size_t count) {
    const Kernels* kernels = star_kernels::of_draw_path();
    const auto convert =
        kernels != nullptr ? kernels->to_16_bits : to_codes_plainly<std::uint16_t, 32768>;
    convert(pixels, codes, count);
}
