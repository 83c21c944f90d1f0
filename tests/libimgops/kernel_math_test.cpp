// The kernels' exponential and error function: their ends, their shape, and their error where it
// matters. `every_argument_test.cpp` goes through all arguments.
#include "kernel_bounds.h"

namespace {

using namespace kernel_bounds;

constexpr float INF = std::numeric_limits<float>::infinity();

/// Bits of the arguments' ends and of numbers that matter between.
constexpr float LANDMARKS[] = {
    0,    1e-45F, 1.1754944e-38F, 1e-30F, 0x1p-25F, 0x1p-13F, 0.25F, 0.5F,    0.75F,
    1,    1.25F,  1.75F,          2.25F,  2.75F,    3.25F,    3.5F,  3.75F,   3.92F,
    4,    10,     16.6355F,       50,     87.33F,   88.7228F, 89,    103.97F, 105,
    1e4F, 1e10F,  3.4028235e38F};

}  // namespace

TEST(Bounds, HoldAroundLandmarks) {
    for (const Bounded& of : BOUNDS) {
        for (const float landmark : LANDMARKS) {
            for (const float at : {landmark, -landmark}) {
                const std::uint64_t middle = std::bit_cast<std::uint32_t>(at);
                const std::uint64_t low = middle & 0x80000000U;
                const std::uint64_t first = middle - low < 2000 ? low : middle - 2000;
                check_patterns(of, kernel_sets::all_runnable(), first,
                               std::min<std::uint64_t>(middle + 2000, 0xffffffffU), 1);
            }
        }
    }
}

class EachMathSet : public testing::TestWithParam<std::string> {
protected:
    static float exp(const Kernels& of, float x) {
        of.exp(&x, &x, 1);
        return x;
    }
    static float erf(const Kernels& of, float x) {
        of.erf(&x, &x, 1);
        return x;
    }
};

TEST_P(EachMathSet, KnowsTheEndsOfExp) {
    const Kernels* of = kernel_sets::to_test(GetParam());
    if (of == nullptr) {
        return;
    }
    EXPECT_EQ(exp(*of, 0.0F), 1.0F);
    EXPECT_EQ(exp(*of, -0.0F), 1.0F);
    EXPECT_EQ(exp(*of, INF), INF);
    EXPECT_EQ(exp(*of, -INF), 0.0F);
    EXPECT_FALSE(std::signbit(exp(*of, -INF)));
    EXPECT_TRUE(std::isnan(exp(*of, NAN)));
    EXPECT_TRUE(std::isnan(exp(*of, -NAN)));
    // ln of the smallest number is -103.28; half of it rounds to 0.
    EXPECT_EQ(exp(*of, -103.0F), 0x1p-149F);
    EXPECT_EQ(exp(*of, -104.0F), 0.0F);
    // ln of the largest is 88.7228.
    EXPECT_LT(exp(*of, 88.72F), INF);
    EXPECT_EQ(exp(*of, 88.73F), INF);
}

TEST_P(EachMathSet, KnowsTheEndsOfErf) {
    const Kernels* of = kernel_sets::to_test(GetParam());
    if (of == nullptr) {
        return;
    }
    EXPECT_EQ(erf(*of, 0.0F), 0.0F);
    EXPECT_FALSE(std::signbit(erf(*of, 0.0F)));
    EXPECT_TRUE(std::signbit(erf(*of, -0.0F)));
    EXPECT_EQ(erf(*of, INF), 1.0F);
    EXPECT_EQ(erf(*of, -INF), -1.0F);
    EXPECT_EQ(erf(*of, 4.0F), 1.0F);
    EXPECT_EQ(erf(*of, -1e30F), -1.0F);
    EXPECT_TRUE(std::isnan(erf(*of, NAN)));
    EXPECT_TRUE(std::isnan(erf(*of, -NAN)));
}

TEST_P(EachMathSet, HasAnOddErfBetweenMinusOneAndOne) {
    const Kernels* of = kernel_sets::to_test(GetParam());
    if (of == nullptr) {
        return;
    }
    std::vector<float> negated(BLOCK), positive(BLOCK), negative(BLOCK);
    for_patterns(0, 0x7f800000U, 4001, [&](const float* x, std::size_t count) {
        std::transform(x, x + count, negated.begin(), [](float value) { return -value; });
        of->erf(x, positive.data(), count);
        of->erf(negated.data(), negative.data(), count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(positive[i], -negative[i]) << x[i];
            ASSERT_GE(positive[i], 0.0F) << x[i];
            ASSERT_LE(positive[i], 1.0F) << x[i];
        }
    });
}

// Steps back are no larger than the bound allows: two values within `bound` of a function that
// never falls are at most twice that out of order.
TEST_P(EachMathSet, NeverFallsByMoreThanItsBound) {
    const Kernels* of = kernel_sets::to_test(GetParam());
    if (of == nullptr) {
        return;
    }
    for (const Bounded& function : BOUNDS) {
        std::vector<float> results(BLOCK);
        float highest = 0;
        for_patterns(0, 0x42b20000U, 997, [&](const float* x, std::size_t count) {
            (of->*function.function)(x, results.data(), count);
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_LE(rank(highest) - rank(results[i]), 2 * function.bound)
                    << function.name << " at " << x[i];
                highest = std::max(highest, results[i]);
            }
        });
    }
}

// Arrays of every length, of which nothing beyond the end is written.
TEST_P(EachMathSet, TakesAnyNumberOfValues) {
    const Kernels* of = kernel_sets::to_test(GetParam());
    for (std::size_t count = 0; of != nullptr && count < 70; ++count) {
        std::vector<float> x(count), results(count + 1, 7.0F);
        for (std::size_t i = 0; i < count; ++i) {
            x[i] = static_cast<float>(i) / 16 - 2;
        }
        of->exp(x.data(), results.data(), count);
        EXPECT_EQ(results[count], 7.0F);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(results[i], exp(*of, x[i]));
        }
        of->erf(x.data(), results.data(), count);
        EXPECT_EQ(results[count], 7.0F);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(results[i], erf(*of, x[i]));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, EachMathSet, testing::ValuesIn(kernel_sets::all_sets()),
                         [](const auto& tested) { return tested.param; });
