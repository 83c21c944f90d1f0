// Turns as three angles about the axes, in any of the six orders.
#pragma once

#include <host/scene.h>

#include <array>
#include <string>

namespace lumivar {

/// The order in which a point is turned about the axes: "ZXY" turns it about z first, then x, then
/// y, each a fixed axis.
class RotationOrder {
public:
    RotationOrder() = default;  ///< ZXY
    /// One of XYZ, XZY, YXZ, YZX, ZXY, ZYX, also in small letters. Throws `UsageError`.
    explicit RotationOrder(const std::string& name);

    /// The turn, for row vectors, translation 0. `degrees` about x, y and z, whatever the order;
    /// right-handed: a positive angle about z turns x towards y.
    host::Matrix matrix(const std::array<double, 3>& degrees) const;
    /// The angles about x, y and z, in degrees, of the turn in the upper left 3x3 elements. Of all
    /// that give it those that lie nearest to `before`, so that a path's angles run on past 180.
    std::array<double, 3> angles(const host::Matrix& turn,
                                 const std::array<double, 3>& before) const;

private:
    std::array<int, 3> axes_ = {2, 0, 1};  ///< 0 is x; in the order in which they turn
};

/// `a` * `b`: for row vectors `a` acts first.
host::Matrix product(const host::Matrix& a, const host::Matrix& b);
/// With the three numbers as translation.
host::Matrix moved(host::Matrix turn, const std::array<double, 3>& translation);

}  // namespace lumivar
