// Magnitudes in scenes, arguments and summaries. Pogson's scale is worked out by hand: magnitude m
// is 10^(-0.4 m), and a stop is 2.5 log10 2 = 0.7526 magnitudes.
#include "magnitudes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "read_back.h"
#include "star_table.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

/// 10^(-2.6), as a catalogue stores a star of magnitude 6.5.
constexpr float kMagnitude6And5 = 0.0025118864F;

std::string scene_of(const std::string& members) {
    return R"({"composition": {"width": 1600, "height": 32, "frame_rate": 24, "duration": 1.0},
               "camera": {"look_at": {"ra": 90, "dec": 0}, "vertical_fov": 24.0})" +
           members + "}";
}

class Magnitudes : public testing::Test {
protected:
    Magnitudes() {
        write_file(folder_ / "star.stars",
                   bytes_of(lumivar::encode_header()) + white_star(90.0, 0.0, kMagnitude6And5));
    }

    ToolResult render(const std::string& members, std::vector<std::string> more,
                      const std::string& picture = "a.exr") const {
        write_file(folder_ / "scene.json", scene_of(members));
        std::vector<std::string> arguments = {"render",      folder_ / "scene.json",
                                              "-o",          folder_ / picture,
                                              "--catalogue", folder_ / "star.stars"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_tool(arguments);
    }
    /// What the summary says behind its first line.
    std::string lines(const std::string& members, const std::vector<std::string>& more = {},
                      const std::string& picture = "a.exr") const {
        const ToolResult result = render(members, more, picture);
        EXPECT_EQ(result.code, 0) << result.err;
        return result.out.substr(std::min(result.out.find('\n'), result.out.size() - 1) + 1);
    }
    bool draws(const std::string& members, const std::vector<std::string>& more = {}) const {
        const ToolResult result = render(members, more);
        EXPECT_EQ(result.code, 0) << result.err;
        const std::vector<float> samples = read_back(folder_ / "a.exr").samples<float>();
        for (std::size_t red = 0; red < samples.size(); red += 4) {
            if (samples[red] > 0.0F) {
                return true;
            }
        }
        return false;
    }
    /// The one line of a render that fails.
    std::string error(const std::string& members, const std::vector<std::string>& more,
                      int code) const {
        const ToolResult result = render(members, more);
        EXPECT_EQ(result.code, code) << result.out;
        return result.err;
    }

    ScratchFolder folder_;
};

std::string limit(const std::string& value) {
    return R"(, "picture": {"limiting_magnitude": )" + value + "}";
}

std::string control(const std::string& setting) { return ", \"controls\": {" + setting + "}"; }

TEST_F(Magnitudes, AThresholdIsRoundedAsACataloguesLuminances) {
    EXPECT_EQ(lumivar::threshold_of_magnitude(0.0), 1.0);
    EXPECT_EQ(lumivar::threshold_of_magnitude(2.5), static_cast<double>(0.1F));
    EXPECT_EQ(lumivar::threshold_of_magnitude(6.5), static_cast<double>(kMagnitude6And5));
    EXPECT_EQ(lumivar::threshold_of_magnitude(10.0), static_cast<double>(0.0001F));
}

TEST_F(Magnitudes, AStarOfExactlyTheLimitIsDrawnAndNoFainterOne) {
    EXPECT_TRUE(draws("", {"--limiting-magnitude", "6.5"}));
    EXPECT_FALSE(draws("", {"--limiting-magnitude", "6.499"}));
    EXPECT_TRUE(draws(limit("6.5")));
    EXPECT_FALSE(draws(limit("6.499")));
    // The value that the summary gives to type in the host, and the next of its six decimals.
    EXPECT_TRUE(draws(control(R"("Luminance Threshold": 0.002511)")));
    EXPECT_FALSE(draws(control(R"("Luminance Threshold": 0.002512)")));
}

TEST_F(Magnitudes, WhatIsSaidNearerToTheRenderWins) {
    EXPECT_TRUE(draws(limit("5"), {"--limiting-magnitude", "7"}));
    EXPECT_TRUE(draws(control(R"("Luminance Threshold": 0.1)"), {"--limiting-magnitude", "7"}));
    EXPECT_TRUE(draws(limit("5"), {"--set", "Luminance Threshold=0"}));
    EXPECT_FALSE(draws(limit("7"), {"--set", "Luminance Threshold=1"}));
}

TEST_F(Magnitudes, KeysAreJoinedInMagnitudes) {
    // Halfway from 6 to 7 the limit is 6.5; between the luminances it would be 6.39.
    const std::string keys = R"({"keys": [{"time": 0, "value": 6}, {"time": 1, "value": 7}]})";
    EXPECT_TRUE(draws(limit(keys), {"--time", "0.5"}));
    EXPECT_FALSE(draws(limit(keys), {"--frame", "11"}));
    // 10^(-2.4) = 0.003981, 10^(-2.416667) = 0.003831.
    const std::string ceiling = "; those brighter than 0.75 all alike (Maximum Luminance 0.5)\n";
    EXPECT_EQ(lines(limit(keys), {"--frames", "0-1"}, "a.#.exr"),
              "  stars to magnitude 6.00 (in the host: Luminance Threshold 0.003981)" + ceiling +
                  "  at the end stars to magnitude 6.04 (in the host: Luminance Threshold "
                  "0.003831)" +
                  ceiling);
}

TEST_F(Magnitudes, TheSummaryTellsTheFaintestStarAndTheCeiling) {
    const std::string ceiling = "; those brighter than 0.75 all alike (Maximum Luminance 0.5)\n";
    EXPECT_EQ(lines(""), "  stars to magnitude 10.00 (Luminance Threshold 0.0001)" + ceiling);
    EXPECT_EQ(
        lines("", {"--set", "Luminance Threshold=0"}),
        "  stars of every magnitude (Luminance Threshold 0), but those fainter than 12.74 are "
        "too dark to be drawn" +
            ceiling);
    EXPECT_EQ(lines("", {"--limiting-magnitude", "6.5"}),
              "  stars to magnitude 6.50 (in the host: Luminance Threshold 0.002511)" + ceiling);
    for (const auto& [magnitude, control] : {std::pair<std::string, std::string>{"5", "0.010000"},
                                             {"10", "0.000100"},
                                             {"12.5", "0.000010"},
                                             {"15", "0.000001"}}) {
        EXPECT_NE(lines("", {"--limiting-magnitude", magnitude})
                      .find("(in the host: Luminance Threshold " + control + ")"),
                  std::string::npos)
            << magnitude;
    }
    const std::string dark = ", but those fainter than 12.74 are too dark to be drawn";
    // 10^(-5.6) = 0.00000251, of which six decimals leave 0.000002: 2.5 (6 - log10 2) = 14.247.
    EXPECT_EQ(lines("", {"--limiting-magnitude", "14"}),
              "  stars to magnitude 14.00 (in the host: Luminance Threshold 0.000002, which is "
              "magnitude 14.25)" +
                  dark + ceiling);
    EXPECT_EQ(lines("", {"--limiting-magnitude", "16"}),
              "  stars to magnitude 16.00 (in the host: Luminance Threshold 0.000000, which draws "
              "every star)" +
                  dark + ceiling);
    const std::string faintest = "  stars to magnitude 10.00 (Luminance Threshold 0.0001); ";
    // -2.5 log10 4 = -1.505; a bias of 2 takes the root first, so 0.1 is reached at 0.1^2.
    EXPECT_EQ(lines("", {"--set", "Maximum Luminance=4"}),
              faintest + "those brighter than -1.51 all alike (Maximum Luminance 4)\n");
    EXPECT_EQ(lines("", {"--set", "Maximum Luminance=0.1", "--set", "Brightness Bias=2"}),
              faintest + "those brighter than 5.00 all alike (Maximum Luminance 0.1)\n");
    EXPECT_EQ(lines("", {"--set", "Maximum Luminance=0.00005"}),
              faintest + "all alike (Maximum Luminance 5e-05)\n");
    EXPECT_EQ(lines("", {"--set", "Maximum Luminance=0"}),
              faintest + "all black (Maximum Luminance 0)\n");
}

TEST_F(Magnitudes, TheSummaryTellsWhatIsTooDarkToBeDrawn) {
    const auto fainter = [this](const std::vector<std::string>& more,
                                const std::string& members = "") {
        std::vector<std::string> arguments = {"--set", "Luminance Threshold=0"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const std::string text = lines(members, arguments);
        const std::size_t at = text.find("but ");
        return text.substr(at, text.find(" to be drawn") - at);
    };
    // A spot's light is 4 x brightness x luminance, and 1/6250 of it is the least: at brightness 5
    // luminance 1 / 125000, magnitude 2.5 log10 125000 = 12.74; at 50 it is 2.5 more.
    EXPECT_EQ(fainter({}), "but those fainter than 12.74 are too dark");
    EXPECT_EQ(fainter({"--set", "Star Brightness=50"}),
              "but those fainter than 15.24 are too dark");
    // A bias of 2 takes the root of the luminance first.
    EXPECT_EQ(fainter({"--set", "Brightness Bias=2"}), "but those fainter than 25.48 are too dark");
    // At 160 pixels a spot of 2.5 thousandths of half the width is 0.2 pixels: 0.04 of the light,
    // 3.49 magnitudes; one that is 10 times as wide as high has 0.2.
    EXPECT_EQ(fainter({"--size", "160x32"}), "but those fainter than 9.25 are too dark");
    EXPECT_EQ(fainter({"--size", "160x32", "--set", "Star Aspect Ratio=10"}),
              "but those fainter than 10.99 are too dark");
    // Sixteen streaks have a sixteenth of the light each: 3.01 magnitudes.
    EXPECT_EQ(fainter({"--set", "Motion Blur Segments=16"}),
              "but those fainter than 12.74 are too dark")
        << "there is no motion blur";
    write_file(folder_ / "blur.json",
               R"({"composition": {"width": 1600, "height": 32, "motion_blur": true},
                   "camera": {"look_at": {"ra": 90, "dec": 0}, "vertical_fov": 24.0},
                   "controls": {"Luminance Threshold": 0, "Motion Blur Segments": 16}})");
    const ToolResult blur = run_tool({"render", folder_ / "blur.json", "-o", folder_ / "a.exr",
                                      "--catalogue", folder_ / "star.stars"});
    EXPECT_NE(blur.out.find("fainter than 9.73 are"), std::string::npos) << blur.out;
    EXPECT_EQ(fainter({"--set", "Star Brightness=0.00001"}), "but all are too dark");
    EXPECT_EQ(lines("").find("too dark"), std::string::npos);
}

TEST_F(Magnitudes, AStarThatIsToldToBeTooDarkIsNotDrawn) {
    // By the frame: the same star of magnitude 6.5 just above and just below its least brightness,
    // 1 / (6250 x 4 x 0.0025118864) = 0.015924.
    EXPECT_TRUE(draws("", {"--set", "Star Brightness=0.01594"}));
    EXPECT_FALSE(draws("", {"--set", "Star Brightness=0.01591"}));
}

TEST_F(Magnitudes, AnExposureIsToldInMagnitudesAndInTheEffectsControl) {
    const auto line = [this](const std::string& members, const std::vector<std::string>& more) {
        const std::string all = lines(members, more, "a.png");
        return all.substr(all.find('\n') + 1);
    };
    // 5 x 2^1.5 = 14.142; 1.5 x 0.7526 = 1.129.
    EXPECT_EQ(line("", {"--exposure", "1.5"}),
              "  exposure +1.5: 1.13 magnitudes brighter (in the host: Star Brightness 14.14 "
              "instead of 5)\n");
    EXPECT_EQ(line("", {"--exposure", "-1", "--set", "Star Brightness=8"}),
              "  exposure -1: 0.75 magnitudes darker (in the host: Star Brightness 4.00 instead of "
              "8)\n");
    // 5 / 4096 = 0.0012207, which two decimals would make 0.
    EXPECT_EQ(
        line("", {"--exposure", "-12"}),
        "  exposure -12: 9.03 magnitudes darker (in the host: Star Brightness 0.001221 instead "
        "of 5)\n");
    EXPECT_EQ(line("", {"--exposure", "8"}),
              "  exposure +8: 6.02 magnitudes brighter (in the host: beyond Star Brightness, which "
              "ends at 1000)\n");
    EXPECT_EQ(line("", {}), "");
    EXPECT_EQ(line("", {"--exposure", "1.5", "--depth", "8"}), "") << "cut off at white already";
    EXPECT_EQ(line(R"(, "picture": {"exposure": 1})", {"--exposure", "0"}), "");
}

TEST_F(Magnitudes, TheControlThatIsToldGivesTheLightOfTheExposure) {
    const auto brightest = [this](const std::vector<std::string>& more) {
        std::vector<std::string> arguments = {"--view", "plain", "--bits",
                                              "16",     "--set", "Star Spot Size=40"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(render("", arguments, "a.png").code, 0);
        const std::vector<std::uint16_t> samples =
            read_back(folder_ / "a.png").samples<std::uint16_t>();
        return *std::max_element(samples.begin(), samples.end());
    };
    const int exposed = brightest({"--exposure", "2", "--set", "Star Brightness=20"});
    // Far from black and white, where all would be equal.
    EXPECT_GT(exposed, 0x4000);
    EXPECT_LT(exposed, 0xFFFF);
    EXPECT_NEAR(exposed, brightest({"--set", "Star Brightness=80"}), 1);
}

TEST_F(Magnitudes, TheScenesPictureIsMadeUnlessTheArgumentsSayOtherwise) {
    const std::string scene = R"(, "picture": {"exposure": -2, "view": "plain", "halo": 0.5})";
    const auto says = [&](const std::vector<std::string>& more, const std::string& words) {
        const std::string out = render(scene, more, "a.png").out;
        EXPECT_NE(out.find(words), std::string::npos) << out;
    };
    says({}, ", plain view, exposure -2 stops, halo 0.5, ");
    says({"--view", "photo", "--exposure", "3", "--halo", "2"},
         ", photo view, exposure +3 stops, halo 2, ");
}

TEST_F(Magnitudes, WhatCannotHoldIsTold) {
    const std::string place = "lumivar: " + (folder_ / "scene.json") + ": /picture";
    EXPECT_EQ(error(limit("6") + control(R"("Luminance Threshold": 0.1)"), {}, 1),
              place +
                  "/limiting_magnitude: expected one way to say the faintest star, found "
                  "\"limiting_magnitude\" and the control \"Luminance Threshold\"; remove one "
                  "of them\n");
    const std::string range =
        " is out of range; give a magnitude from 0 to 90, as the control \"Luminance Threshold\" "
        "ends at luminance 1, which is magnitude 0";
    EXPECT_EQ(
        error(limit(R"({"keys": [{"time": 0, "value": 6}, {"time": 1, "value": -0.5}]})"), {}, 1),
        place + "/limiting_magnitude: -0.5" + range + "\n");
    const std::string ways = " (lumivar --help shows the ways)\n";
    EXPECT_EQ(error("", {"--limiting-magnitude", "91"}, 2),
              "lumivar: --limiting-magnitude: 91" + range + ways);
    EXPECT_EQ(error("", {"--limiting-magnitude", "nan"}, 2),
              "lumivar: --limiting-magnitude: nan" + range + ways);
    EXPECT_EQ(
        error("", {"--limiting-magnitude", "6", "--set", "Luminance Threshold=0.1"}, 2),
        "lumivar: --limiting-magnitude and --set \"Luminance Threshold=0.1\" both say the faintest "
        "star; remove one of them" +
            ways);
    EXPECT_EQ(error(R"(, "picture": {"halo": 5})", {}, 1),
              place + "/halo: expected a strength from 0 to 4.348, found 5\n");
}

}  // namespace
