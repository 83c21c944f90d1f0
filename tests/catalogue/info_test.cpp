// lumivar catalog info, on files made by hand.
#include "database/info.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "database/star_file.h"
#include "failure_of.h"
#include "star_table.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using lumivar::CatalogueInfo;
using lumivar::CatalogueStar;
using lumivar::examine_catalogue;
using Lines = std::vector<std::string>;

std::string star_bytes(double lon, double lat, float luminance, double distance = -1.0) {
    CatalogueStar result;
    result.lon = lon;
    result.lat = lat;
    result.luminance = luminance;
    result.rgb = {10, 20, 30};
    result.distance = distance;
    return bytes_of(lumivar::encode_star(result));
}

class Info : public testing::Test {
protected:
    std::string file(const std::string& bytes, const std::string& name = "t.stars") {
        write_file(folder / name, bytes);
        return folder / name;
    }
    const std::string header = bytes_of(lumivar::encode_header());
    ScratchFolder folder;
};

TEST_F(Info, GivesRangesAndMagnitudes) {
    const CatalogueInfo info =
        examine_catalogue(file(header + star_bytes(10, -20, 1.0F, 5.0) +
                               star_bytes(350, 45, 0.01F) + star_bytes(180, 0, 2.0F, 8.0)));
    EXPECT_EQ(info.version, 2);
    EXPECT_EQ(info.stars, 3U);
    EXPECT_EQ(info.bytes, 128U);
    EXPECT_EQ(std::pair(info.lon.low, info.lon.high), std::pair(10.0, 350.0));
    EXPECT_EQ(std::pair(info.lat.low, info.lat.high), std::pair(-20.0, 45.0));
    EXPECT_EQ(info.luminance.high, 2.0);
    EXPECT_EQ(std::pair(info.red.low, info.blue.high), std::pair(10.0, 30.0));
    EXPECT_EQ(std::pair(info.distance.low, info.distance.high), std::pair(5.0, 8.0));
    EXPECT_EQ(info.distance.values, 2U);
    EXPECT_NEAR(info.magnitude.low, -0.752575, 1e-6);  // -2.5 log10 2
    // Luminance 0.01 is magnitude 5 exactly, though the stored single precision falls short of it.
    EXPECT_EQ(info.histogram, (std::map<int, std::uint64_t>{{-1, 1}, {0, 1}, {5, 1}}));
    EXPECT_EQ(info.warnings, Lines{});
}

TEST_F(Info, WarnsOfValuesThatAreNotNumbersOrOutOfRange) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const CatalogueInfo info = examine_catalogue(
        file(header + star_bytes(1, 2, 1.0F) + star_bytes(kNan, 2, 1.0F) +
             star_bytes(1, -kInfinity, 1.0F) + star_bytes(1, 2, std::nanf("")) +
             star_bytes(1, 2, 1.0F, kNan) + star_bytes(-1, 91, 0.0F) + star_bytes(361, 2, -1.0F)));
    EXPECT_EQ(info.warnings,
              (Lines{"1 star with a lon that is not a number or infinite (first: star 2)",
                     "1 star with a lat that is not a number or infinite (first: star 3)",
                     "1 star with a luminance that is not a number or infinite (first: star 4)",
                     "1 star with a distance that is not a number or infinite (first: star 5)",
                     "2 stars with a lon outside 0 to 360 degrees (first: star 6)",
                     "1 star with a lat outside -90 to 90 degrees (first: star 6)",
                     "2 stars with a luminance of 0 or below (first: star 6)"}));
    EXPECT_EQ(info.lon.low, -1.0);
    EXPECT_EQ(info.lon.values, 6U);
    EXPECT_EQ(info.lat.low, 2.0);
}

TEST_F(Info, WarnsOfFilesThatAreNotAsTheyShouldBe) {
    const std::string one = header + star_bytes(1, 2, 1.0F);
    const CatalogueInfo trailing = examine_catalogue(file(one + std::string(31, 'x')));
    EXPECT_EQ(trailing.stars, 1U);
    EXPECT_EQ(trailing.warnings, Lines{"31 trailing bytes are no whole record and never read"});
    EXPECT_EQ(examine_catalogue(file(header)).warnings,
              Lines{"there are no stars: every frame stays black"});
    const CatalogueInfo cut = examine_catalogue(file(header.substr(0, 31)));
    EXPECT_EQ(cut.stars, 0U);
    EXPECT_EQ(cut.warnings, (Lines{"the header is cut short: 31 bytes instead of 32",
                                   "there are no stars: every frame stays black"}));
    EXPECT_EQ(examine_catalogue(file(one, "t.db")).warnings,
              Lines{"the plug-in finds only files with \".stars\" in their name: rename it"});
}

TEST_F(Info, KnowsVersionOneAndRefusesWhatIsNoStarDatabase) {
    const CatalogueInfo info =
        examine_catalogue(file("LUMIVAR1" + std::string(24, '\0') + star_bytes(1, 2, 1.0F)));
    EXPECT_EQ(info.version, 1);
    EXPECT_NE(lumivar::info_as_text(info).find("version    1 (distances are not used)"),
              std::string::npos);
    const std::string foreign = file("foreign");
    EXPECT_EQ(failure_of([&] { examine_catalogue(foreign); }),
              failure_of([&] { lumivar::star_file_version(foreign); }));
}

TEST_F(Info, PrintsATableWithBars) {
    const std::string path = file(header + star_bytes(10, -20, 1.0F, 5.0) +
                                  star_bytes(20, -10, 1.0F) + star_bytes(20, 90, 0.01F));
    const ToolResult result = run_tool({"catalog", "info", path}, {.program = LUMIVAR_PROGRAM});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, path + R"(
  version    2 (distances are used)
  stars      3 in 128 bytes
  lon        10 to 20 degrees
  lat        -20 to 90 degrees
  luminance  0.01 to 1
  magnitude  0 to 5
  red        10 to 10
  green      20 to 20
  blue       30 to 30
  distance   5 to 5 parsecs
  unknown    2 stars without a distance
  stars by magnitude
       0 to   1        2 ##################################################
       5 to   6        1 #########################
)");
}

TEST_F(Info, PrintsJson) {
    const std::string path = file(header + star_bytes(10, -20, 1.0F) + "tail");
    const ToolResult result = run_tool({"catalog", "info", path, "--json"});
    EXPECT_EQ(result.code, 0);
    const nlohmann::json json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["path"], path);
    EXPECT_EQ(json["version"], 2);
    EXPECT_EQ(json["stars"], 1);
    EXPECT_EQ(json["bytes"], 68);
    EXPECT_EQ(json["lon"]["low"], 10.0);
    EXPECT_TRUE(json["distance"].is_null());
    EXPECT_EQ(json["without_distance"], 1);
    EXPECT_EQ(json["magnitudes"], nlohmann::json::parse(R"([{"from": 0, "stars": 1}])"));
    EXPECT_EQ(json["warnings"],
              nlohmann::json::parse(R"(["4 trailing bytes are no whole record and never read"])"));
}

}  // namespace
