// Summaries of parts of a shot, as a farm puts them together.
#include "render_summary.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using lumivar::RunSummary;

RunSummary some_summary() {
    RunSummary summary;
    summary.scene = "shot.json";
    summary.output = "a.####.exr";
    summary.depth = "float";
    summary.picture = "linear light";
    summary.jobs = 2;
    summary.seconds = 1.5;
    summary.render_seconds = 2.0;
    summary.write_seconds = 0.75;
    summary.width = 1920;
    summary.height = 1080;
    summary.catalogue = "hipparcos.stars";
    summary.stars = 117955;
    summary.asked = 5;
    summary.rendered = 3;
    summary.kept = 1;
    summary.failed = {{-2, "a.-002.exr", "the \"plug-in\" failed"}};
    summary.missing = {-2};
    summary.slowest = {{1, "", 0.5, 0.25}, {0, "left", 0.25, 0.125}, {std::nullopt, "", 0.125, 0}};
    return summary;
}

TEST(RenderSummary, ComesBackFromItsLine) {
    const RunSummary summary = some_summary();
    const std::string line = lumivar::summary_json(summary);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    const auto read = lumivar::parse_summary(line);
    ASSERT_TRUE(read);
    EXPECT_EQ(lumivar::summary_json(*read), line);
    EXPECT_EQ(read->failed.at(0).frame, -2);
    EXPECT_EQ(read->failed.at(0).error, "the \"plug-in\" failed");
    EXPECT_EQ(read->missing, std::vector<int>{-2});
    EXPECT_EQ(read->slowest.at(1).face, "left");
    EXPECT_FALSE(read->slowest.at(2).frame);
    EXPECT_EQ(read->stars, 117955U);
    for (const char* const other : {"", "no summary", "{}", "[1]", R"({"scene": 3})"}) {
        EXPECT_FALSE(lumivar::parse_summary(other)) << other;
    }
}

TEST(RenderSummary, CountsEveryFrameOfSeveralTriesOnce) {
    // Of ten frames three were there; the first try rendered four and died, the second found those
    // seven, rendered two and lost one, the third found nine and rendered the last.
    RunSummary first;
    first.rendered = 4;
    first.kept = 3;
    first.render_seconds = 1.5;
    first.width = 64;
    first.slowest = {{3, "", 1.0, 0.0}};
    RunSummary second;
    second.rendered = 2;
    second.kept = 7;
    second.width = 64;
    second.failed = {{9, "a.0009.exr", "lost"}};
    second.slowest = {{8, "", 2.0, 0.0}, {7, "", 0.5, 0.0}};
    RunSummary third;
    third.rendered = 1;
    third.render_seconds = 0.25;
    third.kept = 9;
    const RunSummary whole = lumivar::together_in_turn({first, second, third});
    EXPECT_EQ(whole.rendered, 7U);
    EXPECT_EQ(whole.kept, 3U);
    EXPECT_EQ(whole.render_seconds, 1.75);
    EXPECT_TRUE(whole.failed.empty());
    EXPECT_EQ(whole.width, 64);
    ASSERT_EQ(whole.slowest.size(), 3U);
    EXPECT_EQ(whole.slowest[0].frame, 8);
    EXPECT_EQ(whole.slowest[1].frame, 3);
    EXPECT_EQ(whole.slowest[2].frame, 7);
}

TEST(RenderSummary, AddsUpTheParts) {
    RunSummary whole;
    whole.asked = 12;
    RunSummary kept_only;
    kept_only.kept = 2;
    lumivar::add_part(whole, kept_only);
    lumivar::add_part(whole, some_summary());
    lumivar::add_part(whole, some_summary());
    EXPECT_EQ(whole.asked, 12U);
    EXPECT_EQ(whole.rendered, 6U);
    EXPECT_EQ(whole.kept, 4U);
    EXPECT_EQ(whole.write_seconds, 1.5);
    EXPECT_EQ(whole.failed.size(), 2U);
    EXPECT_EQ(whole.width, 1920);
    EXPECT_EQ(whole.depth, "float");
    ASSERT_EQ(whole.slowest.size(), 5U) << "a table has five";
    EXPECT_EQ(whole.slowest[1].frame, 1);
}

}  // namespace
