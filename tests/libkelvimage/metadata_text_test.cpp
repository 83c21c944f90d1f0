// The one-line text form of an image's record: what it looks like, what it carries, what it does
// not, and how broken ones are refused.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "metadata.h"
#include "support/captured_output.h"
#include "support/expect_throw.h"

namespace {

const char* const kTextSource = "libkelvimage/metadata_text.cpp";

std::string text_of_float(float value) {
    MetaData record;
    set_float(record, "n", value);
    return record.stringify().c_str();
}

std::string text_of_string(const std::string& value) {
    MetaData record;
    set_string(record, "n", value);
    return record.stringify().c_str();
}

/// The string "n" of a text.
std::string string_in(const std::string& text) {
    MetaData record;
    record.from_string(text.c_str());
    return string_of(record, "n");
}

float float_in(const std::string& text) {
    MetaData record;
    record.from_string(text.c_str());
    return float_of(record, "n");
}

/// What reading a text throws, and that it names this room's source.
std::string refusal(const std::string& text) {
    MetaData record;
    const std::string message = thrown_message([&] { record.from_string(text.c_str()); });
    EXPECT_NE(message.find(std::string("(") + kTextSource + ":"), std::string::npos) << message;
    return message.substr(0, message.find(" in <"));
}

std::string broken_rule(const std::string& text) {
    MetaData record;
    return failed_assertion([&] { record.from_string(text.c_str()); });
}

TEST(MetadataText, OfAnEmptyRecordIsTheMagicWord) {
    EXPECT_STREQ(MetaData().stringify().c_str(), "KELVMETA1");
    MetaData record;
    record.from_string("KELVMETA1");
    EXPECT_TRUE(record.empty());
}

TEST(MetadataText, HasTypeNameAndValueOfEachEntry) {
    EXPECT_EQ(text_of_float(0.5F), "KELVMETA1 float:n=0.5");
    EXPECT_EQ(text_of_string("Orion"), "KELVMETA1 string:n=Orion");
    MetaData record;
    set_matrix(record, "n", counting_matrix());
    EXPECT_EQ(record.stringify().c_str(), "KELVMETA1 m44f:n=\"" + kCountingText + "\"");
}

TEST(MetadataText, RoundsFloatsToSixDigits) {
    const struct {
        float value;
        const char* text;
    } table[] = {
        {0.0F, "0"},
        {-0.0F, "-0"},
        {1.0F, "1"},
        {0.1F, "0.1"},
        {3.14159274F, "3.14159"},
        {123456.0F, "123456"},
        {1234567.0F, "1.23457e+06"},
        {-1e-10F, "-1e-10"},
        {3.40282347e38F, "3.40282e+38"},
        {0x1p-149F, "1.4013e-45"},
        {std::numeric_limits<float>::infinity(), "inf"},
        {-std::numeric_limits<float>::infinity(), "-inf"},
        {std::numeric_limits<float>::quiet_NaN(), "nan"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(text_of_float(row.value), std::string("KELVMETA1 float:n=") + row.text);
    }
    EXPECT_EQ(float_in(text_of_float(1234567.0F)), 1234570.0F);
    EXPECT_EQ(float_in(text_of_float(3.14159274F)), 3.14159F);
    EXPECT_TRUE(std::signbit(float_in(text_of_float(-0.0F))));
    EXPECT_EQ(float_in(text_of_float(std::numeric_limits<float>::infinity())), INFINITY);
    EXPECT_EQ(float_in(text_of_float(-std::numeric_limits<float>::infinity())), -INFINITY);
    EXPECT_TRUE(std::isnan(float_in(text_of_float(std::numeric_limits<float>::quiet_NaN()))));
    EXPECT_EQ(float_in(text_of_float(0x1p-149F)), 0x1p-149F);
}

TEST(MetadataText, ReadsFloatsAsTheCLibraryDoes) {
    EXPECT_EQ(float_in("KELVMETA1 float:n=0x10"), 16.0F);
    EXPECT_EQ(float_in("KELVMETA1 float:n=1e40"), INFINITY);
    EXPECT_EQ(float_in("KELVMETA1 float:n=1.5mm"), 1.5F);
    EXPECT_EQ(float_in("KELVMETA1 float:n=none"), 0.0F);
    EXPECT_EQ(float_in("KELVMETA1 float:n=\"\""), 0.0F);
    EXPECT_EQ(float_in("KELVMETA1 float:n=\" 2.5\""), 2.5F);
}

TEST(MetadataText, QuotesStringsWithABlank) {
    EXPECT_EQ(text_of_string("a b"), "KELVMETA1 string:n=\"a b\"");
    EXPECT_EQ(text_of_string(" "), "KELVMETA1 string:n=\" \"");
    EXPECT_EQ(text_of_string("say \"a\""), "KELVMETA1 string:n=\"say \\\"a\\\"\"");
    // Other white space is no blank.
    EXPECT_EQ(text_of_string("a\tb\nc"), "KELVMETA1 string:n=a\tb\nc");
    // No quotes without a blank, whatever else there is.
    EXPECT_EQ(text_of_string("a\"b\\c=d:e"), "KELVMETA1 string:n=a\"b\\c=d:e");
    // Backslashes are not shielded.
    EXPECT_EQ(text_of_string("c:\\a b"), "KELVMETA1 string:n=\"c:\\a b\"");
}

TEST(MetadataText, LosesTheBackslashesOfAStringWithABlank) {
    EXPECT_EQ(string_in(text_of_string("c:\\a b")), "c:a b");
    EXPECT_EQ(string_in(text_of_string("a \\\\b")), "a \\b");
    // Before a quote there are two in a row, of which one is left; the quote then ends the string.
    EXPECT_EQ(text_of_string("a \\\""), "KELVMETA1 string:n=\"a \\\\\"\"");
    EXPECT_EQ(broken_rule(text_of_string("a \\\"")), "*p == ' '");
    // At the end it shields the closing quote.
    EXPECT_EQ(refusal(text_of_string("a b\\")), "unterminated quoted string in metadata n");
}

TEST(MetadataText, TakesALeadingQuoteForAQuotedString) {
    EXPECT_EQ(string_in(text_of_string("\"a\"")), "a");
    EXPECT_EQ(string_in(text_of_string("\"\"")), "");
    EXPECT_EQ(refusal(text_of_string("\"a")), "unterminated quoted string in metadata n");
    EXPECT_EQ(refusal(text_of_string("\"a\\")), "unterminated \\ in metadata n");
    EXPECT_EQ(broken_rule(text_of_string("\"a\"b")), "*p == ' '");
}

TEST(MetadataText, MissesAnEmptyStringAtTheEnd) {
    EXPECT_EQ(text_of_string(""), "KELVMETA1 string:n=");
    EXPECT_EQ(refusal(text_of_string("")), "metadata n is missing value");
    EXPECT_EQ(string_in("KELVMETA1 string:n= float:x=1"), "");
}

TEST(MetadataText, RefusesNamesItCannotHold) {
    for (const char* name : {" ", "a b", "a ", "=", "a=b"}) {
        MetaData record;
        set_float(record, name, 1.0F);
        expect_message(thrown_message([&] { record.stringify(); }), "can't handle quoting yet",
                       "Kelv::ImageSpec::MetaData::stringify", kTextSource);
    }
    for (const char* name : {"", ":", "a:b", "\"a\"", "\\", "a\tb", "\xC3\xA9"}) {
        MetaData record;
        set_float(record, name, 1.0F);
        MetaData read;
        read.from_string(record.stringify().c_str());
        EXPECT_TRUE(read == record) << name;
    }
}

TEST(MetadataText, GivesMatricesBackBitByBit) {
    Matrix m = counting_matrix();
    m(0, 0) = 0.1F;
    m(1, 1) = std::numeric_limits<float>::quiet_NaN();
    m(1, 2) = -3.40282347e38F;
    m(2, 3) = 0x1p-149F;
    m(3, 1) = -0.0F;
    m(3, 2) = std::numeric_limits<float>::infinity();
    MetaData record;
    set_matrix(record, "n", m);
    MetaData read;
    read.from_string(record.stringify().c_str());
    EXPECT_TRUE(read == record);
    EXPECT_TRUE(std::isnan(matrix_of(read, "n")(1, 1)));
    EXPECT_TRUE(std::signbit(matrix_of(read, "n")(3, 1)));
}

TEST(MetadataText, ReadsMatricesOfAnySpacing) {
    MetaData record;
    record.from_string("KELVMETA1 m44f:n=\"1 2\t3  4 5 6 7 8 9 10 11 12 13 14 15 16 and more\"");
    MetaData expected;
    set_matrix(expected, "n", counting_matrix());
    EXPECT_TRUE(record == expected);
}

TEST(MetadataText, IsKnownByItsMagicWord) {
    EXPECT_TRUE(MetaData::string_valid("KELVMETA1"));
    EXPECT_TRUE(MetaData::string_valid("KELVMETA1 and anything"));
    EXPECT_TRUE(MetaData::string_valid("KELVMETA12"));
    for (const char* text : {"", "K", "KELVMETA", "KELVMETA2", "kelvmeta1", " KELVMETA1"}) {
        EXPECT_FALSE(MetaData::string_valid(text)) << text;
        MetaData record;
        expect_message(thrown_message([&] { record.from_string(text); }), "invalid metadata string",
                       "Kelv::ImageSpec::MetaData::from_string", kTextSource);
    }
}

TEST(MetadataText, EndingInANameWarnsAndKeepsWhatCameBefore) {
    for (const char* text : {"KELVMETA1 float:a=1 float:b", "KELVMETA1 float:a=1 float:",
                             "KELVMETA1 float:a=1 odd:name with blanks"}) {
        MetaData record;
        const std::string warning = output_of(stderr, [&] { record.from_string(text); });
        const std::string start =
            "warning: image metadata appears to be truncated in <void "
            "Kelv::ImageSpec::MetaData::from_string(";
        EXPECT_EQ(warning.substr(0, start.size()), start);
        EXPECT_EQ(warning.find('\n'), warning.size() - 1) << warning;
        MetaData expected;
        set_float(expected, "a", 1.0F);
        EXPECT_TRUE(record == expected) << text;
    }
}

TEST(MetadataText, RefusesWhatIsBroken) {
    const char* const quotes = "unterminated quoted string in metadata n";
    const char* const backslash = "unterminated \\ in metadata n";
    const char* const matrix = "error reading m44f metadata 'n'";
    const struct {
        const char* text;
        const char* refusal;
    } table[] = {
        {"KELVMETA1 float:gain=", "metadata gain is missing value"},
        // Before the type is looked at, as are all faults of the value.
        {"KELVMETA1 odd:gain=", "metadata gain is missing value"},
        {"KELVMETA1 odd:n=\"1", quotes},
        {"KELVMETA1 string:n=\"", quotes},
        {"KELVMETA1 string:n=\"a b", quotes},
        {"KELVMETA1 string:n=\"a\\\"", quotes},
        {"KELVMETA1 string:n=\"\\", backslash},
        {"KELVMETA1 string:n=\"a b\\", backslash},
        {"KELVMETA1 double:n=1", "unhandled type 'double'"},
        {"KELVMETA1 :n=1", "unhandled type ''"},
        {"KELVMETA1 Float:n=1", "unhandled type 'Float'"},
        // A type word ends at the first colon, and the second of two blanks begins one.
        {"KELVMETA1 my:float:n=1", "unhandled type 'my'"},
        {"KELVMETA1  float:n=1", "unhandled type ' float'"},
        {"KELVMETA1 m44f:n=\"1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\"", matrix},
        {"KELVMETA1 m44f:n=\"1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 x\"", matrix},
        {"KELVMETA1 m44f:n=\"\"", matrix},
        {"KELVMETA1 m44f:n=1 float:a=2", matrix},
    };
    for (const auto& row : table) {
        EXPECT_EQ(refusal(row.text), row.refusal) << row.text;
    }
    EXPECT_EQ(string_in("KELVMETA1 string:n=\"\\a\\ \\\\\\\"\""), "a \\\"");
}

TEST(MetadataText, WantsItsDelimiters) {
    for (const char* text : {"KELVMETA12", "KELVMETA1\tfloat:n=1", "KELVMETA1 string:n=\"a\"b"}) {
        EXPECT_EQ(broken_rule(text), "*p == ' '") << text;
    }
    for (const char* text :
         {"KELVMETA1 ", "KELVMETA1 float", "KELVMETA1 float=n", "KELVMETA1 float:n=1 "}) {
        EXPECT_EQ(broken_rule(text), "*p == ':'") << text;
    }
}

TEST(MetadataText, AddsToWhatIsThere) {
    MetaData record;
    set_float(record, "a", 1.0F);
    set_float(record, "b", 1.0F);
    record.from_string("KELVMETA1 float:b=2 string:c=x float:b=3");
    EXPECT_EQ(float_of(record, "a"), 1.0F);
    EXPECT_EQ(float_of(record, "b"), 3.0F);
    EXPECT_EQ(string_of(record, "c"), "x");
}

TEST(MetadataText, KeepsWhatCameBeforeAFault) {
    MetaData record;
    const std::string message =
        thrown_message([&] { record.from_string("KELVMETA1 float:a=1 string:a=x float:b=2"); });
    expect_failure(message, "metadata tag 'a' already present but with type 'float' not 'string'",
                   "set_meta");
    MetaData expected;
    set_float(expected, "a", 1.0F);
    EXPECT_TRUE(record == expected);
}

TEST(MetadataText, MayBeLong) {
    MetaData record;
    // With a blank in front and a quote in every second place.
    std::string value = " ";
    for (int i = 0; i < 500000; ++i) {
        value += "x\"";
    }
    set_string(record, "long", value);
    for (int i = 0; i < 1000; ++i) {
        set_float(record, ("name" + std::to_string(i)).c_str(), static_cast<float>(i));
    }
    MetaData read;
    read.from_string(record.stringify().c_str());
    EXPECT_TRUE(read == record);
    EXPECT_TRUE(string_of(read, "long") == value);
}

}  // namespace
