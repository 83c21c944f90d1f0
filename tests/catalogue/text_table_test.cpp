// What a text's beginning tells of its columns, and the rows below.
#include "tables/text_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/scratch.h"
#include "tables/text_shape.h"

namespace {

using lumivar::FaultKind;
using lumivar::find_text_shape;
using lumivar::Table;
using lumivar::TextShape;
using Words = std::vector<std::string>;

Words names_of(const std::vector<lumivar::TableColumn>& columns) {
    Words names;
    for (const lumivar::TableColumn& column : columns) {
        names.push_back(column.name + (column.unit.empty() ? "" : "/" + column.unit));
    }
    return names;
}

TEST(TextShape, HasTheSeparatorThatStandsMostOften) {
    EXPECT_EQ(find_text_shape("a,b;c,d\n", {}).separator, ',');
    EXPECT_EQ(find_text_shape("a\tb,c\td\n", {}).separator, '\t');
    EXPECT_EQ(find_text_shape("a|b|c\n", {}).separator, '|');
    EXPECT_EQ(find_text_shape("\"a,b,c\";d\n", {}).separator, ';');
    EXPECT_EQ(find_text_shape("1 2 3\n", {}).separator, lumivar::kAnyBlanks);
    EXPECT_EQ(find_text_shape("a;b,c,d\n", ';').separator, ';') << "as the user said";
}

TEST(TextShape, TellsNamesFromRows) {
    const TextShape named = find_text_shape("ra,dec\n1,2\n", {});
    EXPECT_TRUE(named.has_names);
    EXPECT_EQ(names_of(named.columns), (Words{"ra", "dec"}));
    EXPECT_EQ(named.lines_before_rows, 1U);
    const TextShape rows = find_text_shape("\nSirius,1,2\n", {});
    EXPECT_FALSE(rows.has_names);
    EXPECT_EQ(rows.columns.size(), 3U);
    EXPECT_EQ(rows.lines_before_rows, 1U) << "the blank line";
    EXPECT_TRUE(find_text_shape("# only\n#comments\n", {}).columns.empty());
    EXPECT_TRUE(find_text_shape("", {}).columns.empty());
}

TEST(TextShape, HasTheUnitsOfEcsvInEitherStyle) {
    const TextShape flow = find_text_shape(
        "# %ECSV 1.0\n# ---\n# delimiter: ';'\n# datatype:\n"
        "# - {name: ra, unit: deg, datatype: float64}\n"
        "# - {datatype: float64, name: \"pm, ra\", description: 'unit: none', unit: mas / yr}\n"
        "ra;\"pm, ra\"\n1;2\n",
        {});
    EXPECT_EQ(names_of(flow.columns), (Words{"ra/deg", "pm, ra/mas / yr"}));
    EXPECT_EQ(flow.separator, ';');
    const TextShape block = find_text_shape(
        "# %ECSV 1.0\n# datatype:\n# -\n#   name: ra\n#   datatype: float64\n#   unit: hourangle\n"
        "# -\n#   name: dec\n#   datatype: float64\nra,dec\n1,2\n",
        {});
    EXPECT_EQ(names_of(block.columns), (Words{"ra/hourangle", "dec"}));
}

TEST(TextShape, HasTheUnitsAndTheEpochOfVizier) {
    const TextShape shape = find_text_shape(
        "#Coosys\tJ2000_1991.250:\teq_FK5 J2000\n#Column\tRAhms\t(A11)\tPlace\n"
        "RAhms\tDEdms\tVmag\n\"h:m:s\"\t\"d:m:s\"\tmag\n-----\t-----\t---\n"
        "00 00 00.22\t+01 05 20.4\t 9.10\n",
        {});
    EXPECT_EQ(names_of(shape.columns), (Words{"RAhms/h:m:s", "DEdms/d:m:s", "Vmag/mag"}));
    EXPECT_EQ(shape.lines_before_rows, 5U);
    EXPECT_EQ(shape.epoch, 1991.25);
}

class TextRows : public testing::Test {
protected:
    /// Every step of reading a text: fields joined by "|", or what else happens.
    Words steps(const std::string& text) {
        write_file(folder / "t.txt", text);
        lumivar::ByteStream bytes(folder / "t.txt");
        lumivar::LineReader lines(bytes);
        lumivar::TextTable table(lines,
                                 find_text_shape(lines.look_ahead(lumivar::kRowsForShape), {}));
        Words result;
        for (;;) {
            const Table::Step step = table.next();
            if (step == Table::Step::End) {
                return result;
            }
            std::string word;
            if (step == Table::Step::NewColumns) {
                word = "COLUMNS";
                for (const std::string& name : names_of(table.columns())) {
                    word += " " + name;
                }
            } else if (step == Table::Step::Faulty) {
                word = table.place().substr(folder.path().size() + 6) + " " +
                       lumivar::fault_text(table.fault().kind);
            } else {
                for (std::size_t i = 0; i < table.columns().size(); ++i) {
                    word += (i > 0 ? "|" : "") + std::string(table.text(i));
                }
            }
            result.push_back(word);
        }
    }
    ScratchFolder folder;
};

TEST_F(TextRows, FollowTheNames) {
    EXPECT_EQ(steps("a,b\r\n\r\n1, 2\r\n \n3,"), (Words{"1|2", "3|"}));
    EXPECT_EQ(steps("1 2\n 3   4 \n"), (Words{"1|2", "3|4"})) << "no names, no loss";
}

TEST_F(TextRows, SayWhatIsWrongWithThem) {
    EXPECT_EQ(steps("a,b\n1,2\n1,2,3\n\"1,2\n1\n" + std::string(2U << 20, 'x') + "\n5,6\n"),
              (Words{"1|2", ":3 more or fewer fields than the table has columns",
                     ":4 a double quote that is not closed, or text behind it",
                     ":5 more or fewer fields than the table has columns",
                     ":6 a line of more than a megabyte", "5|6"}));
}

TEST_F(TextRows, OfASecondTableHaveItsColumns) {
    EXPECT_EQ(steps("#RESOURCE=one\n#Column\ta\n#Column\tb\na;b\n;mag\n-;---\n1;2\n\n"
                    "#RESOURCE=two\n#Column\tc\nc;d;e\n;;deg\n-;-;---\n3;4;5\n\n"),
              (Words{"1|2", "COLUMNS c d e/deg", "3|4|5"}));
}

}  // namespace
