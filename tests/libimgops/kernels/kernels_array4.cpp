// Four lanes, as 128-bit registers have, over plain arrays.
#define LANES 4
#define KERNELS_LANES "libimgops/kernels/lanes_array.h"
#define KERNELS_TABLE array4_kernels
#define KERNELS_NAME "array4"
#include "fast/kernels/kernel_source.h"
