// Which vector instructions the processor has and the system lets a program use.
#pragma once

#include <cstdint>

namespace OSAPI {

/// Words that an x86_64 processor tells of itself, each 0 where the processor has no such word.
struct ProcessorWords {
    std::uint32_t basic_features = 0;     ///< cpuid leaf 1, ecx
    std::uint32_t extended_features = 0;  ///< cpuid leaf 7, subleaf 0, ebx
    std::uint64_t saved_state = 0;        ///< xgetbv 0: registers that the system saves per thread
};

/// When the system begins to save the registers of AVX-512.
enum class Avx512State {
    FromTheStart,  ///< `ProcessorWords::saved_state` says whether it does
    /// With a thread's first such instruction: `saved_state` says nothing of it before, and a
    /// system that saves those of AVX saves these too. macOS does so.
    FromFirstUse,
};

struct InstructionSets {
    bool avx2 = false;
    bool avx512 = false;  ///< F, DQ, BW and VL
};

/// Sets that such a processor under such a system runs. Bits as in Intel's Software Developer's
/// Manual, volume 1, sections 14.3, 14.7.1 and 15.2 to 15.4.
InstructionSets instruction_sets_of(const ProcessorWords& words, Avx512State avx512_state);

/// Of this machine, read from the processor itself: compilers' own records of it are not filled in
/// by every run-time that a module is linked with. Nothing on processors of other kinds.
InstructionSets instruction_sets();

}  // namespace OSAPI
