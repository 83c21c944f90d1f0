// Vectors, intervals, boxes, scalar functions and matrices.
#include <base/exceptions.h>
#include <base/newmatrix.h>
#include <base/to_int.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

namespace {

constexpr float kFloatNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kIeeeInfinity = std::numeric_limits<float>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

void expect_bound(const Bound<float>& bound, float low, float high) {
    EXPECT_EQ(bound.min(), low);
    EXPECT_EQ(bound.max(), high);
}

}  // namespace

static_assert(std::is_same_v<Vector2, VectorN<float, 2>> && sizeof(Vector2) == 2 * sizeof(float));
static_assert(std::is_same_v<Color3, VectorN<float, 3>> && sizeof(Color3) == 3 * sizeof(float));
static_assert(sizeof(Bound<float>) == 2 * sizeof(float), "min and max");
static_assert(!std::is_constructible_v<Vector2, float, float, float>);

TEST(Vector, HasItsElementsInOrder) {
    VectorN<double, 4> v(1, 2, 3, 4);
    v[2] = 7;
    const VectorN<double, 4>& same = v;
    const double expected[] = {1, 2, 7, 4};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(same[i], expected[i]);
        EXPECT_EQ(&same[i], &same[0] + i);
    }
    const Vector2 difference = Vector2(5, 1) - Vector2(2, 4);
    EXPECT_EQ(difference[0], 3.0F);
    EXPECT_EQ(difference[1], -3.0F);
}

TEST(Vector, DotAndLength) {
    EXPECT_EQ(dot(Vector2(1, 2), Vector2(3, 4)), 11.0F);
    EXPECT_EQ(lengthSquared(Vector2(3, -4)), 25.0F);
    EXPECT_EQ(length(Vector2(3, -4)), 5.0F);
    using Point3 = VectorN<double, 3>;
    EXPECT_EQ(dot(Point3(1, 2, 3), Point3(4, -5, 6)), 12.0);
    EXPECT_EQ(lengthSquared(Point3(2, 3, 6)), 49.0);
    EXPECT_EQ(length(Point3(2, 3, 6)), 7.0);
}

TEST(Vector, NormalizeReturnsTheLengthAndDividesByItUnlessItIsZero) {
    Vector2 v(3, -4);
    EXPECT_EQ(v.normalize(), 5.0F);
    EXPECT_EQ(v[0], 0.6F);
    EXPECT_EQ(v[1], -0.8F);
    VectorN<double, 3> p(0, 0, -7);
    EXPECT_EQ(p.normalize(), 7.0);
    EXPECT_EQ(p[2], -1.0);
    Vector2 zero(0, 0);
    EXPECT_EQ(zero.normalize(), 0.0F);
    EXPECT_EQ(zero[0], 0.0F);
    EXPECT_EQ(zero[1], 0.0F);
    // A length that is not a number divides too.
    Vector2 none(kFloatNan, 1);
    EXPECT_TRUE(std::isnan(none.normalize()));
    EXPECT_TRUE(std::isnan(none[0]));
    EXPECT_TRUE(std::isnan(none[1]));
}

TEST(Bounds, TheLibrarysInfinityIsANumber) {
    EXPECT_EQ(infinity, std::ldexp(1.0F, 127));
    EXPECT_EQ(infinity, 1.7014118e38F);
    EXPECT_TRUE(std::isfinite(infinity));
}

TEST(Bounds, AreEmptyAtFirstAndTakeTheirEndsFromTheFirstNumber) {
    Bound<float> b;
    expect_bound(b, infinity, -infinity);
    b.include(3);
    expect_bound(b, 3, 3);
    b.include(-1);
    b.include(2);
    expect_bound(b, -1, 3);
    // The IEEE infinity is beyond the library's and leaves one end as it was.
    Bound<float> beyond;
    beyond.include(kIeeeInfinity);
    expect_bound(beyond, infinity, kIeeeInfinity);
}

TEST(Bounds, TakeWhatIsNotANumberAndExpandBothWays) {
    Bound<float> b(1, 2);
    b.include(kFloatNan);
    EXPECT_TRUE(std::isnan(b.min()));
    EXPECT_TRUE(std::isnan(b.max()));
    // And a number after it sets both ends.
    b.include(5);
    expect_bound(b, 5, 5);
    b.expand(0.5F);
    expect_bound(b, 4.5F, 5.5F);
    b.expand(-2);
    expect_bound(b, 6.5F, 3.5F);
}

