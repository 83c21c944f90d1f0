#include "choice.h"

#include <libimgops/draw_path.h>
#include <osapi/processor.h>

namespace star_kernels {

// Each is built for the processors that have its instructions.
extern const Kernels avx512_kernels;
extern const Kernels avx2_kernels;
extern const Kernels sse2_kernels;
extern const Kernels neon_kernels;

namespace {

const Kernels* const kBuilt[] = {
#if defined(__x86_64__)
    &avx512_kernels, &avx2_kernels,
#endif
#if defined(__SSE2__)
    &sse2_kernels,
#endif
#if defined(__aarch64__)
    &neon_kernels,
#endif
    nullptr};

const Kernels* widest() {
    for (const Kernels* const* kernels = kBuilt; *kernels != nullptr; ++kernels) {
        if (runs_here(**kernels)) {
            return *kernels;
        }
    }
    return nullptr;
}

const Kernels* chosen = nullptr;

}  // namespace

const Kernels* const* built() { return kBuilt; }

bool runs_here(const Kernels& kernels) {
#if defined(__x86_64__)
    if (&kernels == &avx512_kernels) {
        return OSAPI::instruction_sets().avx512;
    }
    if (&kernels == &avx2_kernels) {
        return OSAPI::instruction_sets().avx2;
    }
#endif
    // The others are what the build itself takes for granted.
    static_cast<void>(kernels);
    return true;
}

const Kernels* in_use() {
    static const Kernels* const best = widest();
    return chosen != nullptr ? chosen : best;
}

const Kernels* of_draw_path() { return draw_path() == DrawPath::Fast ? in_use() : nullptr; }

void use(const Kernels* kernels) { chosen = kernels; }

}  // namespace star_kernels
