#include <gtest/gtest.h>
#include <host/errors.h>
#include <host/world.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

using host::Depth;
using host::World;

class WorldOfEveryDepth : public testing::TestWithParam<Depth> {};
INSTANTIATE_TEST_SUITE_P(Depths, WorldOfEveryDepth,
                         testing::Values(Depth::Bits8, Depth::Bits16, Depth::Float));

TEST_P(WorldOfEveryDepth, HasPaddedRowsAlignedForTheirChannelsAndNothingMore) {
    const World world(7, 3, GetParam(), 12);
    EXPECT_EQ(world.row_bytes(), 7 * host::bytes_per_pixel(GetParam()) + 12);
    EXPECT_EQ(world.row(2) - world.row(0), 2 * world.row_bytes());
    const auto address = reinterpret_cast<std::uintptr_t>(World(7, 3, GetParam()).row(0));
    EXPECT_EQ(address % 4, 0u);
    EXPECT_NE(address % 16, 0u);
}

TEST_P(WorldOfEveryDepth, ShowsItsPatternUntilAnyByteChanges) {
    World world(3, 70, GetParam());
    EXPECT_FALSE(world.shows_pattern()) << "blank at first";
    world.fill_with_pattern();
    EXPECT_TRUE(world.shows_pattern());
    EXPECT_FALSE(world.breach());
    for (int y = 0; y < world.height(); ++y) {
        for (int i = 0; i < 3 * host::bytes_per_pixel(GetParam()); ++i) {
            std::byte& byte = world.row(y)[i];
            byte ^= std::byte{1};
            EXPECT_FALSE(world.shows_pattern()) << "row " << y << " byte " << i;
            byte ^= std::byte{1};
        }
    }
    EXPECT_TRUE(world.shows_pattern());
}

template <class Channel>
void expect_valid_pattern(Depth depth, Channel full) {
    World world(200, 100, depth);
    world.fill_with_pattern();
    std::vector<Channel> above(800);
    for (int y = 0; y < world.height(); ++y) {
        std::vector<Channel> row(800);
        world.read_row<Channel>(y, row);
        for (const Channel channel : row) {
            ASSERT_GT(channel, Channel{0}) << "row " << y;
            ASSERT_LE(channel, full) << "row " << y;
        }
        EXPECT_NE(row, above) << "row " << y;
        above = row;
    }
}

TEST(World, HasAPatternOfValidChannelsWithoutAZero) {
    expect_valid_pattern<std::uint8_t>(Depth::Bits8, 255);
    expect_valid_pattern<std::uint16_t>(Depth::Bits16, 32768);
    expect_valid_pattern<float>(Depth::Float, 1.0F);
}

TEST_P(WorldOfEveryDepth, CountsPixelsThatStillHoldTheMark) {
    World world(5, 4, GetParam());
    EXPECT_EQ(world.marked_pixels(), 20u) << "of zeros, as a new one is";
    world.mark();
    EXPECT_EQ(world.marked_pixels(), 20u);
    // One byte of one pixel is enough.
    world.row(2)[host::bytes_per_pixel(GetParam())] = std::byte{0};
    EXPECT_EQ(world.marked_pixels(), 19u);
    EXPECT_FALSE(world.breach()) << "marking stays within the pixels";
    world.mark(std::byte{0x3C});
    EXPECT_EQ(world.row(3)[0], std::byte{0x3C});
    EXPECT_EQ(world.marked_pixels(), 20u);
    world.row(3)[0] = host::kDefaultMark;
    EXPECT_EQ(world.marked_pixels(), 19u);
}

TEST_P(WorldOfEveryDepth, NoticesEveryByteWrittenOutsideThePixels) {
    const int padding = 8;
    World world(4, 3, GetParam(), padding);
    const int pixels = 4 * host::bytes_per_pixel(GetParam());
    ASSERT_FALSE(world.breach());
    const auto breaches = [&](std::byte* at) {
        const std::byte before = *at;
        *at = std::byte{0};
        const bool noticed = world.breach().has_value();
        *at = before;
        return noticed;
    };
    const int guard = world.row_bytes() + 4096;
    for (int i = 1; i <= guard; ++i) {
        EXPECT_TRUE(breaches(world.row(0) - i)) << i << " before";
    }
    for (int y = 0; y < 3; ++y) {
        for (int i = 0; i < padding; ++i) {
            EXPECT_TRUE(breaches(world.row(y) + pixels + i)) << "row " << y << " byte " << i;
        }
        EXPECT_FALSE(breaches(world.row(y))) << "first pixel of row " << y;
        EXPECT_FALSE(breaches(world.row(y) + pixels - 1)) << "last byte of row " << y;
    }
    for (int i = 0; i < guard; ++i) {
        EXPECT_TRUE(breaches(world.row(0) + 3 * world.row_bytes() + i)) << i << " behind";
    }
    EXPECT_FALSE(world.breach());
}