TEST(Boxes, AreAnIntervalAnAxis) {
    const BoundN<float, 2> empty;
    expect_bound(empty[0], infinity, -infinity);
    expect_bound(empty[1], infinity, -infinity);
    BoundN<float, 2> box(Vector2(3, 4));
    expect_bound(box[0], 3, 3);
    expect_bound(box[1], 4, 4);
    box.include(Vector2(1, 9));
    expect_bound(box[0], 1, 3);
    expect_bound(box[1], 4, 9);
    box.expand(Vector2(0.5F, 2));
    expect_bound(box[0], 0.5F, 3.5F);
    expect_bound(box[1], 2, 11);
    box[1].include(12);
    expect_bound(box[1], 2, 12);
}

TEST(Scalars, MinAndMaxOfNumbers) {
    EXPECT_EQ(max(1.0F, 2.0F), 2.0F);
    EXPECT_EQ(max(2.0F, 1.0F), 2.0F);
    EXPECT_EQ(min(1.0F, 2.0F), 1.0F);
    EXPECT_EQ(min(2.0F, 1.0F), 1.0F);
    EXPECT_EQ(max(0.5F, 0.25), 0.5);
    // 0.1 in single precision, widened, is above 0.1 in double.
    EXPECT_EQ(max(0.1F, 0.1), static_cast<double>(0.1F));
    EXPECT_EQ(max(-1.0F, 0.1), 0.1);
    static_assert(std::is_same_v<decltype(max(1.0F, 1.0)), double>);
}

TEST(Scalars, OfEqualsMaxIsTheFirstAndMinTheSecondAndOfWhatIsNotANumberBothAreTheSecond) {
    // Zeros are equal and differ in sign.
    EXPECT_FALSE(std::signbit(max(0.0F, -0.0F)));
    EXPECT_TRUE(std::signbit(max(-0.0F, 0.0F)));
    EXPECT_TRUE(std::signbit(min(0.0F, -0.0F)));
    EXPECT_FALSE(std::signbit(min(-0.0F, 0.0F)));
    EXPECT_TRUE(std::signbit(max(-0.0F, 0.0)));
    EXPECT_EQ(max(kFloatNan, 1.0F), 1.0F);
    EXPECT_TRUE(std::isnan(max(1.0F, kFloatNan)));
    EXPECT_EQ(min(kFloatNan, 1.0F), 1.0F);
    EXPECT_TRUE(std::isnan(min(1.0F, kFloatNan)));
    EXPECT_EQ(max(kFloatNan, 1.0), 1.0);
    EXPECT_TRUE(std::isnan(max(1.0F, kNan)));
}

TEST(Scalars, Clamp) {
    const struct {
        int x, low, high, expected;
    } table[] = {
        {-1, 0, 10, 0},
        {0, 0, 10, 0},
        {5, 0, 10, 5},
        {10, 0, 10, 10},
        {11, 0, 10, 10},
        // With the ends exchanged the lower one wins below itself, the upper one else.
        {5, 10, 0, 10},
        {15, 10, 0, 0},
    };
    for (const auto& row : table) {
        EXPECT_EQ(clamp(row.x, row.low, row.high), row.expected) << row.x;
    }
}

TEST(Scalars, DegreesToRadiansInSinglePrecision) {
    EXPECT_EQ(deg_to_rad(1), 0.017453292F);
    EXPECT_EQ(deg_to_rad(0), 0.0F);
    EXPECT_NEAR(deg_to_rad(180), 3.14159265, 5e-7);
    EXPECT_NEAR(deg_to_rad(-90), -1.57079633, 3e-7);
}

TEST(Scalars, RootsMagnitudesAndAngles) {
    EXPECT_EQ(Sqrt(6.25F), 2.5F);
    EXPECT_EQ(Sqrt(6.25), 2.5);
    EXPECT_TRUE(std::isnan(Sqrt(-1.0)));
    EXPECT_EQ(Fabs(-2.5F), 2.5F);
    EXPECT_EQ(Fabs(-2.5), 2.5);
    static_assert(std::is_same_v<decltype(Sqrt(1.0F)), float>);
    static_assert(std::is_same_v<decltype(Fabs(1.0F)), float>);
    double s = 0;
    double c = 0;
    Sincos(0.5235987755982988, &s, &c);  // 30 degrees
    EXPECT_NEAR(s, 0.5, 1e-15);
    EXPECT_NEAR(c * c, 0.75, 1e-15);
    float fs = 0;
    float fc = 0;
    Sincos(0.0F, &fs, &fc);
    EXPECT_EQ(fs, 0.0F);
    EXPECT_EQ(fc, 1.0F);
}

