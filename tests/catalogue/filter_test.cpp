// lumivar catalog filter: which stars stay.
#include "database/filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "support/catalogue.h"
#include "support/random_numbers.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using lumivar::CatalogueStar;
using lumivar::FilterRules;

class Filter : public testing::Test {
protected:
    std::string file(const std::string& bytes) {
        write_file(folder / "in.stars", bytes);
        return folder / "in.stars";
    }
    ScratchFolder folder;
};

CatalogueStar at(double lon, double lat) {
    CatalogueStar star;
    star.lon = lon;
    star.lat = lat;
    star.luminance = 1.0F;
    return star;
}

TEST_F(Filter, KeepsTheStarsOfAMagnitudeAndBrighter) {
    const auto with = [](double magnitude) {
        return support::CatalogueStar{
            .luminance = static_cast<float>(std::pow(10.0, -0.4 * magnitude)), .distance = 3};
    };
    const support::CatalogueStar nan = {.luminance = std::numeric_limits<float>::quiet_NaN()};
    const std::string input = file(
        support::catalogue_bytes("LUMIVAR1", {with(6.6), with(6.5), nan, with(6.51), with(-1)}));
    const lumivar::FilterSummary summary =
        lumivar::filter_database(input, folder / "out.stars", {.faintest = 6.5});
    EXPECT_EQ(read_file(folder / "out.stars"),
              support::catalogue_bytes("LUMIVAR1", {with(6.5), with(-1)}))
        << "the version, the order and the unused distances stay";
    EXPECT_EQ(summary.read, 5U);
    EXPECT_EQ(summary.too_faint, 3U);
    EXPECT_EQ(summary.written, 2U);
}

TEST_F(Filter, ConesGoOverZeroAndThePoles) {
    const lumivar::Cone over_zero = {359.0, 10.0, 3.0};
    EXPECT_TRUE(is_in_cone(at(359, 13), over_zero)) << "on the edge";
    EXPECT_FALSE(is_in_cone(at(359, 13.001), over_zero));
    EXPECT_TRUE(is_in_cone(at(2, 10), over_zero)) << "3 degrees of right ascension are 2.95 there";
    EXPECT_FALSE(is_in_cone(at(2.1, 10), over_zero));
    EXPECT_TRUE(is_in_cone(at(-1, 10), over_zero));
    const lumivar::Cone pole = {100.0, 89.0, 2.0};
    EXPECT_TRUE(is_in_cone(at(280, 89.0), pole)) << "on the other side of the pole";
    EXPECT_FALSE(is_in_cone(at(280, 88.9), pole));
    EXPECT_TRUE(is_in_cone(at(17, 90), pole));
    const lumivar::Cone all = {0.0, 0.0, 180.0};
    EXPECT_TRUE(is_in_cone(at(180, 0), all));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(is_in_cone(at(nan, 0), all));
    EXPECT_FALSE(is_in_cone(at(0, nan), all));
}

TEST_F(Filter, BoxesHoldTheirEdgesAndGoOverZero) {
    const lumivar::Box plain = {10.1, 20.3, -5.0, 5.0};
    for (const double lon : {10.1, 15.0, 20.3}) {
        EXPECT_TRUE(is_in_box(at(lon, 5), plain)) << lon;
    }
    for (const double lon : {10.09, 20.31, 0.0, 190.0}) {
        EXPECT_FALSE(is_in_box(at(lon, 0), plain)) << lon;
    }
    EXPECT_FALSE(is_in_box(at(15, 5.01), plain));
    const lumivar::Box over_zero = {350.7, 5.3, -90.0, 90.0};
    for (const double lon : {350.7, 359.9, 0.0, 360.0, 5.3}) {
        EXPECT_TRUE(is_in_box(at(lon, 90), over_zero)) << lon;
    }
    for (const double lon : {350.6, 5.4, 180.0}) {
        EXPECT_FALSE(is_in_box(at(lon, 0), over_zero)) << lon;
    }
    EXPECT_TRUE(is_in_box(at(0, 0), {350, 360, -1, 1})) << "0 degrees are 360 degrees";
    EXPECT_TRUE(is_in_box(at(123, 0), {0, 360, -1, 1}));
    EXPECT_FALSE(is_in_box(at(std::numeric_limits<double>::infinity(), 0), {0, 10, -1, 1}));
}

