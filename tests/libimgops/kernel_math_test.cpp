// The kernels' exponential and error function: their ends, their shape, and their error where it
// matters; `every_argument_test.cpp` goes through all arguments. And how well they know directions.
#include <iostream>

#include "kernel_bounds.h"
#include "support/random_numbers.h"

namespace {

using namespace kernel_bounds;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Bits of the arguments' ends and of numbers that matter between.
constexpr float kLandmarks[] = {
    0,    1e-45F, 1.1754944e-38F, 1e-30F, 0x1p-25F, 0x1p-13F, 0.25F, 0.5F,    0.75F,
    1,    1.25F,  1.75F,          2.25F,  2.75F,    3.25F,    3.5F,  3.75F,   3.92F,
    4,    10,     16.6355F,       50,     87.33F,   88.7228F, 89,    103.97F, 105,
    1e4F, 1e10F,  3.4028235e38F};

}  // namespace

TEST(Bounds, HoldAroundLandmarks) {
    for (const Bounded& of : kBounds) {
        for (const float landmark : kLandmarks) {
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

class EachMathSet : public kernel_sets::EachSet {
protected:
    float exp(float x) const {
        set->exp(&x, &x, 1);
        return x;
    }
    float library_erf(float x) const {
        set->library_erf(&x, &x, 1);
        return x;
    }
    float erf(float x) const {
        set->erf(&x, &x, 1);
        return x;
    }
};

TEST_P(EachMathSet, KnowsTheEndsOfExp) {
    EXPECT_EQ(exp(0.0F), 1.0F);
    EXPECT_EQ(exp(-0.0F), 1.0F);
    EXPECT_EQ(exp(-kInfinity), 0.0F);
    EXPECT_FALSE(std::signbit(exp(-kInfinity)));
    // ln of the smallest number is -103.28; half of it rounds to 0.
    EXPECT_EQ(exp(-103.0F), 0x1p-149F);
    EXPECT_EQ(exp(-104.0F), 0.0F);
}

TEST_P(EachMathSet, KnowsTheEndsOfTheLibrarysErf) {
    for (const float sign : {1.0F, -1.0F}) {
        EXPECT_EQ(library_erf(sign * 0.0F), 0.0F);
        EXPECT_EQ(std::signbit(library_erf(sign * 0.0F)), sign < 0);
        // Rounded to single precision erf is 1 from 3.92 on.
        for (const float x : {4.0F, 5.0F, 6.0F, 1e10F, 3e38F, kInfinity}) {
            EXPECT_EQ(library_erf(sign * x), sign) << x;
        }
        EXPECT_TRUE(std::isnan(library_erf(sign * std::numeric_limits<float>::quiet_NaN())));
        // Where one piece ends and the next begins.
        for (const float x : {0.84375F, 1.25F, 1.75F, 2.25F, 2.75F, 2.857143F, 3.25F, 3.75F}) {
            for (const float at : {std::nextafter(x, 0.0F), x, std::nextafter(x, 9.0F)}) {
                EXPECT_NEAR(library_erf(sign * at), sign * std::erf(at), 0x1p-24) << at;
            }
        }
    }
}

// Evenly over what the pixels of a slow star meet.
TEST_P(EachMathSet, HasNearlyAllBitsOfTheLibrarysErf) {
    int same = 0;
    int all = 0;
    for (float x = -4; x < 4; x += 1e-4F) {
        ++all;
        same += library_erf(x) == std::erf(x) ? 1 : 0;
    }
    std::cout << set->name << ": " << same << " of " << all << " are the C library's to the bit\n";
    EXPECT_GT(same, 0.95 * all);
}

TEST_P(EachMathSet, KnowsTheEndsOfErf) {
    EXPECT_EQ(erf(0.0F), 0.0F);
    EXPECT_FALSE(std::signbit(erf(0.0F)));
    EXPECT_TRUE(std::signbit(erf(-0.0F)));
    EXPECT_EQ(erf(kInfinity), 1.0F);
    EXPECT_EQ(erf(-kInfinity), -1.0F);
    EXPECT_EQ(erf(4.0F), 1.0F);
    EXPECT_EQ(erf(-1e30F), -1.0F);
    EXPECT_TRUE(std::isnan(erf(NAN)));
    EXPECT_TRUE(std::isnan(erf(-NAN)));
}

TEST_P(EachMathSet, HasAnOddErfBetweenMinusOneAndOne) {
    std::vector<float> negated(kBlock), positive(kBlock), negative(kBlock);
    for_patterns(0, 0x7f800000U, 4001, [&](const float* x, std::size_t count) {
        std::transform(x, x + count, negated.begin(), [](float value) { return -value; });
        set->erf(x, positive.data(), count);
        set->erf(negated.data(), negative.data(), count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(positive[i], -negative[i]) << x[i];
            ASSERT_GE(positive[i], 0.0F) << x[i];
            ASSERT_LE(positive[i], 1.0F) << x[i];
        }
    });
}

// Arrays of every length, of which nothing beyond the end is written.
TEST_P(EachMathSet, TakesAnyNumberOfValues) {
    for (std::size_t count = 0; count < 70; ++count) {
        for (const Bounded& of : kBounds) {
            std::vector<float> x(count), results(count + 1, 7.0F);
            for (std::size_t i = 0; i < count; ++i) {
                x[i] = static_cast<float>(i) / 16 - 5;
            }
            (set->*of.function)(x.data(), results.data(), count);
            EXPECT_EQ(results[count], 7.0F) << of.name;
            for (std::size_t i = 0; i < count; ++i) {
                EXPECT_EQ(results[i], &of == kBounds ? exp(x[i]) : erf(x[i])) << of.name;
            }
        }
    }
}

// --- directions -------------------------------------------------------------------------------

namespace {

using star_kernels::Plane;

/// Angles and weight of a star.
struct Place {
    float lon, lat, weight;
};

/// Whether `outside` has the star on the plane's far side, by more than its tolerances.
bool is_beyond(const Kernels& of, const Plane& plane, const Place& at) {
    // What is behind the camera is outside; its other planes are nowhere.
    constexpr Plane kNowhere = {0, 0, 0, 0, kInfinity, 0};
    const Plane planes[star_kernels::kPlanes] = {plane, kNowhere, kNowhere, kNowhere, kNowhere};
    static float lon[star_kernels::kStarsAtOnce];
    static float lat[star_kernels::kStarsAtOnce];
    static float weight[star_kernels::kStarsAtOnce];
    static unsigned char found[star_kernels::kStarsAtOnce];
    lon[0] = at.lon;
    lat[0] = at.lat;
    weight[0] = at.weight;
    of.outside(lon, lat, weight, 1, planes, 1, found);
    return found[0] != 0;
}

/// Whether the kernels know the star's side of the plane, whose tolerances are set here, to within
/// `bound`: beyond with that much taken off, not beyond with that much more.
bool is_known(const Kernels& of, Plane plane, const Place& at, double bound) {
    const double lon = static_cast<double>(at.lon), lat = static_cast<double>(at.lat);
    const double side = static_cast<double>(plane.nx) * std::cos(lat) * std::cos(lon) +
                        static_cast<double>(plane.ny) * std::sin(lat) +
                        static_cast<double>(plane.nz) * std::cos(lat) * std::sin(lon) +
                        static_cast<double>(plane.nw) * static_cast<double>(at.weight);
    plane.tolerance_w = 0;
    plane.tolerance = std::nextafter(static_cast<float>(side - bound), -kInfinity);
    const bool is_above_less = is_beyond(of, plane, at);
    plane.tolerance = std::nextafter(static_cast<float>(side + bound), kInfinity);
    return is_above_less && !is_beyond(of, plane, at);
}

/// Stars at larger angles, in radians, are left in.
constexpr float kLargestAngle = 10000;

}  // namespace

// One coordinate at a time, the other angle 0: the bound of both functions of both angles.
TEST_P(EachMathSet, KnowsSinesAndCosinesOfAllAnglesTo5e7) {
    const auto expect_known = [&](float angle) {
        const Plane x = {1, 0, 0, 0, 0, 0}, y = {0, 1, 0, 0, 0, 0}, z = {0, 0, 1, 0, 0, 0};
        ASSERT_TRUE(is_known(*set, x, {angle, 0, 0}, 5e-7)) << "cosine of longitude " << angle;
        ASSERT_TRUE(is_known(*set, z, {angle, 0, 0}, 5e-7)) << "sine of longitude " << angle;
        ASSERT_TRUE(is_known(*set, x, {0, angle, 0}, 5e-7)) << "cosine of latitude " << angle;
        ASSERT_TRUE(is_known(*set, y, {0, angle, 0}, 5e-7)) << "sine of latitude " << angle;
    };
    const std::uint32_t last = std::bit_cast<std::uint32_t>(kLargestAngle) - 1;
    for_patterns(0, last, 40009, [&](const float* x, std::size_t count) {
        for (std::size_t i = 0; i < count && !HasFatalFailure(); ++i) {
            expect_known(x[i]);
            expect_known(-x[i]);
        }
    });
    // Where the series are at their ends, and where they meet.
    for (int eighth = 0; eighth < 12732 && !HasFatalFailure(); ++eighth) {
        const auto middle = static_cast<float>(eighth * 0.78539816339744831);
        expect_known(middle);
        expect_known(std::nextafter(middle, kInfinity));
        expect_known(std::nextafter(middle, -kInfinity));
    }
    expect_known(std::bit_cast<float>(last));
}

// The sum of errors that the tolerance is argued with comes to a third of it.
TEST_P(EachMathSet, KnowsSidesOfPlanesToAThirdOfTheTolerance) {
    constexpr double kBound = static_cast<double>(star_kernels::kDirectionTolerance) / 3;
    RandomNumbers random(1);
    for (int i = 0; i < 100000 && !HasFatalFailure(); ++i) {
        Plane plane{};
        for (float* n : {&plane.nx, &plane.ny, &plane.nz}) {
            *n = static_cast<float>(random.between(-1, 1));
        }
        const double most = random.chance(0.5) ? 7 : static_cast<double>(kLargestAngle);
        Place at{static_cast<float>(random.between(-most, most)),
                 static_cast<float>(random.between(-most, most)), 0};
        if (random.chance(0.5)) {
            plane.nw = static_cast<float>(random.on_scale(1e-3, 1e3)) * (i % 4 < 2 ? 1.0F : -1.0F);
            at.weight = static_cast<float>(random.on_scale(1e-3, 1e3));
        }
        const float size = std::fabs(plane.nx) + std::fabs(plane.ny) + std::fabs(plane.nz) +
                           std::fabs(plane.nw) * at.weight;
        ASSERT_TRUE(is_known(*set, plane, at, static_cast<double>(size) * kBound))
            << at.lon << " " << at.lat << " " << at.weight << ", plane " << plane.nx << " "
            << plane.ny << " " << plane.nz << " " << plane.nw;
    }
}

TEST_P(EachMathSet, LeavesInWhateverHasLargerAngles) {
    const Plane everything = {0, 0, 0, 0, -1, 0};
    EXPECT_TRUE(is_beyond(*set, everything, {std::nextafter(kLargestAngle, 0.0F), 0, 0}));
    for (const float angle : {kLargestAngle, 1e5F, 1e30F, kInfinity, static_cast<float>(NAN)}) {
        EXPECT_FALSE(is_beyond(*set, everything, {angle, 0, 0})) << angle;
        EXPECT_FALSE(is_beyond(*set, everything, {-angle, 0, 0})) << angle;
        EXPECT_FALSE(is_beyond(*set, everything, {0, angle, 0})) << angle;
        EXPECT_FALSE(is_beyond(*set, everything, {0, -angle, 0})) << angle;
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, EachMathSet, testing::ValuesIn(kernel_sets::all_sets()),
                         [](const auto& tested) { return tested.param; });
