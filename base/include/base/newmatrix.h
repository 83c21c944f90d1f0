// Small fixed-size linear algebra: vectors, 4x4 matrices, intervals and boxes, a few scalar
// functions.
//
// Conventions, here and everywhere else:
//
//     Points are row vectors multiplied on the left:  v' = v x M.
//     Matrices are stored row by row; in A x B, A acts first; a translation is the last row:
//
//         M = | m00 m01 m02 m03 |   <- where the x axis goes
//             | m10 m11 m12 m13 |   <- where the y axis goes
//             | m20 m21 m22 m23 |   <- where the z axis goes
//             | m30 m31 m32 m33 |   <- where the origin goes
//
//     The camera looks along +z, with y up; pixel centres lie at integer coordinates.
//
// Everything is a plain value; nothing allocates; a division by zero is not trapped.
#pragma once

#include <cmath>

/// `N` numbers. The default constructor leaves them unset.
template <class T, int N>
class VectorN {
public:
    VectorN() = default;
    VectorN(T x, T y) requires(N == 2) : elements_{x, y} {}
    VectorN(T x, T y, T z) requires(N == 3) : elements_{x, y, z} {}
    VectorN(T x, T y, T z, T w) requires(N == 4) : elements_{x, y, z, w} {}

    T& operator[](int index) { return elements_[index]; }
    const T& operator[](int index) const { return elements_[index]; }

    /// Divides every element by the length unless that is 0 (a length that is not a number counts
    /// as not 0), and returns the length found.
    T normalize();

private:
    T elements_[N];
};

/// A position on the screen, in pixels.
using Vector2 = VectorN<float, 2>;
/// A linear colour: red, green, blue.
using Color3 = VectorN<float, 3>;

template <class T>
T Sqrt(T x) {
    return std::sqrt(x);
}
template <class T>
T Fabs(T x) {
    return std::fabs(x);
}
/// Writes sin `x` to `s` and cos `x` to `c`; `x` in radians.
template <class T>
void Sincos(T x, T* s, T* c) {
    *s = std::sin(x);
    *c = std::cos(x);
}

inline VectorN<float, 2> operator-(const VectorN<float, 2>& a, const VectorN<float, 2>& b) {
    return {a[0] - b[0], a[1] - b[1]};
}

