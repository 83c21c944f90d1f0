// Eight lanes, as 256-bit registers have.
#define LANES 8
#define ARRAY_KERNELS array8
#define KERNELS_TABLE array8_kernels
#define KERNELS_NAME "array8"
#include "kernels_array.h"
