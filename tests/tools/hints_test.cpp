// Every hint, and that none appears where all is well.
#include "hints.h"

#include <gtest/gtest.h>
#include <host/camera.h>
#include <host/session.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "run_hints.h"
#include "star_resolver.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using Lines = std::vector<std::string>;

/// As the plug-in declares them.
const std::vector<host::DeclaredControl>& plugin_controls() {
    // Closed again at once: runs of the program in this process load the plug-in too.
    static const std::vector<host::DeclaredControl> controls =
        host::Session(LUMIVAR_BUNDLE).controls();
    return controls;
}

std::vector<host::Time> all_frames(const host::Scene& scene) {
    std::vector<host::Time> times;
    for (int frame = 0; frame < scene.composition.frames(); ++frame) {
        times.push_back(scene.composition.frame_time(frame));
    }
    return times;
}

Lines hints_of(const host::Scene& scene) {
    return lumivar::setting_hints(plugin_controls(), scene, all_frames(scene));
}

Lines hints_of(const std::string& text) { return hints_of(host::parse_scene(text, "s.json")); }

/// Hints of a still of 1920 x 1080 with these controls and a camera at the origin.
Lines hints_of_controls(const std::string& controls) {
    return hints_of(R"({"composition": {"duration": 0.5},
                        "camera": {"look_at": {"ra": 83}, "vertical_fov": 24},
                        "controls": {)" +
                    controls + "}}");
}

TEST(Hints, NoneForTheShippedScenes) {
    int scenes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(LUMIVAR_SCENES)) {
        if (entry.path().extension() == ".json") {
            ++scenes;
            EXPECT_EQ(hints_of(host::load_scene(entry.path().string(), lumivar::resolve_star)),
                      Lines{})
                << entry.path();
        }
    }
    EXPECT_GE(scenes, 4);
}

TEST(Hints, NoneWhereAllIsWell) {
    const char* const scenes[] = {
        "{}",
        R"({"camera": {}})",
        R"({"camera": {}, "controls": {"Parallax Crush": 50}})",
        R"({"camera": {}, "controls": {"Parallax Crush": 90}})",
        R"({"camera": {"look_at": {"ra": 83, "dec": -1}}, "controls": {"Projection": "HemiSph"}})",
        R"({"controls": {"Projection": "AzEqu", "Parallax Crush": 0}})",
        R"({"composition": {"motion_blur": true}, "camera": {"vertical_fov": 20}})",
        R"({"composition": {"motion_blur": true}, "camera": {"vertical_fov": 20},
            "controls": {"Motion Blur Segments": 16}})",
        // Values that are 0 or without effect at some of the times alone.
        R"({"composition": {"duration": 1}, "controls": {
            "Star Brightness": {"keys": [{"time": 0, "value": 0}, {"time": 0.5, "value": 5}]},
            "Star Spot Size": {"keys": [{"time": 0, "value": 2}, {"time": 0.5, "value": 0}]},
            "Tint Strength": {"keys": [{"time": 0, "value": 0}, {"time": 0.5, "value": 1}]},
            "Tint Color": [255, 0, 0]}})",
        R"({"composition": {"duration": 1, "motion_blur": true,
                            "shutter_angle": {"keys": [{"time": 0, "value": 0},
                                                       {"time": 0.5, "value": 90}]}},
            "camera": {"vertical_fov": 20}})",
        // A camera that turns, or stands among the stars, or flies there.
        R"({"camera": {"position": [0, 0, 0],
                       "orientation": {"keys": [{"time": 0, "value": [0, 0, 0]},
                                                {"time": 1, "value": [0, 90, 0]}]}}})",
        R"({"camera": {"position": [0, 0, 40]}, "controls": {"Parallax Crush": 0}})",
        R"({"camera": {"position": {"keys": [{"time": 0, "value": [0, 0, 0]},
                                             {"time": 9, "value": [0, 0, 40]}]}},
            "controls": {"Parallax Crush": 0}})",
        // Said, and as it is anyway.
        R"({"controls": {"3D Stars": true, "Anamorphic DOF": false, "Treat Pixels As": 1,
                         "Tint Color": "#808080", "Motion Blur Segments": 1}})",
        R"({"controls": {"Tint Color": "#ff8000", "Tint Strength": 0.5}})",
        R"({"controls": {"Star Saturation": 0}})",
    };
    for (const char* const scene : scenes) {
        EXPECT_EQ(hints_of(scene), Lines{}) << scene;
    }
}

