#include "tables/csv.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "failure_of.h"
#include "support/scratch.h"

namespace {

using lumivar::CsvReader;
using lumivar::LineReader;

using Fields = std::vector<std::string>;

Fields split(const std::string& line) {
    Fields fields = {"left", "over"};
    EXPECT_TRUE(lumivar::split_csv_line(line, fields)) << line;
    return fields;
}

TEST(SplitCsvLine, CutsAtCommasOutsideQuotesAndDropsOuterBlanks) {
    EXPECT_EQ(split("a,b,c"), (Fields{"a", "b", "c"}));
    EXPECT_EQ(split(" a b ,\t, "), (Fields{"a b", "", ""}));
    EXPECT_EQ(split(""), Fields{""});
    EXPECT_EQ(split(","), (Fields{"", ""}));
    EXPECT_EQ(split(R"("a, b", "say ""x""" ,"")"), (Fields{"a, b", "say \"x\"", ""}));
    EXPECT_EQ(split(R"(5" mirror,x)"), (Fields{"5\" mirror", "x"})) << "a quote within is text";
    Fields fields;
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
        return failure_of([&] {
            CsvReader table(lines, "EXAMPLE");
            while (table.next()) {
                table.number(0, -1.0, 1.0, "REMEDY");
            }
        });
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
    const auto column = [](int line, const std::string& complaint) {
        return std::to_string(line) + ": column 1 (x): " + complaint + "; REMEDY";
    };
    const std::string keep = "; leave an unknown field empty, but keep its comma";
    const std::string not_a_number = "\" is not a number";
    const std::pair<std::string, std::string> cases[] = {
        {"x\n0.5\nabc\n", column(3, "\"abc" + not_a_number)},
        {"x,y\n,1\n", column(2, "is empty")},
        {"x\n1.5\n", column(2, "1.5 is out of range")},
        {"x\n1e999\n", column(2, "1e999 is out of range")},
        {"x\nnan\n", column(2, "\"nan" + not_a_number)},
        {"x\ninf\n", column(2, "\"inf" + not_a_number)},
        {"x\n0.5deg\n", column(2, "\"0.5deg" + not_a_number)},
        {"x\n+\n", column(2, "\"+" + not_a_number)},
        // Text that cannot be printed, or is long, is shown harmlessly.
        {"x\n\x1b[31m\n", column(2, "\"?[31m" + not_a_number)},
        {"x\n" + std::string(50, 'y') + "\n",
         column(2, "\"" + std::string(40, 'y') + "..." + not_a_number)},
        {"x,y\n1\n", "2: has 1 fields where the header names 2" + keep},
        {"x,y\n1,2,3\n", "2: has 3 fields where the header names 2" + keep},
        {"x,y\n\"1,2\n", "2: a double quote is not closed, or text follows it"},
        {"", " is empty; it must begin with a line that names the columns: EXAMPLE"},
        {"x\n" + std::string((1U << 20) + 1, '0'),
         "2: a line of more than a megabyte: this is no text file"},
    };
    for (const auto& [bytes, complaint] : cases) {
        EXPECT_EQ(fault(bytes), path + ":" + complaint);
    }
}

TEST_F(CsvFile, ReadsLinesOfAnyLengthBelow) {
    const std::string line(LineReader::kLongestLine - 1, '7');
    LineReader lines(file(line + "\n" + line + "\nend"));
    std::string_view read;
    for (const std::string& expected : {line, line, std::string("end")}) {
        ASSERT_TRUE(lines.next(read));
        EXPECT_TRUE(read == expected);
    }
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
    EXPECT_EQ(failure_of([&] { const LineReader none(folder / "none.csv"); }),
              "cannot read " + (folder / "none.csv") + ": No such file or directory");
    LineReader a_folder(folder.path());
    std::string_view line;
    EXPECT_EQ(failure_of([&] { a_folder.next(line); }),
              "cannot read " + folder.path() + ": Is a directory");
}

}  // namespace
