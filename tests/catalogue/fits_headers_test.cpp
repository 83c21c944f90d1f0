// What is refused of a FITS file before the library sees it.
#include "tables/fits_headers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "failure_of.h"
#include "support/scratch.h"

namespace {

using Cards = std::vector<std::string>;

std::string header(const Cards& cards) {
    std::string text;
    for (std::string card : cards) {
        card.resize(80, ' ');
        text += card;
    }
    text.resize((text.size() + 2879) / 2880 * 2880, ' ');
    return text;
}

const Cards kPrimary = {"SIMPLE  =                    T / a comment",
                        "BITPIX  =                  -32",
                        "NAXIS   =                    2",
                        "NAXIS1  =                   30",
                        "NAXIS2  =                   25",
                        "COMMENT = no value 'at all",
                        "END"};
const Cards kTable = {"XTENSION= 'BINTABLE'", "BITPIX  = 8", "NAXIS   = 2", "NAXIS1  = 8",
                      "NAXIS2  = 1",          "PCOUNT  = 0", "GCOUNT  = 1", "TFIELDS = 1",
                      "TFORM1  = 'D'",        "END"};

class FitsHeaders : public testing::Test {
protected:
    /// What is said of a file with a picture of 30 x 25 numbers of 4 bytes and that header.
    std::string complaint(const Cards& table) {
        const std::string path = folder_ / "t.fits";
        // 3000 bytes of data are two blocks.
        write_file(path, header(kPrimary) + std::string(5760, '\xFF') + header(table));
        return failure_of([&] { lumivar::check_fits_headers(path, "NAME"); });
    }
    /// The same of a table one of whose cards, from 1, is another.
    std::string complaint(std::size_t card, const std::string& text) {
        Cards cards = kTable;
        cards[card - 1] = text;
        return complaint(cards);
    }
    static std::string at(int card, const std::string& fault) {
        return "NAME: is no FITS file that can be read: card " + std::to_string(card) +
               " of a header: " + fault;
    }

    ScratchFolder folder_;
};

TEST_F(FitsHeaders, OfAGoodFilePass) {
    const std::string path = folder_ / "t.fits";
    write_file(path, header(kPrimary) + std::string(5760, '\xFF') + header(kTable));
    EXPECT_NO_THROW(lumivar::check_fits_headers(path, "NAME"));
    write_file(path, header(kPrimary) + std::string(5760, '\xFF'));
    EXPECT_NO_THROW(lumivar::check_fits_headers(path, "NAME")) << "no table, which others say";
}

TEST_F(FitsHeaders, NameTheCardThatIsNone) {
    EXPECT_EQ(complaint(4, "NAXIS2  = 8"), at(4, "it is no NAXIS1 as it must stand here"));
    EXPECT_EQ(complaint(5, "NAXIS2  =TNULL 3"), at(5, "it is no NAXIS2 as it must stand here"));
    EXPECT_EQ(complaint(5, "NAXIS2  = -1"), at(5, "it is no NAXIS2 as it must stand here"));
    EXPECT_EQ(complaint(8, "TFIELDS = 1000"), at(8, "it is no TFIELDS as it must stand here"));
    EXPECT_EQ(complaint(1, "NEXT    = 'BINTABLE'"),
              at(1, "it is not the one that a header begins with"));
    EXPECT_EQ(complaint(9, "TTYPE1  = " + std::string(69, 'x')),
              at(9, "its value has no end, or is too long for one without quotes"));
    EXPECT_EQ(complaint(9, "TFORM1  = 'D"),
              at(9, "its value has no end, or is too long for one without quotes"));
    EXPECT_EQ(complaint(9, "TFORM1  = 'D\n'"), at(9, "it has characters that no header has"));
    EXPECT_EQ(complaint(9, "NAXIS1  = 8"), at(9, "the same stands before"));
    EXPECT_EQ(complaint(9, "TTYPE1  = 'ra'"),
              at(10, "the header says of fewer columns what they hold than there are"));
    EXPECT_EQ(complaint(10, "ENDE"), at(37, "the header has no END"));
}

}  // namespace
