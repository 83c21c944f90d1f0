#include <libimgops/codes.h>
#include <libimgops/draw_path.h>

#include "kernels/choice.h"

namespace {

const star_kernels::Kernels* kernels() {
    return draw_path() == DrawPath::fast ? star_kernels::in_use() : nullptr;
}

}  // namespace

bool to_8_bit_codes(const float* pixels, void* codes, std::size_t count) {
    const star_kernels::Kernels* fast = kernels();
    if (fast == nullptr) {
        return false;
    }
    fast->to_8_bits(pixels, codes, count);
    return true;
}

bool to_16_bit_codes(const float* pixels, void* codes, std::size_t count) {
    const star_kernels::Kernels* fast = kernels();
    if (fast == nullptr) {
        return false;
    }
    fast->to_16_bits(pixels, codes, count);
    return true;
}
