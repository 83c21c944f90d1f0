// Which sets of instructions are taken for usable: words made by hand, and this machine against
// what the compiler's own run-time says of it.
#include <gtest/gtest.h>
#include <osapi/processor.h>

using OSAPI::Avx512State;
using OSAPI::instruction_sets;
using OSAPI::InstructionSets;
using OSAPI::ProcessorWords;

namespace {

// By the manual's numbering: leaf 1 ecx has OSXSAVE in bit 27 and AVX in bit 28; leaf 7 ebx AVX2 in
// 5, AVX512F in 16, DQ in 17, BW in 30, VL in 31; XCR0 SSE in 1, AVX in 2, opmask, ZMM_Hi256 and
// Hi16_ZMM in 5 to 7.
constexpr ProcessorWords kWithAvx512 = {0x18000000, 0xC0030020, 0xE7};
constexpr Avx512State kFromTheStart = Avx512State::FromTheStart;

/// 0 for none, 2 for AVX2, 514 for AVX2 and AVX-512.
int sets_of(const ProcessorWords& words, Avx512State state = kFromTheStart) {
    const InstructionSets sets = instruction_sets_of(words, state);
    return (sets.avx2 ? 2 : 0) + (sets.avx512 ? 512 : 0);
}

}  // namespace

TEST(Processor, RunsWhatItHasAndTheSystemSaves) {
    EXPECT_EQ(sets_of(kWithAvx512), 514);
    EXPECT_EQ(sets_of({0x18000000, 0x00000020, 0x07}), 2);
    EXPECT_EQ(sets_of({0x18000000, 0x00000000, 0x07}), 0) << "the first generation of AVX";
    EXPECT_EQ(sets_of({}), 0);
    EXPECT_EQ(sets_of({0xFFFFFFFF, 0xFFFFFFFF, ~std::uint64_t{0}}), 514);
}

TEST(Processor, RunsNoAvxWhereTheSystemDoesNotSaveItsRegisters) {
    EXPECT_EQ(sets_of({0x10000000, 0xC0030020, 0xE7}), 0) << "it does not tell what it saves";
    EXPECT_EQ(sets_of({0x08000000, 0xC0030020, 0xE7}), 0) << "without AVX";
    for (const std::uint64_t saved : {0x00U, 0x01U, 0x03U, 0x05U, 0xE1U, 0xE3U, 0xE5U}) {
        EXPECT_EQ(sets_of({0x18000000, 0xC0030020, saved}), 0) << saved;
    }
}

TEST(Processor, NeedsAllFourPartsOfAvx512AndItsWholeState) {
    for (const std::uint32_t part : {16, 17, 30, 31}) {
        const std::uint32_t features = 0xC0030020 & ~(std::uint32_t{1} << part);
        EXPECT_EQ(sets_of({0x18000000, features, 0xE7}), 2) << part;
    }
    for (const std::uint64_t saved : {0x07U, 0x27U, 0x47U, 0x87U, 0x67U, 0xA7U, 0xC7U}) {
        EXPECT_EQ(sets_of({0x18000000, 0xC0030020, saved}), 2) << saved;
    }
}

// macOS turns the state of AVX-512 on for a thread when it first needs it.
TEST(Processor, TakesAvx512ForSavedWhereThatBeginsWithItsFirstUse) {
    EXPECT_EQ(sets_of({0x18000000, 0xC0030020, 0x07}, Avx512State::FromFirstUse), 514);
    EXPECT_EQ(sets_of({0x18000000, 0x00000020, 0x07}, Avx512State::FromFirstUse), 2);
    EXPECT_EQ(sets_of({0x18000000, 0xC0030020, 0x03}, Avx512State::FromFirstUse), 0);
}

#if defined(__x86_64__) && defined(__linux__)
TEST(Processor, SaysOfThisMachineWhatTheCompilerSays) {
    const InstructionSets sets = instruction_sets();
    EXPECT_EQ(sets.avx2, __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ(sets.avx512, __builtin_cpu_supports("avx512f") != 0 &&
                               __builtin_cpu_supports("avx512dq") != 0 &&
                               __builtin_cpu_supports("avx512bw") != 0 &&
                               __builtin_cpu_supports("avx512vl") != 0);
}
#elif !defined(__x86_64__)
TEST(Processor, HasNoneOfTheseSetsWhenItIsOfAnotherKind) {
    EXPECT_FALSE(instruction_sets().avx2);
    EXPECT_FALSE(instruction_sets().avx512);
}
#endif
