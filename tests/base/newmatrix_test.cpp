#include <base/exceptions.h>
#include <base/newmatrix.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using Point3 = VectorN<double, 3>;
using Point4 = VectorN<double, 4>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = 3.14159265358979323846;

const DblMatrix4 kCounting(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
const DblMatrix4 kOther(2, 0, 1, -1, 3, 1, 0, 2, -2, 4, 1, 0, 1, 1, -3, 5);

template <class T>
void expect_same(const Matrix4<T>& actual, const Matrix4<T>& expected, double tolerance = 0) {
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            EXPECT_LE(std::fabs(double(actual(r, c)) - double(expected(r, c))), tolerance)
                << "row " << r << ", column " << c << ": " << actual(r, c) << ", not "
                << expected(r, c);
        }
    }
}

void expect_same(const Point4& actual, double x, double y, double z, double w) {
    EXPECT_EQ(actual[0], x);
    EXPECT_EQ(actual[1], y);
    EXPECT_EQ(actual[2], z);
    EXPECT_EQ(actual[3], w);
}

template <class T>
Matrix4<T> diagonal(T x, T y, T z, T w) {
    return {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, w};
}

// How a point on the axis at depth z appears: x, y and depth after division by w.
Point3 seen(const DblMatrix4& m, double x, double y, double z) {
    Point4 image;
    transform(m, Point4(x, y, z, 1), image);
    return hpoint_to_point(image);
}

std::string warnings_of_inverse(const DblMatrix4& m, DblMatrix4& result) {
    return output_of(stderr, [&] { result = m.inverse(); });
}

}  // namespace

static_assert(sizeof(Matrix4<double>) == 16 * sizeof(double));
static_assert(sizeof(Matrix4<float>) == 16 * sizeof(float));

TEST(Matrix4, IsStoredRowByRow) {
    int value = 0;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(kCounting(r, c), ++value);
            EXPECT_EQ(&kCounting(r, c), &kCounting(0, 0) + 4 * r + c);
        }
    }
}

TEST(Matrix4, OfOneNumberIsADiagonal) {
    expect_same(DblMatrix4(3), diagonal(3.0, 3.0, 3.0, 3.0));
    expect_same(Matrix4<float>(0.5F), diagonal(0.5F, 0.5F, 0.5F, 0.5F));
}

TEST(Matrix4, TheIdentityIsOneObject) {
    EXPECT_EQ(&DblMatrix4::the_identity(), &DblMatrix4::the_identity());
    EXPECT_EQ(&Matrix4<float>::the_identity(), &Matrix4<float>::the_identity());
    expect_same(DblMatrix4::the_identity(), diagonal(1.0, 1.0, 1.0, 1.0));
    expect_same(Matrix4<float>::the_identity(), diagonal(1.0F, 1.0F, 1.0F, 1.0F));
}

TEST(Matrix4, ProductWorkedOutByHand) {
    // Row 0: (1 2 3 4) times the columns (2 3 -2 1), (0 1 4 1), (1 0 1 -3), (-1 2 0 5).
    const DblMatrix4 product = kCounting * kOther;
    EXPECT_EQ(product(0, 0), 2 + 6 - 6 + 4);
    EXPECT_EQ(product(0, 1), 0 + 2 + 12 + 4);
    EXPECT_EQ(product(0, 2), 1 + 0 + 3 - 12);
    EXPECT_EQ(product(0, 3), -1 + 4 + 0 + 20);
    // Row 3: (13 14 15 16).
    EXPECT_EQ(product(3, 0), 26 + 42 - 30 + 16);
    EXPECT_EQ(product(3, 3), -13 + 28 + 0 + 80);
    expect_same(kCounting * DblMatrix4(1), kCounting);
    expect_same(DblMatrix4(1) * kCounting, kCounting);
}

