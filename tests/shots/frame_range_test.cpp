#include "frame_range.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "failure.h"

namespace {

using lumivar::frame_range_text;
using lumivar::parse_frame_range;

using Frames = std::vector<int>;

std::string refusal(const std::string& text) {
    try {
        parse_frame_range(text);
    } catch (const lumivar::UsageError& error) {
        return error.what();
    }
    return "";
}

TEST(FrameRange, TakesFramesRangesAndSteps) {
    EXPECT_EQ(parse_frame_range("7"), (Frames{7}));
    EXPECT_EQ(parse_frame_range("1001-1004"), (Frames{1001, 1002, 1003, 1004}));
    EXPECT_EQ(parse_frame_range("7-7"), (Frames{7}));
    EXPECT_EQ(parse_frame_range("1-10x4"), (Frames{1, 5, 9}));
    EXPECT_EQ(parse_frame_range("1,5,9-12"), (Frames{1, 5, 9, 10, 11, 12}));
    EXPECT_EQ(parse_frame_range(" 1 , 3 "), (Frames{1, 3}));
}

TEST(FrameRange, TakesNegativeFrames) {
    EXPECT_EQ(parse_frame_range("-5"), (Frames{-5}));
    EXPECT_EQ(parse_frame_range("-3--1"), (Frames{-3, -2, -1}));
    EXPECT_EQ(parse_frame_range("-4-4x4"), (Frames{-4, 0, 4}));
}

TEST(FrameRange, OrdersFramesAndTakesEachOnce) {
    EXPECT_EQ(parse_frame_range("9,1-3,2,2-4"), (Frames{1, 2, 3, 4, 9}));
}

TEST(FrameRange, ReachesTheLargestNumbers) {
    EXPECT_EQ(parse_frame_range("2147483646-2147483647"), (Frames{2147483646, 2147483647}));
    EXPECT_EQ(parse_frame_range("-2147483648"), (Frames{-2147483647 - 1}));
}

TEST(FrameRange, SaysWhatIsWrong) {
    const std::string ways = "; give frames such as 1001-1240, 1-100x2 or 1,5,9-12";
    EXPECT_EQ(refusal(""), "--frames \"\": the first frame is missing" + ways);
    EXPECT_EQ(refusal("1,,3"), "--frames \"1,,3\": in \"\" the first frame is missing" + ways);
    EXPECT_EQ(refusal("5-"), "--frames \"5-\": the last frame is missing" + ways);
    EXPECT_EQ(refusal("1-9x"), "--frames \"1-9x\": the step after the x is missing" + ways);
    EXPECT_EQ(refusal("1,9-4"),
              "--frames \"1,9-4\": in \"9-4\" the last frame comes before the first");
    EXPECT_EQ(refusal("1-9x0"), "--frames \"1-9x0\": the step after the x is not above 0");
    EXPECT_EQ(refusal("1-9x-2"), "--frames \"1-9x-2\": the step after the x is not above 0");
    EXPECT_EQ(refusal("1.5-2"), "--frames \"1.5-2\": \".5-2\" is too much" + ways);
    EXPECT_EQ(refusal("5x2"), "--frames \"5x2\": \"x2\" is too much" + ways);
    EXPECT_EQ(refusal("2147483648"), "--frames \"2147483648\": the first frame is too large");
    EXPECT_EQ(refusal("0-1000000"), "--frames \"0-1000000\": there are more than 1000000 frames");
    EXPECT_EQ(refusal("0-999999"), "");
}

TEST(FrameRange, WritesTheShortestText) {
    EXPECT_EQ(frame_range_text({}), "");
    EXPECT_EQ(frame_range_text({7}), "7");
    EXPECT_EQ(frame_range_text({7, 8}), "7-8");
    EXPECT_EQ(frame_range_text({7, 9}), "7,9");
    EXPECT_EQ(frame_range_text({1, 2, 3, 4, 5, 8, 10, 15, 20}), "1-5,8,10-20x5");
    EXPECT_EQ(frame_range_text({-3, -2, -1, 5}), "-3--1,5");
}

TEST(FrameRange, ReadsWhatItWrites) {
    for (const Frames& frames : {Frames{0}, Frames{-9, -7, -5, 0, 1, 2},
                                 Frames{1, 3, 5, 6, 7, 8, 20}, Frames{1, 2, 4, 8}}) {
        EXPECT_EQ(parse_frame_range(frame_range_text(frames)), frames) << frame_range_text(frames);
    }
}

}  // namespace
