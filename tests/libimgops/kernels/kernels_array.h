// The kernels over plain arrays. A source for one number of lanes defines LANES, ARRAY_KERNELS,
// KERNELS_NAME and KERNELS_TABLE and includes this once.
#pragma once

#define KERNELS_LANES "libimgops/kernels/lanes_array.h"
#include "kernels/kernel_source.h"

#include "kernel_sets.h"

namespace {

void negative_exp_of_all(const float* x, float* result, std::size_t count) {
    for_all(x, result, count, [](Floats lanes) { return exp_of_negative(lanes); });
}

}  // namespace

namespace kernel_sets {

extern const ArrayKernels ARRAY_KERNELS;
const ArrayKernels ARRAY_KERNELS = {star_kernels::KERNELS_TABLE, negative_exp_of_all};

}  // namespace kernel_sets
