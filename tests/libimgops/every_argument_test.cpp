// All single-precision arguments of the kernels' functions, in parts.
//
// Built twice: with every argument, for the slow tests, and with one in LUMIVAR_PATTERN_STEP.
#include "kernel_bounds.h"

namespace {

using namespace kernel_bounds;

constexpr int kParts = 64;
constexpr std::uint64_t kPartSize = (std::uint64_t{1} << 32U) / kParts;

/// Each of them; one that is over arrays stands for all of those where every argument is tried.
std::vector<const Kernels*> sets() {
    std::vector<const Kernels*> all = kernel_sets::all_runnable();
    if (LUMIVAR_PATTERN_STEP == 1) {
        all = {&kernel_sets::array8};
        for (const std::string& name : kernel_sets::instruction_sets()) {
            if (const Kernels* set = kernel_sets::runnable(name)) {
                all.push_back(set);
            }
        }
    }
    return all;
}

}  // namespace

class EveryArgument : public testing::TestWithParam<int> {};

TEST_P(EveryArgument, KeepsExpWithin1AndErfWithin2) {
    const std::uint64_t first = kPartSize * static_cast<std::uint64_t>(GetParam());
    for (const Bounded& of : kBounds) {
        check_patterns(of, sets(), first, first + kPartSize - 1, LUMIVAR_PATTERN_STEP);
    }
}

// From 2^-31 on, below which it is x times a constant, to 8, beyond which it is 1. Of both signs.
TEST_P(EveryArgument, IsWithin1OfTheLibrarysErf) {
    constexpr std::uint64_t kFirst = 0x30000000, kEnd = 0x41000000;
    const std::uint64_t part = (kEnd - kFirst) / kParts;
    const std::uint64_t first = kFirst + part * static_cast<std::uint64_t>(GetParam());
    for (const std::uint64_t sign : {0x0U, 0x80000000U}) {
        check_patterns(kLibraryErf, sets(), sign + first, sign + first + part - 1,
                       LUMIVAR_PATTERN_STEP);
    }
}

INSTANTIATE_TEST_SUITE_P(Part, EveryArgument, testing::Range(0, kParts));