TEST_F(Filter, ASampleIsAShareThatGrowsAndDependsOnTheStarAlone) {
    RandomNumbers random(3);
    std::set<int> before;
    std::vector<CatalogueStar> stars;
    for (int i = 0; i < 20000; ++i) {
        stars.push_back(at(random.between(0, 360), random.between(-90, 90)));
    }
    for (const double share : {0.0, 0.1, 0.2, 0.9, 1.0}) {
        std::set<int> chosen;
        for (int i = 0; i < 20000; ++i) {
            if (is_in_sample(stars[static_cast<std::size_t>(i)], share)) {
                chosen.insert(i);
            }
        }
        // Five standard deviations of a binomial choice.
        EXPECT_NEAR(static_cast<double>(chosen.size()), 20000 * share,
                    5 * std::sqrt(20000 * share * (1 - share)));
        EXPECT_TRUE(std::includes(chosen.begin(), chosen.end(), before.begin(), before.end()));
        before = chosen;
    }
    CatalogueStar other = stars[0];
    other.rgb = {1, 2, 3};
    other.distance = 17.0;
    for (double share = 0.05; share < 1.0; share += 0.05) {
        EXPECT_EQ(is_in_sample(stars[0], share), is_in_sample(other, share)) << "not its colour";
    }
}

TEST_F(Filter, CountsEachStarOnceAndMayReplaceItsInput) {
    const std::string input =
        file(support::catalogue_bytes("LUMIVAR2", {{.lon = 10, .luminance = 1e-9F},
                                                   {.lon = 10, .lat = 0},
                                                   {.lon = 200, .luminance = 1e-9F},
                                                   {.lon = 200},
                                                   {.lon = 10, .lat = 4}}));
    const ToolResult result = run_tool({"catalog", "filter", input, "-o", input, "--brighter", "6",
                                        "--cone", "10,0,5", "--box", "0,20,-1,1"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out.rfind(input + ": 1 star of 5, 2 too faint, 1 outside the cone, 1 outside "
                                       "the box, ",
                               0),
              0U)
        << result.out;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(read_file(input), support::catalogue_bytes("LUMIVAR2", {{.lon = 10, .lat = 0}}));
}

TEST_F(Filter, RefusesRulesThatCannotBeMeant) {
    const std::string input = file(support::catalogue_header("LUMIVAR2"));
    const auto fault = [&](std::vector<std::string> rule) {
        rule.insert(rule.begin(), {"catalog", "filter", input, "-o", folder / "out.stars"});
        const ToolResult result = run_tool(rule);
        EXPECT_EQ(result.code, 2) << result.out;
        EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{"in.stars"});
        const std::string before = "lumivar: ";
        const std::string behind = " (lumivar --help shows the ways)\n";
        return result.err.size() < before.size() + behind.size()
                   ? result.err
                   : result.err.substr(before.size(),
                                       result.err.size() - before.size() - behind.size());
    };
    EXPECT_EQ(fault({}), "say which stars stay: --brighter, --cone, --box or --sample");
    for (const char* text : {"1,2", "1,2,3,4", "1,2,x", "1,2,", "1;2;3", "1,2,nan", "1,2,3 "}) {
        EXPECT_EQ(fault({"--cone", text}),
                  "--cone takes 3 numbers, RA,DEC,RADIUS, not \"" + std::string(text) + "\"");
    }
    EXPECT_EQ(fault({"--cone", "361,0,1"}), "--cone: RA goes from 0 to 360 degrees");
    EXPECT_EQ(fault({"--cone", "1,-91,1"}), "--cone: DEC goes from -90 to 90 degrees");
    EXPECT_EQ(fault({"--cone", "1,1,-1"}), "--cone: RADIUS goes from 0 to 180 degrees");
    EXPECT_EQ(fault({"--box", "1,2,3"}), "--box takes 4 numbers, RA1,RA2,DEC1,DEC2, not \"1,2,3\"");
    EXPECT_EQ(fault({"--box", "1,2,10,-10"}),
              "--box: DEC1 is the lower edge and must not lie above DEC2");
    EXPECT_EQ(fault({"--box", "1,-2,0,1"}), "--box: RA1 and RA2 go from 0 to 360 degrees");
}

}  // namespace