TEST(Hints, NoneForAnEffectWithoutTheControls) {
    const host::Scene scene = host::parse_scene(R"({"composition": {"duration": 0.1}})", "s.json");
    EXPECT_EQ(lumivar::setting_hints({}, scene, all_frames(scene)), Lines{});
}

TEST(Hints, LensThatTheProjectionDoesNotUse) {
    for (const std::string projection : {"HemiSph", "AzEqu"}) {
        for (const char* const lens :
             {R"("vertical_fov": 24)", R"("zoom": 900)",
              R"("zoom": {"keys": [{"time": 0, "value": 900}, {"time": 1, "value": 2000}]})"}) {
            EXPECT_EQ(hints_of(R"({"camera": {"look_at": {}, )" + std::string(lens) +
                               R"(}, "controls": {"Projection": ")" + projection + "\"}}"),
                      (Lines{"the camera's lens is not used: \"Projection\" " + projection +
                             " always shows 180 degrees over the frame's height; choose Persp for "
                             "a lens"}))
                << lens;
        }
    }
}

TEST(Hints, SegmentsWithoutMotionBlur) {
    EXPECT_EQ(hints_of_controls(R"("Motion Blur Segments": 16)"),
              (Lines{"\"Motion Blur Segments\" 16 blurs nothing: the composition's motion blur is "
                     "off; set \"motion_blur\": true"}));
}

TEST(Hints, KeyedSegmentsCountWhereTheyBlurNothingAtAnyFrame) {
    const auto keyed = [](const char* first, const char* last) {
        return hints_of_controls(R"("Motion Blur Segments": {"keys": [{"time": 0, "value": )" +
                                 std::string(first) + R"(}, {"time": 0.4, "value": )" + last +
                                 "}]}");
    };
    EXPECT_EQ(keyed("16", "32").size(), 1U);
    EXPECT_EQ(keyed("0", "1"), Lines{}) << "no blur is asked for";
    // With motion blur on, segments in some of the frames are enough.
    EXPECT_EQ(hints_of(R"({"composition": {"duration": 0.5, "motion_blur": true},
                           "camera": {"look_at": {}, "vertical_fov": 24},
                           "controls": {"Motion Blur Segments": {"keys": [
                               {"time": 0, "value": 0}, {"time": 0.4, "value": 16}]}}})"),
              Lines{});
}

TEST(Hints, LensOfABroughtCameraThatTheProjectionDoesNotUse) {
    host::Scene scene = host::parse_scene(R"({"controls": {"Projection": "HemiSph"}})", "s.json");
    host::CameraSample sample;
    sample.layer_to_world = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    sample.zoom = 900.0;
    scene.camera = host::path_camera({sample});
    const Lines hints = hints_of(scene);
    ASSERT_EQ(hints.size(), 1U);
    EXPECT_EQ(hints[0].rfind("the camera's lens is not used", 0), 0U) << hints[0];
}

