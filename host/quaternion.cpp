#include <host/quaternion.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace host {

namespace {

Quaternion blend(const Quaternion& a, double of_a, const Quaternion& b, double of_b) {
    Quaternion q{};
    for (std::size_t i = 0; i < q.size(); ++i) {
        q[i] = a[i] * of_a + b[i] * of_b;
    }
    return q;
}

double dot(const Quaternion& a, const Quaternion& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

}  // namespace

Quaternion normalized(const Quaternion& q) {
    const double length = std::sqrt(dot(q, q));
    return length > 0.0 ? blend(q, 1.0 / length, {}, 0.0) : Quaternion{1.0, 0.0, 0.0, 0.0};
}

Quaternion quaternion_of(const Matrix& m) {
    // From the largest of the four elements, so that the division by it loses nothing.
    const double trace = m[0] + m[5] + m[10];
    const std::array<double, 4> sizes = {trace, m[0], m[5], m[10]};
    const auto largest = std::max_element(sizes.begin(), sizes.end()) - sizes.begin();
    Quaternion q{};
    switch (largest) {
        case 0:
            q = {1.0 + trace, m[6] - m[9], m[8] - m[2], m[1] - m[4]};
            break;
        case 1:
            q = {m[6] - m[9], 1.0 + m[0] - m[5] - m[10], m[1] + m[4], m[8] + m[2]};
            break;
        case 2:
            q = {m[8] - m[2], m[1] + m[4], 1.0 + m[5] - m[0] - m[10], m[6] + m[9]};
            break;
        default:
            q = {m[1] - m[4], m[8] + m[2], m[6] + m[9], 1.0 + m[10] - m[0] - m[5]};
            break;
    }
    return normalized(q);
}

Matrix matrix_of(const Quaternion& turn, const std::array<double, 3>& position) {
    const auto [w, x, y, z] = turn;
    return {1.0 - 2.0 * (y * y + z * z),
            2.0 * (x * y + w * z),
            2.0 * (x * z - w * y),
            0.0,  //
            2.0 * (x * y - w * z),
            1.0 - 2.0 * (x * x + z * z),
            2.0 * (y * z + w * x),
            0.0,  //
            2.0 * (x * z + w * y),
            2.0 * (y * z - w * x),
            1.0 - 2.0 * (x * x + y * y),
            0.0,  //
            position[0],
            position[1],
            position[2],
            1.0};
}

Quaternion slerp(const Quaternion& a, const Quaternion& b, double t) {
    const double sign = dot(a, b) < 0.0 ? -1.0 : 1.0;
    // The angle from the chord, as its cosine cannot tell small angles apart.
    const Quaternion chord = blend(b, sign, a, -1.0);
    const double angle = 2.0 * std::asin(std::min(1.0, std::sqrt(dot(chord, chord)) / 2.0));
    const double sine = std::sin(angle);
    if (sine < 1e-9) {  // the arc is as good as straight
        return normalized(blend(a, 1.0 - t, b, sign * t));
    }
    return normalized(
        blend(a, std::sin((1.0 - t) * angle) / sine, b, sign * std::sin(t * angle) / sine));
}

}  // namespace host
