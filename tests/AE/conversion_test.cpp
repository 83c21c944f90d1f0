#include <AE/render.h>
#include <base/exceptions.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "fake_host.h"
#include "support/path_in_use.h"

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
        for (int y = 0; y < kRowCount; ++y) {
            for (int x = 0; x < 3; ++x) {
                float* pixel = image.line_float(y) + 4 * x;
                pixel[0] = 0.75F;  // the image's alpha, which is of no account
                for (int channel = 0; channel < 3; ++channel) {
                    pixel[1 + channel] = channel == x ? kRows[y].value : 0.25F;
                }
            }
        }
    }

    Kelv::Image image;
};

// 0.25 x 255 + 0.5 = 64.25; 0.25 x 32768 = 8192.
constexpr int kQuarter8 = 64;
constexpr int kQuarter16 = 8192;

}  // namespace

/// On either draw path.
class Conversion : public testing::TestWithParam<DrawPath> {
    support::PathInUse path_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Paths, Conversion, testing::ValuesIn(support::kBothPaths),
                         [](const auto& tested) { return support::name_of(tested.param); });

TEST_P(Conversion, EightBits) {
    Frame frame;
    FakeWorld world(3, kRowCount, PF_PixelFormat_ARGB32);
    convert_image(frame.image, PF_PixelFormat_ARGB32, &world.world);
    for (int y = 0; y < kRowCount; ++y) {
        for (int x = 0; x < 3; ++x) {
            SCOPED_TRACE(testing::Message() << kRows[y].value << " in channel " << x);
            const PF_Pixel pixel = world.at8(x, y);
            EXPECT_EQ(pixel.alpha, 255);
            EXPECT_EQ(pixel.red, x == 0 ? kRows[y].code8 : kQuarter8);
            EXPECT_EQ(pixel.green, x == 1 ? kRows[y].code8 : kQuarter8);
            EXPECT_EQ(pixel.blue, x == 2 ? kRows[y].code8 : kQuarter8);
        }
    }
    EXPECT_TRUE(world.margins_intact());
}

TEST_P(Conversion, SixteenBits) {
    Frame frame;
    FakeWorld world(3, kRowCount, PF_PixelFormat_ARGB64);
    convert_image(frame.image, PF_PixelFormat_ARGB64, &world.world);
    for (int y = 0; y < kRowCount; ++y) {
        for (int x = 0; x < 3; ++x) {
            SCOPED_TRACE(testing::Message() << kRows[y].value << " in channel " << x);
            const PF_Pixel16 pixel = world.at16(x, y);
            EXPECT_EQ(pixel.alpha, 32768);
            EXPECT_EQ(pixel.red, x == 0 ? kRows[y].code16 : kQuarter16);
            EXPECT_EQ(pixel.green, x == 1 ? kRows[y].code16 : kQuarter16);
            EXPECT_EQ(pixel.blue, x == 2 ? kRows[y].code16 : kQuarter16);
        }
    }
    EXPECT_TRUE(world.margins_intact());
}

TEST_P(Conversion, FloatsAreCopiedAsTheyAre) {
    Frame frame;
    FakeWorld world(3, kRowCount, PF_PixelFormat_ARGB128);
    convert_image(frame.image, PF_PixelFormat_ARGB128, &world.world);
    for (int y = 0; y < kRowCount; ++y) {
        for (int x = 0; x < 3; ++x) {
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
        }
    }
    EXPECT_TRUE(world.margins_intact());
}

TEST_P(Conversion, CodesOfAThousandRandomFloats) {
    // A second formulation: in double, by floor and clamping. Where the sum is within rounding of a
    // whole number the single-precision sum may step over it, and the two may differ by one.
    std::mt19937 random(20260101);
    std::uniform_real_distribution<float> values(-0.5F, 1.5F);
    constexpr int kCount = 1000;
    Kelv::Image image(Kelv::ImageSpec(kCount, 1, Kelv::ImageSpec::BGRA_FLOAT));
    for (int i = 0; i < 4 * kCount; ++i) {
        image.line_float(0)[i] = values(random);
    }
    FakeWorld world8(kCount, 1, PF_PixelFormat_ARGB32);
    FakeWorld world16(kCount, 1, PF_PixelFormat_ARGB64);
    convert_image(image, PF_PixelFormat_ARGB32, &world8.world);
    convert_image(image, PF_PixelFormat_ARGB64, &world16.world);
    const auto expect_code = [](int code, float value, int scale) {
        const double sum = 0.5 + double{value} * scale;
        const double exact = std::min(std::max(std::floor(sum), 0.0), double(scale));
        const bool near_step = std::fabs(sum - std::round(sum)) < scale * 2e-7;
        EXPECT_NEAR(code, exact, near_step ? 1 : 0) << value;
    };
    for (int x = 0; x < kCount; ++x) {
        const float* pixel = image.line_float(0) + 4 * x;
        expect_code(world8.at8(x, 0).red, pixel[1], 255);
        expect_code(world8.at8(x, 0).green, pixel[2], 255);
        expect_code(world8.at8(x, 0).blue, pixel[3], 255);
        expect_code(world16.at16(x, 0).red, pixel[1], 32768);
        expect_code(world16.at16(x, 0).green, pixel[2], 32768);
        expect_code(world16.at16(x, 0).blue, pixel[3], 32768);
    }
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
    Frame frame;
    for (const auto& [format, number] :
         std::map<PF_PixelFormat, std::string>{{PF_PixelFormat_BGRA32, "1634887522"},
                                               {PF_PixelFormat_INVALID, "1717854562"},
                                               {0, "0"},
                                               {-1, "-1"}}) {
        FakeWorld world(3, kRowCount, PF_PixelFormat_ARGB32);
        try {
            convert_image(frame.image, format, &world.world);
            ADD_FAILURE() << "format " << number << " was taken";
        } catch (const StrXception& failure) {
            const std::string message = failure.message().c_str();
            EXPECT_EQ(message.rfind("unhandled PF_Pixelformat " + number + " in <", 0), 0U)
                << message;
            EXPECT_NE(message.find("> (AE/LumivarAE.cpp:821)"), std::string::npos) << message;
        }
        EXPECT_TRUE(world.untouched());
    }
}