TEST(Hints, MotionBlurWithoutSegmentsShutterOrCamera) {
    const auto blurred = [](const std::string& composition, const std::string& rest) {
        return hints_of(R"({"composition": {"duration": 0.5, "motion_blur": true)" + composition +
                        "}" + rest + "}");
    };
    const std::string camera = R"(, "camera": {"look_at": {"ra": 83}, "vertical_fov": 24})";
    EXPECT_EQ(blurred("", camera + R"(, "controls": {"Motion Blur Segments": 0})"),
              (Lines{"\"motion_blur\" blurs nothing: \"Motion Blur Segments\" is 0; set it to 1 or "
                     "more"}));
    EXPECT_EQ(blurred(R"(, "shutter_angle": 0)", camera),
              (Lines{"\"motion_blur\" blurs nothing: \"shutter_angle\" is 0; 180 keeps the shutter "
                     "open for half a frame"}));
    EXPECT_EQ(blurred("", ""), (Lines{"\"motion_blur\" blurs nothing: the scene has no camera that "
                                      "could move; give it a \"camera\""}));
}

TEST(Hints, NewCameraOutsideTheStars) {
    // hypot(960, 540, 1920 * 50 / 36 = 2666.7) = 2885.2
    EXPECT_EQ(hints_of(R"({"camera": {}, "controls": {"Parallax Crush": 0}})"),
              (Lines{"the camera stands where a new one does, 2885 parsecs from the Sun, and with "
                     "\"Parallax Crush\" 0 near stars crowd together in a corner; set "
                     "\"position\": [0, 0, 0]"}));
    // Whatever the lens: 540 / tan(45 degrees) = 540, hypot(960, 540, 540) = 1226.7.
    const Lines lens =
        hints_of(R"({"camera": {"vertical_fov": 90}, "controls": {"Parallax Crush": 2}})");
    ASSERT_EQ(lens.size(), 1U);
    EXPECT_EQ(lens[0].find("the camera stands where a new one does, 1227 parsecs"), 0U) << lens[0];
}

TEST(Hints, MoveAmongStarsAtInfinity) {
    EXPECT_EQ(hints_of(R"({"camera": {"position": {"keys": [{"time": 0, "value": [0, 0, 0]},
                                                            {"time": 9, "value": [0, 0, 40]}]}}})"),
              (Lines{"the camera moves, but \"Parallax Crush\" 100 keeps every star at infinity, "
                     "where none moves; set it to 0 to fly among the stars"}));
}

TEST(Hints, ControlsThatLeaveNoLight) {
    for (const std::string name :
         {"Star Brightness", "Maximum Luminance", "Star Spot Size", "Star Aspect Ratio"}) {
        EXPECT_EQ(hints_of_controls("\"" + name + "\": 0"),
                  (Lines{"\"" + name + "\" 0 leaves no star any light; set it above 0"}));
    }
}

