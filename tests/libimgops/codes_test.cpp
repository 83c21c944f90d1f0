// Both conversions to hosts' codes, the plain one and the kernels', against their definition.
#include <gtest/gtest.h>
#include <libimgops/codes.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "kernels/kernel_sets.h"
#include "support/path_in_use.h"
#include "support/random_numbers.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Half a code more than value x full scale, in single precision, cut and held within the scale.
int expected_code(float x, int full) {
    const float scaled = 0.5F + x * static_cast<float>(full);
    if (std::isnan(scaled) || scaled <= 0) {
        return 0;
    }
    return scaled >= static_cast<float>(full) ? full : static_cast<int>(std::floor(scaled));
}

/// Numbers around every code's lower end, and those that have none.
std::vector<float> interesting(int full) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    const auto signalling = std::bit_cast<float>(0x7f800001U);
    std::vector<float> values = {
        0.0F,   -0.0F, 1e-45F, -1e-45F,   1e-38F,     -1e-38F,    1e10F,
        -1e10F, 3e38F, -3e38F, kInfinity, -kInfinity, kNone,      -kNone,
        1e9F,   -1e9F, 1,      1.5F,      -1,         signalling, 2147483648.0F / 255};
    for (int code = 0; code <= full; ++code) {
        for (const double middle : {code, code - 1}) {
            for (const double half : {0.0, 0.5}) {
                float x = static_cast<float>((middle + half) / full);
                x = std::nextafter(std::nextafter(x, -kInfinity), -kInfinity);
                for (int i = 0; i < 5; ++i) {
                    values.push_back(x);
                    x = std::nextafter(x, kInfinity);
                }
            }
        }
    }
    return values;
}

template <class Code>
struct Conversion {
    void (*function)(const float*, void*, std::size_t);
    int full;
};
const Conversion<std::uint8_t> kTo8 = {to_8_bit_codes, 255};
const Conversion<std::uint16_t> kTo16 = {to_16_bit_codes, 32768};

template <class Code>
void expect_every_value(const Conversion<Code>& to) {
    std::vector<float> pixels;
    for (const float value : interesting(to.full)) {
        // In each colour in turn; coverage of every kind.
        const std::size_t k = pixels.size() / 4;
        const float others = static_cast<float>(k % 7) / 6;
        pixels.insert(pixels.end(), {k % 2 == 0 ? value : others, others, others, others});
        pixels[4 * k + 1 + k % 3] = value;
    }
    std::vector<Code> codes(pixels.size());
    to.function(pixels.data(), codes.data(), pixels.size() / 4);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        ASSERT_EQ(codes[i], i % 4 == 0 ? to.full : expected_code(pixels[i], to.full))
            << pixels[i] << " in channel " << i % 4;
    }
}

template <class Code>
void expect_every_count_and_place(const Conversion<Code>& to) {
    constexpr std::size_t kMost = 67;
    constexpr unsigned char kGuard = 0xa5;
    RandomNumbers random(1);
    for (std::size_t count = 0; count <= kMost; ++count) {
        // Exactly as long as it is, so that a sanitizer sees a read beyond it.
        std::vector<float> pixels(4 * count);
        for (float& value : pixels) {
            value = static_cast<float>(random.between(-0.1, 1.1));
        }
        for (std::size_t offset = 0; offset < 64; ++offset) {
            std::vector<unsigned char> bytes(offset + sizeof(Code) * 4 * count + 70, kGuard);
            to.function(pixels.data(), bytes.data() + offset, count);
            for (std::size_t i = 0; i < 4 * count; ++i) {
                Code code;
                std::memcpy(&code, bytes.data() + offset + sizeof code * i, sizeof code);
                ASSERT_EQ(code, i % 4 == 0 ? to.full : expected_code(pixels[i], to.full));
            }
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                if (i < offset || i >= offset + sizeof(Code) * 4 * count) {
                    ASSERT_EQ(bytes[i], kGuard) << count << " pixels at " << offset << ": " << i;
                }
            }
        }
    }
}

}  // namespace

/// Has the conversion of the set of kernels in use that the parameter names, or the plain one.
class Codes : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (GetParam() == "plain") {
            path_.emplace(DrawPath::Plain);
        } else if (const star_kernels::Kernels* set = kernel_sets::runnable(GetParam())) {
            path_.emplace(DrawPath::Fast);
            set_.emplace(set);
        } else {
            GTEST_SKIP() << kernel_sets::why_not_run(GetParam());
        }
    }

private:
    std::optional<support::PathInUse> path_;
    std::optional<kernel_sets::InUse> set_;
};

TEST_P(Codes, AreThoseOfTheDefinitionAroundEveryBoundary) {
    expect_every_value(kTo8);
    expect_every_value(kTo16);
}

TEST_P(Codes, AreWrittenAnywhereAndNotBeyond) {
    expect_every_count_and_place(kTo8);
    expect_every_count_and_place(kTo16);
}

INSTANTIATE_TEST_SUITE_P(Plain, Codes, testing::Values("plain"));
INSTANTIATE_TEST_SUITE_P(Kernels, Codes, testing::ValuesIn(kernel_sets::all_sets()),
                         [](const auto& tested) { return tested.param; });
