#include <base/array.h>
#include <base/string.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
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

TEST(String, CopiesTheTextItIsMadeOf) {
    char text[] = "vega";
    const String s(text);
    const String copy(s);
    text[0] = 'V';
    EXPECT_STREQ(s.c_str(), "vega");
    EXPECT_STREQ(copy.c_str(), "vega");
    EXPECT_NE(copy.c_str(), s.c_str());
    EXPECT_EQ(s.len(), 4U);
}

TEST(String, OfACountTakesAtMostThatMany) {
    EXPECT_TRUE(is_null(String("vega", 0)));
    EXPECT_TRUE(is_null(String(nullptr, 0)));
    EXPECT_STREQ(String("vega", 3).c_str(), "veg");
    EXPECT_STREQ(String("vega", 4).c_str(), "vega");
    EXPECT_STREQ(String("vega", 9).c_str(), "vega");
}

TEST(String, OfACountFromAnEmptyTextIsEmptyButNotNull) {
    const String s("", 3);
    EXPECT_EQ(s.len(), 0U);
    EXPECT_FALSE(is_null(s));
}

TEST(String, OfOneCharacter) {
    EXPECT_STREQ(String('v').c_str(), "v");
    EXPECT_EQ(String('v').len(), 1U);
}

TEST(String, EmptyBlocksAreNotTheNullString) {
    const String of_nul('\0');
    EXPECT_EQ(of_nul.len(), 0U);
    EXPECT_STREQ(of_nul.c_str(), "");
    EXPECT_FALSE(is_null(of_nul));

    String appended;
    appended += '\0';
    EXPECT_EQ(appended.len(), 0U);
    EXPECT_FALSE(is_null(appended));

    const String formatted = String::fmt("%s", "");
    EXPECT_EQ(formatted.len(), 0U);
    EXPECT_FALSE(is_null(formatted));
    // Two empty blocks are equal as texts.
    EXPECT_TRUE(formatted == of_nul);
}

TEST(String, CopyingAnEmptyBlockGivesTheNullString) {
    const String s = empty_block();
    const String copy(s);
    EXPECT_TRUE(is_null(copy));
    String assigned("vega");
    assigned = s;
    EXPECT_TRUE(is_null(assigned));
}

TEST(String, AssigningAnEmptyBlockGivesTheNullStringHoweverItComes) {
    String moved("vega");
    moved = empty_block();
    EXPECT_TRUE(is_null(moved));
    String formatted("vega");
    formatted = String::fmt("%s", "");
    EXPECT_TRUE(is_null(formatted));
    String self = empty_block();
    const String& same = self;
    self = same;
    EXPECT_TRUE(is_null(self));
}

TEST(String, MoveConstructionTakesTheBlockAsItIs) {
    String full("vega");
    const char* text = full.c_str();
    const String taken(std::move(full));
    EXPECT_EQ(taken.c_str(), text);
    EXPECT_TRUE(is_null(full));  // NOLINT(bugprone-use-after-move): it is said to be null
    String empty = empty_block();
    const String taken_empty(std::move(empty));
    EXPECT_FALSE(is_null(taken_empty));
}

TEST(String, MoveAssignmentTakesTheBlockOver) {
    String source("vega");
    const char* text = source.c_str();
    String target("deneb");
    target = std::move(source);
    EXPECT_EQ(target.c_str(), text);
    EXPECT_TRUE(is_null(source));  // NOLINT(bugprone-use-after-move): it is said to be null
    String& same = target;
    target = std::move(same);
    EXPECT_STREQ(target.c_str(), "vega");
}

TEST(String, AssignmentReplacesTheText) {
    String s("vega");
    s = "deneb";
    EXPECT_STREQ(s.c_str(), "deneb");
    s = String("altair");
    EXPECT_STREQ(s.c_str(), "altair");
    s = "";
    EXPECT_TRUE(is_null(s));
    s = "vega";
    s = static_cast<const char*>(nullptr);
    EXPECT_TRUE(is_null(s));
}

