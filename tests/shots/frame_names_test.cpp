#include "frame_names.h"

#include <gtest/gtest.h>

namespace {

using lumivar::FrameNames;

TEST(FrameNames, PutTheNumberInThePlaceOfTheLastHashes) {
    EXPECT_EQ(FrameNames("pan.####.exr").name_of(7), "pan.0007.exr");
    EXPECT_EQ(FrameNames("pan.#.exr").name_of(1234), "pan.1234.exr");
    EXPECT_EQ(FrameNames("a#b/shot#3_##.png").name_of(12), "a#b/shot#3_12.png");
    EXPECT_EQ(FrameNames("##").name_of(3), "03");
}

TEST(FrameNames, TakeThePercentOfPrintf) {
    EXPECT_EQ(FrameNames("pan.%04d.exr").name_of(7), "pan.0007.exr");
    EXPECT_EQ(FrameNames("pan.%d.exr").name_of(7), "pan.7.exr");
    EXPECT_EQ(FrameNames("pan.%04d.exr").name_of(12345), "pan.12345.exr");
    EXPECT_EQ(FrameNames("shot#1.%03d.exr").name_of(5), "shot#1.005.exr");
    EXPECT_EQ(FrameNames("%02d/pan.%03d.exr").name_of(5), "%02d/pan.005.exr");
}

TEST(FrameNames, HaveOnePlaceForTheNumber) {
    try {
        const FrameNames names("100%done.####.exr");
        FAIL();
    } catch (const lumivar::UsageError& failure) {
        EXPECT_EQ(std::string(failure.what()),
                  "the name \"100%done.####.exr\" has two places for a frame's number, %d and "
                  "####; leave one");
    }
}

TEST(FrameNames, CountTheMinusAmongTheCharacters) {
    EXPECT_EQ(FrameNames("pan.####.exr").name_of(-3), "pan.-003.exr");
    EXPECT_EQ(FrameNames("pan.%04d.exr").name_of(-3), "pan.-003.exr");
    EXPECT_EQ(FrameNames("pan.#.exr").name_of(-3), "pan.-3.exr");
}

TEST(FrameNames, WithoutAPlaceStayAsTheyAre) {
    for (const char* pattern : {"pan.exr", "a##/pan.exr", "%04d/pan.exr", "100%.exr", "pan.%4d.exr",
                                "pan.%s.exr", "pan.%04", "pan.%0999d.exr", ""}) {
        EXPECT_FALSE(FrameNames(pattern).are_numbered()) << pattern;
        EXPECT_EQ(FrameNames(pattern).name_of(7), pattern);
    }
    EXPECT_TRUE(FrameNames("pan.####.exr").are_numbered());
    EXPECT_TRUE(FrameNames("pan.%04d.exr").are_numbered());
}

}  // namespace
