// arm64 processors: all of them.
#if defined(__aarch64__)  // builds for several processors compile every set for each of them
#define LANES 4
#define KERNELS_LANES "lanes_vector.h"
#define KERNELS_TABLE neon_kernels
#define KERNELS_NAME "neon"
#include "kernel_source.h"
#endif
