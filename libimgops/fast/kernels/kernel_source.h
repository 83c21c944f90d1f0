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
#include "kernel_trail.h"

namespace {

template <Floats (*kFunction)(Floats)>
void of_all(const float* x, float* result, std::size_t count) {
    for (; count >= LANES; count -= LANES, x += LANES, result += LANES) {
        store(result, kFunction(load(x)));
    }
    if (count > 0) {
        float lanes[LANES] = {};
        std::memcpy(lanes, x, count * sizeof(float));
        store(lanes, kFunction(load(lanes)));
        std::memcpy(result, lanes, count * sizeof(float));
    }
}

}  // namespace

namespace star_kernels {

extern const Kernels KERNELS_TABLE;
const Kernels KERNELS_TABLE = {KERNELS_NAME,   LANES,
                               draw_spot,      draw_streak,
                               draw_trail,     fetch,
                               outside,        to_8_bits,
                               to_16_bits,     of_all<exp_of_negative>,
                               of_all<erf_of>, of_all<library_erf_of>};

}  // namespace star_kernels
