#include "shot_progress.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using lumivar::shot_progress_text;
using lumivar::ShotProgress;
using nlohmann::json;

TEST(ShotProgress, TellsFramesRateStarsAndTimeLeft) {
    // 5 rendered in 2 s are 2.5 a second; 40 are left: 16 s. 600,000 stars in 2 s.
    EXPECT_EQ(shot_progress_text({8, 48, 5, 600'000, 2.0}),
              "8/48 frames, 2.5 frames/s, 300k stars/s, 16 s left");
    EXPECT_EQ(shot_progress_text({8, 48, 5, 6'000'000, 2.0}),
              "8/48 frames, 2.5 frames/s, 3.0M stars/s, 16 s left");
    EXPECT_EQ(shot_progress_text({8, 48, 5, 6, 2.0}),
              "8/48 frames, 2.5 frames/s, 3 stars/s, 16 s left");
    EXPECT_EQ(shot_progress_text({3, 48, 0, 0, 2.0}), "3/48 frames") << "all there already";
}

TEST(ShotProgress, AsJsonIsAnObjectALine) {
    testing::internal::CaptureStderr();
    {
        ShotProgress progress(lumivar::ProgressStyle::Json, 48, 2);
        progress.tell({12, "a.0012.exr", "rendered", "", 0.25}, {8, 48, 5, 600'000, 2.0});
        progress.tell({13, "a.0013.exr", "failed", "no \"disk\"", 0.0}, {9, 48, 5, 600'000, 2.0});
        progress.update({9, 48, 5, 600'000, 20.0});
    }
    std::istringstream lines(testing::internal::GetCapturedStderr());
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(json::parse(line), json::parse(R"({"event":"start","total":48,"jobs":2})"));
    std::getline(lines, line);
    EXPECT_EQ(json::parse(line), json::parse(R"({"event":"frame","frame":12,"picture":"a.0012.exr",
        "state":"rendered","seconds":0.25,"settled":8,"total":48,"frames_per_second":2.5,
        "seconds_left":16})"));
    std::getline(lines, line);
    const json failed = json::parse(line);
    EXPECT_EQ(failed["state"], "failed");
    EXPECT_EQ(failed["error"], "no \"disk\"");
    EXPECT_FALSE(std::getline(lines, line)) << line;
}

TEST(ShotProgress, IsQuietForAWhileWhereThereIsNoTerminal) {
    testing::internal::CaptureStderr();
    {
        ShotProgress progress(lumivar::ProgressStyle::Text, 48, 2);
        progress.update({8, 48, 5, 600'000, 2.0});
        progress.say("lumivar: warning: a\x1b");
        progress.say("frame 7: b");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "lumivar: warning: a\\x1B\nlumivar: frame 7: b\n");
}

}  // namespace
