// Matrices of random numbers, judged by other formulations in higher precision.
#include <base/newmatrix.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

constexpr int kRuns = 2000;
constexpr double kPi = 3.14159265358979323846;

class Random {
public:
    explicit Random(unsigned int seed) : engine_(seed) {}
    double between(double lo, double hi) {
        return std::uniform_real_distribution<double>(lo, hi)(engine_);
    }
    template <class T>
    Matrix4<T> matrix() {
        Matrix4<T> m;
        for (int i = 0; i < 16; ++i) {
            m(i / 4, i % 4) = static_cast<T>(between(-1, 1));
        }
        return m;
    }
    DblMatrix4 affine() {
        DblMatrix4 m = matrix<double>();
        for (int r = 0; r < 4; ++r) {
            m(r, 3) = r == 3 ? 1 : 0;
        }
        return m;
    }

private:
    std::mt19937 engine_;
};

// The largest distance of a x b from the identity.
template <class T>
long double distance_from_identity(const Matrix4<T>& a, const Matrix4<T>& b) {
    long double worst = 0;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            long double sum = r == c ? -1 : 0;
            for (int k = 0; k < 4; ++k) {
                sum += static_cast<long double>(a(r, k)) * b(k, c);
            }
            worst = std::fmax(worst, std::fabs(sum));
        }
    }
    return worst;
}

// One turn about an axis: the two axes after it in the circle x, y, z turn towards each other.
DblMatrix4 turn(int axis, double angle) {
    DblMatrix4 m(1);
    const int from = (axis + 1) % 3;
    const int to = (axis + 2) % 3;
    m(from, from) = std::cos(angle);
    m(from, to) = std::sin(angle);
    m(to, from) = -std::sin(angle);
    m(to, to) = std::cos(angle);
    return m;
}

}  // namespace

TEST(MatrixProperty, TheInverseUndoesTheMatrixFromBothSides) {
    // Cofactors are below 6; with a determinant above 0.1 an element of the inverse is below 60 and
    // off by less than 60 x (192 roundings / 0.1); the product sums four of them.
    const double tolerance = 4 * 60 * (24 * 8 * 0x1p-53 / 0.1) * 2;
    Random random(2);
    int judged = 0;
    for (int run = 0; run < kRuns; ++run) {
        const DblMatrix4 m = random.matrix<double>();
        if (std::fabs(m.determinant()) > 0.1) {
            const DblMatrix4 inverse = m.inverse();
            ASSERT_LE(distance_from_identity(m, inverse), tolerance);
            ASSERT_LE(distance_from_identity(inverse, m), tolerance);
            ++judged;
        }
    }
    EXPECT_GT(judged, kRuns / 2);
}

TEST(MatrixProperty, TheInverseOfAnAffineMatrixHasItsLastColumnExactly) {
    Random random(3);
    for (int run = 0; run < kRuns; ++run) {
        const DblMatrix4 m = random.affine();
        if (std::fabs(m.determinant()) < 1e-9) {
            continue;
        }
        const DblMatrix4 inverse = m.inverse();
        for (int r = 0; r < 3; ++r) {
            ASSERT_EQ(inverse(r, 3), 0.0);
            ASSERT_FALSE(std::signbit(inverse(r, 3)));
        }
        ASSERT_EQ(inverse(3, 3), 1.0);
        if (std::fabs(m.determinant()) > 0.1) {
            ASSERT_LE(distance_from_identity(m, inverse), 1e-10);
        }
    }
}

