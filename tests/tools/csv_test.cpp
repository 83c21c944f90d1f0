#include "csv.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "support/scratch.h"

namespace {

using lumivar::CsvReader;
using lumivar::Failure;
using lumivar::LineReader;

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> fields = {"left", "over"};
    EXPECT_TRUE(lumivar::split_csv_line(line, fields)) << line;
    return fields;
}

using Fields = std::vector<std::string>;

TEST(SplitCsvLine, CutsAtCommasAndDropsOuterBlanks) {
    EXPECT_EQ(split("a,b,c"), (Fields{"a", "b", "c"}));
    EXPECT_EQ(split(" a b ,\t, "), (Fields{"a b", "", ""}));
    EXPECT_EQ(split(""), Fields{""});
    EXPECT_EQ(split(","), (Fields{"", ""}));
}

TEST(SplitCsvLine, KeepsCommasAndQuotesWithinQuotes) {
    EXPECT_EQ(split(R"("a, b", "say ""x""" ,"")"), (Fields{"a, b", "say \"x\"", ""}));
    EXPECT_EQ(split(R"(5" mirror,x)"),
              (Fields{"5\" mirror", "x"}));  // a quote within is plain text
}

TEST(SplitCsvLine, RefusesBrokenQuotes) {
    std::vector<std::string> fields;
    EXPECT_FALSE(lumivar::split_csv_line("\"abc", fields));
    EXPECT_FALSE(lumivar::split_csv_line("\"abc\"d,e", fields));
}

class CsvFile : public testing::Test {
protected:
    std::string file(const std::string& bytes) {
        write_file(path, bytes);
        return path;
    }
    /// The message of reading the whole file with a number expected in column 0.
    std::string fault(const std::string& bytes) {
        LineReader lines(file(bytes));
        try {
            CsvReader table(lines, "EXAMPLE");
            while (table.next()) {
                table.number(0, -1.0, 1.0, "REMEDY");
            }
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "no fault";
    }

    ScratchFolder folder;
    const std::string path = folder / "t.csv";
};

TEST_F(CsvFile, FindsColumnsByName) {
    LineReader lines(file("x,y\n1,2\n"));
    CsvReader table(lines, "");
    EXPECT_EQ(table.required_column("y"), 1U);
    EXPECT_FALSE(table.column("z"));
    ASSERT_TRUE(table.next());
    EXPECT_EQ(table.number(1, 0, 10, ""), 2.0);
    EXPECT_FALSE(table.next());
}

TEST_F(CsvFile, TakesMarksCarriageReturnsBlankLinesAndAMissingLastLineFeed) {
    LineReader lines(file("\xEF\xBB\xBFx,y\r\n\r\n  \n1,+2.5e0\r\n3, 4"));
    CsvReader table(lines, "");
    EXPECT_TRUE(table.column("x"));
    ASSERT_TRUE(table.next());
    EXPECT_EQ(lines.number(), 4U);
    EXPECT_EQ(table.number(1, 0, 10, ""), 2.5);
    ASSERT_TRUE(table.next());
    EXPECT_EQ(table.number(1, 0, 10, ""), 4.0);
    EXPECT_FALSE(table.next());
}

TEST_F(CsvFile, NamesFileLineColumnAndRemedy) {
    EXPECT_EQ(fault("x\n0.5\nabc\n"), path + ":3: column 1 (x): \"abc\" is not a number; REMEDY");
    EXPECT_EQ(fault("x,y\n,1\n"), path + ":2: column 1 (x): is empty; REMEDY");
    EXPECT_EQ(fault("x\n1.5\n"), path + ":2: column 1 (x): 1.5 is out of range; REMEDY");
    EXPECT_EQ(fault("x\n1e999\n"), path + ":2: column 1 (x): 1e999 is out of range; REMEDY");
    EXPECT_EQ(fault("x\nnan\n"), path + ":2: column 1 (x): \"nan\" is not a number; REMEDY");
    EXPECT_EQ(fault("x\ninf\n"), path + ":2: column 1 (x): \"inf\" is not a number; REMEDY");
    EXPECT_EQ(fault("x\n0.5deg\n"), path + ":2: column 1 (x): \"0.5deg\" is not a number; REMEDY");
    EXPECT_EQ(fault("x\n+\n"), path + ":2: column 1 (x): \"+\" is not a number; REMEDY");
}

TEST_F(CsvFile, RefusesRowsThatDoNotFitTheHeader) {
    const std::string remedy = "; leave an unknown field empty, but keep its comma";
    EXPECT_EQ(fault("x,y\n1\n"), path + ":2: has 1 fields where the header names 2" + remedy);
    EXPECT_EQ(fault("x,y\n1,2,3\n"), path + ":2: has 3 fields where the header names 2" + remedy);
    EXPECT_EQ(fault("x,y\n\"1,2\n"), path + ":2: a double quote is not closed, or text follows it");
}

TEST_F(CsvFile, ShowsUnprintableTextHarmlessly) {
    EXPECT_EQ(fault("x\n\x1b[31m\n"), path + ":2: column 1 (x): \"?[31m\" is not a number; REMEDY");
    EXPECT_EQ(
        fault("x\n" + std::string(50, 'y') + "\n"),
        path + ":2: column 1 (x): \"" + std::string(40, 'y') + "...\" is not a number; REMEDY");
}

TEST_F(CsvFile, RefusesWhatIsNoTable) {
    EXPECT_EQ(fault(""),
              path + ": is empty; it must begin with a line that names the columns: EXAMPLE");
    EXPECT_EQ(fault("x\n" + std::string((1U << 20) + 1, '0')),
              path + ":2: a line of more than a megabyte: this is no text file");
}

TEST_F(CsvFile, ReadsLinesOfAnyLengthBelow) {
    const std::string line(LineReader::kLongestLine - 1, '7');
    LineReader lines(file(line + "\n" + line + "\nend"));
    std::string_view read;
    ASSERT_TRUE(lines.next(read));
    EXPECT_TRUE(read == line);
    ASSERT_TRUE(lines.next(read));
    EXPECT_TRUE(read == line);
    ASSERT_TRUE(lines.next(read));
    EXPECT_EQ(read, "end");
    EXPECT_FALSE(lines.next(read));
}

TEST_F(CsvFile, ReadsAPipeToItsEndHoweverSmallThePieces) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([this] {
        const int end = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        for (const std::string piece : {"x\n0.", "5", "\r\n", "1\n\n2"}) {
            EXPECT_EQ(write(end, piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        close(end);
    });
    std::vector<std::string> read;
    {
        LineReader lines(path);
        EXPECT_EQ(lines.bytes_in_all(), 0U);
        for (std::string_view line; lines.next(line);) {
            read.emplace_back(line);
        }
        EXPECT_EQ(lines.bytes_read(), 11U);  // 4 + 1 + 2 + 4
    }
    writer.join();
    EXPECT_EQ(read, (std::vector<std::string>{"x", "0.5", "1", "", "2"}));
}

TEST_F(CsvFile, SaysWhyItCannotBeRead) {
    try {
        const LineReader none(folder / "none.csv");
        FAIL() << "there is no such file";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(),
                  "cannot read " + (folder / "none.csv") + ": No such file or directory");
    }
    LineReader a_folder(folder.path());
    std::string_view line;
    try {
        a_folder.next(line);
        FAIL() << "a folder has no lines";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), "cannot read " + folder.path() + ": Is a directory");
    }
}

}  // namespace
