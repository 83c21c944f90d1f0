#include "display_codes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

namespace {

using lumivar::Encoding;
using lumivar::LinearImage;

LinearImage flat(float value, int side) {
    return {side, side,
            std::vector<float>(3 * static_cast<std::size_t>(side) * static_cast<std::size_t>(side),
                               value)};
}

double mean(const std::vector<std::uint8_t>& codes) {
    double sum = 0.0;
    for (const std::uint8_t code : codes) {
        sum += code;
    }
    return sum / static_cast<double>(codes.size());
}

TEST(Dithering, KeepsTheMeanOfEveryValue) {
    for (const double value : {0.1, 0.25, 0.5, 3.4, 100.75, 254.3, 254.9}) {
        const auto codes =
            lumivar::dithered_codes_8(flat(static_cast<float>(value / 255.0), 200), Encoding::Done);
        // 120 000 samples of a spread of half a code at most: 0.0014 is one sigma.
        EXPECT_NEAR(mean(codes), value, 0.006);
        for (const std::uint8_t code : codes) {
            ASSERT_LE(std::fabs(code - value), 1.0);
        }
    }
}

TEST(Dithering, LeavesBlackAndWhite) {
    for (const Encoding encoding : {Encoding::Done, Encoding::Srgb}) {
        for (const auto& [value, code] : {std::pair<float, int>{0.0F, 0},
                                          std::pair<float, int>{1.0F, 255},
                                          {7.0F, 255},
                                          {-3.0F, 0}}) {
            const auto codes = lumivar::dithered_codes_8(flat(value, 50), encoding);
            EXPECT_EQ(std::set<int>(codes.begin(), codes.end()), std::set<int>{code}) << value;
        }
    }
}

TEST(Dithering, IsTheSameEachTimeAndAnotherInEachChannel) {
    const LinearImage image = flat(0.3F, 64);
    const auto codes = lumivar::dithered_codes_8(image, Encoding::Srgb);
    EXPECT_EQ(lumivar::dithered_codes_8(image, Encoding::Srgb), codes);
    std::size_t grey = 0;
    for (std::size_t i = 0; i < codes.size(); i += 3) {
        grey += codes[i] == codes[i + 1] && codes[i] == codes[i + 2];
    }
    EXPECT_LT(grey, codes.size() / 3);
}

TEST(Codes, AreTheNearestOnes) {
    // The curve by hand: 0.2 is 0.484529, 0.5 is 0.735357, 0.002 is 0.02584.
    const LinearImage image{
        2, 1, {0.2F, 0.5F, 0.002F, 1.5F, -1.0F, std::numeric_limits<float>::quiet_NaN()}};
    EXPECT_EQ(lumivar::codes_8(image, Encoding::Srgb),
              (std::vector<std::uint8_t>{124, 188, 7, 255, 0, 0}));
    EXPECT_EQ(lumivar::codes_16(image, Encoding::Srgb),
              (std::vector<std::uint16_t>{31754, 48192, 1693, 65535, 0, 0}));
    EXPECT_EQ(lumivar::codes_8(image, Encoding::Done),
              (std::vector<std::uint8_t>{51, 128, 1, 255, 0, 0}));
}

}  // namespace
