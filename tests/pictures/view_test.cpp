// The photo view against its formula in double precision, and against the hue of two colour spaces.
#include "view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <variant>
#include <vector>

#include "look.h"

namespace {

using lumivar::LinearImage;
using lumivar::Look;
using Colour = std::array<double, 3>;

/// Stars' colours from hot to cool, and some that no star has.
const std::vector<Colour> kColours = {
    {0.61, 0.75, 1.0}, {0.8, 0.87, 1.0}, {1.0, 1.0, 1.0}, {1.0, 0.86, 0.70}, {1.0, 0.64, 0.32},
    {1.0, 0.2, 0.05},  {0.05, 1.0, 0.4}, {0.9, 0.1, 1.0}, {1.0, 0.0, 0.0},   {0.3, 0.30001, 0.3}};

double srgb(double linear) {
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}
double linear_of(double encoded) {
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

/// Degrees of hue in Oklab (B. Ottosson, 2020), and how far the colour is from grey.
std::pair<double, double> oklab_hue(const Colour& c) {
    const double l = std::cbrt(0.4122214708 * c[0] + 0.5363325363 * c[1] + 0.0514459929 * c[2]);
    const double m = std::cbrt(0.2119034982 * c[0] + 0.6806995451 * c[1] + 0.1073969566 * c[2]);
    const double s = std::cbrt(0.0883024619 * c[0] + 0.2817188376 * c[1] + 0.6299787005 * c[2]);
    const double a = 1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s;
    const double b = 0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s;
    return {std::atan2(b, a) * 180 / std::numbers::pi, std::hypot(a, b)};
}

LinearImage pixels(const std::vector<Colour>& colours) {
    LinearImage image{static_cast<int>(colours.size()), 1, {}};
    for (const Colour& colour : colours) {
        for (const double channel : colour) {
            image.samples.push_back(static_cast<float>(channel));
        }
    }
    return image;
}

std::vector<std::uint16_t> photo_codes(const std::vector<Colour>& colours, double exposure) {
    Look look;
    look.view = Look::View::Photo;
    look.exposure = exposure;
    look.bits = 16;
    return std::get<std::vector<std::uint16_t>>(lumivar::look_at(pixels(colours), look));
}

TEST(PhotoView, IsItsFormula) {
    for (double stops = -12.0; stops <= 6.0; stops += 0.37) {
        const std::vector<std::uint16_t> codes = photo_codes(kColours, stops);
        for (std::size_t i = 0; i < kColours.size(); ++i) {
            const double largest = *std::max_element(kColours[i].begin(), kColours[i].end());
            const double m = largest * std::pow(2.0, stops);
            for (std::size_t c = 0; c < 3; ++c) {
                const double seen = (1.0 - std::exp(-m)) * kColours[i][c] / largest;
                EXPECT_NEAR(codes[3 * i + c], 65535.0 * srgb(seen), 0.6) << stops << ": " << i;
            }
        }
    }
}

TEST(PhotoView, KeepsHueUpToSixStopsAboveWhite) {
    for (double stops = -4.0; stops <= 6.0; stops += 0.25) {
        const std::vector<std::uint16_t> codes = photo_codes(kColours, stops);
        for (std::size_t i = 0; i < kColours.size(); ++i) {
            const Colour seen = {linear_of(codes[3 * i] / 65535.0),
                                 linear_of(codes[3 * i + 1] / 65535.0),
                                 linear_of(codes[3 * i + 2] / 65535.0)};
            const auto [before, chroma] = oklab_hue(kColours[i]);
            const auto [after, chroma_after] = oklab_hue(seen);
            if (chroma < 0.001) {
                EXPECT_LT(chroma_after, 0.001);  // grey stays grey
                continue;
            }
            EXPECT_LT(std::fabs(std::remainder(after - before, 360.0)), 0.5) << stops << ": " << i;
        }
    }
}

TEST(PhotoView, KeepsTheHueOfRandomColours) {
    std::mt19937 random(20261123);
    std::uniform_real_distribution<double> channel(0.02, 1.0);
    std::uniform_real_distribution<double> stops(-4.0, 6.0);
    for (int i = 0; i < 5000; ++i) {
        Colour colour = {channel(random), channel(random), channel(random)};
        const double largest = *std::max_element(colour.begin(), colour.end());
        for (double& part : colour) {
            part /= largest;
        }
        const double exposure = stops(random);
        const std::vector<std::uint16_t> codes = photo_codes({colour}, exposure);
        const Colour seen = {linear_of(codes[0] / 65535.0), linear_of(codes[1] / 65535.0),
                             linear_of(codes[2] / 65535.0)};
        const auto [before, chroma] = oklab_hue(colour);
        if (chroma < 0.001) {
            continue;  // grey has no hue
        }
        ASSERT_LT(std::fabs(std::remainder(oklab_hue(seen).first - before, 360.0)), 2.0)
            << colour[0] << ", " << colour[1] << ", " << colour[2] << " at " << exposure;
    }
}

TEST(PhotoView, IsMonotonicAndNeverWhiterThanWhite) {
    for (const Colour& colour : kColours) {
        std::array<std::uint16_t, 3> before = {0, 0, 0};
        for (double stops = -20.0; stops <= 20.0; stops += 0.125) {
            const std::vector<std::uint16_t> codes = photo_codes({colour}, stops);
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_GE(codes[c], before[c]) << stops;
                before[c] = codes[c];
            }
        }
        EXPECT_EQ(*std::max_element(before.begin(), before.end()), 65535);
    }
}

TEST(PhotoView, LeavesBlackBlackAndTakesWhatNoLightIs) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    LinearImage image{4,
                      1,
                      {0.0F, 0.0F, 0.0F, -0.5F, 1.0F, -0.0F, kInfinity, 3.0F, kInfinity, kNone,
                       0.5F, -kInfinity}};
    lumivar::view_as_photo(image);
    const float one = static_cast<float>(1.0 - std::exp(-1.0));
    const float half = static_cast<float>(1.0 - std::exp(-0.5));
    const std::vector<float> expected = {0, 0, 0, 0, one, 0, 1, 0, 1, 0, half, 0};
    ASSERT_EQ(image.samples.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_FLOAT_EQ(image.samples[i], expected[i]) << i;
    }
}

TEST(Exposure, IsAFactorOfTwoAStop) {
    LinearImage image{1, 1, {0.25F, -1.0F, 3.0F}};
    lumivar::expose(image, 2.0);
    EXPECT_EQ(image.samples, (std::vector{1.0F, -4.0F, 12.0F}));
    lumivar::expose(image, -1.5);
    EXPECT_FLOAT_EQ(image.samples[0], 0.35355339F);
}

}  // namespace
