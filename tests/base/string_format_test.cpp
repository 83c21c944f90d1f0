// Formatting: texts of any length, and what happens without memory for them.
#include <base/exceptions.h>
#include <base/string.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>
#include <support/expect_throw.h>
#include <support/failing_allocator.h>

#include <cwchar>
#include <string>
#include <vector>

namespace {

using Sizes = std::vector<std::size_t>;

String formatted_by_list(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    String result = String::vfmt(format, arguments);
    va_end(arguments);
    return result;
}

void format_in_place_by_list(String& s, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    s.vsprintf(format, arguments);
    va_end(arguments);
}

}  // namespace

TEST(StringFormat, TakesTextsOfAnyLength) {
    for (const int length : {0, 1, 99, 100, 101, 200, 1000, 100000}) {
        EXPECT_EQ(std::string(String::fmt("%*s", length, "").c_str()), std::string(length, ' '));
    }
}

TEST(StringFormat, NeedsASecondPassFromAHundredCharactersOn) {
    FailingAllocator allocator;
    const String short_text = String::fmt("%*s", 99, "");
    EXPECT_EQ(allocator.requests(), (Sizes{100}));
    const String long_text = String::fmt("%*s", 100, "");
    EXPECT_EQ(allocator.requests(), (Sizes{100, 100, 101}));
    EXPECT_EQ(short_text.len(), 99U);
    EXPECT_EQ(long_text.len(), 100U);
}

TEST(StringFormat, EveryPassReadsTheArgumentsAnew) {
    const std::string name(90, 'n');
    EXPECT_EQ(std::string(String::fmt("%d %s %.1f %s", 7, name.c_str(), 2.5, "end").c_str()),
              "7 " + name + " 2.5 end");
}

TEST(StringFormat, AllFourFormsAgree) {
    String a;
    a.sprintf("%s %d", "vega", 5);
    String b;
    format_in_place_by_list(b, "%s %d", "vega", 5);
    EXPECT_STREQ(a.c_str(), "vega 5");
    EXPECT_STREQ(b.c_str(), "vega 5");
    EXPECT_STREQ(formatted_by_list("%s %d", "vega", 5).c_str(), "vega 5");
    EXPECT_STREQ(String::fmt("%s %d", "vega", 5).c_str(), "vega 5");
}

TEST(StringFormat, ReplacesTheContent) {
    String s("deneb");
    s.sprintf("%s", "vega");
    EXPECT_STREQ(s.c_str(), "vega");
    s.sprintf("%s and %s", s.c_str(), s.c_str());
    EXPECT_STREQ(s.c_str(), "vega and vega");
}

TEST(StringFormat, WithoutMemoryForTheFirstPassThrows) {
    String s("deneb");
    FailingAllocator allocator;
    allocator.refuse_after(0);
    try {
        s.sprintf("%d", 5);
        FAIL();
    } catch (const StrXception&) {
    }
    EXPECT_STREQ(s.c_str(), "deneb");
}

TEST(StringFormat, WithoutMemoryForTheSecondPassThrows) {
    String s("deneb");
    FailingAllocator allocator;
    allocator.refuse_above(500);
    expect_message(thrown_message([&] { s.sprintf("%*s", 500, ""); }), "out of memory",
                   "my_vsnprintf", "base/string.cpp");
    EXPECT_STREQ(s.c_str(), "deneb");
    // One byte less is granted.
    s.sprintf("%*s", 499, "");
    EXPECT_EQ(s.len(), 499U);
}

TEST(StringFormat, WithoutAnyMemoryStillReportsIt) {
    FailingAllocator allocator;
    allocator.refuse_above(0);
    try {
        String::fmt("%d", 5);
        FAIL();
    } catch (const StrXception& e) {
        CapturedOutput errors(stderr);
        e.print();
        EXPECT_EQ(errors.text(), "Error: out of memory\n");
    }
}

TEST(StringFormat, ATextThatCannotBeFormattedEndsAsOutOfMemory) {
    // No multibyte form: the C library answers each pass with a negative result, as a library does
    // that reports only truncation. The size doubles until it is refused.
    const wchar_t unwritable[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    FailingAllocator allocator;
    allocator.refuse_above(1000);
    EXPECT_THROW(String::fmt("%ls", unwritable), StrXception);
    Sizes requests = allocator.requests();
    requests.resize(5);
    EXPECT_EQ(requests, (Sizes{100, 200, 400, 800, 1600}));
}
