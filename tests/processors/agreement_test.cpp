// The judge of two processors' frames, on frames made by hand.
#include "agreement.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "support/scratch.h"

namespace {

using processors::Agreement;
using processors::compare_frames;
using processors::FrameFile;
using processors::NamedFrame;
using support::Picture;

constexpr double kNever = std::numeric_limits<double>::infinity();

Picture filled(double alpha, double colour) {
    // 225,000 colour codes of each depth, of which four may be others.
    Picture picture(300, 250, 4);
    for (std::size_t i = 0; i < picture.values.size(); ++i) {
        picture.values[i] = i % 4 == 0 ? alpha : colour;
    }
    return picture;
}

/// Grey with one pixel of light 2 (the peak).
FrameFile grey(double shortest) {
    FrameFile frame{shortest, filled(1, 0.5), filled(255, 128), filled(32768, 16384)};
    frame.light.at(7, 3, 2) = 2;
    return frame;
}

bool agree(const FrameFile& actual, const FrameFile& expected) {
    return compare_frames({{"one", actual}}, {{"one", expected}}).passed;
}

TEST(Agreement, OfEqualFramesButNotOfAnotherAlpha) {
    EXPECT_TRUE(agree(grey(kNever), grey(kNever)));
    FrameFile other = grey(kNever);
    other.light.at(0, 0, 0) = 0.5;
    EXPECT_FALSE(agree(other, grey(kNever)));
}

// Of the peak 2: a millionth, and for the shortest segment 6e-7 / 0.1, which is 1.2e-5.
TEST(Agreement, AllowsLightAMillionthOfThePeakAndMoreForShortSegments) {
    const struct {
        double shortest, within, beyond;
    } rows[] = {{kNever, 1.9e-6, 2.1e-6}, {100, 1.9e-6, 2.1e-6}, {0.1, 1.1e-5, 1.3e-5}};
    for (const auto& row : rows) {
        FrameFile other = grey(row.shortest);
        other.light.at(0, 0, 1) = 0.5 + row.within;
        EXPECT_TRUE(agree(other, grey(row.shortest))) << row.shortest;
        other.light.at(0, 0, 1) = 0.5 + row.beyond;
        EXPECT_FALSE(agree(other, grey(row.shortest))) << row.shortest;
    }
}

TEST(Agreement, AllowsOneCodeInAHundredThousandToBeTheNext) {
    FrameFile other = grey(kNever);
    other.codes_of_8.at(0, 0, 1) += 1;
    other.codes_of_8.at(9, 9, 3) -= 1;
    other.codes_of_16.at(0, 0, 1) += 1;
    other.codes_of_16.at(9, 9, 3) -= 1;
    EXPECT_TRUE(agree(other, grey(kNever)));
    for (Picture FrameFile::*depth : {&FrameFile::codes_of_8, &FrameFile::codes_of_16}) {
        FrameFile one_more = other;
        (one_more.*depth).at(0, 0, 2) += 1;  // of the same pixel: values count
        EXPECT_FALSE(agree(one_more, grey(kNever)));
        FrameFile two_away = grey(kNever);
        (two_away.*depth).at(0, 0, 1) += 2;
        EXPECT_FALSE(agree(two_away, grey(kNever)));
    }
}

TEST(Agreement, NeedsCodesThatTell) {
    FrameFile black = grey(kNever);
    black.codes_of_8 = filled(255, 0);
    EXPECT_FALSE(agree(black, black));
    FrameFile full = grey(kNever);
    full.codes_of_16 = filled(32768, 32768);
    EXPECT_FALSE(agree(full, full));
}

TEST(Agreement, NeedsTheSameFrames) {
    const NamedFrame one{"one", grey(kNever)};
    const NamedFrame two{"two", grey(kNever)};
    EXPECT_TRUE(compare_frames({one, two}, {one, two}).passed);
    EXPECT_FALSE(compare_frames({one}, {one, two}).passed);
    EXPECT_FALSE(compare_frames({one, two}, {one}).passed);
    EXPECT_FALSE(compare_frames({two}, {one}).passed);
    EXPECT_FALSE(compare_frames({}, {}).passed);
}

TEST(FrameFiles, ComeBackAsTheyWere) {
    const ScratchFolder folder;
    FrameFile frame = grey(0.1);
    frame.light.at(1, 2, 3) = -0.25;
    frame.codes_of_16.at(299, 249, 3) = 32768;
    processors::write_frame(folder / "a.frame", frame);
    const FrameFile back = processors::read_frame(folder / "a.frame");
    EXPECT_EQ(back.shortest, 0.1);
    EXPECT_EQ(back.light.width, 300);
    EXPECT_EQ(back.light.height, 250);
    EXPECT_EQ(back.light.values, frame.light.values);
    EXPECT_EQ(back.codes_of_8.values, frame.codes_of_8.values);
    EXPECT_EQ(back.codes_of_16.values, frame.codes_of_16.values);
}

TEST(FrameFiles, AreRefusedWhenCutOrForeign) {
    const ScratchFolder folder;
    processors::write_frame(folder / "a.frame", grey(1));
    const std::string whole = read_file(folder / "a.frame");
    write_file(folder / "cut.frame", whole.substr(0, whole.size() - 1));
    EXPECT_THROW(processors::read_frame(folder / "cut.frame"), std::runtime_error);
    write_file(folder / "foreign.frame", "x" + whole.substr(1));
    EXPECT_THROW(processors::read_frame(folder / "foreign.frame"), std::runtime_error);
    EXPECT_THROW(processors::read_frame(folder / "missing.frame"), std::runtime_error);
}

}  // namespace