TEST(Matrix4, ProductSumsThreeTermsBeforeTheFourth) {
    // 1e16 + 1 rounds to 1e16, so ((1e16 + 1) - 1e16) + 1 is 1; in pairs the sum would be 0.
    const DblMatrix4 a(1e16, 1, -1e16, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const DblMatrix4 ones(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1);
    EXPECT_EQ((a * ones)(0, 0), 1.0);
}

TEST(Matrix4, TransformOfTheOriginIsTheLastRow) {
    Point4 out;
    transform(kCounting, Point4(0, 0, 0, 1), out);
    expect_same(out, 13, 14, 15, 16);
}

TEST(Matrix4, TransformMultipliesRowsFromTheLeft) {
    Point4 out;
    transform(kCounting, Point4(1, -2, 3, 0.5), out);
    // 1 - 10 + 27 + 6.5 and one more of (1 - 2 + 3 + 0.5) per column.
    expect_same(out, 24.5, 27, 29.5, 32);
}

TEST(Matrix4, TransformWorksInPlace) {
    Point4 v(1, -2, 3, 0.5);
    transform(kCounting, v);
    expect_same(v, 24.5, 27, 29.5, 32);
    Point4 same(1, -2, 3, 0.5);
    transform(kCounting, same, same);
    expect_same(same, 24.5, 27, 29.5, 32);
}

TEST(Matrix4, AProductActsFromTheLeftToTheRight) {
    const Point4 v(1, -2, 3, 4);
    Point4 at_once;
    transform(kCounting * kOther, v, at_once);
    Point4 in_turn;
    transform(kCounting, v, in_turn);
    transform(kOther, in_turn);
    // Whole numbers, so exactly.
    expect_same(at_once, in_turn[0], in_turn[1], in_turn[2], in_turn[3]);
}

TEST(HPoint, IsDividedThroughItsReciprocal) {
    const Point3 p = hpoint_to_point(Point4(2, -4, 6, 2));
    EXPECT_EQ(p[0], 1.0);
    EXPECT_EQ(p[1], -2.0);
    EXPECT_EQ(p[2], 3.0);
    // 49 x (1 / 49) is the number below 1, while 49 / 49 is 1.
    EXPECT_EQ(hpoint_to_point(Point4(49, 0, 0, 49))[0], std::nextafter(1.0, 0.0));
}

TEST(HPoint, WithAWOfZeroIsInfinite) {
    const Point3 p = hpoint_to_point(Point4(1, -1, 0, 0));
    EXPECT_EQ(p[0], kInf);
    EXPECT_EQ(p[1], -kInf);
    EXPECT_TRUE(std::isnan(p[2]));
}

TEST(Determinant, OfKnownMatrices) {
    EXPECT_EQ(DblMatrix4(1).determinant(), 1.0);
    EXPECT_EQ(diagonal(2.0, 3.0, 5.0, 7.0).determinant(), 210.0);
    EXPECT_EQ(diagonal(2.0F, 3.0F, 5.0F, 7.0F).determinant(), 210.0F);
    // Rows of an arithmetic progression are dependent.
    EXPECT_EQ(kCounting.determinant(), 0.0);
    // Exchanging two rows turns the sign.
    EXPECT_EQ(DblMatrix4(0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1).determinant(), -1.0);
    // Powers of 1, 2, 3, 5: the product of the differences, 1 x 2 x 4 x 1 x 3 x 2.
    EXPECT_EQ(DblMatrix4(1, 1, 1, 1, 1, 2, 4, 8, 1, 3, 9, 27, 1, 5, 25, 125).determinant(), 48.0);
}

TEST(Inverse, OfKnownMatrices) {
    expect_same(diagonal(2.0, 4.0, 0.5, -8.0).inverse(), diagonal(0.5, 0.25, 2.0, -0.125));
    expect_same(diagonal(2.0F, 4.0F, 0.5F, -8.0F).inverse(), diagonal(0.5F, 0.25F, 2.0F, -0.125F));
    // A shift is undone by the opposite shift.
    const DblMatrix4 shift(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 3, -4, 5, 1);
    expect_same(shift.inverse(), DblMatrix4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -3, 4, -5, 1));
}

TEST(Inverse, InvertReplacesTheMatrix) {
    DblMatrix4 m = diagonal(2.0, 4.0, 0.5, -8.0);
    m.invert();
    expect_same(m, diagonal(0.5, 0.25, 2.0, -0.125));
}

TEST(Inverse, WarnsOnceOfASmallDeterminantAndCarriesOn) {
    for (const double det : {1e-11, -1e-11}) {
        DblMatrix4 result;
        const std::string warning = warnings_of_inverse(diagonal(1.0, 1.0, 1.0, det), result);
        const std::string start =
            "warning: matrix appears to be singular; inverse may not be reliable in <";
        EXPECT_EQ(warning.substr(0, start.size()), start);
        EXPECT_EQ(warning.rfind("warning: "), 0U) << "more than one";
        EXPECT_NE(warning.find("Matrix4<"), std::string::npos) << warning;
        EXPECT_NE(warning.find("::inverse() const"), std::string::npos) << warning;
        EXPECT_EQ(warning.substr(warning.size() - 2), ">\n");
        expect_same(result, diagonal(1.0, 1.0, 1.0, 1 / det), 1e-4);
    }
}

