// The records byte by byte: the same on every machine.
#include "database/stars_writer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using lumivar::CatalogueStar;
using lumivar::StarRecord;

StarRecord record_of(const std::string& bytes) {
    EXPECT_EQ(bytes.size(), lumivar::kStarRecordBytes);
    StarRecord record{};
    std::memcpy(record.data(), bytes.data(), record.size());
    return record;
}

TEST(StarRecordLayout, HeaderIsTheMagicAndZeros) {
    EXPECT_EQ(lumivar::encode_header(), record_of("LUMIVAR2" + std::string(24, '\0')));
}

TEST(StarRecordLayout, FieldsAreLittleEndianWithAZeroInTheReservedByte) {
    using namespace std::string_literals;
    // By hand from IEEE 754: 1.5 = 3FF8000000000000, -45 = C046800000000000, 0.25F = 3E800000,
    // -1 = BFF0000000000000.
    CatalogueStar star;
    star.lon = 1.5;
    star.lat = -45.0;
    star.luminance = 0.25F;
    star.rgb = {1, 128, 255};
    star.distance = -1.0;
    EXPECT_EQ(lumivar::encode_star(star), record_of("\0\0\0\0\0\0\xF8\x3F"
                                                    "\0\0\0\0\0\x80\x46\xC0"
                                                    "\0\0\x80\x3E"
                                                    "\x01\x80\xFF\0"
                                                    "\0\0\0\0\0\0\xF0\xBF"s));
}

TEST(StarRecordLayout, EveryByteOfANumberHasItsPlace) {
    CatalogueStar star;
    star.lon = 0x1.1020304050607p-1;  // exponent -1: 3FE, then the digits: 3F E1 02 03 04 05 06 07
    star.luminance = 0x1.040608p-1F;  // 3F 02 03 04
    const StarRecord record = lumivar::encode_star(star);
    EXPECT_EQ(std::memcmp(record.data(), "\x07\x06\x05\x04\x03\x02\xE1\x3F", 8), 0);
    EXPECT_EQ(std::memcmp(record.data() + 16, "\x04\x03\x02\x3F", 4), 0);
}

}  // namespace
