// Vectors, intervals, boxes and the scalar functions.
#include <base/newmatrix.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kIeeeInfinity = std::numeric_limits<float>::infinity();

}  // namespace

static_assert(std::is_same_v<Vector2, VectorN<float, 2>> && sizeof(Vector2) == 2 * sizeof(float));
static_assert(std::is_same_v<Color3, VectorN<float, 3>> && sizeof(Color3) == 3 * sizeof(float));
static_assert(sizeof(Bound<float>) == 2 * sizeof(float), "min and max");
static_assert(!std::is_constructible_v<Vector2, float, float, float>);

TEST(Vector, HasItsElementsInOrder) {
    VectorN<double, 4> v(1, 2, 3, 4);
    v[2] = 7;
    const VectorN<double, 4>& same = v;
    EXPECT_EQ(same[0], 1);
    EXPECT_EQ(same[1], 2);
    EXPECT_EQ(same[2], 7);
    EXPECT_EQ(same[3], 4);
    EXPECT_EQ(&same[3], &same[0] + 3);
}

TEST(Vector, Difference) {
    const Vector2 d = Vector2(5, 1) - Vector2(2, 4);
    EXPECT_EQ(d[0], 3.0F);
    EXPECT_EQ(d[1], -3.0F);
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

TEST(Vector, NormalizeReturnsTheLengthAndDividesByIt) {
    Vector2 v(3, -4);
    EXPECT_EQ(v.normalize(), 5.0F);
    EXPECT_EQ(v[0], 0.6F);
    EXPECT_EQ(v[1], -0.8F);
    VectorN<double, 3> p(0, 0, -7);
    EXPECT_EQ(p.normalize(), 7.0);
    EXPECT_EQ(p[2], -1.0);
}

TEST(Vector, NormalizeLeavesAZeroVector) {
    Vector2 v(0, 0);
    EXPECT_EQ(v.normalize(), 0.0F);
    EXPECT_EQ(v[0], 0.0F);
    EXPECT_EQ(v[1], 0.0F);
}

TEST(Vector, NormalizeOfWhatIsNotANumberDividesToo) {
    Vector2 v(kNan, 1);
    EXPECT_TRUE(std::isnan(v.normalize()));
    EXPECT_TRUE(std::isnan(v[0]));
    EXPECT_TRUE(std::isnan(v[1]));
}

TEST(Bounds, TheLibrarysInfinityIsANumber) {
    EXPECT_EQ(infinity, std::ldexp(1.0F, 127));
    EXPECT_EQ(infinity, 1.7014118e38F);
    EXPECT_TRUE(std::isfinite(infinity));
}

TEST(Bounds, AreEmptyAtFirstAndTakeTheirEndsFromTheFirstNumber) {
    Bound<float> b;
    EXPECT_EQ(b.min(), infinity);
    EXPECT_EQ(b.max(), -infinity);
    b.include(3);
    EXPECT_EQ(b.min(), 3.0F);
    EXPECT_EQ(b.max(), 3.0F);
    b.include(-1);
    b.include(2);
    EXPECT_EQ(b.min(), -1.0F);
    EXPECT_EQ(b.max(), 3.0F);
}

TEST(Bounds, ANumberBeyondTheLibrarysInfinityLeavesAnEmptyEnd) {
    Bound<float> b;
    b.include(kIeeeInfinity);
    EXPECT_EQ(b.min(), infinity);
    EXPECT_EQ(b.max(), kIeeeInfinity);
}

TEST(Bounds, IncludingWhatIsNotANumberTakesIt) {
    Bound<float> b(1, 2);
    b.include(kNan);
    EXPECT_TRUE(std::isnan(b.min()));
    EXPECT_TRUE(std::isnan(b.max()));
    // And a number after it sets both ends.
    b.include(5);
    EXPECT_EQ(b.min(), 5.0F);
    EXPECT_EQ(b.max(), 5.0F);
}

TEST(Bounds, ExpandBothWays) {
    Bound<float> b(1, 2);
    b.expand(0.5F);
    EXPECT_EQ(b.min(), 0.5F);
    EXPECT_EQ(b.max(), 2.5F);
    b.expand(-2);
    EXPECT_EQ(b.min(), 2.5F);
    EXPECT_EQ(b.max(), 0.5F);
}

TEST(Boxes, AreAnIntervalAnAxis) {
    BoundN<float, 2> box(Vector2(3, 4));
    EXPECT_EQ(box[0].min(), 3.0F);
    EXPECT_EQ(box[0].max(), 3.0F);
    EXPECT_EQ(box[1].min(), 4.0F);
    EXPECT_EQ(box[1].max(), 4.0F);
    box.include(Vector2(1, 9));
    EXPECT_EQ(box[0].min(), 1.0F);
    EXPECT_EQ(box[0].max(), 3.0F);
    EXPECT_EQ(box[1].min(), 4.0F);
    EXPECT_EQ(box[1].max(), 9.0F);
    box.expand(Vector2(0.5F, 2));
    EXPECT_EQ(box[0].min(), 0.5F);
    EXPECT_EQ(box[0].max(), 3.5F);
    EXPECT_EQ(box[1].min(), 2.0F);
    EXPECT_EQ(box[1].max(), 11.0F);
    box[1].include(12);
    const BoundN<float, 2>& same = box;
    EXPECT_EQ(same[1].max(), 12.0F);
}

TEST(Boxes, AreEmptyAtFirst) {
    const BoundN<float, 2> box;
    for (int axis = 0; axis < 2; ++axis) {
        EXPECT_EQ(box[axis].min(), infinity);
        EXPECT_EQ(box[axis].max(), -infinity);
    }
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

TEST(Scalars, OfEqualsMaxIsTheFirstAndMinTheSecond) {
    // Zeros are equal and differ in sign.
    EXPECT_FALSE(std::signbit(max(0.0F, -0.0F)));
    EXPECT_TRUE(std::signbit(max(-0.0F, 0.0F)));
    EXPECT_TRUE(std::signbit(min(0.0F, -0.0F)));
    EXPECT_FALSE(std::signbit(min(-0.0F, 0.0F)));
    EXPECT_TRUE(std::signbit(max(-0.0F, 0.0)));
}

TEST(Scalars, WithWhatIsNotANumberMinAndMaxAreTheSecond) {
    EXPECT_EQ(max(kNan, 1.0F), 1.0F);
    EXPECT_TRUE(std::isnan(max(1.0F, kNan)));
    EXPECT_EQ(min(kNan, 1.0F), 1.0F);
    EXPECT_TRUE(std::isnan(min(1.0F, kNan)));
    EXPECT_EQ(max(kNan, 1.0), 1.0);
    EXPECT_TRUE(std::isnan(max(1.0F, std::numeric_limits<double>::quiet_NaN())));
}

TEST(Scalars, Clamp) {
    EXPECT_EQ(clamp(-1, 0, 10), 0);
    EXPECT_EQ(clamp(0, 0, 10), 0);
    EXPECT_EQ(clamp(5, 0, 10), 5);
    EXPECT_EQ(clamp(10, 0, 10), 10);
    EXPECT_EQ(clamp(11, 0, 10), 10);
    // With the ends exchanged the lower one wins below itself, the upper one else.
    EXPECT_EQ(clamp(5, 10, 0), 10);
    EXPECT_EQ(clamp(15, 10, 0), 0);
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