TEST(Inverse, WarnsOfFloatMatricesToo) {
    CapturedOutput errors(stderr);
    const Matrix4<float> result = diagonal(1.0F, 1.0F, 1.0F, 1e-11F).inverse();
    EXPECT_EQ(errors.text().rfind("warning: matrix appears to be singular; ", 0), 0U);
    EXPECT_FLOAT_EQ(result(3, 3), 1e11F);
}

TEST(Inverse, IsSilentFromTheLimitOn) {
    DblMatrix4 result;
    for (const double det : {1e-9, 1e-10, -1e-9, 1.0}) {
        EXPECT_EQ(warnings_of_inverse(diagonal(1.0, 1.0, 1.0, det), result), "") << det;
    }
}

TEST(Inverse, OfASingularMatrixIsNoNumber) {
    DblMatrix4 result;
    EXPECT_NE(warnings_of_inverse(diagonal(1.0, 1.0, 1.0, 0.0), result), "");
    EXPECT_EQ(result(3, 3), kInf);
    EXPECT_TRUE(std::isnan(result(0, 0)));
    EXPECT_NE(warnings_of_inverse(kCounting, result), "");
    EXPECT_FALSE(std::isfinite(result(0, 0)));
}

TEST(Perspective, OfANegativeDistanceIsTheIdentity) {
    expect_same(DblMatrix4::perspective(-1, 2, 3), DblMatrix4(1));
    expect_same(Matrix4<float>::perspective(-1, 2, 3), Matrix4<float>(1));
}

TEST(Perspective, WithoutAFarPlane) {
    // 1 / 2 on both sides of the third row, -3 / 2 below.
    const DblMatrix4 expected(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.5, 0.5, 0, 0, -1.5, 0);
    expect_same(DblMatrix4::perspective(2, 3, 0), expected);
    expect_same(DblMatrix4::perspective(2, 3, -5), expected);
}

TEST(Perspective, WithAFarPlane) {
    // A = 1 / ((1 - 2 / 8) x 4) = 1 / 3, B = -2 / 3.
    const DblMatrix4 expected(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1.0 / 3, 0.25, 0, 0, -2.0 / 3, 0);
    expect_same(DblMatrix4::perspective(4, 2, 8), expected, 1e-16);
    const Matrix4<float> single(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1.0F / 3, 0.25F, 0, 0, -2.0F / 3, 0);
    expect_same(Matrix4<float>::perspective(4, 2, 8), single, 1e-7);
}

TEST(Perspective, DepthGoesFromZeroAtNearToOne) {
    const DblMatrix4 open = DblMatrix4::perspective(4, 2, 0);
    EXPECT_NEAR(seen(open, 0, 0, 2)[2], 0, 1e-15);
    EXPECT_NEAR(seen(open, 0, 0, 8)[2], 0.75, 1e-15);
    EXPECT_NEAR(seen(open, 0, 0, 2e9)[2], 1, 2e-9);
    const DblMatrix4 closed = DblMatrix4::perspective(4, 2, 8);
    EXPECT_NEAR(seen(closed, 0, 0, 2)[2], 0, 1e-15);
    EXPECT_NEAR(seen(closed, 0, 0, 8)[2], 1, 1e-15);
    // (4 - 2) / ((1 - 2 / 8) x 4)
    EXPECT_NEAR(seen(closed, 0, 0, 4)[2], 2.0 / 3, 1e-15);
}

TEST(Perspective, ScalesByDistanceOverDepth) {
    const Point3 p = seen(DblMatrix4::perspective(4, 2, 8), 3, -5, 16);
    EXPECT_NEAR(p[0], 3 * 4.0 / 16, 1e-15);
    EXPECT_NEAR(p[1], -5 * 4.0 / 16, 1e-15);
}

TEST(Perspective, OfDistanceZeroIsNotGuarded) {
    const DblMatrix4 m = DblMatrix4::perspective(0, 2, 0);
    EXPECT_EQ(m(2, 2), kInf);
    EXPECT_EQ(m(2, 3), kInf);
    EXPECT_EQ(m(3, 2), -kInf);
}

TEST(Euler, SingleTurns) {
    // A quarter turn each: yaw takes z to x, pitch takes y to z, roll takes x to y.
    const double yaw[3] = {kPi / 2, 0, 0};
    expect_same(DblMatrix4::from_euler_angles(yaw),
                DblMatrix4(0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1), 1e-15);
    const double pitch[3] = {0, kPi / 2, 0};
    expect_same(DblMatrix4::from_euler_angles(pitch),
                DblMatrix4(1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1), 1e-15);
    const double roll[3] = {0, 0, kPi / 2};
    expect_same(DblMatrix4::from_euler_angles(roll),
                DblMatrix4(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1), 1e-15);
}

