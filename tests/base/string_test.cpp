#include <base/array.h>
#include <base/string.h>

#include <gtest/gtest.h>

#include <string>

TEST(String, HashOfOneLetter) {
    EXPECT_EQ(String("A").hash(), 11484U);
    EXPECT_EQ(String().hash(), 0U);
    EXPECT_EQ(String("").hash(), 0U);
}

TEST(String, SplitDropsEmptyPieces) {
    Array<String> pieces;
    String::split(" a  b ", pieces);
    ASSERT_EQ(pieces.len(), 2U);
    EXPECT_STREQ(pieces[0].c_str(), "a");
    EXPECT_STREQ(pieces[1].c_str(), "b");
}

TEST(String, FormatsTextsAroundTheFirstSize) {
    for (const int length : {0, 99, 100, 101, 1000}) {
        EXPECT_EQ(std::string(String::fmt("%*s", length, "").c_str()), std::string(length, ' '));
    }
}
