// Turns from angles and back.
#include "rotation_order.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>

#include "one_move.h"
#include "tools/failure_of.h"

namespace {

using lumivar::RotationOrder;

constexpr std::array<const char*, 6> kOrders = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};

constexpr std::array<one_move::Vector, 3> kAxes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

/// The same by Rodrigues' formula, axis after axis.
host::Matrix one_after_the_other(const std::string& order, const std::array<double, 3>& degrees) {
    host::Matrix matrix{};
    for (std::size_t row = 0; row < 3; ++row) {
        one_move::Vector v = kAxes[row];
        for (const char letter : order) {
            const auto axis = static_cast<std::size_t>(letter - 'X');
            v = one_move::turned(v, kAxes[axis], degrees[axis]);
        }
        for (std::size_t i = 0; i < 3; ++i) {
            matrix[4 * row + i] = v[i];
        }
    }
    matrix[15] = 1.0;
    return matrix;
}

void expect_same_turn(const host::Matrix& got, const host::Matrix& want) {
    for (std::size_t i = 0; i < 16; ++i) {
        ASSERT_NEAR(got[i], want[i], 1e-14) << "element " << i;
    }
}

TEST(RotationOrder, TurnsAboutTheAxesOneAfterTheOther) {
    for (const char* order : kOrders) {
        const std::array<double, 3> degrees = {31.0, -47.0, 112.0};
        expect_same_turn(RotationOrder(order).matrix(degrees), one_after_the_other(order, degrees));
    }
}

TEST(RotationOrder, FindsTheAnglesOfATurnAlsoWhereTwoAxesFallTogether) {
    for (const char* name : kOrders) {
        const RotationOrder order(name);
        for (const double x : {-170.0, -90.0, 0.0, 45.0, 90.0 - 1e-7}) {
            for (const double y : {-90.0, 10.0, 90.0 - 1e-10}) {
                for (const double z : {-90.0, 0.0, 90.0, 135.0}) {
                    const host::Matrix turn = one_after_the_other(name, {x, y, z});
                    expect_same_turn(order.matrix(order.angles(turn, {3.0, 5.0, 700.0})), turn);
                }
            }
        }
    }
}

TEST(RotationOrder, LetsAnglesRunOn) {
    for (const char* name : kOrders) {
        const RotationOrder order(name);
        const auto first = static_cast<std::size_t>(name[0] - 'X');
        const auto middle = static_cast<std::size_t>(name[1] - 'X');
        const auto last = static_cast<std::size_t>(name[2] - 'X');
        std::array<double, 3> angles = {};
        for (double step = 0.0; step <= 100.0; ++step) {
            // Beyond a quarter turn the middle angle could be told in another way.
            std::array<double, 3> want = {};
            want[first] = 7.0 * step;
            want[middle] = 0.8 * step - 10.0;
            want[last] = -9.0 * step;
            angles = order.angles(one_after_the_other(name, want), angles);
            for (std::size_t i = 0; i < 3; ++i) {
                ASSERT_NEAR(angles[i], want[i], 1e-10) << name << " step " << step;
            }
        }
    }
}

TEST(RotationOrder, RefusesOtherNames) {
    for (const char* wrong : {"", "ZX", "ZXX", "ZXYZ", "ABC"}) {
        EXPECT_TRUE(holds(failure_of([&] { const RotationOrder order(wrong); }),
                          "there is no rotation order"));
    }
    EXPECT_NO_THROW(RotationOrder("zyx"));
}

}  // namespace
