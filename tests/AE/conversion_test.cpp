#include <AE/render.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "fake_host.h"
#include "support/expect_throw.h"
#include "support/path_in_use.h"
#include "support/pixels.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

struct Row {
    float value;
    int code8;
    int code16;
};
// By hand: half a code more than value x scale, cut, held within the scale.
const Row kRows[] = {
    {-0.3F, 0, 0},
    {0.0F, 0, 0},
    {-0.0F, 0, 0},
    {0.001F, 0, 33},       // 0.255 + 0.5; 32.768 + 0.5
    {0.00196F, 0, 64},     // 0.4998 + 0.5; 64.225 + 0.5
    {0.00197F, 1, 65},     // 0.50235 + 0.5; 64.553 + 0.5
    {0.5F, 128, 16384},    // 127.5 + 0.5 = 128 exactly
    {0.998F, 254, 32702},  // 254.49 + 0.5; 32702.46 + 0.5
    {0.999F, 255, 32735},  // 254.745 + 0.5; 32735.2 + 0.5
    {1.0F, 255, 32768},
    {1.001F, 255, 32768},
    {2.0F, 255, 32768},
    {1e9F, 255, 32768},
    {1e30F, 255, 32768},
    {-1e30F, 0, 0},
    {std::numeric_limits<float>::max(), 255, 32768},  // overflows to infinity when scaled
    {kInfinity, 255, 32768},
    {-kInfinity, 0, 0},
    {kNaN, 0, 0},
    {-kNaN, 0, 0},
    {std::numeric_limits<float>::denorm_min(), 0, 0},
    // Halves of a 16-bit code: 2^-16 x 32768 = 0.5, and + 0.5 = 1. The number below it comes to
    // 1 - 2^-25, which single precision rounds to 1 as well; the one below that to 1 - 2^-24.
    {0x1p-16F, 0, 1},
    {0x1.fffffep-17F, 0, 1},
    {0x1.fffffcp-17F, 0, 0},
    {-0x1p-16F, 0, 0},
    {0x1.8p-15F, 0, 2},            // 1.5 + 0.5
    {0x1.fffep-1F, 255, 32768},    // 32767.5 + 0.5; 254.996 + 0.5
    {0x1.fffdfep-1F, 255, 32767},  // 32767.498 + 0.5
    {-0x1p-9F, 0, 0},              // -0.498 + 0.5; -64 + 0.5
};
constexpr int kRowCount = sizeof kRows / sizeof kRows[0];

/// One row of pixels for each value, which stands in each of the colours in turn.
class Frame {
public:
    Frame() : image(Kelv::ImageSpec(3, kRowCount, Kelv::ImageSpec::BGRA_FLOAT)) {
        support::for_each_pixel(3, kRowCount, [&](int x, int y) {
            float* pixel = image.line_float(y) + 4 * x;
            pixel[0] = 0.75F;  // the image's alpha, which is of no account
            for (int channel = 0; channel < 3; ++channel) {
                pixel[1 + channel] = channel == x ? kRows[y].value : 0.25F;
            }
        });
    }

    Kelv::Image image;
};

}  // namespace

/// On either draw path.
class Conversion : public testing::TestWithParam<DrawPath> {
    support::PathInUse path_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Paths, Conversion, testing::ValuesIn(support::kBothPaths),
                         [](const auto& tested) { return support::name_of(tested.param); });

namespace {

/// Expects opaque pixels with the code of each row's value in each of the colours in turn. `at`:
/// the world's pixels of a depth; `code`: a row's code at that depth.
template <class Pixel>
void expect_codes(PF_PixelFormat format, Pixel (FakeWorld::*at)(int, int) const, int Row::*code,
                  int full, int quarter) {
    Frame frame;
    FakeWorld world(3, kRowCount, format);
    convert_image(frame.image, format, &world.world);
    support::for_each_pixel(3, kRowCount, [&](int x, int y) {
        SCOPED_TRACE(testing::Message() << kRows[y].value << " in channel " << x);
        const Pixel pixel = (world.*at)(x, y);
        EXPECT_EQ(pixel.alpha, full);
        EXPECT_EQ(pixel.red, x == 0 ? kRows[y].*code : quarter);
        EXPECT_EQ(pixel.green, x == 1 ? kRows[y].*code : quarter);
        EXPECT_EQ(pixel.blue, x == 2 ? kRows[y].*code : quarter);
    });
    EXPECT_TRUE(world.margins_intact());
}

}  // namespace