namespace {

constexpr std::int32_t kMostNegative = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMostPositive = std::numeric_limits<std::int32_t>::max();
}  // namespace

TEST(S32FromDouble, DropsTheFractionOfWhatFits) {
    const struct {
        double x;
        std::int32_t expected;
    } table[] = {{0.0, 0},
                 {-0.0, 0},
                 {0.999, 0},
                 {-0.999, 0},
                 {7.5, 7},
                 {-7.5, -7},
                 {2147483647.0, kMostPositive},
                 {std::nextafter(2147483648.0, 0.0), kMostPositive},
                 {-2147483647.0, -kMostPositive},
                 {-2147483648.0, kMostNegative},
                 {std::nextafter(-2147483649.0, 0.0), kMostNegative},
                 // The largest single-precision number below 2^31 is 2^31 - 128.
                 {std::nextafter(2147483648.0F, 0.0F), 2147483520}};
    for (const auto& row : table) {
        EXPECT_EQ(s32_from_double(row.x), row.expected) << row.x;
    }
}

TEST(S32FromDouble, GivesTheMostNegativeForWhatDoesNotFit) {
    for (const double x : {2147483648.0, -2147483649.0, 1e300, -1e300, kInf, -kInf,
                           std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(s32_from_double(x), kMostNegative) << x;
    }
    EXPECT_EQ(s32_from_double(2147483648.0F), kMostNegative);
    EXPECT_EQ(s32_from_double(std::numeric_limits<float>::infinity()), kMostNegative);
}

namespace {

using Point3 = VectorN<double, 3>;
using Point4 = VectorN<double, 4>;

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

TEST(Matrix4, OfOneNumberIsADiagonalAndTheIdentityIsOneObject) {
    expect_same(DblMatrix4(3), diagonal(3.0, 3.0, 3.0, 3.0));
    expect_same(Matrix4<float>(0.5F), diagonal(0.5F, 0.5F, 0.5F, 0.5F));
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

TEST(Matrix4, TransformMultipliesRowsFromTheLeftAlsoInPlace) {
    Point4 out;
    transform(kCounting, Point4(0, 0, 0, 1), out);
    expect_same(out, 13, 14, 15, 16);
    // 1 - 10 + 27 + 6.5 and one more of (1 - 2 + 3 + 0.5) per column.
    const Point4 v(1, -2, 3, 0.5);
    transform(kCounting, v, out);
    expect_same(out, 24.5, 27, 29.5, 32);
    Point4 in_place = v;
    transform(kCounting, in_place);
    expect_same(in_place, 24.5, 27, 29.5, 32);
    in_place = v;
    transform(kCounting, in_place, in_place);
    expect_same(in_place, 24.5, 27, 29.5, 32);
}

TEST(HPoint, IsDividedThroughItsReciprocalAndInfiniteWithAWOfZero) {
    const Point3 p = hpoint_to_point(Point4(2, -4, 6, 2));
    EXPECT_EQ(p[0], 1.0);
    EXPECT_EQ(p[1], -2.0);
    EXPECT_EQ(p[2], 3.0);
    // 49 x (1 / 49) is the number below 1, while 49 / 49 is 1.
    EXPECT_EQ(hpoint_to_point(Point4(49, 0, 0, 49))[0], std::nextafter(1.0, 0.0));
    const Point3 far = hpoint_to_point(Point4(1, -1, 0, 0));
    EXPECT_EQ(far[0], kInf);
    EXPECT_EQ(far[1], -kInf);
    EXPECT_TRUE(std::isnan(far[2]));
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
    DblMatrix4 m = diagonal(2.0, 4.0, 0.5, -8.0);
    expect_same(m.inverse(), diagonal(0.5, 0.25, 2.0, -0.125));
    m.invert();
    expect_same(m, diagonal(0.5, 0.25, 2.0, -0.125));
    expect_same(diagonal(2.0F, 4.0F, 0.5F, -8.0F).inverse(), diagonal(0.5F, 0.25F, 2.0F, -0.125F));
    // A shift is undone by the opposite shift.
    const DblMatrix4 shift(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 3, -4, 5, 1);
    expect_same(shift.inverse(), DblMatrix4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -3, 4, -5, 1));
}

TEST(Inverse, WarnsOnceOfASmallDeterminantAndCarriesOn) {
    const std::string start =
        "warning: matrix appears to be singular; inverse may not be reliable in <";
    DblMatrix4 result;
    for (const double det : {1e-11, -1e-11}) {
        const std::string warning = warnings_of_inverse(diagonal(1.0, 1.0, 1.0, det), result);
        EXPECT_EQ(warning.rfind(start), 0U) << warning;
        EXPECT_NE(warning.find("Matrix4<"), std::string::npos) << warning;
        EXPECT_NE(warning.find("::inverse() const"), std::string::npos) << warning;
        EXPECT_EQ(warning.substr(warning.size() - 2), ">\n");
        expect_same(result, diagonal(1.0, 1.0, 1.0, 1 / det), 1e-4);
    }
    for (const double det : {1e-9, 1e-10, -1e-9, 1.0}) {
        EXPECT_EQ(warnings_of_inverse(diagonal(1.0, 1.0, 1.0, det), result), "") << det;
    }
    CapturedOutput errors(stderr);
    const Matrix4<float> single = diagonal(1.0F, 1.0F, 1.0F, 1e-11F).inverse();
    EXPECT_EQ(errors.text().rfind(start), 0U);
    EXPECT_FLOAT_EQ(single(3, 3), 1e11F);
}

TEST(Inverse, OfASingularMatrixIsNoNumber) {
    DblMatrix4 result;
    EXPECT_NE(warnings_of_inverse(diagonal(1.0, 1.0, 1.0, 0.0), result), "");
    EXPECT_EQ(result(3, 3), kInf);
    EXPECT_TRUE(std::isnan(result(0, 0)));
    EXPECT_NE(warnings_of_inverse(kCounting, result), "");
    EXPECT_FALSE(std::isfinite(result(0, 0)));
}

TEST(Perspective, OfKnownDistances) {
    // A negative one.
    expect_same(DblMatrix4::perspective(-1, 2, 3), DblMatrix4(1));
    expect_same(Matrix4<float>::perspective(-1, 2, 3), Matrix4<float>(1));
    // Without a far plane: 1 / 2 on both sides of the third row, -3 / 2 below.
    const DblMatrix4 open(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.5, 0.5, 0, 0, -1.5, 0);
    expect_same(DblMatrix4::perspective(2, 3, 0), open);
    expect_same(DblMatrix4::perspective(2, 3, -5), open);
    // With one: A = 1 / ((1 - 2 / 8) x 4) = 1 / 3, B = -2 / 3.
    const DblMatrix4 closed(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1.0 / 3, 0.25, 0, 0, -2.0 / 3, 0);
    expect_same(DblMatrix4::perspective(4, 2, 8), closed, 1e-16);
    const Matrix4<float> single(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1.0F / 3, 0.25F, 0, 0, -2.0F / 3, 0);
    expect_same(Matrix4<float>::perspective(4, 2, 8), single, 1e-7);
    // Zero is not guarded.
    const DblMatrix4 at_zero = DblMatrix4::perspective(0, 2, 0);
    EXPECT_EQ(at_zero(2, 2), kInf);
    EXPECT_EQ(at_zero(2, 3), kInf);
    EXPECT_EQ(at_zero(3, 2), -kInf);
}

TEST(Euler, QuarterRollTakesXToY) {
    const double roll[3] = {0, 0, kPi / 2};
    const float single[3] = {0, 0, static_cast<float>(kPi / 2)};
    expect_same(DblMatrix4::from_euler_angles(roll),
                DblMatrix4(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1), 1e-15);
    expect_same(Matrix4<float>::from_euler_angles(single),
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
    Point3 parts[3] = {Point3(7, 7, 7), Point3(7, 7, 7), Point3(7, 7, 7)};
    try {
        m.decompose_lw(parts[0], parts[1], parts[2]);
    } catch (const AssertXception& e) {
        for (int i = 0; i < 9; ++i) {
            EXPECT_EQ(parts[i / 3][i % 3], 7.0) << "written before the check";
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
