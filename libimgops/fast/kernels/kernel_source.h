// The kernels, for any number of lanes. A source for one instruction set defines LANES,
// KERNELS_LANES, KERNELS_NAME and KERNELS_TABLE and includes this once.
#pragma once

#include <cstddef>
#include <cstring>

#include "kernel_codes.h"
#include "kernel_erf.h"
#include "kernel_math.h"
#include "kernel_rejection.h"
#include "kernel_spot.h"
#include "kernel_streak.h"

namespace {

template <class Function>
LANES_INLINE void for_all(const float* x, float* result, std::size_t count, Function function) {
    for (; count >= LANES; count -= LANES, x += LANES, result += LANES) {
        store(result, function(load(x)));
    }
    if (count > 0) {
        float lanes[LANES] = {};
        std::memcpy(lanes, x, count * sizeof(float));
        store(lanes, function(load(lanes)));
        std::memcpy(result, lanes, count * sizeof(float));
    }
}
void exp_of_all(const float* x, float* result, std::size_t count) {
    for_all(x, result, count, [](Floats lanes) { return exp_of_negative(lanes); });
}
void erf_of_all(const float* x, float* result, std::size_t count) {
    for_all(x, result, count, [](Floats lanes) { return erf_of(lanes); });
}
void library_erf_of_all(const float* x, float* result, std::size_t count) {
    for_all(x, result, count, [](Floats lanes) { return library_erf_of(lanes); });
}

}  // namespace

namespace star_kernels {

extern const Kernels KERNELS_TABLE;
const Kernels KERNELS_TABLE = {KERNELS_NAME, LANES,      draw_spot,         draw_streak,
                               fetch,        outside,    to_8_bits,         to_16_bits,
                               exp_of_all,   erf_of_all, library_erf_of_all};

}  // namespace star_kernels
