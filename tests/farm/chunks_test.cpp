#include "chunks.h"

#include <gtest/gtest.h>

namespace {

using lumivar::chunks_of;
using Chunks = std::vector<std::vector<int>>;

TEST(Chunks, HoldTheFramesInOrder) {
    EXPECT_EQ(chunks_of({1, 2, 3, 4, 5}, 2), (Chunks{{1, 2}, {3, 4}, {5}}));
    EXPECT_EQ(chunks_of({1, 2, 3, 4}, 2), (Chunks{{1, 2}, {3, 4}}));
    EXPECT_EQ(chunks_of({-5, 7}, 100), (Chunks{{-5, 7}}));
    EXPECT_EQ(chunks_of({}, 3), Chunks{});
}

}  // namespace
