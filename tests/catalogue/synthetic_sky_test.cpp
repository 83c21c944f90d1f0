// The synthetic sky: the same bytes everywhere, and what it has in common with the real one.
#include "synthesis/synthetic_sky.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "astronomy/frame.h"
#include "astronomy/star_light.h"
#include "database/database_faults.h"
#include "database/info.h"
#include "support/scratch.h"
#include "synthesis/ieee_angle.h"
#include "synthesis/star_population.h"
#include "tool_run.h"

namespace {

using lumivar::CatalogueStar;
using lumivar::SynthOptions;

std::string database_of(const SynthOptions& options) {
    const ScratchFolder folder;
    lumivar::write_synthetic_sky(options, folder / "t.stars");
    return read_file(folder / "t.stars");
}

/// FNV-1a.
std::uint64_t hash_of(const std::string& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    return hash;
}

std::vector<CatalogueStar> stars_of(const SynthOptions& options) {
    lumivar::SyntheticSky sky(options);
    std::vector<CatalogueStar> stars(options.stars);
    std::generate(stars.begin(), stars.end(), [&sky] { return sky.next(); });
    return stars;
}

/// Density of stars at low galactic latitudes (below 5 degrees) to that at high ones (above 45).
double crowding(const SynthOptions& options) {
    double low = 0;
    double high = 0;
    for (const CatalogueStar& star : stars_of(options)) {
        const double latitude =
            std::abs(lumivar::to_frame({star.lon, star.lat}, lumivar::Frame::Galactic).dec);
        low += latitude < 5 ? 1 : 0;
        high += latitude > 45 ? 1 : 0;
    }
    const double degrees = std::numbers::pi / 180;
    return low / std::sin(5 * degrees) / (high / (1 - std::sin(45 * degrees)));
}

// The hashes are what synthetic_sky.py prints, an implementation in another language.
TEST(SyntheticSky, IsTheSameOnEveryMachine) {
    EXPECT_EQ(hash_of(database_of({.stars = 2000, .seed = 1})), 0xdf3e62d94063e318U);
    EXPECT_EQ(hash_of(database_of({.stars = 3000,
                                   .seed = 2147483647,
                                   .brightest = 5,
                                   .faintest = 20.5,
                                   .distances = true})),
              0x1d8a83d75c95955cU);
}

TEST(SyntheticSky, HasTheCountsOfTheRealSky) {
    const ScratchFolder folder;
    lumivar::write_synthetic_sky({.stars = 324000}, folder / "t.stars");
    const lumivar::CatalogueInfo info = lumivar::examine_catalogue(folder / "t.stars");
    EXPECT_EQ(info.warnings, std::vector<std::string>{});
    EXPECT_NEAR(info.magnitude.high, 10.0, 0.01) << "the sky has 324,000 to magnitude 10";
    // Brighter than a whole magnitude, in data/hip.csv; the bright end is left to chance.
    const std::pair<int, double> counts[] = {{3, 172},  {4, 515},   {5, 1606},
                                             {6, 4992}, {7, 15397}, {8, 41058}};
    for (const auto& [magnitude, real] : counts) {
        double stars = 0;
        for (const auto& [bin, number] : info.histogram) {
            stars += bin < magnitude ? static_cast<double>(number) : 0;
        }
        EXPECT_NEAR(stars, real, 3) << magnitude;
    }
}

TEST(SyntheticSky, PutsTheBrightestFirstWithinItsLimits) {
    const std::vector<CatalogueStar> stars =
        stars_of({.stars = 1000, .brightest = 6, .faintest = 9});
    for (std::size_t i = 1; i < stars.size(); ++i) {
        EXPECT_LE(stars[i].luminance, stars[i - 1].luminance);
    }
    EXPECT_NEAR(lumivar::magnitude_from_luminance(static_cast<double>(stars.front().luminance)),
                6.0, 0.2);
    EXPECT_NEAR(lumivar::magnitude_from_luminance(static_cast<double>(stars.back().luminance)), 9.0,
                0.01);
    EXPECT_EQ(stars[0].distance, -1.0);
}

TEST(SyntheticSky, CrowdsFaintStarsAlongTheMilkyWay) {
    // Of the stars of magnitude 5 to 7 in data/hip.csv it is 2.39.
    const double bright = crowding({.stars = 40000, .brightest = 5, .faintest = 7});
    const double middle = crowding({.stars = 40000, .brightest = 11, .faintest = 12});
    const double faint = crowding({.stars = 40000, .brightest = 18, .faintest = 19});
    EXPECT_NEAR(bright, 2.39, 0.4);
    EXPECT_GT(middle, 1.5 * bright);
    EXPECT_GT(faint, 1.5 * middle);
}

TEST(SyntheticSky, HasAnotherSkyForAnotherSeed) {
    const std::vector<CatalogueStar> one = stars_of({.stars = 100, .seed = 1});
    const std::vector<CatalogueStar> other = stars_of({.stars = 100, .seed = 2});
    for (std::size_t i = 0; i < one.size(); ++i) {
        EXPECT_NE(one[i].lon, other[i].lon);
    }
}

TEST(SyntheticSky, GivesDistancesThatGoWithColourAndLight) {
    std::vector<double> blue;
    std::vector<double> red;
    for (const CatalogueStar& star :
         stars_of({.stars = 20000, .brightest = 15, .faintest = 18, .distances = true})) {
        ASSERT_GT(star.distance, 0.0);
        const double at_ten_parsecs =
            static_cast<double>(star.luminance) * std::pow(star.distance / 10, 2);
        const double absolute = lumivar::magnitude_from_luminance(at_ten_parsecs);
        EXPECT_GT(absolute, -7.0);
        EXPECT_LT(absolute, 17.0);
        (star.rgb[2] == 255 ? blue : red).push_back(absolute);
    }
    // Among faint stars those redder than the Sun are dwarfs, fainter than those that are bluer.
    const auto median = [](std::vector<double>& values) {
        std::nth_element(values.begin(),
                         values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                         values.end());
        return values[values.size() / 2];
    };
    EXPECT_GT(median(red), median(blue) + 1.0);
}

TEST(SyntheticColours, AreThoseOfBlackBodies) {
    for (int tenth = -4; tenth <= 20; ++tenth) {
        const double colour_index = tenth / 10.0;
        EXPECT_EQ(lumivar::synthetic_colour(colour_index),
                  lumivar::black_body_code(lumivar::temperature_from_colour_index(colour_index),
                                           lumivar::WhitePoint::D65))
            << colour_index;
        // The lines between the rows of the table leave the curve by little.
        const auto drawn = lumivar::synthetic_colour(colour_index + 0.05);
        const auto exact = lumivar::black_body_code(
            lumivar::temperature_from_colour_index(colour_index + 0.05), lumivar::WhitePoint::D65);
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(drawn[c], exact[c], 2) << colour_index;
        }
    }
}