TEST(Hints, TintWithoutStrengthOrSaturation) {
    EXPECT_EQ(hints_of_controls(R"("Tint Color": "#ff8000")"),
              (Lines{"\"Tint Color\" tints nothing: \"Tint Strength\" is 0; set it up to 1"}));
    EXPECT_EQ(hints_of_controls(R"("Tint Strength": 0.5, "Star Saturation": 0)"),
              (Lines{"\"Tint Strength\" tints nothing: \"Star Saturation\" 0 makes every star "
                     "grey; set it up to 1"}));
}

TEST(Hints, ControlsWithoutEffect) {
    for (const auto& [name, value] : {std::pair<std::string, std::string>{"3D Stars", "false"},
                                      {"Treat Pixels As", "\"sRGB\""},
                                      {"Anamorphic DOF", "true"}}) {
        EXPECT_EQ(hints_of_controls("\"" + name + "\": " + value),
                  (Lines{"\"" + name + "\" changes nothing in the picture; leave it out"}));
    }
}

std::string black_hint(const std::string& text, lumivar::BlackFrames frames = {100, 2.0}) {
    const host::Scene scene = host::parse_scene(text, "s.json");
    // A scene that says its duration means all its frames.
    const bool all = text.find("\"duration\"") != std::string::npos;
    return lumivar::black_frame_hint(
               plugin_controls(), scene,
               all ? all_frames(scene) : std::vector{scene.composition.frame_time(0)}, frames)
        .value_or("none");
}

TEST(BlackFrameHint, TellsTheLikelyReason) {
    const std::string start = "there is no star in the frame: ";
    EXPECT_EQ(black_hint("{}", {0, std::nullopt}),
              start + "the star database holds none; choose another with --catalogue");
    EXPECT_EQ(black_hint(R"({"controls": {"Luminance Threshold": 0.5}})", {1, 0.25}),
              start +
                  "the brightest of the database has luminance 0.25, below \"Luminance "
                  "Threshold\" 0.5; lower that");
    EXPECT_EQ(black_hint(R"({"camera": {"position": [0, 0, 5000]},
                             "controls": {"Parallax Crush": 0}})"),
              start +
                  "the camera stands 5000 parsecs from the Sun, outside the stars; move it "
                  "nearer or set \"Parallax Crush\" to 100");
    EXPECT_EQ(black_hint(R"({"camera": {"look_at": {}, "vertical_fov": 0.5}})"),
              start +
                  "the lens shows only 0.5 degrees from bottom to top; widen it, or lower "
                  "\"Luminance Threshold\" with a deeper database");
    const std::string other =
        start +
        "none that the camera sees is bright enough; raise \"Star Brightness\", lower "
        "\"Luminance Threshold\", or turn the camera";
    EXPECT_EQ(black_hint("{}"), other);
    // Equality passes the threshold; HemiSph has no lens.
    EXPECT_EQ(black_hint(R"({"controls": {"Luminance Threshold": 0.25}})", {1, 0.25}), other);
    EXPECT_EQ(black_hint(R"({"camera": {"look_at": {}, "vertical_fov": 0.5},
                             "controls": {"Projection": "HemiSph"}})"),
              other);
    // Said before the first frame.
    EXPECT_EQ(black_hint(R"({"controls": {"Star Brightness": 0}})"), "none");
}

TEST(BlackFrameHint, NamesAReasonOnlyWhereItHoldsForEveryFrame) {
    // Two frames: of the first each reason holds, of the second none.
    const std::string keys = R"({"keys": [{"time": 0, "value": )";
    const auto between = [&keys](const char* first, const char* last) {
        return keys + first + R"(}, {"time": 0.5, "value": )" + last + "}]}";
    };
    const auto hint = [](const std::string& members) {
        return black_hint(R"({"composition": {"frame_rate": 2, "duration": 1}, )" + members + "}",
                          {1, 0.25});
    };
    const std::string other =
        "there is no star in any frame: none that the camera sees is bright enough; raise \"Star "
        "Brightness\", lower \"Luminance Threshold\", or turn the camera";
    EXPECT_EQ(hint(R"("controls": {"Luminance Threshold": )" + between("0.5", "0.1") + "}"), other);
    EXPECT_EQ(hint(R"("camera": {"position": [0, 0, )" + between("5000", "0") +
                   R"(]}, "controls": {"Parallax Crush": 0})"),
              other);
    EXPECT_EQ(hint(R"("camera": {"look_at": {}, "vertical_fov": )" + between("0.5", "50") + "}"),
              other);
    EXPECT_EQ(hint(R"("controls": {"Luminance Threshold": )" + between("0.5", "0.6") + "}"),
              "there is no star in any frame: the brightest of the database has luminance 0.25, "
              "below \"Luminance Threshold\" 0.5; lower that");
}

TEST(BlackFrameHint, BlamesNoThresholdWhereTheBrightestStarIsNotKnown) {
    EXPECT_NE(black_hint(R"({"controls": {"Luminance Threshold": 0.5}})", {1, std::nullopt})
                  .find("none that the camera sees is bright enough"),
              std::string::npos);
}

TEST(BlackPictureHint, TellsByHowMuchTheExposureIsToBeRaised) {
    // From 0.001 to 0.016 it is a factor of 16, four stops.
    EXPECT_EQ(lumivar::black_picture_hint(0.001, 0.016),
              "the picture is black, though the frame is not: its brightest light, 0.001, is too "
              "dark for it; raise --exposure by 4 stops or more");
    EXPECT_EQ(lumivar::black_picture_hint(0.016, 0.016), std::nullopt);
    EXPECT_EQ(lumivar::black_picture_hint(1e-9, 0.0), std::nullopt) << "linear light";
}

