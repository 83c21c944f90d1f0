// Sixteen lanes, as 512-bit registers have.
#define LANES 16
#define ARRAY_KERNELS array16
#define KERNELS_TABLE array16_kernels
#define KERNELS_NAME "array16"
#include "kernels_array.h"
