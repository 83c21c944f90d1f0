// Texts that are made piece by piece.
#include <base/exceptions.h>
#include <base/growing_text.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "support/failing_allocator.h"

namespace {

TEST(GrowingText, IsWhatWasAdded) {
    GrowingText text;
    text.add('a');
    text.add("bcd");
    text.add("");
    text.add('\xFF');
    EXPECT_STREQ(text.take().c_str(), "abcd\xFF");
}

TEST(GrowingText, OfNothingIsEmpty) { EXPECT_STREQ(GrowingText().take().c_str(), ""); }

TEST(GrowingText, LosesTheCharacterZeroAndNothingElse) {
    GrowingText text;
    text.add('a');
    text.add('\0');
    text.add("b");
    EXPECT_STREQ(text.take().c_str(), "ab");
}

TEST(GrowingText, TakesFewAllocations) {
    std::string expected;
    GrowingText text;
    const FailingAllocator allocator;
    for (int i = 0; i < 100000; ++i) {
        text.add(static_cast<char>('a' + i % 26));
    }
    // 32 bytes, doubled 12 times.
    EXPECT_EQ(allocator.requests().size(), 13U);
    for (int i = 0; i < 100000; ++i) {
        expected += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(text.take().c_str(), expected);
}

TEST(GrowingText, ReportsAWantOfMemory) {
    FailingAllocator allocator;
    for (const unsigned int granted : {0U, 1U, 2U}) {
        allocator.refuse_after(granted);
        const auto make = [] {
            GrowingText text;
            text.add("more than thirty-two characters, so that the block grows once");
            text.add("more than thirty-two characters, so that the block grows once");
            text.take();
        };
        EXPECT_THROW(make(), StrXception) << granted;
        allocator.grant_all();
    }
}

}  // namespace