TEST(IeeeAngles, AreThoseOfTheLibraryToAFewUnitsInTheLastPlace) {
    for (double degrees = 0.0; degrees < 360.0; degrees += 0.37) {
        const double radians = degrees * std::numbers::pi / 180;
        for (const double length : {1e-3, 1.0, 7e5}) {
            const double y = length * std::sin(radians);
            const double x = length * std::cos(radians);
            double expected = std::atan2(y, x) * 180 / std::numbers::pi;
            expected += expected < 0 ? 360 : 0;
            EXPECT_NEAR(lumivar::ieee_direction_degrees(y, x), expected, 1e-13) << degrees;
        }
    }
    EXPECT_EQ(lumivar::ieee_direction_degrees(0, 1), 0.0);
    EXPECT_EQ(lumivar::ieee_direction_degrees(-0.0, 2), 0.0);
    EXPECT_EQ(lumivar::ieee_direction_degrees(3, 0), 90.0);
    EXPECT_EQ(lumivar::ieee_direction_degrees(0, -4), 180.0);
    EXPECT_EQ(lumivar::ieee_direction_degrees(-5, 0), 270.0);
    EXPECT_EQ(lumivar::ieee_direction_degrees(-1e-300, 1), 0.0) << "not 360";
}

TEST(Synth, WritesWhatItIsAskedFor) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    const ToolResult result = run_tool({"catalog", "synth", "-o", path, "--stars", "2000"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out.rfind(path + ": 2000 stars of magnitude ", 0), 0U) << result.out;
    EXPECT_NE(result.out.find(" to 5.19, seed 1, "), std::string::npos) << result.out;
    EXPECT_EQ(read_file(path), database_of({.stars = 2000, .seed = 1}));
    EXPECT_EQ(lumivar::database_faults(path), std::vector<std::string>{});
    const ToolResult other = run_tool({"catalog", "synth", "-o", path, "--stars", "50", "--seed",
                                       "9", "--brightest", "3", "--faintest", "4", "--distances"});
    EXPECT_EQ(other.code, 0) << other.err;
    EXPECT_EQ(
        read_file(path),
        database_of({.stars = 50, .seed = 9, .brightest = 3, .faintest = 4, .distances = true}));
}

TEST(Synth, InterruptedLeavesTheOldFileAndNothingElse) {
    const ScratchFolder folder;
    const std::string path = folder / "t.stars";
    write_file(path, "precious");
    // Takes minutes if nobody stops it.
    ToolProcess process({"catalog", "synth", "-o", path, "--stars", "1000000000"});
    wait_until([&folder] { return names_in(folder.path()).size() == 2; });
    process.send(SIGINT);
    EXPECT_EQ(process.wait().signal, SIGINT);
    EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{"t.stars"});
    EXPECT_EQ(read_file(path), "precious");
}

TEST(Synth, RefusesSkiesThatThereCannotBe) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--stars", "0"},
                                                      {"--stars", "1000000001"},
                                                      {"--seed", "-1"},
                                                      {"--brightest", "-3"},
                                                      {"--faintest", "22"},
                                                      {"--brightest", "5", "--faintest", "5"}}) {
        std::vector<std::string> command = {"catalog", "synth", "-o", "none/t.stars"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(run_tool(command).code, 2) << arguments.front() << " " << arguments[1];
    }
}

}  // namespace
