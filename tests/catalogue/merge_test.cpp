// lumivar catalog merge; duplicates_test.cpp has the rules by which stars are joined.
#include "database/merge.h"

#include <gtest/gtest.h>

#include <string>

#include "failure_of.h"
#include "support/catalogue.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using lumivar::merge_databases;
using lumivar::MergeSummary;

class Merge : public testing::Test {
protected:
    std::string file(const std::string& name, const std::string& bytes) {
        write_file(folder / name, bytes);
        return folder / name;
    }
    ScratchFolder folder;
    const std::string out = folder / "out.stars";
};

TEST_F(Merge, PutsTheStarsOfAllInputsInARow) {
    const std::string a = support::catalogue_bytes("LUMIVAR2", {{.lon = 1}, {.lon = 2}});
    const std::string b = support::catalogue_bytes("LUMIVAR2", {{.lon = 3, .distance = 4}});
    const MergeSummary summary =
        merge_databases({file("b.stars", b), file("a.stars", a + "tail")}, out, {});
    EXPECT_EQ(summary.read, 3U);
    EXPECT_EQ(summary.written, 3U);
    EXPECT_EQ(summary.merged, 0U);
    EXPECT_EQ(read_file(out), b + a.substr(32));
}

TEST_F(Merge, IsOfVersionOneOnlyIfAllInputsAre) {
    const std::string one = support::catalogue_bytes("LUMIVAR1", {{.distance = 4}});
    const std::string two = support::catalogue_bytes("LUMIVAR2", {{.distance = 5}});
    EXPECT_EQ(merge_databases({file("1.stars", one), folder / "1.stars"}, out, {}).version, 1);
    EXPECT_EQ(read_file(out), one + one.substr(32)) << "the unused distances stay";
    // In version 2 the distance would count; a star of version 1 is drawn as having none.
    const std::string joined =
        support::catalogue_bytes("LUMIVAR2", {{.distance = -1}, {.distance = 5}});
    for (const auto& arcseconds : {std::optional<double>(), std::optional<double>(1.0)}) {
        const std::string apart = support::catalogue_bytes("LUMIVAR2", {{.lon = 9, .distance = 5}});
        EXPECT_EQ(
            merge_databases({folder / "1.stars", file("2.stars", apart)}, out, arcseconds).version,
            2);
        EXPECT_EQ(read_file(out), support::catalogue_bytes(
                                      "LUMIVAR2", {{.distance = -1}, {.lon = 9, .distance = 5}}));
    }
    merge_databases({folder / "1.stars", file("2.stars", two)}, out, {});
    EXPECT_EQ(read_file(out), joined);
}

TEST_F(Merge, MayReplaceAnInputAndTellsWhatItMerged) {
    const std::string a =
        file("a.stars", support::catalogue_bytes("LUMIVAR2", {{.lon = 1}, {.lon = 2}}));
    const std::string b = file(
        "b.stars",
        support::catalogue_bytes("LUMIVAR2", {{.lon = 2.0001, .distance = 7}, {.lon = 3}}) + "x");
    const ToolResult result = run_tool({"catalog", "merge", a, b, "-o", b, "--dedupe", "0.5"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out.rfind(
                  b + ": 3 stars of version 2, 4 read, 1 merged with one of another input, ", 0),
              0U)
        << result.out;
    EXPECT_EQ(result.err,
              "lumivar: warning: " + b + ": 1 trailing bytes are no whole record and never read\n");
    EXPECT_EQ(read_file(b), support::catalogue_bytes(
                                "LUMIVAR2", {{.lon = 1}, {.lon = 2, .distance = 7}, {.lon = 3}}));
    EXPECT_EQ(names_in(folder.path()), (std::vector<std::string>{"a.stars", "b.stars"}));
}

TEST_F(Merge, NamesAnInputThatItCannotUse) {
    const std::string a = file("a.stars", support::catalogue_header("LUMIVAR2"));
    EXPECT_EQ(failure_of([&] {
                  merge_databases({a, folder / "none.stars"}, out, {});
              }),
              "cannot read " + (folder / "none.stars") + ": No such file or directory");
    EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{"a.stars"});
}

}  // namespace
