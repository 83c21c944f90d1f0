// x86-64 processors since 2013.
#if defined(__AVX2__)  // builds for several processors compile every set for each of them
#define LANES 8
#define KERNELS_LANES "lanes_vector.h"
#define KERNELS_TABLE avx2_kernels
#define KERNELS_NAME "avx2"
#include "kernel_source.h"
#endif
