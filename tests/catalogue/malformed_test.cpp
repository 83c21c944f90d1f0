// Catalogues that are not as they should be: every row gets its reason and its count, and no file
// takes the program down.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "catalogue/compressed.h"
#include "catalogue/import_support.h"
#include "failure_of.h"
#include "support/scratch.h"

namespace {

using lumivar::FaultKind;
using Lines = std::vector<std::string>;

constexpr const char* kNames = "ra_deg,dec_deg,vmag,bv,distance_pc\n";
constexpr const char* kGood = "1,2,3,0.5,10\n";

TEST(Malformed, RowsAreSkippedWithFileLineColumnAndRemedy) {
    const std::string angles =
        "; give 0 to 360 degrees or 0 to 24 hours of right ascension, or -180 to 180 degrees, and "
        "-90 to 90 degrees of declination";
    const std::string magnitudes = "; give a magnitude from -30 to 90";
    const std::string colours = "; give a colour from -10 to 20, or leave the field empty";
    const std::pair<const char*, std::pair<FaultKind, std::string>> rows[] = {
        {"360.5,2,3,,",
         {FaultKind::PlaceOutOfRange, "column 1 (ra_deg): 360.5 is out of range" + angles}},
        {"-180.1,2,3,,",
         {FaultKind::PlaceOutOfRange, "column 1 (ra_deg): -180.1 is out of range" + angles}},
        {"1,91,3,,",
         {FaultKind::PlaceOutOfRange, "column 2 (dec_deg): 91 is out of range" + angles}},
        {"north,2,3,,",
         {FaultKind::PlaceMalformed,
          "column 1 (ra_deg): \"north\" is no angle; give a number, or hours or degrees, minutes "
          "and "
          "seconds"}},
        {",2,3,,", {FaultKind::PlaceMissing, "column 1 (ra_deg): is empty"}},
        {"1,NaN,3,,", {FaultKind::PlaceMissing, "column 2 (dec_deg): is empty"}},
        {"1,2,,,", {FaultKind::MagnitudeMissing, "column 3 (vmag): is empty"}},
        {"1,2,bright,,",
         {FaultKind::MagnitudeMalformed,
          "column 3 (vmag): \"bright\" is not a number" + magnitudes}},
        {"1,2,inf,,",
         {FaultKind::MagnitudeMalformed, "column 3 (vmag): \"inf\" is not a number" + magnitudes}},
        {"1,2,91,,",
         {FaultKind::MagnitudeOutOfRange, "column 3 (vmag): 91 is out of range" + magnitudes}},
        {"1,2,3,blue,",
         {FaultKind::ColourMalformed, "column 4 (bv): \"blue\" is not a number" + colours}},
        {"1,2,3,21,", {FaultKind::ColourOutOfRange, "column 4 (bv): 21 is out of range" + colours}},
        {"1,2,3,,far",
         {FaultKind::DistanceMalformed,
          "column 5 (distance_pc): \"far\" is not a number; leave the field empty for an unknown "
          "one"}},
        {"1,2,3",
         {FaultKind::FieldCount,
          "has 3 fields where the table has 5 columns; leave an unknown field empty, but keep its "
          "separator"}},
        {"\"1,2,3,,",
         {FaultKind::QuoteOpen, "a double quote that is not closed, or text behind it"}},
        {"\x01\x02\xFF,\x03,\x04,,",
         {FaultKind::PlaceMalformed,
          "column 1 (ra_deg): \"???\" is no angle; give a number, or hours or degrees, minutes and "
          "seconds"}},
    };
    for (const auto& [row, fault] : rows) {
        SCOPED_TRACE(row);
        const std::string text = std::string(kNames) + kGood + row + "\n" + kGood;
        const Imported imported = import_text(text);
        EXPECT_EQ(imported.skips, Lines{"t.csv:3: " + fault.second});
        EXPECT_EQ(imported.summary.rows.read(), 3U);
        EXPECT_EQ(imported.summary.rows.kept(), 2U);
        EXPECT_EQ(imported.summary.rows.skipped(fault.first), 1U);
        EXPECT_EQ(imported.stars.size(), 2U);
        lumivar::ImportOptions strict;
        strict.strict = true;
        EXPECT_EQ(import_text_failure(text, strict), "t.csv:3: " + fault.second);
    }
}

TEST(Malformed, RowsAreAllCountedAndTheFirstOfThemShown) {
    std::string text = kNames;
    for (int i = 0; i < 20; ++i) {
        text += kGood;
        text += "1,2,,,\n";
    }
    text += "1,95,3,,\n";
    const Imported imported = import_text(text);
    EXPECT_EQ(imported.skips.size(), 5U);
    EXPECT_EQ(imported.summary.rows.read(), 41U);
    EXPECT_EQ(imported.summary.rows.kept(), 20U);
    EXPECT_EQ(imported.summary.rows.skipped(FaultKind::MagnitudeMissing), 20U);
    const std::string reasons = imported.summary.rows.reasons("", "; ");
    EXPECT_NE(reasons.find("1: a right ascension or declination out of range (first: "),
              std::string::npos)
        << reasons;
    EXPECT_NE(reasons.find("20: no magnitude (first: "), std::string::npos) << reasons;
}

TEST(Malformed, LinesOfTenMegabytesCostARow) {
    const Imported imported =
        import_text(std::string(kNames) + kGood + std::string(10U << 20, '7') + "\n" + kGood);
    EXPECT_EQ(imported.stars.size(), 2U);
    EXPECT_EQ(imported.summary.rows.skipped(FaultKind::LineTooLong), 1U);
    EXPECT_EQ(imported.skips, Lines{"t.csv:3: a line of more than a megabyte"});
}

TEST(Malformed, LineEndsMayBeMixed) {
    const Imported imported =
        import_text("\xEF\xBB\xBFra_deg,dec_deg,vmag\r\n\r\n  \n1,+2.5e0,3\r\n3, 4,5");
    ASSERT_EQ(imported.stars.size(), 2U);
    EXPECT_EQ(imported.stars[0].lat, 2.5);
    EXPECT_EQ(imported.stars[1].lat, 4.0);
}

TEST(Malformed, FilesThatAreNoTablesAreRefusedWithTheRemedy) {
    using namespace std::string_literals;
    const std::pair<std::string, std::string> files[] = {
        {"",
         "t.csv: is empty; it must begin with a line that names the columns, such as "
         "ra_deg,dec_deg,vmag,bv,distance_pc"},
        {"# comment\n", "t.csv: holds no line of a table"},
        {"\xFF\xFEr\0a\0"s,
         "t.csv is text in UTF-16; save it as UTF-8, or convert it: iconv -f UTF-16 -t UTF-8"},
        {"LUMIVAR2" + std::string(24, '\0'),
         "t.csv is a star database already; lumivar catalog merge joins databases, lumivar catalog "
         "filter trims them"},
        {"\x7F"
         "ELF\x02\x01\0\0\n"s,
         "t.csv is no text; it has bytes of zero; give a table as text or a FITS file"},
        {"<?xml version=\"1.0\"?>\n<VOTABLE/>\n",
         "t.csv is a VOTable or other XML; ask the archive for CSV, ECSV or FITS instead"},
        {"PK\x03\x04zip",
         "t.csv is a compressed archive; unpack it, or compress it as .gz or .zst"},
        {"name,mass\nSirius,2\n",
         "t.csv: cannot tell which columns hold: right ascension, declination, magnitude; it has 1 "
         "name, 2 mass; name them with --columns ra=COLUMN,dec=COLUMN,mag=COLUMN,... by name or by "
         "number"},
        {"1 2 3\n",
         "t.csv: cannot tell which columns hold: right ascension, declination, magnitude; it has 1 "
         "\"1\", 2 \"2\", 3 \"3\"; name them with --columns ra=COLUMN,dec=COLUMN,mag=COLUMN,... by "
         "name or by number; a part without a line of names goes behind the part that has one"},
        {"ra,dec,ra,mag\n1,2,3,4\n",
         "t.csv: columns 1 and 3 are both named \"ra\"; rename one, or choose by number with "
         "--columns"},
        {"ra,dec,mag\n1,95,2\n",
         "none of 1 rows is a star, nothing is written: 1: a right ascension or declination out of "
         "range (first: t.csv:2)"},
        {"ra,dec,mag,\"name\n1,2,3,x\n",
         "t.csv:1: a double quote in the line of names is not closed, or text follows it"},
        {"ra,dec,mag\r1,2,3\r",
         "t.csv is text whose lines end with carriage returns alone; convert it: tr '\\r' '\\n'"},
        {"SIMPLE  =                    T\n", "t.csv: is no FITS file that can be read: "},
    };
    for (const auto& [bytes, complaint] : files) {
        EXPECT_EQ(import_text_failure(bytes).substr(0, complaint.size()), complaint)
            << import_text_failure(bytes);
    }
}

TEST(Malformed, DataThatEndTooSoonAreToldWithTheirLine) {
    std::string text = kNames;
    for (int i = 0; i < 20000; ++i) {
        text += std::to_string(i % 359) + ".5,2,3,0.5,10\n";
    }
    const std::string packed = gzipped(text);
    const std::string failure = import_text_failure(packed.substr(0, packed.size() / 2));
    EXPECT_EQ(failure.rfind("t.csv:", 0), 0U) << failure;
    EXPECT_NE(failure.find(": the gzip data end too soon: the file is not whole"),
              std::string::npos)
        << failure;
}

TEST(Malformed, FitsFilesAreRefusedAndLeaveNothing) {
    const std::string whole = read_file(LUMIVAR_SAMPLES "/gaia_dr3_subset.fits");
    EXPECT_EQ(import_text(whole).stars.size(), 5U);
    EXPECT_EQ(import_text(gzipped(whole)).stars.size(), 5U) << "unpacked on the way";
    for (const std::size_t size : {std::size_t{2880}, whole.size() - 2880, std::size_t{4000}}) {
        const std::string failure = import_text_failure(whole.substr(0, size));
        EXPECT_EQ(failure.rfind("t.csv", 0), 0U) << failure;
    }
}

}  // namespace
