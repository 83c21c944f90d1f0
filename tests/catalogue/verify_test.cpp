// lumivar catalog verify, and the faults that it knows; info_test.cpp has those of single values.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>

#include "database/database_faults.h"
#include "support/catalogue.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using lumivar::database_faults;
using Lines = std::vector<std::string>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

class Verify : public testing::Test {
protected:
    std::string file(const std::string& name, const std::string& bytes) {
        write_file(folder / name, bytes);
        return folder / name;
    }
    ScratchFolder folder;
    const std::string good = support::catalogue_bytes(support::kVersion2, {{.lon = 1}, {}});
    const std::string faulty = support::catalogue_bytes(
        support::kVersion2, {{}, {.lon = 360.5}, {.luminance = 0}, {.lon = -1}});
};

TEST_F(Verify, NamesEachKindOfFaultOnceWithItsFirstStarAndItsCount) {
    const std::string path = file("a.stars", faulty + "tail");
    const ToolResult result = run_tool({"catalog", "verify", path});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out,
              path + ": 4 trailing bytes are no whole record and never read\n" +  //
                  path + ": 2 stars with a lon outside 0 to 360 degrees (first: star 2)\n" + path +
                  ": 1 star with a luminance of 0 or below (first: star 3)\n");
    EXPECT_EQ(result.err, "lumivar: 1 of 1 database is faulty\n");
}

TEST_F(Verify, IsSatisfiedByEdgesAndUnknownDistancesAndAHeaderAlone) {
    const std::string edges = support::catalogue_bytes(
        support::kVersion2,
        {{.lon = 360, .lat = 90, .luminance = std::numeric_limits<float>::max(), .distance = 0},
         {.lon = 0,
          .lat = -90,
          .luminance = std::numeric_limits<float>::denorm_min(),
          .distance = -1}});
    EXPECT_EQ(database_faults(file("edges.stars", edges)), Lines{});
    EXPECT_EQ(database_faults(file("empty.stars", support::catalogue_header("LUMIVAR1"))), Lines{});
}

TEST_F(Verify, LooksAtDistancesOnlyWhereTheyAreRead) {
    const std::vector<support::CatalogueStar> stars = {{.distance = kNan}};
    EXPECT_EQ(database_faults(file("1.stars", support::catalogue_bytes("LUMIVAR1", stars))),
              Lines{});
    EXPECT_EQ(database_faults(file("2.stars", support::catalogue_bytes("LUMIVAR2", stars))),
              Lines{"1 star with a distance that is not a number or infinite (first: star 1)"});
}

TEST_F(Verify, FindsACutHeaderAndMoreStarsThanAReaderCounts) {
    EXPECT_EQ(database_faults(file("cut.stars", good.substr(0, 20))),
              Lines{"the header is cut short: 20 bytes instead of 32"});
    // A file of holes: nothing of it is on the disk.
    std::filesystem::resize_file(file("long.stars", good), 32 * (1ULL << 32U));
    EXPECT_EQ(lumivar::file_faults(lumivar::DatabaseReader(folder / "long.stars")),
              Lines{"there are 4294967295 stars, more than a database can hold (4294967294)"});
}

TEST_F(Verify, GoesOnToTheOtherFilesAndSaysWhatItCannotRead) {
    const std::string none = folder / "none.stars";
    const std::string a = file("a.stars", good);
    const std::string b = file("b.stars", faulty.substr(0, 96));
    const ToolResult result = run_tool({"catalog", "verify", none, b, a});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out, "cannot read " + none + ": No such file or directory\n" + b +
                              ": 1 star with a lon outside 0 to 360 degrees (first: star 2)\n" + a +
                              ": good\n");
    EXPECT_EQ(result.err, "lumivar: 2 of 3 databases are faulty\n");
}

TEST_F(Verify, QuietSaysItByTheExitCode) {
    const ToolResult well = run_tool({"catalog", "verify", "-q", file("a.stars", good)});
    EXPECT_EQ(well.code, 0);
    EXPECT_EQ(well.out + well.err, "");
    const ToolResult badly = run_tool({"catalog", "verify", "--quiet", file("b.stars", faulty)});
    EXPECT_EQ(badly.code, 1);
    EXPECT_EQ(badly.out, "");
}

}  // namespace
