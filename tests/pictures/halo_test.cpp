// The halo against its Gaussians, worked out in double precision.
#include "halo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <vector>

namespace {

using lumivar::LinearImage;

LinearImage dark_image(int width, int height) {
    return {
        width, height,
        std::vector<float>(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height))};
}

float& sample(LinearImage& image, int x, int y, int channel) {
    return image.samples[3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width) +
                              static_cast<std::size_t>(x)) +
                         static_cast<std::size_t>(channel)];
}

double light_of(const LinearImage& image, std::size_t channel) {
    double light = 0.0;
    for (std::size_t i = channel; i < image.samples.size(); i += 3) {
        light += static_cast<double>(image.samples[i]);
    }
    return light;
}

struct Part {
    double share, sigma;
};
// At 1920 pixels of width: 0.77 of the light stays, the rest goes into these.
const std::vector<Part> kParts = {{0.10, 3.0}, {0.06, 8.0}, {0.04, 24.0}, {0.03, 70.0}};

/// Of a star of light 1, at a distance, beside what stays.
double profile(double distance, double scale, double strength) {
    double light = 0.0;
    for (const Part& part : kParts) {
        const double sigma = part.sigma * scale;
        light += strength * part.share / (2.0 * std::numbers::pi * sigma * sigma) *
                 std::exp(-0.5 * distance * distance / (sigma * sigma));
    }
    return light;
}

/// Of the Gaussians that reach so far 0.6 % of their peaks.
double allowance(double distance, double scale) {
    double allowed = 0.0;
    for (const Part& part : kParts) {
        const double sigma = part.sigma * scale;
        if (distance < 4.5 * sigma) {
            allowed += 0.006 * part.share / (2.0 * std::numbers::pi * sigma * sigma);
        }
    }
    return allowed;
}

TEST(HaloAllowance, TellsAnotherWidthOfTheWidestGaussian) {
    // 75 instead of 70 pixels: at the distance where the two differ most beyond the narrow ones.
    const auto gaussian = [](double sigma, double distance) {
        return 0.03 / (2.0 * std::numbers::pi * sigma * sigma) *
               std::exp(-0.5 * distance * distance / (sigma * sigma));
    };
    EXPECT_GT(std::fabs(gaussian(75, 115) - gaussian(70, 115)), allowance(115, 1.0));
}

class StarsHalo : public testing::TestWithParam<int> {};

TEST_P(StarsHalo, IsTheSumOfItsGaussians) {
    const int width = GetParam();
    const double scale = width / 1920.0;
    const int height = width * 9 / 16;
    // Places that lie differently in the halved images.
    for (const int shift : {0, 1, 2, 5, 11, 16}) {
        LinearImage image = dark_image(width, height);
        const int cx = width / 2 + shift;
        const int cy = height / 2 - shift;
        sample(image, cx, cy, 1) = 1000.0F;
        lumivar::add_halo(image, 1.0);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double distance = std::hypot(x - cx, y - cy);
                if (distance == 0.0 || distance > 3.0 * 70.0 * scale) {
                    continue;
                }
                const double expected = 1000.0 * profile(distance, scale, 1.0);
                ASSERT_NEAR(static_cast<double>(sample(image, x, y, 1)), expected,
                            1000.0 * allowance(distance, scale))
                    << width << ": " << x - cx << ", " << y - cy;
            }
        }
        EXPECT_NEAR(static_cast<double>(sample(image, cx, cy, 1)),
                    1000.0 * (0.77 + profile(0.0, scale, 1.0)), 1.0);
    }
}

