// Magnitude to luminance and colour index to colour, against tabulated values.
//
// The table was worked out apart from this program from the same published formulas: Ballesteros
// (2012) for the temperature, Planck's law over the CIE 1931 functions, IEC 61966-2-1 for the
// codes.
#include "astronomy/star_light.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "../support/random_numbers.h"
#include "srgb.h"

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
        const auto code = lumivar::black_body_code(kelvin, lumivar::WhitePoint::D65);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(code[static_cast<std::size_t>(i)], row.code[i]) << "channel " << i;
        }
    }
}

TEST(StarColour, IsClampedWhereTheFormulasEnd) {
    // The formula has a pole at -0.674: without the clamp -5 would give a negative temperature.
    EXPECT_EQ(lumivar::temperature_from_colour_index(-5.0),
              lumivar::temperature_from_colour_index(-0.4));
    EXPECT_EQ(lumivar::temperature_from_colour_index(6.0),
              lumivar::temperature_from_colour_index(2.0));
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

TEST(StarLuminance, IsOneAtTheZeroPoint) {
    EXPECT_DOUBLE_EQ(lumivar::luminance_from_magnitude(5.5, 5.5), 1.0);
    EXPECT_DOUBLE_EQ(lumivar::luminance_from_magnitude(5.0, 10.0), 100.0);
    EXPECT_DOUBLE_EQ(lumivar::luminance_from_magnitude(0.0, -2.5), 0.1);
}

TEST(StarTemperature, FollowsTheFormulaInItsPublishedRange) {
    // By hand: 5040 / (0.4929 + 0.5092 c - 0.0353 c^2).
    EXPECT_NEAR(lumivar::temperature_from_bp_rp(0.4), 7294.5, 0.1);  // by 0.690932
    EXPECT_NEAR(lumivar::temperature_from_bp_rp(1.0), 5213.1, 0.1);  // by 0.9668
    EXPECT_NEAR(lumivar::temperature_from_bp_rp(1.5), 4281.1, 0.1);  // by 1.177275
    // The Sun, for which others find BP-RP 0.82.
    EXPECT_NEAR(lumivar::temperature_from_bp_rp(0.82), 5772.0, 100.0);
}

TEST(StarTemperature, StaysNearMainSequenceStarsBeyondThatRange) {
    // Pecaut and Mamajek (2013): spectral type, BP-RP, effective temperature.
    const struct {
        const char* type;
        double colour, kelvin, tolerance;
    } stars[] = {{"B0V", -0.47, 31000, 0.35},
                 {"A0V", 0.0, 9700, 0.06},
                 {"M5V", 3.35, 3060, 0.1},
                 {"M8V", 4.7, 2570, 0.1}};
    for (const auto& star : stars) {
        EXPECT_NEAR(lumivar::temperature_from_bp_rp(star.colour) / star.kelvin, 1.0, star.tolerance)
            << star.type;
    }
}

TEST(StarTemperature, FallsWithTheColourAndIsClampedAtTheEnds) {
    double hotter = 1e9;
    for (int i = -60; i <= 500; ++i) {
        const double kelvin = lumivar::temperature_from_bp_rp(0.01 * i);
        EXPECT_LT(kelvin, hotter) << i;
        hotter = kelvin;
    }
    // The formula has a pole at -0.91 and turns back at 7.2.
    EXPECT_EQ(lumivar::temperature_from_bp_rp(-3.0), lumivar::temperature_from_bp_rp(-0.6));
    EXPECT_EQ(lumivar::temperature_from_bp_rp(40.0), lumivar::temperature_from_bp_rp(5.0));
}

TEST(StarColour, HasTheSunForWhiteOnRequest) {
    using Code = std::array<std::uint8_t, 3>;
    EXPECT_EQ(lumivar::black_body_code(5772.0, lumivar::WhitePoint::Sun), (Code{255, 255, 255}));
    // The table above divided by its row of the Sun, (1, 0.880, 0.823), largest channel 1 again:
    // at 10,125 K (0.604, 0.690, 1) becomes (0.604, 0.784, 1.215), and (0.497, 0.645, 1).
    const auto blue = lumivar::black_body_colour(10125.0, lumivar::WhitePoint::Sun);
    EXPECT_NEAR(blue[0], 0.497, 0.002);
    EXPECT_NEAR(blue[1], 0.645, 0.002);
    EXPECT_EQ(blue[2], 1.0);
    // At 3,794 K (1, 0.626, 0.329) becomes (1, 0.711, 0.400).
    const auto red = lumivar::black_body_colour(3794.0, lumivar::WhitePoint::Sun);
    EXPECT_EQ(red[0], 1.0);
    EXPECT_NEAR(red[1], 0.711, 0.002);
    EXPECT_NEAR(red[2], 0.400, 0.002);
}

TEST(StarColours, HasTheCodesOfTheSum) {
    for (const auto white : {lumivar::WhitePoint::D65, lumivar::WhitePoint::Sun}) {
        const lumivar::StarColours colours(white);
        RandomNumbers random(14);
        for (int i = 0; i < 100000; ++i) {
            const double kelvin = 1.0 / random.between(1e-5, 1e-3);
            ASSERT_EQ(colours.code_at(kelvin), lumivar::black_body_code(kelvin, white)) << kelvin;
        }
        // Where codes meet: each side of every border that the sum has between two whole kelvins.
        auto below = lumivar::black_body_code(1000.0, white);
        for (int kelvin = 1001; kelvin <= 12000; ++kelvin) {
            const auto above = lumivar::black_body_code(kelvin, white);
            if (above != below) {
                double low = kelvin - 1;
                double high = kelvin;
                while (high - low > 1e-9) {
                    const double middle = 0.5 * (low + high);
                    (lumivar::black_body_code(middle, white) == below ? low : high) = middle;
                }
                ASSERT_EQ(colours.code_at(low), lumivar::black_body_code(low, white)) << low;
                ASSERT_EQ(colours.code_at(high), lumivar::black_body_code(high, white)) << high;
            }
            below = above;
        }
    }
}

TEST(StarColours, ClampsTheTemperature) {
    const lumivar::StarColours colours(lumivar::WhitePoint::D65);
    const auto coldest = lumivar::black_body_code(1000.0, lumivar::WhitePoint::D65);
    const auto hottest = lumivar::black_body_code(100000.0, lumivar::WhitePoint::D65);
    for (const double kelvin : {1000.0, 999.9, 1.0, 0.0, -5.0, -HUGE_VAL, std::nan("")}) {
        EXPECT_EQ(colours.code_at(kelvin), coldest) << kelvin;
    }
    for (const double kelvin : {1e5, 1.00001e5, 1e300, HUGE_VAL}) {
        EXPECT_EQ(colours.code_at(kelvin), hottest) << kelvin;
    }
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
