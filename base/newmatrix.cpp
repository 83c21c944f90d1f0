#include <base/exceptions.h>
#include <base/newmatrix.h>

#include <cfloat>

static_assert(FLT_EVAL_METHOD == 0,
              "every operation rounds to its own type: wider intermediates would move pixels");

namespace {

// Below this the inverse is computed all the same, but its user hears of it.
constexpr double kSmallestSafeDeterminant = 1e-10;

// Tolerance of the affinity and orthogonality checks.
constexpr float EPSILON = 0.0001F;

/// Determinant of the 3x3 matrix that is left when row `r` and column `c` are struck out.
template <class T>
T minor_of(const Matrix4<T>& m, int r, int c) {
    const int r0 = r > 0 ? 0 : 1;
    const int r1 = r > 1 ? 1 : 2;
    const int r2 = r > 2 ? 2 : 3;
    const int c0 = c > 0 ? 0 : 1;
    const int c1 = c > 1 ? 1 : 2;
    const int c2 = c > 2 ? 2 : 3;
    return m(r0, c0) * (m(r1, c1) * m(r2, c2) - m(r1, c2) * m(r2, c1)) -
           m(r0, c1) * (m(r1, c0) * m(r2, c2) - m(r1, c2) * m(r2, c0)) +
           m(r0, c2) * (m(r1, c0) * m(r2, c1) - m(r1, c1) * m(r2, c0));
}

template <class T>
T cofactor_of(const Matrix4<T>& m, int r, int c) {
    return (r + c) % 2 == 0 ? minor_of(m, r, c) : -minor_of(m, r, c);
}

template <class T>
bool is_affine(const Matrix4<T>& m) {
    return m(0, 3) == T(0) && m(1, 3) == T(0) && m(2, 3) == T(0) && m(3, 3) == T(1);
}

}  // namespace

template <class T>
Matrix4<T>::Matrix4(T s) : Matrix4(s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, s) {}

template <class T>
Matrix4<T>::Matrix4(T m00, T m01, T m02, T m03, T m10, T m11, T m12, T m13, T m20, T m21, T m22,
                    T m23, T m30, T m31, T m32, T m33)
    : elements_{m00, m01, m02, m03, m10, m11, m12, m13, m20, m21, m22, m23, m30, m31, m32, m33} {}

template <class T>
const Matrix4<T>& Matrix4<T>::the_identity() {
    static const Matrix4 identity(1);
    return identity;
}

template <class T>
Matrix4<T> Matrix4<T>::perspective(T d, T near, T far) {
    if (d < T(0)) {
        return Matrix4(1);
    }
    const T a = far > T(0) ? T(1) / ((T(1) - near / far) * d) : T(1) / d;
    const T b = -near * a;
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, a, T(1) / d, 0, 0, b, 0};
}

template <class T>
Matrix4<T> Matrix4<T>::from_euler_angles(const T a[3]) {
    T s0;
    T c0;
    T s1;
    T c1;
    T s2;
    T c2;
    Sincos(a[0], &s0, &c0);
    Sincos(a[1], &s1, &c1);
    Sincos(a[2], &s2, &c2);
    return {s0 * s1 * s2 + c0 * c2,
            c1 * s2,
            c0 * s1 * s2 - s0 * c2,
            0,  //
            s0 * s1 * c2 - c0 * s2,
            c1 * c2,
            c0 * s1 * c2 + s0 * s2,
            0,  //
            s0 * c1,
            -s1,
            c0 * c1,
            0,  //
            0,
            0,
            0,
            1};
}

template <class T>
T Matrix4<T>::determinant() const {
    // Along the last column, so that an affine matrix has exactly its 3x3 determinant.
    const Matrix4& m = *this;
    return m(0, 3) * cofactor_of(m, 0, 3) + m(1, 3) * cofactor_of(m, 1, 3) +
           m(2, 3) * cofactor_of(m, 2, 3) + m(3, 3) * cofactor_of(m, 3, 3);
}

