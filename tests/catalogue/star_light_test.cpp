// Magnitude to luminance and colour index to colour, against tabulated values.
//
// The table was worked out apart from this program from the same published formulas: Ballesteros
// (2012) for the temperature, Planck's law over the CIE 1931 functions, IEC 61966-2-1 for the
// codes.
#include "astronomy/star_light.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

#include "astronomy/srgb.h"

namespace {

struct Row {
    double colour_index;
    double kelvin;
    double red, green, blue;
    int code[3];
};

constexpr Row kTable[] = {
    {-0.40, 21707, 0.396, 0.526, 1.000, {169, 192, 255}},
    {-0.30, 16602, 0.440, 0.563, 1.000, {177, 198, 255}},
    {-0.20, 13585, 0.488, 0.603, 1.000, {186, 204, 255}},
    {0.00, 10125, 0.604, 0.690, 1.000, {204, 217, 255}},
    {0.20, 8163, 0.748, 0.790, 1.000, {224, 230, 255}},
    {0.40, 6880, 0.928, 0.904, 1.000, {247, 244, 255}},
    {0.65, 5778, 1.000, 0.880, 0.823, {255, 241, 234}},
    {0.80, 5281, 1.000, 0.828, 0.700, {255, 235, 218}},
    {1.00, 4743, 1.000, 0.764, 0.565, {255, 226, 198}},
    {1.20, 4309, 1.000, 0.705, 0.455, {255, 219, 180}},
    {1.50, 3794, 1.000, 0.626, 0.329, {255, 207, 155}},
    {1.85, 3333, 1.000, 0.547, 0.224, {255, 195, 130}},
    {2.00, 3169, 1.000, 0.517, 0.189, {255, 190, 120}},
};

TEST(StarColour, FollowsTheTable) {
    for (const Row& row : kTable) {
        SCOPED_TRACE(row.colour_index);
        const double kelvin = lumivar::temperature_from_colour_index(row.colour_index);
        EXPECT_NEAR(kelvin, row.kelvin, 0.5);  // tabulated to whole kelvins
        const auto colour = lumivar::black_body_colour(kelvin);
        EXPECT_NEAR(colour[0], row.red, 0.0006);  // tabulated to three decimals
        EXPECT_NEAR(colour[1], row.green, 0.0006);
        EXPECT_NEAR(colour[2], row.blue, 0.0006);
        const auto code = lumivar::code_from_colour_index(row.colour_index);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(code[static_cast<std::size_t>(i)], row.code[i]) << "channel " << i;
        }
    }
}

TEST(StarColour, IsClampedWhereTheFormulasEnd) {
    // The formula has a pole at -0.674: without the clamp -5 would give a negative temperature.
    EXPECT_EQ(lumivar::code_from_colour_index(-5.0), lumivar::code_from_colour_index(-0.4));
    EXPECT_EQ(lumivar::code_from_colour_index(6.0), lumivar::code_from_colour_index(2.0));
    // At 1,500 K the blue of sRGB is negative: the colour lies outside the gamut.
    const auto colour = lumivar::black_body_colour(1500.0);
    EXPECT_EQ(colour[0], 1.0);
    EXPECT_EQ(colour[2], 0.0);
}

TEST(StarLuminance, FallsByAHundredInFiveMagnitudes) {
    const struct {
        double magnitude, luminance;
    } table[] = {{-1.44, 3.767},  {0, 1},        {1, 0.3981}, {2, 0.1585},
                 {3, 0.06310},    {4, 0.02512},  {5, 0.01},   {6, 0.003981},
                 {6.5, 0.002512}, {8, 6.310e-4}, {10, 1e-4},  {12, 1.585e-5}};
    for (const auto& row : table) {
        EXPECT_NEAR(lumivar::luminance_from_magnitude(row.magnitude) / row.luminance, 1.0, 2e-4);
        EXPECT_NEAR(lumivar::magnitude_from_luminance(row.luminance), row.magnitude, 3e-4);
    }
    EXPECT_DOUBLE_EQ(lumivar::luminance_from_magnitude(7.5), 0.001);
    // Over the whole range it is normal in single precision.
    EXPECT_TRUE(std::isnormal(static_cast<float>(lumivar::luminance_from_magnitude(-30))));
    EXPECT_TRUE(std::isnormal(static_cast<float>(lumivar::luminance_from_magnitude(90))));
}

TEST(SrgbCode, FollowsTheCurveBetweenTheClamps) {
    // By hand: 12.92 c up to 0.0031308, above it 1.055 c^(1/2.4) - 0.055; times 255, rounded.
    EXPECT_EQ(lumivar::srgb_code(0.0), 0);
    EXPECT_EQ(lumivar::srgb_code(0.002), 7);       // 6.589
    EXPECT_EQ(lumivar::srgb_code(0.0031308), 10);  // 10.31
    EXPECT_EQ(lumivar::srgb_code(0.01), 25);       // 0.099853 x 255 = 25.46
    EXPECT_EQ(lumivar::srgb_code(0.2), 124);       // 0.484529 x 255 = 123.55
    EXPECT_EQ(lumivar::srgb_code(0.5), 188);       // 0.735357 x 255 = 187.52
    EXPECT_EQ(lumivar::srgb_code(1.0), 255);
    EXPECT_EQ(lumivar::srgb_code(-0.3), 0);
    EXPECT_EQ(lumivar::srgb_code(2.0), 255);
    EXPECT_EQ(lumivar::srgb_code(INFINITY), 255);
    EXPECT_EQ(lumivar::srgb_code(-INFINITY), 0);
    EXPECT_EQ(lumivar::srgb_code(NAN), 0);
}

}  // namespace
