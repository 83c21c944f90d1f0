#include "shot_plan.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace {

using lumivar::FrameNames;
using lumivar::plan_shots;
using lumivar::Shot;
using lumivar::ShotRequest;

/// One second of 24 frames.
host::Composition second_from(int first_frame) {
    host::Composition composition;
    composition.duration = 1.0;
    composition.first_frame = first_frame;
    return composition;
}

std::string refusal(const ShotRequest& request, const host::Composition& composition,
                    const char* pattern) {
    try {
        plan_shots(request, composition, FrameNames(pattern));
    } catch (const lumivar::UsageError& error) {
        return error.what();
    }
    return "";
}

TEST(ShotPlan, NumbersFramesAsTheCompositionDoes) {
    const auto shots =
        plan_shots({{}, {}, "1001,1013-1015x2"}, second_from(1001), FrameNames("a.####.exr"));
    ASSERT_EQ(shots.size(), 3u);
    EXPECT_EQ(shots[0].time.seconds(), 0.0);
    EXPECT_EQ(shots[0].path, "a.1001.exr");
    EXPECT_EQ(shots[1].time.seconds(), 0.5);
    EXPECT_EQ(shots[2].path, "a.1015.exr");
    EXPECT_EQ(shots[2].frame, 1015);
    const auto handles = plan_shots({{}, -8, ""}, second_from(-8), FrameNames("a.exr"));
    EXPECT_EQ(handles.front().time.seconds(), 0.0);
}

TEST(ShotPlan, TakesTheFirstFrameWhereNothingIsSaid) {
    const auto shots = plan_shots({}, second_from(1001), FrameNames("a.####.exr"));
    ASSERT_EQ(shots.size(), 1u);
    EXPECT_EQ(shots.front().path, "a.1001.exr");
    EXPECT_EQ(lumivar::shown_time(shots.front()), "frame 1001 (0.000 s)");
}

TEST(ShotPlan, NamesTheFramesThatThereAreNot) {
    EXPECT_EQ(refusal({{}, {}, "990-1030x10"}, second_from(1001), "a.#.exr"),
              "there are no frames 990,1000,1030; the scene has frames 1001 to 1024");
    EXPECT_EQ(refusal({{}, 24, ""}, second_from(0), "a.exr"),
              "there is no frame 24; the scene has frames 0 to 23");
}

TEST(ShotPlan, WantsAPlaceForTheNumberOfSeveralFrames) {
    EXPECT_EQ(refusal({{}, {}, "0-3"}, second_from(0), "a.exr"),
              "--frames writes a picture a frame: put #### for its number into the name \"a.exr\"");
    EXPECT_NE(refusal({0.5, {}, ""}, second_from(0), "a.%04d.exr"), "");
}

}  // namespace
