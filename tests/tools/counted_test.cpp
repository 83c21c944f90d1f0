#include "counted.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(Counted, HasOneWordForOneAndAnotherForAllElse) {
    EXPECT_EQ(lumivar::counted(0, "star", "stars"), "0 stars");
    EXPECT_EQ(lumivar::counted(1, "star", "stars"), "1 star");
    EXPECT_EQ(lumivar::counted(2, "entry", "entries"), "2 entries");
    EXPECT_EQ(lumivar::counted(std::numeric_limits<std::uint64_t>::max(), "star", "stars"),
              "18446744073709551615 stars");
}

}  // namespace
