// lumivar catalog sort, and the curve through the sky.
#include "database/sort.h"

#include <gtest/gtest.h>
#include <libimgops/byte_order.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "database/sky_curve.h"
#include "support/catalogue.h"
#include "support/random_numbers.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using lumivar::sort_database;
using lumivar::StarOrder;

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

/// Each star bears its number as a colour.
support::CatalogueStar numbered(unsigned char number, float luminance) {
    return {.lon = 1, .luminance = luminance, .r = number};
}

TEST(Sort, PutsTheBrightestFirstAndKeepsTheOrderOfEqualOnes) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    support::write_catalogue(
        path, support::kVersion1,
        {numbered(1, 0.5F), numbered(2, kNotANumber), numbered(3, 2.0F), numbered(4, 0.5F),
         numbered(5, -kNotANumber), numbered(6, -1.0F),
         numbered(7, std::numeric_limits<float>::infinity()), numbered(8, 0.5F)});
    // In memory, and with a run for every star.
    for (const lumivar::SortLimits& limits : {lumivar::SortLimits{}, lumivar::SortLimits{1, 2}}) {
        EXPECT_EQ(sort_database(path, folder / "out.stars", StarOrder::Brightness, limits), 8U);
        const std::string sorted = read_file(folder / "out.stars");
        EXPECT_EQ(sorted.substr(0, 8), "LUMIVAR1");
        std::string numbers;
        for (std::size_t record = 1; record <= 8; ++record) {
            numbers += std::to_string(sorted[32 * record + 20]);
        }
        EXPECT_EQ(numbers, "73148625");
    }
}

TEST(Sort, MayReplaceItsInputAndKeepsItOnAFullDisk) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    std::vector<support::CatalogueStar> stars(5000);
    for (std::size_t i = 0; i < stars.size(); ++i) {
        stars[i].luminance = static_cast<float>(i + 1);
    }
    support::write_catalogue(path, support::kVersion2, stars);
    const std::string before = read_file(path);
    const std::vector<std::string> command = {"catalog", "sort", path,        "-o",
                                              path,      "--by", "brightness"};
    const ToolResult full = run_tool(command, {.file_size_limit = 100000});
    EXPECT_EQ(full.code, 1);
    EXPECT_EQ(full.err, "lumivar: cannot write " + path + ": File too large\n");
    EXPECT_EQ(read_file(path), before);
    const ToolResult well = run_tool(command);
    EXPECT_EQ(well.code, 0);
    EXPECT_EQ(well.out.rfind(path + ": 5000 stars by brightness, ", 0), 0U) << well.out;
    std::reverse(stars.begin(), stars.end());
    EXPECT_EQ(read_file(path), support::catalogue_bytes(support::kVersion2, stars));
    EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{"t.stars"});
}

TEST(Sort, NamesTheOrdersThatThereAre) {
    const ToolResult result =
        run_tool({"catalog", "sort", "a.stars", "-o", "b.stars", "--by", "colour"});
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.err.find("colour not in {brightness,position}"), std::string::npos)
        << result.err;
}

TEST(HilbertCurve, VisitsEveryCellOnceAndOnlyStepsToANeighbour) {
    constexpr unsigned kBits = 4;
    constexpr std::uint32_t kSide = 1U << kBits;
    std::map<std::uint64_t, std::pair<int, int>> cells;
    for (std::uint32_t x = 0; x < kSide; ++x) {
        for (std::uint32_t y = 0; y < kSide; ++y) {
            cells[lumivar::hilbert_place(x, y, kBits)] = {static_cast<int>(x), static_cast<int>(y)};
        }
    }
    ASSERT_EQ(cells.size(), kSide * kSide);
    EXPECT_EQ(cells.rbegin()->first, kSide * kSide - 1);
    for (std::uint64_t place = 1; place < cells.size(); ++place) {
        const auto [x, y] = cells[place];
        const auto [before_x, before_y] = cells[place - 1];
        EXPECT_EQ(std::abs(x - before_x) + std::abs(y - before_y), 1) << place;
    }
    // Of the finest cells the curve has 4^30.
    constexpr std::uint32_t kFinest = (1U << 30U) - 1;
    EXPECT_EQ(lumivar::hilbert_place(0, 0, 30), 0U);
    EXPECT_EQ(lumivar::hilbert_place(kFinest, 0, 30), (std::uint64_t{1} << 60U) - 1);
}

TEST(SkyCurve, KeepsStarsThatAreCloseInTheFileCloseOnTheSky) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    RandomNumbers random(9);
    constexpr std::size_t kStars = 20000;
    std::vector<support::CatalogueStar> stars(kStars);
    for (support::CatalogueStar& star : stars) {
        star.lon = random.between(0, 360);
        star.lat = std::asin(random.between(-1, 1)) * 180 / std::numbers::pi;
    }
    stars[7].lon = std::numeric_limits<double>::quiet_NaN();
    support::write_catalogue(path, support::kVersion2, stars);
    sort_database(path, path, StarOrder::Position);
    const std::string sorted = read_file(path);
    ASSERT_EQ(sorted.size(), 32 * (kStars + 1));
    const auto number_at = [&sorted](std::size_t byte) {
        double number = 0;
        sorted.copy(reinterpret_cast<char*>(&number), sizeof number, byte);
        return ledouble_to_cpu(&number);
    };
    // From star to star; the last is the one without a place.
    double sum = 0;
    double x = 0;
    double y = 0;
    double z = 0;
    for (std::size_t i = 1; i < kStars; ++i) {
        const double lon = number_at(32 * i) * std::numbers::pi / 180;
        const double lat = number_at(32 * i + 8) * std::numbers::pi / 180;
        const double to_x = std::cos(lat) * std::cos(lon);
        const double to_y = std::cos(lat) * std::sin(lon);
        const double to_z = std::sin(lat);
        sum += i == 1 ? 0 : std::hypot(to_x - x, to_y - y, to_z - z);
        x = to_x;
        y = to_y;
        z = to_z;
    }
    // Each star has 4 pi / 20000 of the sky, a square of 0.025. A tour along a space-filling curve
    // is known to be a quarter longer than the shortest, which takes 0.71 of that side a star; this
    // leaves a fifth more.
    EXPECT_LT(sum / kStars, 1.1 * std::sqrt(4 * std::numbers::pi / kStars));
    EXPECT_TRUE(std::isnan(number_at(32 * kStars)));
}

}  // namespace
