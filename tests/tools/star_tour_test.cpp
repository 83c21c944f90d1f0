// lumivar camera tour, and the scenes that name stars.
#include <gtest/gtest.h>
#include <host/scene.h>
#include <support/scratch.h>

#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "read_back.h"
#include "star_resolver.h"
#include "tool_run.h"

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

/// Where the scene's camera looks, in the stars' space.
std::array<double, 3> aim_of_scene(const host::Scene& scene, double seconds) {
    const host::Matrix m = scene.camera->layer_to_world(seconds);
    return {m[8], -m[9], m[10]};
}

void expect_aim(const host::Scene& scene, double seconds, double ra, double dec) {
    const std::array<double, 3> got = aim_of_scene(scene, seconds);
    const std::array<double, 3> want = {std::cos(dec * kDegree) * std::cos(ra * kDegree),
                                        std::sin(dec * kDegree),
                                        std::cos(dec * kDegree) * std::sin(ra * kDegree)};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(got[i], want[i], 1e-9) << seconds << " s, element " << i;
    }
}

class CameraTour : public testing::Test {
protected:
    ToolResult tour(std::vector<std::string> arguments, const ToolOptions& options = {}) const {
        arguments.insert(arguments.begin(), {"camera", "tour", "-o", path_});
        return run_tool(arguments, options);
    }
    host::Scene written() const { return host::load_scene(path_, lumivar::resolve_star); }

    ScratchFolder folder_;
    std::string path_ = folder_ / "tour.json";
};

TEST_F(CameraTour, RestsAtEachStarAndTurnsTheShortWay) {
    const ToolResult run = tour({"betelgeuse@0", "HIP 24436@2.5", "Sirius@5", "--hold", "0.5",
                                 "--fov", "20", "--size", "960x540", "--frame-rate", "25"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, path_ + ": 3 stars, 5.5 s\n");
    const host::Scene scene = written();
    EXPECT_EQ(scene.composition.width, 960);
    EXPECT_EQ(scene.composition.height, 540);
    EXPECT_EQ(scene.composition.frame_rate.num, 25U);
    // 5.5 s are 137.5 frames; the last frame begins when the tour ends.
    EXPECT_EQ(scene.composition.frames(), 138);
    EXPECT_NEAR(scene.camera->zoom(0.0), 270.0 / std::tan(10.0 * kDegree), 1e-9);
    // The places in data/bright-stars.csv.
    for (const double seconds : {0.0, 0.25, 0.5}) {
        expect_aim(scene, seconds, 88.792939, 7.407063);
    }
    for (const double seconds : {2.5, 2.9, 3.0}) {
        expect_aim(scene, seconds, 78.634468, -8.201641);
    }
    for (const double seconds : {5.0, 5.5, 6.0}) {
        expect_aim(scene, seconds, 101.287155, -16.716116);
    }
    // Half way in time it is between both: along their sum.
    const std::array<double, 3> from = aim_of_scene(scene, 0.0);
    const std::array<double, 3> to = aim_of_scene(scene, 2.5);
    std::array<double, 3> sum{};
    for (std::size_t i = 0; i < 3; ++i) {
        sum[i] = from[i] + to[i];
    }
    const double length = std::hypot(sum[0], sum[1], sum[2]);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(aim_of_scene(scene, 1.5)[i], sum[i] / length, 1e-9);
    }
}

TEST_F(CameraTour, ReadsStopsFromStandardInput) {
    ToolOptions options;
    options.input = folder_ / "stops.txt";
    write_file(options.input,
               "# two of the summer triangle\n\n0 Vega\r\n  4.5\t alpha  CYGNI # far\n");
    const ToolResult unknown = tour({"-"}, options);
    EXPECT_EQ(unknown.code, 1);
    const std::string told = "lumivar: standard input: line 4: no star is called \"alpha  CYGNI\"";
    EXPECT_EQ(unknown.err.substr(0, told.size()), told);
    write_file(options.input, "# two of the summer triangle\n\n0 Vega\r\n  4.5\t Deneb # far\n");
    const ToolResult run = tour({"-"}, options);
    ASSERT_EQ(run.code, 0) << run.err;
    expect_aim(written(), 0.0, 279.234735, 38.783692);
    write_file(options.input, "Vega 0\n");
    EXPECT_EQ(tour({"-"}, options).err,
              "lumivar: standard input: line 1: expected a time and a star, as in \"2.5 Rigel\", "
              "found \"Vega 0\"\n");
    write_file(options.input, "\n");
    EXPECT_EQ(tour({"-"}, options).err,
              "lumivar: standard input: no line names a star; write lines as \"2.5 Rigel\"\n");
}

