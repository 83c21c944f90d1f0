#include "text_columns.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using lumivar::characters;
using lumivar::cut;
using lumivar::padded;
using lumivar::wrapped;

using Lines = std::vector<std::string>;

TEST(TextColumns, AreCharactersNotBytes) {
    EXPECT_EQ(characters(""), 0U);
    EXPECT_EQ(characters("four"), 4U);
    EXPECT_EQ(characters("vi\u00EBr \u2605\U0001F31F"), 7U);
    EXPECT_EQ(padded("\u2605", 3) + "|", "\u2605  |");
    EXPECT_EQ(padded("four", 3), "four");
    EXPECT_EQ(cut("\u2605\u2605\u2605", 2), "\u2605\u2605");
    EXPECT_EQ(cut("\u2605", 2), "\u2605");
    EXPECT_EQ(cut("text", 0), "");
}

TEST(WrappedText, BreaksAtSpacesAndCutsWordsThatAreTooLong) {
    EXPECT_EQ(wrapped("", 5), Lines{""});
    EXPECT_EQ(wrapped("12345", 5), Lines{"12345"});
    EXPECT_EQ(wrapped("one two three", 7), (Lines{"one two", "three"}));
    EXPECT_EQ(wrapped("one two three", 8), (Lines{"one two", "three"}));
    EXPECT_EQ(wrapped("one two three", 6), (Lines{"one", "two", "three"}));
    EXPECT_EQ(wrapped("123456", 5), (Lines{"12345", "6"}));
    EXPECT_EQ(wrapped("a 1234567", 5), (Lines{"a", "12345", "67"}));
    EXPECT_EQ(wrapped(" 123456", 5), (Lines{" 1234", "56"}));
    EXPECT_EQ(wrapped("\u2605\u2605\u2605", 2), (Lines{"\u2605\u2605", "\u2605"}))
        << "between characters";
    EXPECT_EQ(wrapped("\u2605\u2605 \u2605\u2605", 5), Lines{"\u2605\u2605 \u2605\u2605"});
    EXPECT_EQ(wrapped("\u2605\u2605 \u2605\u2605", 4), (Lines{"\u2605\u2605", "\u2605\u2605"}));
}

}  // namespace
