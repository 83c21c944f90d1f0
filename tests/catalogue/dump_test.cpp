// lumivar catalog dump: every number as the shortest text that reads back as the same bits.
#include "database/dump.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "support/catalogue.h"
#include "support/random_numbers.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

constexpr const char* kHeader = "lon_deg,lat_deg,luminance,r,g,b,distance_pc\n";

std::string dump_of(const std::string& path) {
    std::string text;
    lumivar::dump_database(path, [&text](std::string_view piece) { text += piece; });
    return text;
}

TEST(Dump, WritesShortestDecimals) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    support::write_catalogue(
        path, support::kVersion2,
        {{.lon = 0.1, .lat = -90, .luminance = 0.1F, .r = 0, .g = 7, .b = 255, .distance = -1},
         {.lon = 1.0 / 3, .lat = 1e-7, .luminance = 1e-20F, .distance = 152.7}});
    EXPECT_EQ(dump_of(path), std::string(kHeader) +
                                 "0.1,-90,0.1,0,7,255,-1\n"
                                 "0.3333333333333333,1e-07,1e-20,255,255,255,152.7\n");
}

TEST(Dump, ReadsBackAsTheSameBits) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    RandomNumbers random(5);
    const auto any_double = [&random] {
        // Any number that is one, of any size.
        const std::uint64_t bits = std::uint64_t{random.bits()} << 32U | random.bits();
        return std::bit_cast<double>(bits & ~(std::uint64_t{1} << 62U));
    };
    // More text than is collected at a time.
    std::vector<support::CatalogueStar> stars(4000);
    for (support::CatalogueStar& star : stars) {
        star = {any_double(),  any_double(),  std::bit_cast<float>(random.bits() & ~(1U << 30U)),
                random.code(), random.code(), random.code(),
                any_double()};
    }
    stars[0] = {.lon = -0.0,
                .lat = std::numeric_limits<double>::denorm_min(),
                .luminance = std::numeric_limits<float>::max(),
                .distance = -std::numeric_limits<double>::max()};
    support::write_catalogue(path, support::kVersion2, stars);
    std::istringstream text(dump_of(path));
    std::string line;
    std::getline(text, line);
    // Read by the C library and written by the tests' own hand: the very bytes again.
    std::string bytes = support::catalogue_header(support::kVersion2);
    while (std::getline(text, line)) {
        support::CatalogueStar star;
        const char* at = line.c_str();
        char* end = nullptr;
        const auto next = [&] {
            const char* begin = at;
            std::strtod(begin, &end);
            at = end + (*end == ',' ? 1 : 0);
            return begin;
        };
        star.lon = std::strtod(next(), nullptr);
        star.lat = std::strtod(next(), nullptr);
        star.luminance = std::strtof(next(), nullptr);
        star.r = static_cast<unsigned char>(std::atoi(next()));
        star.g = static_cast<unsigned char>(std::atoi(next()));
        star.b = static_cast<unsigned char>(std::atoi(next()));
        star.distance = std::strtod(next(), nullptr);
        EXPECT_EQ(*at, '\0') << line;
        bytes += support::catalogue_record(star);
    }
    EXPECT_EQ(bytes, read_file(path));
}

TEST(Dump, SaysThatDistancesOfVersionOneAreUnused) {
    const ScratchFolder folder;
    support::write_catalogue(folder / "t.stars", support::kVersion1, {{.distance = 3}});
    EXPECT_EQ(dump_of(folder / "t.stars"),
              "lon_deg,lat_deg,luminance,r,g,b,distance_unused\n0,0,1,255,255,255,3\n");
}

TEST(Dump, GoesToStandardOutputOrToAFileThatAppearsWhole) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    support::write_catalogue(path, support::kVersion2, {{.lon = 2}});
    const std::string text = std::string(kHeader) + "2,0,1,255,255,255,0\n";
    const ToolResult shown = run_tool({"catalog", "dump", path});
    EXPECT_EQ(shown.code, 0);
    EXPECT_EQ(shown.out, text);
    const ToolResult written = run_tool({"catalog", "dump", path, "-o", folder / "t.csv"});
    EXPECT_EQ(written.code, 0);
    EXPECT_EQ(written.out.rfind((folder / "t.csv") + ": 1 star, ", 0), 0U) << written.out;
    EXPECT_EQ(read_file(folder / "t.csv"), text);

    support::write_catalogue(path, support::kVersion2, std::vector<support::CatalogueStar>(9000));
    const ToolResult full =
        run_tool({"catalog", "dump", path, "-o", folder / "t.csv"}, {.file_size_limit = 100000});
    EXPECT_EQ(full.code, 1);
    EXPECT_EQ(full.err, "lumivar: cannot write " + (folder / "t.csv") + ": File too large\n");
    EXPECT_EQ(read_file(folder / "t.csv"), text) << "the old one";
    EXPECT_EQ(names_in(folder.path()), (std::vector<std::string>{"t.csv", "t.stars"}));
    const ToolResult no_room = run_tool({"catalog", "dump", path}, {.output = "/dev/full"});
    EXPECT_EQ(no_room.code, 1);
    EXPECT_EQ(no_room.err, "lumivar: cannot write to standard output\n");
}

}  // namespace