TEST(MatrixProperty, AProductIsOneTransformAfterTheOther) {
    Random random(4);
    for (int run = 0; run < kRuns; ++run) {
        const DblMatrix4 a = random.matrix<double>();
        const DblMatrix4 b = random.matrix<double>();
        const VectorN<double, 4> v(random.between(-1, 1), random.between(-1, 1),
                                   random.between(-1, 1), random.between(-1, 1));
        VectorN<double, 4> at_once;
        transform(a * b, v, at_once);
        VectorN<double, 4> in_turn;
        transform(a, v, in_turn);
        transform(b, in_turn);
        for (int i = 0; i < 4; ++i) {
            // 16 products, at most 8 roundings each, on both sides.
            ASSERT_NEAR(at_once[i], in_turn[i], 2 * 16 * 8 * 0x1p-53);
        }
    }
}

TEST(MatrixProperty, PerspectiveScalesByDistanceOverDepth) {
    Random random(5);
    for (int run = 0; run < kRuns; ++run) {
        const double d = random.between(0.1, 100);
        const double near = random.between(0.01, 10);
        const double far = run % 2 == 0 ? 0 : near * random.between(2, 1000);
        const double x = random.between(-100, 100);
        const double y = random.between(-100, 100);
        const double z = random.between(near, 1000);
        VectorN<double, 4> image;
        transform(DblMatrix4::perspective(d, near, far), VectorN<double, 4>(x, y, z, 1), image);
        const VectorN<double, 3> p = hpoint_to_point(image);
        const double depth = far > 0 ? far * (z - near) / (z * (far - near)) : 1 - near / z;
        ASSERT_NEAR(p[0], x * d / z, 1e-14 * std::fabs(x * d / z));
        ASSERT_NEAR(p[1], y * d / z, 1e-14 * std::fabs(y * d / z));
        ASSERT_NEAR(p[2], depth, 1e-14);
    }
}

TEST(MatrixProperty, EulerAnglesAreRollThenPitchThenYaw) {
    Random random(6);
    for (int run = 0; run < kRuns; ++run) {
        const double a[3] = {random.between(-kPi, kPi), random.between(-1.57, 1.57),
                             random.between(-kPi, kPi)};
        const DblMatrix4 m = DblMatrix4::from_euler_angles(a);
        const DblMatrix4 turns = turn(2, a[2]) * turn(0, a[1]) * turn(1, a[0]);
        for (int i = 0; i < 16; ++i) {
            ASSERT_NEAR(m(i / 4, i % 4), turns(i / 4, i % 4), 1e-15);
        }
        // The arc sine loses digits towards 90 degrees: at 1.57 its slope is 1256.
        const VectorN<double, 3> back = m.orthonormal_to_euler();
        ASSERT_NEAR(back[0], a[0], 1e-12);
        ASSERT_NEAR(back[1], a[1], 1e-12);
        ASSERT_NEAR(back[2], a[2], 1e-12);
    }
}

TEST(MatrixProperty, DecomposeFindsWhatTheMatrixIsMadeOf) {
    Random random(7);
    for (int run = 0; run < kRuns; ++run) {
        const double a[3] = {random.between(-3, 3), random.between(-1.5, 1.5),
                             random.between(-3, 3)};
        const double mirror = run % 2 == 0 ? 1 : -1;
        const double s[3] = {mirror * random.between(0.1, 10), random.between(0.1, 10),
                             random.between(0.1, 10)};
        const double t[3] = {random.between(-9, 9), random.between(-9, 9), random.between(-9, 9)};
        const DblMatrix4 scaling(s[0], 0, 0, 0, 0, s[1], 0, 0, 0, 0, s[2], 0, 0, 0, 0, 1);
        const DblMatrix4 shift(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, t[0], t[1], t[2], 1);
        VectorN<double, 3> translation;
        VectorN<double, 3> rotation;
        VectorN<double, 3> scale;
        (scaling * DblMatrix4::from_euler_angles(a) * shift)
            .decompose_lw(translation, rotation, scale);
        for (int i = 0; i < 3; ++i) {
            ASSERT_NEAR(translation[i], t[i], 1e-12);
            ASSERT_NEAR(rotation[i], a[i], 1e-12);
            ASSERT_NEAR(scale[i], s[i], 1e-12);
        }
    }
}
