// x86-64 processors with 512-bit registers.
#if defined(__AVX512F__)  // builds for several processors compile every set for each of them
#define LANES 16
#define KERNELS_LANES "lanes_vector.h"
#define KERNELS_TABLE avx512_kernels
#define KERNELS_NAME "avx512"
#include "kernel_source.h"
#endif
