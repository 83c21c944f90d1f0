// The x86 processors that all have: 32-bit ones too.
#if defined(__SSE2__)  // builds for several processors compile every set for each of them
#define LANES 4
#define KERNELS_LANES "lanes_vector.h"
#define KERNELS_TABLE sse2_kernels
#define KERNELS_NAME "sse2"
#include "kernel_source.h"
#endif
