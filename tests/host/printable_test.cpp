// Texts made fit for a terminal.
#include <gtest/gtest.h>
#include <host/printable.h>

#include <string>

namespace {

using namespace std::string_literals;
using host::printable;

TEST(Printable, LeavesWhatCanBeReadAsItIs) {
    for (const char* text :
         {"", "plain text, \"quoted\" \\x1B", "Gr\u00F6\u00DFe \u20AC \u661F \U0001F31F",
          "\u00A0\u07FF\u0800\uD7FF\uE000\uFFFD\U00010000\U0010FFFF"}) {
        EXPECT_EQ(printable(text), text);
    }
}

TEST(Printable, ShowsWhatActsOrTurnsTheDirectionOfWriting) {
    EXPECT_EQ(printable("\x1B[2Jgone\a"), "\\x1B[2Jgone\\x07");
    EXPECT_EQ(printable("one\ntwo\r\tthree"), "one\\ntwo\\r\\tthree");
    EXPECT_EQ(printable("a\0b\x7F"s), "a\\x00b\\x7F");
    EXPECT_EQ(printable("\u0080\u009B2J\u009F"), "\\xC2\\x80\\xC2\\x9B2J\\xC2\\x9F") << "C1";
    EXPECT_EQ(printable("a\u202Eb\u2066c\u200F"),
              "a\\xE2\\x80\\xAEb\\xE2\\x81\\xA6c\\xE2\\x80\\x8F");
    EXPECT_EQ(printable("\u2028"), "\\xE2\\x80\\xA8") << "the end of a line";
}

TEST(Printable, ShowsTheBytesOfWhatIsNoUtf8) {
    EXPECT_EQ(printable("caf\xE9 au lait"), "caf\\xE9 au lait") << "Latin-1";
    EXPECT_EQ(printable("\x9B"
                        "2J"),
              "\\x9B2J")
        << "C1 in Latin-1";
    EXPECT_EQ(printable("\xC3"), "\\xC3") << "cut short";
    EXPECT_EQ(printable("\xE2\x82"), "\\xE2\\x82") << "cut short";
    EXPECT_EQ(printable("\xF0\x9F\x8C!"), "\\xF0\\x9F\\x8C!") << "the next one stays";
    EXPECT_EQ(printable("\xC1\x9B"), "\\xC1\\x9B") << "longer than it need be";
    EXPECT_EQ(printable("\xE0\x80\x9B"), "\\xE0\\x80\\x9B") << "longer than it need be";
    EXPECT_EQ(printable("\xF0\x80\x80\x9B"), "\\xF0\\x80\\x80\\x9B") << "longer than it need be";
    EXPECT_EQ(printable("\xED\xA0\x80"), "\\xED\\xA0\\x80") << "half of a pair";
    EXPECT_EQ(printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80") << "beyond the last character";
    EXPECT_EQ(printable("\xF8\x88\x80\x80\x80\xFF"), "\\xF8\\x88\\x80\\x80\\x80\\xFF");
}

TEST(Printable, IsCleanWhateverComes) {
    // Every pair of bytes: nothing is left that acts, and cleaning once is enough.
    for (unsigned pair = 0; pair < 0x10000U; ++pair) {
        const std::string text = {static_cast<char>(pair >> 8U), static_cast<char>(pair & 0xFFU)};
        const std::string clean = printable(text);
        EXPECT_EQ(printable(clean), clean) << pair;
        for (const char character : clean) {
            EXPECT_TRUE(static_cast<unsigned char>(character) >= ' ' && character != '\x7F')
                << pair;
        }
    }
}

}  // namespace
