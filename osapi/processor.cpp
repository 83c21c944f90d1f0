#include <osapi/processor.h>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace OSAPI {

namespace {

constexpr std::uint32_t bit(int place) { return std::uint32_t{1} << place; }

// Basic features.
constexpr std::uint32_t kSystemTellsSavedState = bit(27);
constexpr std::uint32_t kAvx = bit(28);
// Extended features.
constexpr std::uint32_t kAvx2 = bit(5);
constexpr std::uint32_t kAvx512 = bit(16) | bit(17) | bit(30) | bit(31);  // F, DQ, BW, VL
// Saved state: the lower and upper halves of AVX's registers; with AVX-512 its masks, the upper
// halves of the first sixteen registers, and the other sixteen.
constexpr std::uint64_t kStateOfAvx = bit(1) | bit(2);
constexpr std::uint64_t kStateOfAvx512 = kStateOfAvx | bit(5) | bit(6) | bit(7);

constexpr bool has(std::uint64_t word, std::uint64_t bits) { return (word & bits) == bits; }

#if defined(__x86_64__)
std::uint64_t saved_state() {
    // By instruction: the compiler's function for it is there only where the instruction is taken
    // for granted.
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return std::uint64_t{high} << 32U | low;
}

ProcessorWords words_of_this_processor() {
    ProcessorWords words;
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
    if (__get_cpuid_count(1, 0, &eax, &ebx, &ecx, &edx) != 0) {
        words.basic_features = ecx;
    }
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0) {
        words.extended_features = ebx;
    }
    // Without this feature the instruction itself is none.
    if (has(words.basic_features, kSystemTellsSavedState)) {
        words.saved_state = saved_state();
    }
    return words;
}
#endif

}  // namespace

InstructionSets instruction_sets_of(const ProcessorWords& words, Avx512State avx512_state) {
    if (!has(words.basic_features, kSystemTellsSavedState | kAvx) ||
        !has(words.saved_state, kStateOfAvx)) {
        return {};
    }
    const bool saves_avx512 =
        avx512_state == Avx512State::FromFirstUse || has(words.saved_state, kStateOfAvx512);
    return {.avx2 = has(words.extended_features, kAvx2),
            .avx512 = saves_avx512 && has(words.extended_features, kAvx512)};
}

InstructionSets instruction_sets() {
#if defined(__x86_64__)
#if defined(__APPLE__)
    constexpr Avx512State kAvx512State = Avx512State::FromFirstUse;
#else
    constexpr Avx512State kAvx512State = Avx512State::FromTheStart;
#endif
    return instruction_sets_of(words_of_this_processor(), kAvx512State);
#else
    return {};
#endif
}

}  // namespace OSAPI
