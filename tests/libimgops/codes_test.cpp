// The fast conversion to hosts' codes against its definition.
#include "kernels/kernel_sets.h"
#include "plain_fast_scene.h"

#include <gtest/gtest.h>
#include <libimgops/codes.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <iostream>
#include <limits>

namespace {

using namespace plain_fast;

constexpr float INF = std::numeric_limits<float>::infinity();

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
    std::vector<float> values = {0.0F,
                                 -0.0F,
                                 1e-45F,
                                 -1e-45F,
                                 1e-38F,
                                 -1e-38F,
                                 1e10F,
                                 -1e10F,
                                 3e38F,
                                 -3e38F,
                                 INF,
                                 -INF,
                                 std::numeric_limits<float>::quiet_NaN(),
                                 -std::numeric_limits<float>::quiet_NaN(),
                                 2147483648.0F / 255,
                                 1e9F,
                                 -1e9F,
                                 std::bit_cast<float>(0x7f800001U),
                                 1,
                                 1.5F,
                                 -1};
    for (int code = 0; code <= full; ++code) {
        for (const double middle : {code, code - 1}) {
            for (const double half : {0.0, 0.5}) {
                float x = static_cast<float>((middle + half) / full);
                x = std::nextafter(std::nextafter(x, -INF), -INF);
                for (int i = 0; i < 5; ++i) {
                    values.push_back(x);
                    x = std::nextafter(x, INF);
                }
            }
        }
    }
    return values;
}

template <class Code>
struct Conversion {
    void (*star_kernels::Kernels::*function)(const float*, void*, std::size_t);
    bool (*in_use)(const float*, void*, std::size_t);
    int full;
};
const Conversion<std::uint8_t> TO_8 = {&star_kernels::Kernels::to_8_bits, to_8_bit_codes, 255};
const Conversion<std::uint16_t> TO_16 = {&star_kernels::Kernels::to_16_bits, to_16_bit_codes,
                                         32768};

template <class Code>
void expect_every_value(const Conversion<Code>& to, const star_kernels::Kernels& set) {
    std::vector<float> pixels;
    std::size_t k = 0;
    for (const float value : interesting(to.full)) {
        // In each colour in turn; coverage of every kind.
        const float others = static_cast<float>(k % 7) / 6;
        pixels.insert(pixels.end(), {k % 2 == 0 ? value : others, others, others, others});
        pixels[4 * k + 1 + k % 3] = value;
        ++k;
    }
    std::vector<Code> codes(pixels.size());
    (set.*to.function)(pixels.data(), codes.data(), k);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        ASSERT_EQ(codes[i], i % 4 == 0 ? to.full : expected_code(pixels[i], to.full))
            << pixels[i] << " in channel " << i % 4;
    }
}

template <class Code>
void expect_every_count_and_place(const Conversion<Code>& to, const star_kernels::Kernels& set) {
    constexpr std::size_t MOST = 67;
    constexpr unsigned char GUARD = 0xa5;
    RandomNumbers random(1);
    for (std::size_t count = 0; count <= MOST; ++count) {
        // Exactly as long as it is, so that a sanitizer sees a read beyond it.
        std::vector<float> pixels(4 * count);
        for (float& value : pixels) {
            value = static_cast<float>(random.between(-0.1, 1.1));
        }
        for (std::size_t offset = 0; offset < 64; ++offset) {
            std::vector<unsigned char> bytes(offset + sizeof(Code) * 4 * count + 70, GUARD);
            (set.*to.function)(pixels.data(), bytes.data() + offset, count);
            for (std::size_t i = 0; i < 4 * count; ++i) {
                Code code;
                std::memcpy(&code, bytes.data() + offset + sizeof code * i, sizeof code);
                ASSERT_EQ(code, i % 4 == 0 ? to.full : expected_code(pixels[i], to.full));
            }
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                if (i < offset || i >= offset + sizeof(Code) * 4 * count) {
                    ASSERT_EQ(bytes[i], GUARD) << count << " pixels at " << offset << ": " << i;
                }
            }
        }
    }
}

/// Null when it cannot run here, which is then said by name.
const star_kernels::Kernels* set_to_test(const std::string& name) {
    const star_kernels::Kernels* set = kernel_sets::runnable(name);
    if (set == nullptr) {
        std::cout << "[ NOT RUN  ] " << kernel_sets::why_not_run(name) << "\n";
        testing::Test::RecordProperty("not_run", name);
    }
    return set;
}

}  // namespace

class FastCodes : public testing::TestWithParam<std::string> {};

TEST_P(FastCodes, AreThoseOfTheDefinitionAroundEveryBoundary) {
    if (const star_kernels::Kernels* set = set_to_test(GetParam())) {
        expect_every_value(TO_8, *set);
        expect_every_value(TO_16, *set);
    }
}

TEST_P(FastCodes, AreWrittenAnywhereAndNotBeyond) {
    if (const star_kernels::Kernels* set = set_to_test(GetParam())) {
        expect_every_count_and_place(TO_8, *set);
        expect_every_count_and_place(TO_16, *set);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, FastCodes, testing::ValuesIn(kernel_sets::all_sets()),
                         [](const auto& tested) { return tested.param; });

TEST(Codes, AreMadeByTheSetInUse) {
    const PathInUse fast(DrawPath::fast);
    const float pixel[4] = {0, 0.5F, 1, 2};
    for (const star_kernels::Kernels* set : kernel_sets::all_runnable()) {
        const kernel_sets::InUse in_use(set);
        std::uint8_t bytes[4];
        EXPECT_TRUE(TO_8.in_use(pixel, bytes, 1));
        EXPECT_EQ(bytes[0], 255);
        EXPECT_EQ(bytes[1], 128);
        EXPECT_EQ(bytes[2], 255);
        std::uint16_t words[4];
        EXPECT_TRUE(TO_16.in_use(pixel, words, 1));
        EXPECT_EQ(words[0], 32768);
        EXPECT_EQ(words[1], 16384);
        EXPECT_EQ(words[3], 32768);
    }
}
