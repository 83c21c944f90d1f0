// Texts: the class, formatting, and texts that are made piece by piece.
#include <base/array.h>
#include <base/exceptions.h>
#include <base/growing_text.h>
#include <base/string.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>
#include <support/expect_throw.h>
#include <support/failing_allocator.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <utility>
#include <vector>

namespace {

// A string equals the null string only if it is null itself.
bool is_null(const String& s) { return s == String(); }

// Empty, yet with a block of its own.
String empty_block() { return String('\0'); }

std::vector<std::string> texts(const Array<String>& array) {
    std::vector<std::string> result;
    for (unsigned long i = 0; i < array.len(); ++i) {
        result.emplace_back(array[i].c_str());
    }
    return result;
}

using Texts = std::vector<std::string>;

}  // namespace

static_assert(sizeof(String) == sizeof(char*), "one pointer a string");

TEST(String, OfNoTextIsNullAndReadsAsEmpty) {
    const String strings[] = {String(), String(""), String(static_cast<const char*>(nullptr))};
    for (const String& s : strings) {
        EXPECT_TRUE(is_null(s));
        EXPECT_EQ(s.len(), 0U);
        EXPECT_STREQ(s.c_str(), "");
        const String copy(s);
        EXPECT_TRUE(is_null(copy));
        EXPECT_STREQ(copy.c_str(), "");
    }
}

TEST(String, CopiesTheTextItIsMadeOfOrAsMuchAsItsCountSays) {
    char text[] = "vega";
    const String s(text);
    const String copy(s);
    text[0] = 'V';
    EXPECT_STREQ(s.c_str(), "vega");
    EXPECT_STREQ(copy.c_str(), "vega");
    EXPECT_NE(copy.c_str(), s.c_str());
    EXPECT_EQ(s.len(), 4U);
    EXPECT_TRUE(is_null(String("vega", 0)));
    EXPECT_TRUE(is_null(String(nullptr, 0)));
    EXPECT_STREQ(String("vega", 3).c_str(), "veg");
    EXPECT_STREQ(String("vega", 4).c_str(), "vega");
    EXPECT_STREQ(String("vega", 9).c_str(), "vega");
    EXPECT_STREQ(String('v').c_str(), "v");
}

TEST(String, EmptyBlocksAreNotTheNullString) {
    String appended;
    appended += '\0';
    const String formatted = String::fmt("%s", "");
    const String counted("", 3);
    const String of_nul('\0');
    const String* const blocks[] = {&appended, &formatted, &counted, &of_nul};
    for (const String* s : blocks) {
        EXPECT_EQ(s->len(), 0U);
        EXPECT_STREQ(s->c_str(), "");
        EXPECT_FALSE(is_null(*s));
        // Two empty blocks are equal as texts.
        EXPECT_TRUE(*s == empty_block());
        // A copy is none.
        EXPECT_TRUE(is_null(String(*s)));
    }
}

TEST(String, MovesTakeTheBlockOverButAssigningAnEmptyOneGivesTheNullString) {
    String full("vega");
    const char* text = full.c_str();
    String taken(std::move(full));
    EXPECT_EQ(taken.c_str(), text);
    EXPECT_TRUE(is_null(full));  // NOLINT(bugprone-use-after-move): it is said to be null
    String target("deneb");
    target = std::move(taken);
    EXPECT_EQ(target.c_str(), text);
    EXPECT_TRUE(is_null(taken));  // NOLINT(bugprone-use-after-move): it is said to be null
    String& same = target;
    target = std::move(same);
    EXPECT_STREQ(target.c_str(), "vega");
    target = empty_block();
    EXPECT_TRUE(is_null(target));

    String empty = empty_block();
    target = "vega";
    target = empty;
    EXPECT_TRUE(is_null(target));
    const String taken_empty(std::move(empty));
    EXPECT_FALSE(is_null(taken_empty));
    String self = empty_block();
    const String& same_empty = self;
    self = same_empty;
    EXPECT_TRUE(is_null(self));
}

TEST(String, AssignmentReplacesTheText) {
    String s("vega");
    s = "deneb";
    EXPECT_STREQ(s.c_str(), "deneb");
    s = String("altair");
    EXPECT_STREQ(s.c_str(), "altair");
    const String& same = s;
    s = same;
    EXPECT_STREQ(s.c_str(), "altair");
    s = s.c_str() + 3;
    EXPECT_STREQ(s.c_str(), "air");
    s = "";
    EXPECT_TRUE(is_null(s));
    s = "vega";
    s = static_cast<const char*>(nullptr);
    EXPECT_TRUE(is_null(s));
}

TEST(String, SetBufTakesABlockOverAndClearGivesItBack) {
    char* block = static_cast<char*>(std::malloc(5));
    std::memcpy(block, "vega", 5);
    String s("deneb");
    s.set_buf(block);
    EXPECT_EQ(s.c_str(), block);
    s.set_buf(nullptr);
    EXPECT_TRUE(is_null(s));
    s = "vega";
    for (int i = 0; i < 2; ++i) {
        s.clear();
        EXPECT_TRUE(is_null(s));
    }
}

