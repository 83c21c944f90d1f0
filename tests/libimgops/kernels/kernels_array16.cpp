// Sixteen lanes, as 512-bit registers have, over plain arrays.
#define LANES 16
#define KERNELS_LANES "libimgops/kernels/lanes_array.h"
#define KERNELS_TABLE array16_kernels
#define KERNELS_NAME "array16"
#include "fast/kernels/kernel_source.h"
