// Eight lanes, as 256-bit registers have, over plain arrays.
#define LANES 8
#define KERNELS_LANES "libimgops/kernels/lanes_array.h"
#define KERNELS_TABLE array8_kernels
#define KERNELS_NAME "array8"
#include "fast/kernels/kernel_source.h"
