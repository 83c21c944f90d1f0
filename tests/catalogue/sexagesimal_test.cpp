#include "astronomy/sexagesimal.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

constexpr double kUntouched = 1234.0;

double hours(std::string_view text) {
    double degrees = kUntouched;
    EXPECT_TRUE(lumivar::parse_hours(text, degrees)) << text;
    return degrees;
}

double degrees_of(std::string_view text) {
    double degrees = kUntouched;
    EXPECT_TRUE(lumivar::parse_degrees(text, degrees)) << text;
    return degrees;
}

// Sirius: 6 h 45 min 8.917 s are 24308.917 s, and 240 s are a degree; 16 degrees 42' 58" are 60178
// arcseconds.
constexpr double kSiriusRa = 24308.917 / 240.0;
constexpr double kSiriusDec = -60178.0 / 3600.0;

TEST(Hours, AreReadInTheUsualNotations) {
    for (const char* text :
         {"06 45 08.917", "06:45:08.917", "6h45m08.917s", "6h 45m 08.917s", "  06 45 08.917  ",
          "+06 45 08.917", "06\t45\t08.917", "06H45M08.917S", "06 : 45 : 08.917", "6h45'8.917\""}) {
        EXPECT_NEAR(hours(text), kSiriusRa, 1e-12) << text;
    }
    EXPECT_NEAR(hours("6 45.25"), 101.3125, 1e-12);
    EXPECT_NEAR(hours("6h45m"), 101.25, 1e-12);
    EXPECT_EQ(hours("00 00 00"), 0.0);
    EXPECT_NEAR(hours("23:59:59.99"), 360.0 - 0.01 / 240.0, 1e-12);
}

TEST(Degrees, AreReadInTheUsualNotations) {
    for (const char* text :
         {"-16 42 58.0", "-16:42:58", "-16d42m58s", "-16D 42M 58S", "-16\u00b042'58\"",
          "-16\u00b0 42\u2032 58\u2033", "\u221216 42 58", "-16\u00b042'58''"}) {
        EXPECT_NEAR(degrees_of(text), kSiriusDec, 1e-12) << text;
    }
    EXPECT_NEAR(degrees_of("+38 47 01"), 139621.0 / 3600.0, 1e-12);
    EXPECT_NEAR(degrees_of("89:15.85"), 89.0 + 15.85 / 60.0, 1e-12);
    EXPECT_NEAR(degrees_of("359 59 59"), 360.0 - 1.0 / 3600.0, 1e-12);
}

TEST(Degrees, KeepTheSignOfZero) {
    EXPECT_NEAR(degrees_of("-00 30 00"), -0.5, 1e-15);
    EXPECT_NEAR(degrees_of("-0d00m36s"), -0.01, 1e-15);
    EXPECT_NEAR(degrees_of("+00 30 00"), 0.5, 1e-15);
}

TEST(Sexagesimal, HasTheNextMinuteForSixtySeconds) {
    EXPECT_NEAR(hours("06 44 60.0"), 101.25, 1e-12);
    EXPECT_NEAR(degrees_of("-16 42 60"), -(16.0 + 43.0 / 60.0), 1e-12);
    // At the end of the day the circle begins anew.
    EXPECT_EQ(hours("23 59 60"), 0.0);
    EXPECT_EQ(hours("24 00 00"), 0.0);
}

TEST(Sexagesimal, RefusesWhatIsNoAngle) {
    for (const std::string text :
         {"",           " ",          "06",          "6.75",      "6h",
          "06:",        "06:45:",     "06 45 08 17", "06 60 00",  "06 45 60.01",
          "06 45.5 08", "06.5 45 00", "06 -45 08",   "06 45 -8",  "06 45 8e1",
          "06 45 nan",  "inf 45 08",  "0x6 45 08",   "06::45",    "06;45;08",
          "six",        "06 45 08 h", "064508",      "--6 45 08", "06 45 08.9.1",
          "\xff\xfe",   "06 45 08x"}) {
        double degrees = kUntouched;
        EXPECT_FALSE(lumivar::parse_hours(text, degrees)) << text;
        EXPECT_FALSE(lumivar::parse_degrees(text, degrees)) << text;
        EXPECT_EQ(degrees, kUntouched) << text;
    }
    double degrees = kUntouched;
    EXPECT_FALSE(lumivar::parse_hours("-06 45 08", degrees));
    EXPECT_FALSE(lumivar::parse_hours("24 00 01", degrees));
    EXPECT_FALSE(lumivar::parse_hours("6d45m08s", degrees));
    EXPECT_FALSE(lumivar::parse_degrees("6h45m08s", degrees));
    EXPECT_FALSE(lumivar::parse_degrees("361 00 00", degrees));
    EXPECT_FALSE(lumivar::parse_degrees(std::string(400, '9') + " 00 00", degrees));
    EXPECT_FALSE(lumivar::parse_degrees(std::string_view("16\0 42 58", 9), degrees));
    EXPECT_EQ(degrees, kUntouched);
}

TEST(Sexagesimal, IsMadeOfItsParts) {
    EXPECT_NEAR(lumivar::from_sexagesimal(true, 16, 42, 58), kSiriusDec, 1e-12);
    EXPECT_NEAR(lumivar::from_sexagesimal(false, 6, 45, 8.917) * 15.0, kSiriusRa, 1e-12);
    EXPECT_NEAR(lumivar::from_sexagesimal(true, 0, 0, 36), -0.01, 1e-15);
}

}  // namespace