TEST_P(StarsHalo, KeepsTheLightOfEachChannel) {
    const int width = GetParam();
    LinearImage image = dark_image(width, width * 9 / 16);
    for (int i = 0; i < 7; ++i) {
        for (int channel = 0; channel < 3; ++channel) {
            // Far from the edges: 7 sigmas of the widest Gaussian.
            sample(image, width / 2 + 5 * i - 15, width * 9 / 32 + i - 3, channel) =
                static_cast<float>(1 + i * (channel + 1));
        }
    }
    std::vector<double> before;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        before.push_back(light_of(image, channel));
    }
    lumivar::add_halo(image, 1.0);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        EXPECT_NEAR(light_of(image, channel), before[channel], 1e-3 * before[channel]);
    }
}

INSTANTIATE_TEST_SUITE_P(Widths, StarsHalo, testing::Values(640, 961, 1920),
                         testing::PrintToStringParamName());

TEST(Halo, IsRound) {
    LinearImage image = dark_image(1920, 1080);
    sample(image, 960, 540, 0) = 1.0F;
    lumivar::add_halo(image, 1.0);
    // Pythagorean triples: the same distance in several directions.
    for (const auto& [a, b, c] : {std::array{3, 4, 5}, {20, 21, 29}, {36, 77, 85}, {39, 80, 89}}) {
        const double straight = static_cast<double>(sample(image, 960 + c, 540, 0));
        for (const auto& [dx, dy] :
             {std::array{a, b}, {b, a}, {-a, b}, {-b, -a}, {0, c}, {0, -c}}) {
            EXPECT_NEAR(static_cast<double>(sample(image, 960 + dx, 540 + dy, 0)), straight,
                        0.015 * straight)
                << dx << ", " << dy;
        }
    }
}

TEST(Halo, GivesAwayByItsStrength) {
    for (const double strength : {0.0, 0.5, 2.0, lumivar::kStrongestHalo}) {
        LinearImage image = dark_image(1920, 1080);
        sample(image, 960, 540, 2) = 1.0F;
        lumivar::add_halo(image, strength);
        EXPECT_NEAR(static_cast<double>(sample(image, 960, 540, 2)),
                    1.0 - 0.23 * strength + profile(0.0, 1.0, strength), 1e-3 * (1.0 + strength));
        EXPECT_NEAR(light_of(image, 2), 1.0, 1e-3);
        EXPECT_EQ(light_of(image, 0), 0.0);
    }
}

TEST(Halo, OfStrengthNoneLeavesEveryBit) {
    LinearImage image = dark_image(5, 3);
    for (std::size_t i = 0; i < image.samples.size(); ++i) {
        image.samples[i] = 0.1F * static_cast<float>(i);
    }
    const std::vector<float> before = image.samples;
    lumivar::add_halo(image, 0.0);
    EXPECT_EQ(image.samples, before);
}

TEST(Halo, LeavesAloneWhatIsNotFinite) {
    LinearImage image = dark_image(64, 64);
    sample(image, 10, 10, 0) = std::numeric_limits<float>::quiet_NaN();
    sample(image, 50, 50, 0) = std::numeric_limits<float>::infinity();
    sample(image, 30, 30, 0) = 1.0F;
    lumivar::add_halo(image, 1.0);
    EXPECT_TRUE(std::isnan(sample(image, 10, 10, 0)));
    EXPECT_TRUE(std::isinf(sample(image, 50, 50, 0)));
    sample(image, 10, 10, 0) = sample(image, 50, 50, 0) = 0.0F;
    for (const float value : image.samples) {
        ASSERT_TRUE(std::isfinite(value));
    }
}

TEST(Halo, FitsFramesOfAnyShape) {
    for (const auto& [width, height] :
         {std::array{1, 1}, {2, 1}, {1, 300}, {3000, 1}, {4096, 3}, {17, 31}}) {
        LinearImage image = dark_image(width, height);
        sample(image, width / 2, height / 2, 0) = 1.0F;
        lumivar::add_halo(image, 1.0);
        const double light = light_of(image, 0);
        EXPECT_GT(light, 0.77) << width << " x " << height;
        EXPECT_LT(light, 1.001) << width << " x " << height;
    }
}

}  // namespace