TEST_P(Conversion, IntegersAreRoundedAndHeldInTheirRange) {
    // A quarter: 0.25 x 255 + 0.5 = 64.25, 0.25 x 32768 + 0.5 = 8192.5.
    expect_codes(PF_PixelFormat_ARGB32, &FakeWorld::at8, &Row::code8, 255, 64);
    expect_codes(PF_PixelFormat_ARGB64, &FakeWorld::at16, &Row::code16, 32768, 8192);
}

TEST_P(Conversion, FloatsAreCopiedAsTheyAre) {
    Frame frame;
    FakeWorld world(3, kRowCount, PF_PixelFormat_ARGB128);
    convert_image(frame.image, PF_PixelFormat_ARGB128, &world.world);
    support::for_each_pixel(3, kRowCount, [&](int x, int y) {
        const PF_PixelFloat pixel = world.at_float(x, y);
        EXPECT_EQ(pixel.alpha, 1.0F);
        const float channels[3] = {pixel.red, pixel.green, pixel.blue};
        for (int channel = 0; channel < 3; ++channel) {
            const float expected = channel == x ? kRows[y].value : 0.25F;
            EXPECT_EQ(std::isnan(channels[channel]), std::isnan(expected));
            if (!std::isnan(expected)) {
                EXPECT_EQ(channels[channel], expected);
            }
        }
    });
    EXPECT_TRUE(world.margins_intact());
}

TEST_P(Conversion, RowsOfALargeImageAreCopiedBeforeTheirMemoryGoesBack) {
    // As large as the least image that gives memory back; every number below is a float exactly.
    constexpr int kWidth = 4096;
    constexpr int kHeight = 2048;
    Kelv::Image image(Kelv::ImageSpec(kWidth, kHeight, Kelv::ImageSpec::BGRA_FLOAT));
    for (int y = 0; y < kHeight; ++y) {
        float* const row = image.line_float(y);
        for (int x = 0; x < kWidth; ++x) {
            row[4 * x + 1] = static_cast<float>(x);
            row[4 * x + 2] = static_cast<float>(y);
            row[4 * x + 3] = static_cast<float>(kWidth * y + x);
        }
    }
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB128);
    convert_image(image, PF_PixelFormat_ARGB128, &world.world);
    int wrong = 0;
    support::for_each_pixel(kWidth, kHeight, [&](int x, int y) {
        const PF_PixelFloat pixel = world.at_float(x, y);
        const bool is_right = pixel.red == static_cast<float>(x) &&
                              pixel.green == static_cast<float>(y) &&
                              pixel.blue == static_cast<float>(kWidth * y + x);
        wrong += is_right ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(world.margins_intact());
}

TEST_P(Conversion, OddRowsOfAHostAreWritten) {
    // 16-bit and float pixels at addresses that suit no number.
    Frame frame;
    for (const PF_PixelFormat format : {PF_PixelFormat_ARGB64, PF_PixelFormat_ARGB128}) {
        FakeWorld world(3, kRowCount, format, 7);
        convert_image(frame.image, format, &world.world);
        EXPECT_TRUE(world.margins_intact());
    }
}

TEST_P(Conversion, OtherFormatsAreRefusedUntouched) {
    const struct {
        PF_PixelFormat format;
        const char* number;
    } rows[] = {{PF_PixelFormat_BGRA32, "1634887522"},
                {PF_PixelFormat_INVALID, "1717854562"},
                {0, "0"},
                {-1, "-1"}};
    Frame frame;
    for (const auto& row : rows) {
        FakeWorld world(3, kRowCount, PF_PixelFormat_ARGB32);
        const std::string message =
            thrown_message([&] { convert_image(frame.image, row.format, &world.world); });
        expect_message(message, "unhandled PF_Pixelformat " + std::string(row.number),
                       "Lumivar_Render", "AE/LumivarAE.cpp");
        EXPECT_NE(message.find(":821)"), std::string::npos) << message;
        EXPECT_TRUE(world.untouched());
    }
}
