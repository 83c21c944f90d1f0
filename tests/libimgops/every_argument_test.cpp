// All single-precision arguments of the kernels' functions, in parts.
//
// Built twice: with every argument, for the slow tests, and with one in LUMIVAR_PATTERN_STEP.
#include "kernel_bounds.h"

namespace {

using namespace kernel_bounds;

constexpr int PARTS = 64;
constexpr std::uint64_t PART_SIZE = (std::uint64_t{1} << 32U) / PARTS;

/// Each of them; one that is over arrays stands for all of those where every argument is tried.
std::vector<const Kernels*> sets() {
    std::vector<const Kernels*> all = kernel_sets::all_runnable();
    if (LUMIVAR_PATTERN_STEP == 1) {
        all = {&kernel_sets::array8.table};
        for (const std::string& name : kernel_sets::instruction_sets()) {
            if (const Kernels* set = kernel_sets::runnable(name)) {
                all.push_back(set);
            }
        }
    }
    return all;
}

}  // namespace

class EveryArgument : public testing::TestWithParam<int> {
protected:
    std::uint64_t first() const { return PART_SIZE * static_cast<std::uint64_t>(GetParam()); }
    std::uint64_t last() const { return first() + PART_SIZE - 1; }
};

TEST_P(EveryArgument, KeepsExpWithin1AndErfWithin2) {
    for (const Bounded& of : BOUNDS) {
        check_patterns(of, sets(), first(), last(), LUMIVAR_PATTERN_STEP);
    }
}

INSTANTIATE_TEST_SUITE_P(Part, EveryArgument, testing::Range(0, PARTS));

/// The parts that hold no positive number.
class EveryNegativeArgument : public EveryArgument {};

// The light is made with a shorter exponential, which is the same function up to 0.
TEST_P(EveryNegativeArgument, HasTheSameExpInTheLight) {
    std::vector<float> expected(BLOCK), actual(BLOCK);
    bool same = true;
    for_patterns(first(), last(), LUMIVAR_PATTERN_STEP, [&](const float* x, std::size_t count) {
        kernel_sets::array8.table.exp(x, expected.data(), count);
        kernel_sets::array8.negative_exp(x, actual.data(), count);
        same = same && are_same(expected, actual, count);
    });
    EXPECT_TRUE(same);
}

INSTANTIATE_TEST_SUITE_P(Part, EveryNegativeArgument, testing::Range(PARTS / 2, PARTS));