template <class T>
Matrix4<T> Matrix4<T>::inverse() const {
    const Matrix4& m = *this;
    const T det = determinant();
    if (std::fabs(static_cast<double>(det)) < kSmallestSafeDeterminant) {
        Xception::warning(__PRETTY_FUNCTION__,
                          "matrix appears to be singular; inverse may not be reliable");
    }
    const T scale = T(1) / det;
    Matrix4 result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            result(r, c) = cofactor_of(m, c, r) * scale;
        }
    }
    if (is_affine(m) && det != T(0)) {
        // The products with 0 leave zeros of either sign, and det x (1 / det) need not round to 1;
        // the sign of a star's last component decides whether it is seen, so the column is made
        // exact.
        result(0, 3) = 0;
        result(1, 3) = 0;
        result(2, 3) = 0;
        result(3, 3) = 1;
    }
    return result;
}

template <class T>
void Matrix4<T>::invert() {
    *this = inverse();
}

template <>
VectorN<double, 3> Matrix4<double>::orthonormal_to_euler() const {
    const Matrix4& m = *this;
    return {std::atan2(m(2, 0), m(2, 2)), std::asin(-m(2, 1)), std::atan2(m(0, 1), m(1, 1))};
}

template <>
void Matrix4<double>::decompose_lw(VectorN<double, 3>& translation, VectorN<double, 3>& rotation,
                                   VectorN<double, 3>& scale) const {
    const Matrix4& m = *this;
    // The conditions' texts are the messages: kept as they are spelt. They compare in single
    // precision, as the function named in them does.
    const auto fabsf = [](double x) { return std::fabs(static_cast<float>(x)); };
    // clang-format off
    XASSERT(fabsf(m(0,3)) < EPSILON && fabsf(m(1,3)) < EPSILON && fabsf(m(2,3)) < EPSILON && fabsf(m(3,3)-1) < EPSILON);
    // clang-format on
    VectorN<double, 3> lengths;
    double rs[3][3];
    for (int r = 0; r < 3; ++r) {
        const VectorN<double, 3> row(m(r, 0), m(r, 1), m(r, 2));
        lengths[r] = length(row);
        // A mirrored matrix is a rotation after its x axis is turned round.
        if (r == 0 && minor_of(m, 3, 3) < 0) {
            lengths[r] = -lengths[r];
        }
        for (int c = 0; c < 3; ++c) {
            rs[r][c] = row[c] / lengths[r];
        }
    }
    // clang-format off
    XASSERT(fabsf(rs[0][0]*rs[1][0] + rs[0][1]*rs[1][1] + rs[0][2]*rs[1][2]) < EPSILON && fabsf(rs[0][0]*rs[2][0] + rs[0][1]*rs[2][1] + rs[0][2]*rs[2][2]) < EPSILON && fabsf(rs[1][0]*rs[2][0] + rs[1][1]*rs[2][1] + rs[1][2]*rs[2][2]) < EPSILON);
    // clang-format on
    const Matrix4 pure(rs[0][0], rs[0][1], rs[0][2], 0, rs[1][0], rs[1][1], rs[1][2], 0, rs[2][0],
                       rs[2][1], rs[2][2], 0, 0, 0, 0, 1);
    translation = VectorN<double, 3>(m(3, 0), m(3, 1), m(3, 2));
    rotation = pure.orthonormal_to_euler();
    scale = lengths;
}

template class Matrix4<float>;
template class Matrix4<double>;

Matrix4<double> operator*(const Matrix4<double>& a, const Matrix4<double>& b) {
    Matrix4<double> result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            result(r, c) =
                (a(r, 0) * b(0, c) + a(r, 1) * b(1, c) + a(r, 2) * b(2, c)) + a(r, 3) * b(3, c);
        }
    }
    return result;
}

void transform(const Matrix4<double>& m, const VectorN<double, 4>& v, VectorN<double, 4>& out) {
    VectorN<double, 4> result;
    for (int c = 0; c < 4; ++c) {
        result[c] = v[0] * m(0, c) + v[1] * m(1, c) + v[2] * m(2, c) + v[3] * m(3, c);
    }
    out = result;
}

void transform(const Matrix4<double>& m, VectorN<double, 4>& v) { transform(m, v, v); }

VectorN<double, 3> hpoint_to_point(const VectorN<double, 4>& h) {
    const double k = 1.0 / h[3];
    return {h[0] * k, h[1] * k, h[2] * k};
}
