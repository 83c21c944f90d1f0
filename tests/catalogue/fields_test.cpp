// Lines to fields, and fields to numbers.
#include "tables/fields.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tables/number.h"

namespace {

using lumivar::FieldSplitter;
using lumivar::FieldState;
using Fields = std::vector<std::string>;

Fields split(const std::string& line, char separator = ',') {
    FieldSplitter splitter(separator);
    EXPECT_TRUE(splitter.split("left,over")) << line;
    EXPECT_TRUE(splitter.split(line)) << line;
    return {splitter.fields().begin(), splitter.fields().end()};
}

TEST(FieldSplitter, CutsAtSeparatorsOutsideQuotesAndDropsOuterBlanks) {
    EXPECT_EQ(split("a,b,c"), (Fields{"a", "b", "c"}));
    EXPECT_EQ(split(" a b ,\t, "), (Fields{"a b", "", ""}));
    EXPECT_EQ(split(""), Fields{""});
    EXPECT_EQ(split(","), (Fields{"", ""}));
    EXPECT_EQ(split(R"("a, b", "say ""x""" ,"")"), (Fields{"a, b", "say \"x\"", ""}));
    EXPECT_EQ(split(R"(5" mirror,x)"), (Fields{"5\" mirror", "x"})) << "a quote within is text";
    EXPECT_EQ(split("a; b;;", ';'), (Fields{"a", "b", "", ""}));
    EXPECT_EQ(split("\t1\t\t 2 ", '\t'), (Fields{"", "1", "", "2"}));
    EXPECT_EQ(split("\"a\"\t\"b\"", '\t'), (Fields{"a", "b"}));
    EXPECT_EQ(split("  1  -2.5\t3 ", lumivar::kAnyBlanks), (Fields{"1", "-2.5", "3"}));
    FieldSplitter splitter(',');
    EXPECT_FALSE(splitter.split("\"abc"));
    EXPECT_FALSE(splitter.split("\"abc\"\""));
    EXPECT_FALSE(splitter.split("\"abc\"d,e"));
}

TEST(FieldAt, StandsAtFixedBytesAndEndsWithItsLine) {
    EXPECT_EQ(lumivar::field_at("abc  12 x", {3, 5}), "12");
    EXPECT_EQ(lumivar::field_at("abc  12", {3, 50}), "12");
    EXPECT_EQ(lumivar::field_at("abc", {3, 5}), "");
    EXPECT_EQ(lumivar::field_at("abc", {300, 5}), "");
}

TEST(ShownField, IsShortAndPrintable) {
    EXPECT_EQ(lumivar::shown_field("\x1b[31m"), "?[31m");
    EXPECT_EQ(lumivar::shown_field(std::string(50, 'y')), std::string(40, 'y') + "...");
}

TEST(ParseNumber, TellsNumbersFromMissingAndMalformedOnes) {
    for (const auto& [text, value] :
         {std::pair("1", 1.0), std::pair("-0.5", -0.5), std::pair("+01.5", 1.5),
          std::pair(".25", 0.25), std::pair("2.5e-05", 2.5e-05), std::pair("1E3", 1000.0)}) {
        const lumivar::FieldNumber number = lumivar::parse_number(text);
        EXPECT_EQ(number.state, FieldState::Given) << text;
        EXPECT_EQ(number.value, value) << text;
    }
    for (const char* text : {"", "null", "NaN", "nan", "--", "\\N"}) {
        EXPECT_EQ(lumivar::parse_number(text).state, FieldState::Missing) << text;
    }
    for (const char* text :
         {"inf", "-inf", "1e999", "0.5deg", "+", "-", "+-5", "1,5", "0x10", "1 2"}) {
        EXPECT_EQ(lumivar::parse_number(text).state, FieldState::Malformed) << text;
    }
}

TEST(ParseNumber, IsAsExactAsTheStandardsParser) {
    std::mt19937_64 random(20);
    for (int i = 0; i < 200000; ++i) {
        std::string text = std::to_string(random() >> (random() % 60));
        text.insert(random() % (text.size() + 1), ".");
        if (random() % 2 == 0) {
            text.insert(0, "-");
        }
        double expected = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), expected);
        const double value = lumivar::parse_number(text).value;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected))
            << text;
    }
    EXPECT_EQ(lumivar::parse_number(".").state, FieldState::Malformed);
    EXPECT_TRUE(std::signbit(lumivar::parse_number("-0").value));
}

}  // namespace
