#include <base/instring.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>

#include <string>

namespace {

// Taken before main: the table works from static initialisers.
const String first_symbol = InString::gensym()->text;
const InString* const early = InString::intern("early");
const bool early_is_kept = InString::intern("early") == early;

std::string dumped() { return output_of(stdout, InString::dump); }

std::string chains(unsigned int marked, const std::string& texts) {
    std::string lines;
    for (unsigned int b = 0; b < 256; ++b) {
        lines += "chain " + std::to_string(b) + ": " + (b == marked ? texts : "") + "\n";
    }
    return lines;
}

// The table is the process's: each test starts from an empty one.
class Interning : public ::testing::Test {
protected:
    void SetUp() override { InString::cleanup(); }
    void TearDown() override { InString::cleanup(); }
};

}  // namespace

TEST_F(Interning, WorksBeforeMain) {
    EXPECT_TRUE(early_is_kept);
    EXPECT_STREQ(first_symbol.c_str(), "G0");
}

TEST_F(Interning, EqualTextsHaveOneAddress) {
    InString* vega = InString::intern("vega");
    EXPECT_EQ(InString::intern("vega"), vega);
    EXPECT_EQ(InString::intern(String("ve") + "ga"), vega);
    EXPECT_NE(InString::intern("Vega"), vega);
    EXPECT_STREQ(vega->text.c_str(), "vega");
    EXPECT_EQ(vega->hash, String("vega").hash());
    EXPECT_EQ(vega->value, vega);
}

TEST_F(Interning, TheEmptyTextHasOneAddress) {
    EXPECT_EQ(InString::intern(""), InString::intern(String()));
    EXPECT_EQ(InString::intern("")->hash, 0U);
}

TEST_F(Interning, HoldsManyTexts) {
    InString* strings[2000];
    for (int i = 0; i < 2000; ++i) {
        strings[i] = InString::intern(String::fmt("star %d", i));
    }
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(InString::intern(String::fmt("star %d", i)), strings[i]);
    }
}

TEST_F(Interning, GeneratedSymbolsCountOnAndAreNeverInterned) {
    InString* symbol = InString::gensym();
    InString* next = InString::gensym();
    EXPECT_EQ(symbol->text.c_str()[0], 'G');
    const int number = String(symbol->text.c_str() + 1).atoi();
    EXPECT_TRUE(next->text == String::fmt("G%d", number + 1));
    EXPECT_EQ(symbol->hash, symbol->text.hash());
    EXPECT_EQ(symbol->value, symbol);
    InString* interned = InString::intern(symbol->text);
    EXPECT_NE(interned, symbol);
    EXPECT_TRUE(interned->text == symbol->text);
    // Not even while the symbol's own text is the only one of its kind.
    EXPECT_EQ(InString::intern(symbol->text), interned);
}

TEST_F(Interning, CleanupGoesOnNumberingSymbols) {
    const int number = String(InString::gensym()->text.c_str() + 1).atoi();
    InString::cleanup();
    EXPECT_TRUE(InString::gensym()->text == String::fmt("G%d", number + 1));
}

TEST_F(Interning, CleanupEmptiesTheTable) {
    InString::intern("vega");
    InString::gensym();
    InString::cleanup();
    EXPECT_EQ(dumped(), chains(256, ""));
    InString::cleanup();
    EXPECT_STREQ(InString::intern("vega")->text.c_str(), "vega");
}

TEST_F(Interning, DumpOfAnEmptyTableIs256Lines) { EXPECT_EQ(dumped(), chains(256, "")); }

TEST_F(Interning, DumpShowsEachTextInItsChainInOrder) {
    // The hash of "A" is 11484 = 44 x 256 + 220. That of "Q" is (81 x 16 + 5) x 11 = 14311, of
    // chain 231; "a" has (97 x 16 + 6) x 11 = 17138, of chain 242.
    InString::intern("A");
    EXPECT_EQ(dumped(), chains(220, " A"));
    InString::cleanup();
    InString::intern("Q");
    EXPECT_EQ(dumped(), chains(231, " Q"));
    InString::cleanup();
    // The null text and the generated symbol, which is in no chain.
    InString::gensym();
    InString::intern("");
    EXPECT_EQ(dumped(), chains(0, " "));
}

TEST_F(Interning, DumpKeepsTheOrderOfAChain) {
    // Another text of the same chain, searched for.
    InString* first = InString::intern("A");
    String other;
    for (int c = 'a'; c <= 'z' && other.len() == 0; ++c) {
        for (int d = 'a'; d <= 'z' && other.len() == 0; ++d) {
            const String text = String::fmt("%c%c", c, d);
            if ((text.hash() & 255U) == (first->hash & 255U)) {
                other = text;
            }
        }
    }
    ASSERT_NE(other.len(), 0U);
    InString::intern(other);
    EXPECT_EQ(dumped(), chains(220, std::string(" A ") + other.c_str()));
}

TEST_F(Interning, ATemporaryFindsWhatIsThere) {
    InString* vega = InString::intern("vega");
    TempInString found("vega");
    EXPECT_FALSE(found.temporary());
    EXPECT_EQ(found.get(), vega);
    EXPECT_EQ(found.make_permanent(), vega);
}

TEST_F(Interning, ATemporaryStaysOutOfTheTable) {
    {
        TempInString temporary("vega");
        EXPECT_TRUE(temporary.temporary());
        EXPECT_STREQ(temporary.get()->text.c_str(), "vega");
        EXPECT_EQ(temporary.get()->hash, String("vega").hash());
        EXPECT_NE(InString::intern("vega"), temporary.get());
        InString::cleanup();
    }
    EXPECT_EQ(dumped(), chains(256, ""));
}

TEST_F(Interning, ATemporaryMadePermanentIsTheInternedOne) {
    InString* kept = nullptr;
    {
        TempInString temporary("A");
        kept = temporary.make_permanent();
        EXPECT_FALSE(temporary.temporary());
        EXPECT_EQ(kept, temporary.get());
        EXPECT_EQ(temporary.make_permanent(), kept);
    }
    EXPECT_EQ(InString::intern("A"), kept);
    EXPECT_EQ(dumped(), chains(220, " A"));
}

TEST_F(Interning, MapsGoByTheAddress) {
    StringMap<int> map(8);
    map.insert(InString::intern("vega"), 5);
    ASSERT_NE(map.lookup_entry(InString::intern("vega")), nullptr);
    EXPECT_EQ(map.lookup_entry(InString::intern("vega"))->value, 5);
    EXPECT_STREQ(map.lookup_entry(InString::intern("vega"))->key()->text.c_str(), "vega");
    EXPECT_EQ(map.lookup_entry(InString::intern("deneb")), nullptr);
}
