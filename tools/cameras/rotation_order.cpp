#include "rotation_order.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>

#include "failure.h"

namespace lumivar {
namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

/// The turn about one axis, for row vectors.
host::Matrix about(int axis, double radians) {
    const auto j = static_cast<std::size_t>((axis + 1) % 3);
    const auto k = static_cast<std::size_t>((axis + 2) % 3);
    host::Matrix turn = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    turn[5 * j] = turn[5 * k] = std::cos(radians);
    turn[4 * j + k] = std::sin(radians);
    turn[4 * k + j] = -turn[4 * j + k];
    return turn;
}

/// The angle, whole turns away, that is nearest to `before`.
double unwrapped(double degrees, double before) {
    return degrees + 360.0 * std::round((before - degrees) / 360.0);
}

}  // namespace

RotationOrder::RotationOrder(const std::string& name) {
    std::array<bool, 3> seen = {};
    for (std::size_t i = 0; i < name.size() && i < 3; ++i) {
        const char letter = name[i];
        axes_[i] = letter == 'x' || letter == 'X'   ? 0
                   : letter == 'y' || letter == 'Y' ? 1
                   : letter == 'z' || letter == 'Z' ? 2
                                                    : -1;
        if (axes_[i] >= 0) {
            seen[static_cast<std::size_t>(axes_[i])] = true;
        }
    }
    if (name.size() != 3 || !(seen[0] && seen[1] && seen[2])) {
        throw UsageError("there is no rotation order \"" + name +
                         "\"; give XYZ, XZY, YXZ, YZX, ZXY or ZYX, the axis that turns first "
                         "standing first");
    }
}

host::Matrix RotationOrder::matrix(const std::array<double, 3>& degrees) const {
    host::Matrix turn = about(axes_[0], degrees[static_cast<std::size_t>(axes_[0])] * kDegree);
    for (std::size_t i = 1; i < 3; ++i) {
        turn =
            product(turn, about(axes_[i], degrees[static_cast<std::size_t>(axes_[i])] * kDegree));
    }
    return turn;
}

// With i, j, k the axes in their order, M = Ri(a) Rj(b) Rk(c), and s = 1 where i, j, k follow each
// other round as x, y, z do, -1 where they do not:
//
//     M[i][k] = -s sin b      M[j][k] = s sin a cos b      M[k][k] = cos a cos b
//
// With `a` taken away, Rj(b) Rk(c) has cos c at [j][j] and -s sin c at [j][i]. Where cos b is
// almost 0, `a` and `c` turn about one axis; each is then uncertain, but because `c` is found with
// the very `a` that was chosen, together they give the turn exactly.
std::array<double, 3> RotationOrder::angles(const host::Matrix& turn,
                                            const std::array<double, 3>& before) const {
    const auto i = static_cast<std::size_t>(axes_[0]);
    const auto j = static_cast<std::size_t>(axes_[1]);
    const auto k = static_cast<std::size_t>(axes_[2]);
    const double s = j == (i + 1) % 3 ? 1.0 : -1.0;
    const double cos_b = std::hypot(turn[4 * j + k], turn[5 * k]);
    const double b = std::atan2(-s * turn[4 * i + k], cos_b) / kDegree;
    const double a =
        cos_b < 1e-12 ? before[i] : std::atan2(s * turn[4 * j + k], turn[5 * k]) / kDegree;
    const auto completed = [&](double first, double second) {
        const host::Matrix rest = product(about(axes_[0], -first * kDegree), turn);
        std::array<double, 3> degrees{};
        degrees[i] = unwrapped(first, before[i]);
        degrees[j] = unwrapped(second, before[j]);
        degrees[k] = unwrapped(std::atan2(-s * rest[4 * j + i], rest[5 * j]) / kDegree, before[k]);
        return degrees;
    };
    const auto distance = [&](const std::array<double, 3>& degrees) {
        return std::abs(degrees[0] - before[0]) + std::abs(degrees[1] - before[1]) +
               std::abs(degrees[2] - before[2]);
    };
    // The same turn has two sets of angles: (a, b, c) and (a + 180, 180 - b, c + 180).
    const std::array<double, 3> one = completed(a, b);
    const std::array<double, 3> other = completed(a + 180.0, 180.0 - b);
    return distance(one) <= distance(other) ? one : other;
}

host::Matrix product(const host::Matrix& a, const host::Matrix& b) {
    host::Matrix out{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t i = 0; i < 4; ++i) {
                out[4 * row + column] += a[4 * row + i] * b[4 * i + column];
            }
        }
    }
    return out;
}

host::Matrix moved(host::Matrix turn, const std::array<double, 3>& translation) {
    std::copy(translation.begin(), translation.end(), turn.begin() + 12);
    return turn;
}

}  // namespace lumivar