TEST_P(WorldOfEveryDepth, NoticesAPixelARowTooHighOrTooLow) {
    // Wider than any guard of a fixed length.
    World world(3000, 2, GetParam());
    const int size = host::bytes_per_pixel(GetParam());
    const auto breach_at = [&](int y, int x) {
        std::byte* const pixel =
            world.row(0) + static_cast<std::ptrdiff_t>(y) * world.row_bytes() + x * size;
        const std::byte before = *pixel;
        *pixel = std::byte{0};
        const std::optional<std::string> breach = world.breach();
        *pixel = before;
        return breach;
    };
    for (const int x : {0, 1500, 2999}) {
        EXPECT_EQ(breach_at(-1, x),
                  std::to_string(world.row_bytes() - x * size) + " bytes before the first pixel");
        EXPECT_EQ(breach_at(2, x), std::to_string(x * size) + " bytes behind the last row");
    }
    EXPECT_FALSE(world.breach());
}

TEST(World, SaysWhereABreachIs) {
    World world(4, 3, Depth::Bits8, 8);
    world.row(1)[16 + 5] = std::byte{0};
    EXPECT_EQ(world.breach(), "in the padding of row 1, 5 bytes behind its last pixel");
    world.row(0)[-2] = std::byte{0};
    EXPECT_EQ(world.breach(), "2 bytes before the first pixel");
    World other(4, 3, Depth::Bits8, 8);
    other.row(0)[3 * 24 + 7] = std::byte{0};
    EXPECT_EQ(other.breach(), "7 bytes behind the last row");
}

TEST(World, GivesPixelsInTheOrderAlphaRedGreenBlueWhateverTheirOrderInMemory) {
    World world(3, 2, Depth::Bits16);
    const std::uint16_t channels[4] = {32768, 1, 2, 3};
    std::memcpy(world.row(1) + 16, channels, sizeof channels);
    EXPECT_EQ(world.pixel<std::uint16_t>(2, 1), (std::array<std::uint16_t, 4>{32768, 1, 2, 3}));
    std::vector<std::uint16_t> row(12);
    world.read_row<std::uint16_t>(1, row);
    EXPECT_EQ(row[8], 32768);
    EXPECT_EQ(row[11], 3);
    World turned(2, 1, Depth::Float, 8, host::ChannelOrder::Bgra);
    const float bgra[8] = {3, 2, 1, 0.5F, 6, 5, 4, 0.25F};
    std::memcpy(turned.row(0), bgra, sizeof bgra);
    EXPECT_EQ(turned.pixel<float>(1, 0), (std::array<float, 4>{0.25F, 4, 5, 6}));
    std::vector<float> floats(8);
    turned.read_row<float>(0, floats);
    EXPECT_EQ(floats, (std::vector<float>{0.5F, 1, 2, 3, 0.25F, 4, 5, 6}));
}

TEST(World, FillsThePartInside) {
    World world(3, 3, Depth::Bits8, 8);
    world.fill({-5, 1, 2, 9}, {1, 2, 3, 4});
    using Pixel = std::array<std::uint8_t, 4>;
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(world.pixel<std::uint8_t>(x, y),
                      x < 2 && y > 0 ? (Pixel{1, 2, 3, 4}) : Pixel{})
                << x << ", " << y;
        }
    }
    world.fill({2, 2, 2, 3}, {9, 9, 9, 9});
    world.fill({7, 0, 9, 3}, {9, 9, 9, 9});
    EXPECT_EQ(world.pixel<std::uint8_t>(2, 2), Pixel{});
    EXPECT_FALSE(world.breach());
}

TEST(World, FillsEachDepthWithTheNearestCode) {
    const host::Rect all = {0, 0, 1, 1};
    for (int value = 0; value <= 255; ++value) {
        const auto code = static_cast<std::uint8_t>(value);
        World deep(1, 1, Depth::Bits16);
        deep.fill(all, {255, code, 0, 0});
        const auto filled = deep.pixel<std::uint16_t>(0, 0);
        EXPECT_EQ(filled[0], 32768);
        EXPECT_LT(std::abs(filled[1] * 255 - value * 32768), 128) << value << ": beyond a half";
        World floating(1, 1, Depth::Float);
        floating.fill(all, {255, code, 0, 0});
        EXPECT_EQ(floating.pixel<float>(0, 0)[1], static_cast<float>(value / 255.0)) << value;
    }
}

TEST(World, RefusesChannelsOfAnotherDepthAndPixelsOutside) {
    const World world(3, 2, Depth::Float);
    EXPECT_THROW(world.pixel<std::uint8_t>(0, 0), std::invalid_argument);
    EXPECT_THROW(world.pixel<float>(3, 0), std::out_of_range);
    EXPECT_THROW(world.pixel<float>(0, 2), std::out_of_range);
    EXPECT_THROW(world.pixel<float>(-1, 0), std::out_of_range);
    std::vector<float> too_long(16);
    EXPECT_THROW(world.read_row<float>(0, too_long), std::out_of_range);
}

TEST(World, MayHaveNoPixelsButNoRowsThatAStrideCannotHold) {
    const World world;
    EXPECT_EQ(world.marked_pixels(), 0u);
    EXPECT_FALSE(world.breach());
    EXPECT_TRUE(world.shows_pattern());
    // 2^31 / 16 float pixels are one byte more than a signed stride counts.
    EXPECT_THROW(World(134217728, 1, Depth::Float), host::HostError);
    EXPECT_THROW(World(-1, 1, Depth::Float), std::invalid_argument);
    EXPECT_THROW(World(1, 1, Depth::Float, 3), std::invalid_argument);
}

}  // namespace