TEST(Euler, AnglesComeBack) {
    for (const double degrees : {-89.0, -30.0, 0.0, 45.0, 89.0}) {
        const double a[3] = {2.0, degrees * kPi / 180, -3.0};
        const Point3 back = DblMatrix4::from_euler_angles(a).orthonormal_to_euler();
        EXPECT_NEAR(back[0], a[0], 1e-12);
        EXPECT_NEAR(back[1], a[1], 1e-12);
        EXPECT_NEAR(back[2], a[2], 1e-12);
    }
}

TEST(Euler, FloatMatricesToo) {
    const float a[3] = {0, 0, static_cast<float>(kPi / 2)};
    expect_same(Matrix4<float>::from_euler_angles(a),
                Matrix4<float>(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1), 1e-7);
}

namespace {

const char* const kAffine =
    "fabsf(m(0,3)) < EPSILON && fabsf(m(1,3)) < EPSILON && fabsf(m(2,3)) < EPSILON && "
    "fabsf(m(3,3)-1) < EPSILON";
const char* const kOrthogonal =
    "fabsf(rs[0][0]*rs[1][0] + rs[0][1]*rs[1][1] + rs[0][2]*rs[1][2]) < EPSILON && "
    "fabsf(rs[0][0]*rs[2][0] + rs[0][1]*rs[2][1] + rs[0][2]*rs[2][2]) < EPSILON && "
    "fabsf(rs[1][0]*rs[2][0] + rs[1][1]*rs[2][1] + rs[1][2]*rs[2][2]) < EPSILON";

// The condition that fails, or an empty text.
std::string broken_condition(const DblMatrix4& m) {
    Point3 translation(7, 7, 7);
    Point3 rotation(7, 7, 7);
    Point3 scale(7, 7, 7);
    try {
        m.decompose_lw(translation, rotation, scale);
    } catch (const AssertXception& e) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(translation[i] + rotation[i] + scale[i], 21.0) << "written before the check";
        }
        return e.expression();
    }
    return "";
}

DblMatrix4 with(int r, int c, double value) {
    DblMatrix4 m(1);
    m(r, c) = value;
    return m;
}

}  // namespace

TEST(Decompose, OfAShiftedScaledQuarterTurn) {
    // Twice, thrice and half along the axes, then a quarter roll, then a shift.
    const DblMatrix4 m(0, 2, 0, 0, -3, 0, 0, 0, 0, 0, 0.5, 0, 7, 8, 9, 1);
    Point3 translation;
    Point3 rotation;
    Point3 scale;
    m.decompose_lw(translation, rotation, scale);
    const double expected[3][3] = {{7, 8, 9}, {0, 0, kPi / 2}, {2, 3, 0.5}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(translation[i], expected[0][i], 1e-15);
        EXPECT_NEAR(rotation[i], expected[1][i], 1e-15);
        EXPECT_NEAR(scale[i], expected[2][i], 1e-15);
    }
}

TEST(Decompose, AMirroredMatrixHasANegativeFirstScale) {
    Point3 translation;
    Point3 rotation;
    Point3 scale;
    diagonal(-2.0, 3.0, 4.0, 1.0).decompose_lw(translation, rotation, scale);
    EXPECT_EQ(scale[0], -2.0);
    EXPECT_EQ(scale[1], 3.0);
    EXPECT_EQ(scale[2], 4.0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(rotation[i], 0.0);
    }
}

TEST(Decompose, WantsAnAffineMatrix) {
    for (int r = 0; r < 4; ++r) {
        const double base = r == 3 ? 1 : 0;
        EXPECT_EQ(broken_condition(with(r, 3, base + 0.00011)), kAffine);
        EXPECT_EQ(broken_condition(with(r, 3, base - 0.00011)), kAffine);
        EXPECT_EQ(broken_condition(with(r, 3, base + 0.00009)), "");
        EXPECT_EQ(broken_condition(with(r, 3, kNan)), kAffine);
    }
}

TEST(Decompose, WantsOrthogonalRows) {
    EXPECT_EQ(broken_condition(with(1, 0, 0.00011)), kOrthogonal);
    EXPECT_EQ(broken_condition(with(2, 0, -0.00011)), kOrthogonal);
    EXPECT_EQ(broken_condition(with(2, 1, 0.00011)), kOrthogonal);
    EXPECT_EQ(broken_condition(with(2, 1, 0.00009)), "");
    // A row of no length has no direction.
    EXPECT_EQ(broken_condition(with(1, 1, 0)), kOrthogonal);
}