TEST_F(CameraTour, WhatCannotBeIsRefusedAndNothingIsWritten) {
    const struct {
        std::vector<std::string> arguments;
        const char* told;
    } cases[] = {
        {{"Riegl@0"}, "no star is called \"Riegl\"; did you mean \"Rigel\"?"},
        {{"Rigel"}, "a stop is a star and a time, as in Rigel@2, not \"Rigel\""},
        {{"Rigel@2s"}, "a stop is a star and a time, as in Rigel@2, not \"Rigel@2s\""},
        {{"Rigel@inf"}, "a stop is a star and a time, as in Rigel@2, not \"Rigel@inf\""},
        {{"Rigel@-1"}, "Rigel@-1: a tour starts at 0 seconds or later"},
        {{"Rigel@2", "Vega@2"}, "Vega@2: its time must come after Rigel@2"},
        {{"Rigel@2", "Vega@2.5", "--hold", "0.5"},
         "Vega@2.5: its time must come after Rigel@2 and its rest of 0.5 s"},
        {{"Rigel@2", "--hold", "-1"}, "--hold takes seconds, 0 or more"},
        {{"Rigel@2", "--fov", "180"}, "--fov takes degrees, above 0 and below 180"},
        {{"Rigel@2", "--frame-rate", "0"}, "--frame-rate takes frames a second, 0.001 to 999"},
    };
    for (const auto& each : cases) {
        const ToolResult run = tour(each.arguments);
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.err.substr(0, run.err.find(" (lumivar")),
                  std::string("lumivar: ") + each.told);
        EXPECT_TRUE(names_in(folder_.path()).empty());
    }
}

TEST_F(CameraTour, LooksAtTheOutputBeforeTheStars) {
    path_ = folder_ / "tour.txt";
    const ToolResult ending = tour({"Riegl@0"});
    EXPECT_EQ(ending.code, 2);
    EXPECT_NE(ending.err.find("give NAME.json"), std::string::npos) << ending.err;
    path_ = folder_ / "none" + "/tour.json";
    const ToolResult folder = tour({"Riegl@0"});
    EXPECT_EQ(folder.code, 1);
    EXPECT_NE(folder.err.find("cannot write " + path_), std::string::npos) << folder.err;
}

TEST_F(CameraTour, ShowsNoControlCharactersOfTheName) {
    path_ = folder_ / "to\x1b[2Jur.json";
    const ToolResult run = tour({"Rigel@0"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out.find('\x1b'), std::string::npos) << run.out;
}

TEST(StarResolver, GivesPlaceAndDistanceOrTheLikelyName) {
    const host::StarAnswer star = lumivar::resolve_star("BETELGEUSE");
    ASSERT_TRUE(star.place);
    EXPECT_EQ(star.place->ra, 88.792939);
    EXPECT_EQ(star.place->dec, 7.407063);
    EXPECT_EQ(star.place->distance, 152.7);
    // Its parallax is not known.
    const host::StarAnswer far = lumivar::resolve_star("HIP 96630");
    ASSERT_TRUE(far.place);
    EXPECT_FALSE(far.place->distance);
    EXPECT_EQ(lumivar::resolve_star("Aldebarran").nearest, "Aldebaran");
    EXPECT_FALSE(lumivar::resolve_star("Qwxzqwxzqwxz").nearest);
}

TEST(ScenesShipped, BetelgeuseIsFlownAt) {
    const host::Scene scene =
        host::load_scene(LUMIVAR_SCENES "/betelgeuse.json", lumivar::resolve_star);
    expect_aim(scene, 0.0, 88.792939, 7.407063);
    expect_aim(scene, 10.0, 88.792939, 7.407063);
    const host::Matrix end = scene.camera->layer_to_world(10.0);
    EXPECT_NEAR(std::hypot(end[12], end[13], end[14]), 140.0, 1e-9);
}

// The catalogue that is drawn has the star where its name says: from 100 parsecs aside a distance
// a tenth of a parsec off would move it by more than ten pixels.
TEST(ScenesThatNameStars, AreDrawnWithTheStarInTheMiddle) {
    const ScratchFolder folder;
    const std::string scene = folder / "aside.json";
    write_file(scene, R"({"composition": {"width": 200, "height": 160, "duration": 2},
        "camera": {"position": {"keys": [{"time": 0, "value": [0, 0, 0]},
                                         {"time": 1, "value": {"ra": 180, "dec": 0, "distance": 100}}]},
                   "look_at": {"star": "Betelgeuse"}, "vertical_fov": 0.2},
        "controls": {"Parallax Crush": 0, "Star Brightness": 5}})");
    const ToolResult run = run_tool({"render", scene, "-o", folder / "aside.exr", "--time", "1"});
    ASSERT_EQ(run.code, 0) << run.err;
    const ReadBack picture = read_back(folder / "aside.exr");
    double light = 0.0, x_sum = 0.0, y_sum = 0.0;
    for (int y = 60; y <= 100; ++y) {
        for (int x = 80; x <= 120; ++x) {
            const auto value = static_cast<double>(picture.at<float>(x, y, 0));
            light += value;
            x_sum += value * x;
            y_sum += value * y;
        }
    }
    ASSERT_GT(light, 1.0);
    // Half a pixel: the effect takes angles in single precision, the database in five decimals.
    EXPECT_NEAR(x_sum / light, 100.0, 0.5);
    EXPECT_NEAR(y_sum / light, 80.0, 0.5);
}

}  // namespace