TEST(BrightestChannel, LooksAtTheColoursAlone) {
    for (const host::Depth depth : {host::Depth::Bits8, host::Depth::Bits16, host::Depth::Float}) {
        host::World world(3, 2, depth);
        const std::size_t channel = static_cast<std::size_t>(depth) / 8;
        world.row(1)[2 * 4 * channel] = std::byte{1};  // alpha of the last pixel
        EXPECT_EQ(lumivar::brightest_channel(world), 0.0F);
        world.row(1)[(2 * 4 + 3) * channel] = std::byte{1};  // its blue
        EXPECT_GT(lumivar::brightest_channel(world), 0.0F);
    }
    host::World white(1, 1, host::Depth::Bits16);
    const std::uint16_t code = 32768;
    std::memcpy(white.row(0) + 2, &code, sizeof code);
    EXPECT_EQ(lumivar::brightest_channel(white), 1.0F);
}

TEST(HintsOfARun, AppearOnceAndNotWhenQuiet) {
    const ScratchFolder folder;
    write_file(folder / "s.json", R"({"composition": {"width": 32, "height": 16, "frame_rate": 2,
                                                      "duration": 1},
                                      "controls": {"Star Brightness": 0}})");
    std::vector<std::string> arguments = {"render",           folder / "s.json", "-o",
                                          folder / "a.#.exr", "--frames",        "0-1"};
    ToolResult result = run_tool(arguments);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err,
              "lumivar: hint: \"Star Brightness\" 0 leaves no star any light; set it above 0\n");
    arguments.emplace_back("--quiet");
    result = run_tool(arguments);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
}

TEST(HintsOfARun, TellOfBlackFramesAfterThem) {
    const ScratchFolder folder;
    write_file(folder / "s.json", R"({"composition": {"width": 32, "height": 16, "frame_rate": 2,
                                                      "duration": 1},
                                      "camera": {"look_at": {"dec": 90}, "vertical_fov": 0.01}})");
    std::vector<std::string> arguments = {"render",           folder / "s.json", "-o",
                                          folder / "a.#.exr", "--frames",        "0-1"};
    EXPECT_EQ(run_tool(arguments).err,
              "lumivar: hint: there is no star in any frame: the lens shows only 0.01 degrees from "
              "bottom to top; widen it, or lower \"Luminance Threshold\" with a deeper database\n");
    arguments.emplace_back("--quiet");
    EXPECT_EQ(run_tool(arguments).err, "");
}

TEST(HintsOfARun, TellOfAPictureThatIsDarkerThanItsFrame) {
    const ScratchFolder folder;
    std::vector<std::string> arguments = {"render",     LUMIVAR_SCENES "/orion.json",
                                          "-o",         folder / "a.png",
                                          "--size",     "64x36",
                                          "--exposure", "-20"};
    EXPECT_EQ(run_tool(arguments).err.rfind("lumivar: hint: the picture is black, though the frame "
                                            "is not: its brightest light, ",
                                            0),
              0U);
    arguments.back() = "-2";
    EXPECT_EQ(run_tool(arguments).err, "");
}

TEST(HintsOfARun, NoneForAnyShippedScene) {
    const ScratchFolder folder;
    for (const auto& entry : std::filesystem::directory_iterator(LUMIVAR_SCENES)) {
        if (entry.path().extension() == ".json") {
            const ToolResult result = run_tool(
                {"render", entry.path().string(), "-o", folder / "a.png", "--size", "64x36"});
            EXPECT_EQ(result.code, 0) << entry.path();
            EXPECT_EQ(result.err, "") << entry.path();
        }
    }
}

}  // namespace