TEST(String, AppendsCharactersAndTexts) {
    String s;
    s += 'v';
    EXPECT_STREQ(s.c_str(), "v");
    s += 'e';
    s += '\0';
    EXPECT_EQ(s.len(), 2U);
    s += "ga";
    EXPECT_STREQ(s.c_str(), "vega");
    s += String(" lyrae");
    s += "";
    s += String();
    EXPECT_STREQ(s.c_str(), "vega lyrae");
}

TEST(String, AppendingToTheNullStringIsAssignment) {
    String s;
    s += "";
    s += String();
    s += empty_block();
    EXPECT_TRUE(is_null(s));
    s += "vega";
    EXPECT_STREQ(s.c_str(), "vega");
    String of_string;
    of_string += String("vega");
    EXPECT_STREQ(of_string.c_str(), "vega");
    // An empty block stays one.
    String empty = empty_block();
    empty += "";
    EXPECT_FALSE(is_null(empty));
    empty += "vega";
    EXPECT_STREQ(empty.c_str(), "vega");
}

TEST(String, AppendsItsOwnTextAndPlusLeavesItsOperandsAlone) {
    // Long enough for the allocator to move the block.
    const std::string text(5000, 'x');
    String s(text.c_str());
    s += s;
    EXPECT_EQ(std::string(s.c_str()), text + text);
    const String a("ve");
    const String b("ga");
    String tail = a + b;
    tail += tail.c_str() + 2;
    EXPECT_STREQ(tail.c_str(), "vegaga");
    EXPECT_STREQ((a + "x").c_str(), "vex");
    EXPECT_STREQ(a.c_str(), "ve");
    EXPECT_STREQ(b.c_str(), "ga");
    EXPECT_TRUE(is_null(String() + ""));
    EXPECT_STREQ((String() + b).c_str(), "ga");
}

TEST(String, ComparesTextsAndNullStringsByPointer) {
    const String null;
    const String also_null;
    const String a("a");
    const String also_a("a");
    const String b("b");
    const String empty = empty_block();
    const struct {
        const String& left;
        const String& right;
        bool equal, not_above;
    } table[] = {{a, also_a, true, true},        {a, b, false, true},       {b, a, false, false},
                 {null, also_null, true, false}, {null, a, false, true},    {a, null, false, true},
                 {null, empty, false, true},     {empty, null, false, true}};
    for (const auto& row : table) {
        EXPECT_EQ(row.left == row.right, row.equal) << &row - table;
        EXPECT_EQ(row.left != row.right, !row.equal) << &row - table;
        EXPECT_EQ(row.left <= row.right, row.not_above) << &row - table;
    }
}

TEST(String, HashOfTextsWorkedOutByHand) {
    const struct {
        String text;
        unsigned int hash;
    } table[] = {
        {String(), 0},
        {empty_block(), 0},
        {"A", 11484},    // (65 x 16 + 4) x 11
        {"AB", 137984},  // (11484 + 66 x 16 + 4) x 11
        // Bytes are signed. 0xFF is -1: (-16 - 1) x 11 = -187
        {"\xFF", 0xFFFFFFFFU - 186U},
        // 0x80 is -128: (-2048 - 8) x 11 = -22616
        {"\x80", 0xFFFFFFFFU - 22615U},
        // The sum of (16 c + floor(c / 16)) x 11^(n - i) over the bytes, modulo 2^32, worked out in
        // whole numbers of any size.
        {"KELVMETA1 float:gain=0.5", 0x4D48A57CU},
    };
    for (const auto& row : table) {
        EXPECT_EQ(row.text.hash(), row.hash) << row.text.c_str();
    }
}

TEST(String, FindsTextsAndCharacters) {
    const String s("a.stars.stars");
    EXPECT_EQ(s.find(".stars"), 1U);
    EXPECT_EQ(s.find(""), 0U);
    EXPECT_EQ(s.find('s'), 2U);
    EXPECT_EQ(s.findr('.'), 7U);
    EXPECT_EQ(s.findr('a'), 10U);
    // The terminator counts as a character of the text, as in the C library.
    EXPECT_EQ(s.find('\0'), 13U);
    EXPECT_EQ(s.findr('\0'), 13U);
}

TEST(String, FindOfWhatIsAbsentIsAllOnes) {
    EXPECT_EQ(String::kNotFound, 4294967295U);
    for (const String& s : {String("vega"), String()}) {
        EXPECT_EQ(s.find("x"), 4294967295U);
        EXPECT_EQ(s.find('x'), 4294967295U);
        EXPECT_EQ(s.findr('x'), 4294967295U);
    }
    EXPECT_EQ(String().find(""), 4294967295U);
    EXPECT_EQ(String().find('\0'), 4294967295U);
}

