// The records byte by byte: the same on every machine.
#include "database/catalogue_star.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "star_table.h"

namespace {

using lumivar::CatalogueStar;

TEST(StarRecordLayout, HeaderIsTheWordOfItsVersionAndZeros) {
    EXPECT_EQ(bytes_of(lumivar::encode_header()), "LUMIVAR2" + std::string(24, '\0'));
    EXPECT_EQ(bytes_of(lumivar::encode_header(1)), "LUMIVAR1" + std::string(24, '\0'));
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
    EXPECT_EQ(bytes_of(lumivar::encode_star(star)),
              "\0\0\0\0\0\0\xF8\x3F"
              "\0\0\0\0\0\x80\x46\xC0"
              "\0\0\x80\x3E"
              "\x01\x80\xFF\0"
              "\0\0\0\0\0\0\xF0\xBF"s);
}

TEST(StarRecordLayout, EveryByteOfANumberHasItsPlace) {
    CatalogueStar star;
    star.lon = 0x1.1020304050607p-1;  // exponent -1: 3FE, then the digits: 3F E1 02 03 04 05 06 07
    star.luminance = 0x1.040608p-1F;  // 3F 02 03 04
    const std::string record = bytes_of(lumivar::encode_star(star));
    EXPECT_EQ(record.substr(0, 8), "\x07\x06\x05\x04\x03\x02\xE1\x3F");
    EXPECT_EQ(record.substr(16, 4), "\x04\x03\x02\x3F");
}

TEST(StarRecordLayout, DecodingKeepsEveryBit) {
    CatalogueStar star;
    star.lon = -0.0;
    star.lat = std::numeric_limits<double>::denorm_min();
    star.luminance = -std::numeric_limits<float>::infinity();
    star.rgb = {0, 127, 255};
    star.distance = std::numeric_limits<double>::quiet_NaN();
    const std::string record = bytes_of(lumivar::encode_star(star));
    EXPECT_EQ(bytes_of(lumivar::encode_star(lumivar::decode_star(lumivar::encode_star(star)))),
              record);
    const CatalogueStar decoded = lumivar::decode_star(lumivar::encode_star(star));
    EXPECT_EQ(decoded.lat, star.lat);
    EXPECT_EQ(decoded.luminance, star.luminance);
    EXPECT_EQ(decoded.rgb, star.rgb);
}

}  // namespace