TEST(String, AssignmentFromItself) {
    String s("vega");
    const String& same = s;
    s = same;
    EXPECT_STREQ(s.c_str(), "vega");
    s = s.c_str() + 2;
    EXPECT_STREQ(s.c_str(), "ga");
}

TEST(String, SetBufTakesABlockOver) {
    char* block = static_cast<char*>(std::malloc(5));
    std::memcpy(block, "vega", 5);
    String s("deneb");
    s.set_buf(block);
    EXPECT_EQ(s.c_str(), block);
    s.set_buf(nullptr);
    EXPECT_TRUE(is_null(s));
}

TEST(String, ClearGivesTheNullString) {
    String s("vega");
    s.clear();
    EXPECT_TRUE(is_null(s));
    s.clear();
    EXPECT_TRUE(is_null(s));
}

TEST(String, AppendsCharacters) {
    String s;
    s += 'v';
    EXPECT_STREQ(s.c_str(), "v");
    s += 'e';
    EXPECT_STREQ(s.c_str(), "ve");
    s += '\0';
    EXPECT_EQ(s.len(), 2U);
}

TEST(String, AppendsTexts) {
    String s("ve");
    s += "ga";
    EXPECT_STREQ(s.c_str(), "vega");
    s += String(" lyrae");
    EXPECT_STREQ(s.c_str(), "vega lyrae");
    s += "";
    s += String();
    EXPECT_STREQ(s.c_str(), "vega lyrae");
}

TEST(String, AppendingToTheNullStringIsAssignment) {
    String s;
    s += "vega";
    EXPECT_STREQ(s.c_str(), "vega");
    String of_string;
    of_string += String("vega");
    EXPECT_STREQ(of_string.c_str(), "vega");
    String of_nothing;
    of_nothing += "";
    of_nothing += String();
    of_nothing += empty_block();
    EXPECT_TRUE(is_null(of_nothing));
}

TEST(String, AppendingNothingToAnEmptyBlockKeepsTheBlock) {
    String s = empty_block();
    s += "";
    EXPECT_FALSE(is_null(s));
    s += "vega";
    EXPECT_STREQ(s.c_str(), "vega");
}

TEST(String, AppendsItsOwnText) {
    // Long enough for the allocator to move the block.
    const std::string text(5000, 'x');
    String s(text.c_str());
    s += s;
    EXPECT_EQ(std::string(s.c_str()), text + text);
    String tail("vega");
    tail += tail.c_str() + 2;
    EXPECT_STREQ(tail.c_str(), "vegaga");
}

TEST(String, PlusLeavesItsOperandsAlone) {
    const String a("ve");
    const String b("ga");
    EXPECT_STREQ((a + b).c_str(), "vega");
    EXPECT_STREQ((a + "x").c_str(), "vex");
    EXPECT_STREQ(a.c_str(), "ve");
    EXPECT_STREQ(b.c_str(), "ga");
    EXPECT_TRUE(is_null(String() + ""));
    EXPECT_STREQ((String() + b).c_str(), "ga");
}

TEST(String, ComparesTexts) {
    const String a("a");
    const String b("b");
    const String also_a("a");
    EXPECT_TRUE(a == also_a);
    EXPECT_FALSE(a != also_a);
    EXPECT_TRUE(a <= also_a);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(a <= b);
    EXPECT_FALSE(b <= a);
}

TEST(String, ComparesNullStringsByPointer) {
    const String null;
    const String also_null;
    const String full("vega");
    const String empty = empty_block();
    EXPECT_TRUE(null == also_null);
    EXPECT_FALSE(null != also_null);
    EXPECT_FALSE(null <= also_null);
    for (const String* s : {&full, &empty}) {
        EXPECT_FALSE(null == *s);
        EXPECT_FALSE(*s == null);
        EXPECT_TRUE(null != *s);
        EXPECT_TRUE(*s != null);
        EXPECT_TRUE(null <= *s);
        EXPECT_TRUE(*s <= null);
    }
}

