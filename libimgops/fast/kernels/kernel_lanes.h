// What kernels compute with: LANES floats at once. For `kernel_source.h` alone.
#pragma once

#include "kernels.h"

#define LANES_MEMBER inline __attribute__((always_inline))
#define LANES_INLINE static LANES_MEMBER
#include KERNELS_LANES

namespace {

constexpr int kPixel = star_kernels::kFloatsPerPixel;

}  // namespace