template <class T, int N>
T dot(const VectorN<T, N>& a, const VectorN<T, N>& b) {
    T sum = a[0] * b[0];
    for (int i = 1; i < N; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

template <class T, int N>
T lengthSquared(const VectorN<T, N>& v) {
    return dot(v, v);
}

template <class T, int N>
T length(const VectorN<T, N>& v) {
    return Sqrt(lengthSquared(v));
}

template <class T, int N>
T VectorN<T, N>::normalize() {
    const T found = length(*this);
    // Written so that a length that is not a number divides too.
    if (!(found == T(0))) {
        for (T& element : elements_) {
            element /= found;
        }
    }
    return found;
}

/// A 4x4 matrix of `float` or `double`; see the conventions at the top of this file. The default
/// constructor leaves the elements unset.
template <class T>
class Matrix4 {
public:
    Matrix4() = default;
    /// `s` on the diagonal, 0 elsewhere.
    explicit Matrix4(T s);
    /// The elements in storage order, row 0 first.
    Matrix4(T m00, T m01, T m02, T m03, T m10, T m11, T m12, T m13, T m20, T m21, T m22, T m23,
            T m30, T m31, T m32, T m33);

    /// Element in row `r` and column `c`, each 0 to 3.
    T& operator()(int r, int c) { return elements_[4 * r + c]; }
    const T& operator()(int r, int c) const { return elements_[4 * r + c]; }

    /// The one identity matrix, the same object at every call.
    static const Matrix4& the_identity();

    /// Pinhole projection with the image plane at distance `d`, the near plane at `near` and the
    /// far plane at `far` (none when `far` <= 0). A point (x, y, z, 1) becomes, after division by
    /// the last element, (x d / z, y d / z, depth), with depth 0 at `near` and 1 at `far`; without
    /// a far plane depth = (z - near) / z. A negative `d` gives the identity; `d` = 0 is not
    /// guarded.
    static Matrix4 perspective(T d, T near, T far);

    /// Roll a[2] about z, then pitch a[1] about x, then yaw a[0] about y; angles in radians.
    static Matrix4 from_euler_angles(const T a[3]);

    T determinant() const;
    /// Adjugate over determinant. Warns on standard error when the determinant is below 1e-10 and
    /// carries on regardless: a singular matrix yields infinities or NaNs, never an error. The
    /// inverse of an affine matrix (last column 0, 0, 0, 1) has exactly that last column again.
    Matrix4 inverse() const;
    void invert();

    // The next two exist for double only.

    /// The angles (yaw, pitch, roll, in radians) that `from_euler_angles` makes this rotation of,
    /// for |pitch| below 90 degrees.
    VectorN<double, 3> orthonormal_to_euler() const;
    /// Splits an affine matrix into `translation` (the last row), `rotation` (yaw, pitch, roll, as
    /// `orthonormal_to_euler`) and `scale` (lengths of the first three rows; a mirrored matrix has
    /// a negative first one): the matrix is scale, then rotation, then translation. Throws
    /// `AssertXception` and writes nothing unless the matrix is affine with orthogonal rows, each
    /// within 0.0001.
    void decompose_lw(VectorN<double, 3>& translation, VectorN<double, 3>& rotation,
                      VectorN<double, 3>& scale) const;

private:
    T elements_[16];
};

using DblMatrix4 = Matrix4<double>;

/// A x B: A acts first on a row vector.
Matrix4<double> operator*(const Matrix4<double>& a, const Matrix4<double>& b);
/// out = v x M; `out` may be `v`.
void transform(const Matrix4<double>& m, const VectorN<double, 4>& v, VectorN<double, 4>& out);
/// v = v x M.
void transform(const Matrix4<double>& m, VectorN<double, 4>& v);
/// (x, y, z) times 1 / w; a w of 0 yields infinities.
VectorN<double, 3> hpoint_to_point(const VectorN<double, 4>& h);

/// The end of an empty interval: 2^127, deliberately not the IEEE infinity, so that arithmetic on
/// an empty interval yields numbers.
inline constexpr float infinity = 0x1p127F;

// The tie rules matter for what is not a number: with a NaN on either side both return `b`.
inline float max(float a, float b) { return a >= b ? a : b; }
inline float min(float a, float b) { return b > a ? a : b; }
inline double max(float a, double b) {
    return static_cast<double>(a) >= b ? static_cast<double>(a) : b;
}

/// `lo` below `lo`, `hi` from `hi` on, else `x`.
inline int clamp(int x, int lo, int hi) { return x < lo ? lo : (x >= hi ? hi : x); }

/// Degrees to radians in single precision.
inline float deg_to_rad(float x) { return 0.017453292F * x; }

/// A closed interval; empty (min above max) by default, so that the first `include` sets both ends.
template <class T>
class Bound {
public:
    Bound() = default;
    Bound(T min, T max) : min_(min), max_(max) {}

    T min() const { return min_; }
    T max() const { return max_; }

    void include(T x) {
        min_ = ::min(min_, x);
        max_ = ::max(max_, x);
    }
    /// Moves both ends outward by `e`.
    void expand(T e) {
        min_ = min_ - e;
        max_ = max_ + e;
    }

private:
    T min_ = infinity;
    T max_ = -infinity;
};

/// An axis-aligned box: one interval an axis.
template <class T, int N>
class BoundN {
public:
    BoundN() = default;
    /// The box that holds just `p`.
    explicit BoundN(const VectorN<T, N>& p) {
        for (int i = 0; i < N; ++i) {
            axes_[i] = Bound<T>(p[i], p[i]);
        }
    }

    const Bound<T>& operator[](int axis) const { return axes_[axis]; }
    Bound<T>& operator[](int axis) { return axes_[axis]; }

    void include(const VectorN<T, N>& p) {
        for (int i = 0; i < N; ++i) {
            axes_[i].include(p[i]);
        }
    }
    /// Moves every side outward by the element of `v` for its axis.
    void expand(const VectorN<T, N>& v) {
        for (int i = 0; i < N; ++i) {
            axes_[i].expand(v[i]);
        }
    }

private:
    Bound<T> axes_[N];
};

template <>
VectorN<double, 3> Matrix4<double>::orthonormal_to_euler() const;
template <>
void Matrix4<double>::decompose_lw(VectorN<double, 3>& translation, VectorN<double, 3>& rotation,
                                   VectorN<double, 3>& scale) const;

extern template class Matrix4<float>;
extern template class Matrix4<double>;
