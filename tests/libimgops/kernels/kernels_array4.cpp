// Four lanes, as 128-bit registers have.
#define LANES 4
#define ARRAY_KERNELS array4
#define KERNELS_TABLE array4_kernels
#define KERNELS_NAME "array4"
#include "kernels_array.h"