TEST(String, ConvertsToNumbersAsTheCLibraryDoes) {
    EXPECT_EQ(String(" -42x").atoi(), -42);
    EXPECT_EQ(String("x").atoi(), 0);
    EXPECT_EQ(String().atoi(), 0);
    EXPECT_EQ(String("2.5e2 m").atof(), 250.0);
    EXPECT_EQ(String().atof(), 0.0);
}

TEST(String, ChopEndsAtTheFirstLineEnd) {
    EXPECT_STREQ(String::chop("abc\r\ndef").c_str(), "abc");
    EXPECT_STREQ(String::chop(String("abc\ndef\r")).c_str(), "abc");
    EXPECT_STREQ(String::chop("abc").c_str(), "abc");
    EXPECT_TRUE(is_null(String::chop("\nabc")));
    EXPECT_TRUE(is_null(String::chop(String())));
}

TEST(String, SplitAppendsTheNonEmptyPieces) {
    Array<String> pieces;
    String::split(" a  b ", pieces);
    String::split("", pieces);
    String::split(String(), pieces);
    String::split(" \t\r\n", pieces);
    String::split(String("one\ttwo\nthree\rfour,five"), pieces);
    EXPECT_EQ(texts(pieces), (Texts{"a", "b", "one", "two", "three", "four,five"}));
    Array<String> others;
    String::split_by("/usr//lib /x/", "/", others);
    String::split_by(String("a;b,c"), ",;", others);
    String::split_by("a b", "", others);
    EXPECT_EQ(texts(others), (Texts{"usr", "lib ", "x", "a", "b", "c", "a b"}));
}

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

TEST(StringFormat, TakesTextsOfAnyLengthReadingTheArgumentsAnewInEveryPass) {
    for (const int length : {0, 1, 99, 100, 101, 200, 1000, 100000}) {
        EXPECT_EQ(std::string(String::fmt("%*s", length, "").c_str()), std::string(length, ' '));
    }
    const std::string name(90, 'n');
    EXPECT_EQ(std::string(String::fmt("%d %s %.1f %s", 7, name.c_str(), 2.5, "end").c_str()),
              "7 " + name + " 2.5 end");
}

TEST(StringFormat, NeedsASecondPassFromAHundredCharactersOn) {
    const FailingAllocator allocator;
    String::fmt("%*s", 99, "");
    EXPECT_EQ(allocator.requests(), (Sizes{100}));
    String::fmt("%*s", 100, "");
    EXPECT_EQ(allocator.requests(), (Sizes{100, 100, 101}));
}

TEST(StringFormat, AllFourFormsAgreeAndReplaceTheContent) {
    String a("deneb");
    a.sprintf("%s %d", "vega", 5);
    String b("deneb");
    format_in_place_by_list(b, "%s %d", "vega", 5);
    EXPECT_STREQ(a.c_str(), "vega 5");
    EXPECT_STREQ(b.c_str(), "vega 5");
    EXPECT_STREQ(formatted_by_list("%s %d", "vega", 5).c_str(), "vega 5");
    EXPECT_STREQ(String::fmt("%s %d", "vega", 5).c_str(), "vega 5");
    a.sprintf("%s and %s", a.c_str(), a.c_str());
    EXPECT_STREQ(a.c_str(), "vega 5 and vega 5");
}

TEST(StringFormat, WithoutMemoryForEitherPassThrows) {
    String s("deneb");
    FailingAllocator allocator;
    allocator.refuse_after(0);
    EXPECT_THROW(s.sprintf("%d", 5), StrXception);
    EXPECT_STREQ(s.c_str(), "deneb");
    allocator.grant_all();
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

namespace {

TEST(GrowingText, IsWhatWasAddedButForTheCharacterZero) {
    GrowingText text;
    text.add('a');
    text.add("bcd");
    text.add("");
    text.add('\0');
    text.add('\xFF');
    EXPECT_STREQ(text.take().c_str(), "abcd\xFF");
    EXPECT_STREQ(GrowingText().take().c_str(), "");
}

TEST(GrowingText, TakesFewAllocations) {
    GrowingText text;
    const FailingAllocator allocator;
    for (int i = 0; i < 100000; ++i) {
        text.add('x');
    }
    // 32 bytes, doubled 12 times.
    EXPECT_EQ(allocator.requests().size(), 13U);
    EXPECT_EQ(text.take().c_str(), std::string(100000, 'x'));
}

TEST(GrowingText, ReportsAWantOfMemory) {
    FailingAllocator allocator;
    for (const unsigned int granted : {0U, 1U, 2U}) {
        allocator.refuse_after(granted);
        const auto make = [] {
            GrowingText text;
            text.add("more than thirty-two characters, so that the block grows once");
            text.add("more than thirty-two characters, so that the block grows once");
            text.take();
        };
        EXPECT_THROW(make(), StrXception) << granted;
        allocator.grant_all();
    }
}

}  // namespace
