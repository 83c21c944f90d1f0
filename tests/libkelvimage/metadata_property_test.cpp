// Records of random names and values, to text and back. What the text form is to carry, and what it
// is known not to, is told by rules of this test's own.
#include <base/exceptions.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

#include "metadata.h"
#include "support/captured_output.h"
#include "support/random_numbers.h"

namespace {

constexpr int kRounds = 5000;

/// Up to `longest` characters, those with a meaning in the text form being common.
std::string random_text(RandomNumbers& random, int longest) {
    static constexpr char kMeant[] = {' ', ' ', '"', '"', '\\', '\\', '=', ':'};
    std::string result;
    for (int left = random.whole(0, longest); left > 0; --left) {
        result += random.chance(0.25) ? random.of(kMeant) : static_cast<char>(random.whole(1, 255));
    }
    return result;
}
/// Any pattern of bits: not-a-numbers, infinities and denormals too; every other one of a common
/// size.
float random_float(RandomNumbers& random) {
    return random.chance(0.5) ? std::bit_cast<float>(random.bits())
                              : static_cast<float>(random.whole(-1000000, 1000000)) / 1024.0F;
}

bool has(const std::string& text, char character) {
    return text.find(character) != std::string::npos;
}

/// Whether the text form holds an entry of this name.
bool name_is_held(const std::string& name) { return !has(name, ' ') && !has(name, '='); }

/// Whether the text form gives a string back: in quotes if it has no backslash, without if it does
/// not begin as a quoted one does and is not empty.
bool string_is_kept(const std::string& value) {
    return has(value, ' ') ? !has(value, '\\') : !value.empty() && value[0] != '"';
}

/// Whether a float may have become the other: it keeps six significant digits, that is half a unit
/// of the sixth, at most five millionths.
bool float_is_kept(float before, float after) {
    if (std::isnan(before)) {
        return std::isnan(after);
    }
    if (std::isinf(before) || before == 0.0F) {
        return after == before && std::signbit(after) == std::signbit(before);
    }
    const double error = std::fabs(static_cast<double>(after) - static_cast<double>(before));
    // And then the nearest float.
    return error <= std::fabs(static_cast<double>(before)) * (5e-6 + 0x1p-24) + 0x1p-150;
}

Matrix random_matrix(RandomNumbers& random) {
    Matrix m(0.0F);
    for (int i = 0; i < 16; ++i) {
        m(i / 4, i % 4) = random_float(random);
    }
    return m;
}

TEST(MetadataProperty, StringsComeBackIfAndOnlyIfTheRuleSaysSo) {
    RandomNumbers random(4201);
    int kept = 0;
    int lost = 0;
    const CapturedOutput warnings(stderr);
    for (int round = 0; round < 4 * kRounds; ++round) {
        const std::string value = random_text(random, 12);
        MetaData record;
        set_string(record, "n", value);
        const std::string text = record.stringify().c_str();
        MetaData read;
        bool same = false;
        // Whatever the text: a value or an exception of the family.
        try {
            read.from_string(text.c_str());
            same = string_of(read, "n") == value;
        } catch (const Xception&) {
        }
        ASSERT_EQ(same, string_is_kept(value)) << text;
        (same ? kept : lost)++;
    }
    EXPECT_GT(kept, kRounds / 2);
    EXPECT_GT(lost, kRounds / 2);
}

TEST(MetadataProperty, FloatsKeepSixDigits) {
    RandomNumbers random(4202);
    for (int round = 0; round < kRounds; ++round) {
        const float value = random_float(random);
        MetaData record;
        set_float(record, "n", value);
        MetaData read;
        read.from_string(record.stringify().c_str());
        ASSERT_TRUE(float_is_kept(value, float_of(read, "n"))) << value;
        // What has been rounded once is not rounded again.
        MetaData again;
        again.from_string(read.stringify().c_str());
        ASSERT_TRUE(again == read) << value;
    }
}

TEST(MetadataProperty, WholeRecordsComeBack) {
    RandomNumbers random(4203);
    for (int round = 0; round < kRounds; ++round) {
        MetaData record;
        for (int left = random.whole(0, 23); left > 0; --left) {
            const std::string name = std::to_string(left) + random_text(random, 6);
            const std::string value = random_text(random, 20);
            if (!name_is_held(name)) {
                continue;
            }
            switch (random.whole(0, 2)) {
                case 0:
                    set_float(record, name.c_str(), static_cast<float>(random.whole(-1000, 1000)));
                    break;
                case 1:
                    if (string_is_kept(value)) {
                        set_string(record, name.c_str(), value);
                    }
                    break;
                default:
                    set_matrix(record, name.c_str(), random_matrix(random));
            }
        }
        const String text = record.stringify();
        MetaData read;
        read.from_string(text.c_str());
        ASSERT_TRUE(read == record) << text.c_str();
        // A copy equals its source, not-a-numbers included.
        ASSERT_TRUE(MetaData(record) == record) << text.c_str();
    }
}

TEST(MetadataProperty, AnyTextIsReadOrRefused) {
    // Good texts with a few characters changed, left out or cut off. The sanitizers watch.
    RandomNumbers random(4204);
    int read = 0;
    int refused = 0;
    const CapturedOutput warnings(stderr);
    for (int round = 0; round < 4 * kRounds; ++round) {
        MetaData record;
        set_float(record, "gain", random_float(random));
        set_string(record, "title", random_text(random, 10));
        set_matrix(record, "camera", random_matrix(random));
        std::string text = record.stringify().c_str();
        for (int left = random.whole(0, 2); left > 0 && text.size() > 12; --left) {
            const std::size_t place =
                9 + static_cast<std::size_t>(random.whole(0, static_cast<int>(text.size()) - 10));
            switch (random.whole(0, 2)) {
                case 0:
                    text[place] = "  \"\\=:ax"[random.whole(0, 7)];
                    break;
                case 1:
                    text.erase(place, 1);
                    break;
                default:
                    text.resize(place);
            }
        }
        MetaData result;
        try {
            result.from_string(text.c_str());
            ++read;
        } catch (const Xception&) {
            ++refused;
        }
        // Either way the record is sound.
        ASSERT_TRUE(MetaData(result) == result);
    }
    EXPECT_GT(read, kRounds);
    EXPECT_GT(refused, kRounds);
}

}  // namespace
