#include "progress.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using lumivar::progress_text;

TEST(ProgressText, GivesRateAndTimeLeftWhereTheyAreKnown) {
    EXPECT_EQ(progress_text(12, 48, 4.0, "frames"), "12/48 frames, 3.0 frames/s, 12 s left");
    EXPECT_EQ(progress_text(5000, 10000, 2.0, "bytes"), "5000/10000 bytes, 2500 bytes/s, 2 s left");
    EXPECT_EQ(progress_text(48, 48, 16.0, "frames"), "48/48 frames, 3.0 frames/s, 0 s left");
    EXPECT_EQ(progress_text(0, 48, 4.0, "frames"), "0/48 frames");
    EXPECT_EQ(progress_text(1, 48, 0.0, "frames"), "1/48 frames");
    EXPECT_EQ(progress_text(10, 0, 2.0, "bytes"), "10 bytes, 5.0 bytes/s");
}

TEST(ProgressText, SaysWhatIsBeingDoneOnALineOfANarrowTerminal) {
    EXPECT_EQ(progress_text(0, 0, 1.0, "probes", "bundle.module"), "0 probes: bundle.module");
    EXPECT_EQ(progress_text(10, 0, 2.0, "probes", "frames.float"),
              "10 probes, 5.0 probes/s: frames.float");
    EXPECT_EQ(progress_text(10, 0, 2.0, "probes", ""), "10 probes, 5.0 probes/s");
    EXPECT_EQ(progress_text(10, 0, 2.0, "probes", std::string(80, 'x')),
              "10 probes, 5.0 probes/s: " + std::string(79 - 25, 'x'));
}

}  // namespace