TEST(String, HashOfShortTextsWorkedOutByHand) {
    EXPECT_EQ(String().hash(), 0U);
    EXPECT_EQ(String("").hash(), 0U);
    EXPECT_EQ(empty_block().hash(), 0U);
    // (65 x 16 + 4) x 11
    EXPECT_EQ(String("A").hash(), 11484U);
    // (11484 + 66 x 16 + 4) x 11
    EXPECT_EQ(String("AB").hash(), 137984U);
}

TEST(String, HashTakesHighBytesAsNegative) {
    // 0xFF is -1: (-16 - 1) x 11 = -187
    EXPECT_EQ(String("\xFF").hash(), 0xFFFFFFFFU - 186U);
    // 0x80 is -128: (-2048 - 8) x 11 = -22616
    EXPECT_EQ(String("\x80").hash(), 0xFFFFFFFFU - 22615U);
}

TEST(String, HashIsAPolynomialModulo32Bits) {
    // Sum of (16 c + floor(c / 16)) x 11^(n - i) over the bytes.
    std::mt19937 random(3);
    for (int run = 0; run < 200; ++run) {
        std::string text(1 + random() % 60, '\0');
        for (char& c : text) {
            c = static_cast<char>(1 + random() % 255);
        }
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            std::int64_t c = static_cast<unsigned char>(text[i]);
            c = c >= 128 ? c - 256 : c;
            const std::int64_t sixteenth = (c + 256) / 16 - 16;
            std::int64_t power = 1;
            for (std::size_t k = i; k < text.size(); ++k) {
                power = power * 11 % 0x100000000;
            }
            sum = (sum + (16 * c + sixteenth) * power) % 0x100000000;
        }
        EXPECT_EQ(String(text.c_str()).hash(), static_cast<std::uint32_t>(sum)) << text;
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
    const String s("vega");
    EXPECT_EQ(s.find("x"), 4294967295U);
    EXPECT_EQ(s.find('x'), 4294967295U);
    EXPECT_EQ(s.findr('x'), 4294967295U);
    const String null;
    EXPECT_EQ(null.find("x"), 4294967295U);
    EXPECT_EQ(null.find(""), 4294967295U);
    EXPECT_EQ(null.find('x'), 4294967295U);
    EXPECT_EQ(null.findr('x'), 4294967295U);
    EXPECT_EQ(null.find('\0'), 4294967295U);
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

TEST(String, SplitDropsEmptyPieces) {
    Array<String> pieces;
    String::split(" a  b ", pieces);
    EXPECT_EQ(texts(pieces), (Texts{"a", "b"}));
}

TEST(String, SplitKnowsBlanksTabsAndLineEnds) {
    Array<String> pieces;
    String::split(String("one\ttwo\nthree\rfour,five"), pieces);
    EXPECT_EQ(texts(pieces), (Texts{"one", "two", "three", "four,five"}));
}

TEST(String, SplitAppendsToWhatIsThere) {
    Array<String> pieces;
    String::split("one", pieces);
    String::split("", pieces);
    String::split(String(), pieces);
    String::split(" \t\r\n", pieces);
    String::split("two", pieces);
    EXPECT_EQ(texts(pieces), (Texts{"one", "two"}));
}

TEST(String, SplitByOtherDelimiters) {
    Array<String> pieces;
    String::split_by("/usr//lib /x/", "/", pieces);
    String::split_by(String("a;b,c"), ",;", pieces);
    EXPECT_EQ(texts(pieces), (Texts{"usr", "lib ", "x", "a", "b", "c"}));
}

TEST(String, SplitByNoDelimitersKeepsTheWhole) {
    Array<String> pieces;
    String::split_by("a b", "", pieces);
    EXPECT_EQ(texts(pieces), (Texts{"a b"}));
}
