// lumivar camera and lumivar render --camera, as users call them.
#include <gtest/gtest.h>
#include <host/scene.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>

#include "one_move_camera.h"
#include "one_move_gltf.h"
#include "support/catalogue.h"
#include "support/scratch.h"
#include "tool_run.h"
#include "tools/failure_of.h"
#include "tools/read_back.h"

namespace {

/// What the plot shows from 25 to 35 degrees of a camera that turns from 6 h on the equator to 0 h
/// at 30 degrees: by x 30 and then y -90, which is one turn about a slanted axis.
std::string row_of_30_degrees() {
    const double s = std::sin(15 * one_move::kDegree);
    const double c = std::cos(15 * one_move::kDegree);
    // The product of both quaternions is (c, s, -c, s) / sqrt 2, w first.
    const double length = std::hypot(s, c, s);
    const double angle = 2.0 * std::acos(c * std::sqrt(0.5)) / one_move::kDegree;
    std::string row = ":" + std::string(71, ' ') + "E";
    row[18] = row[36] = row[54] = ':';
    constexpr int kSteps = 20000;
    for (int step = 0; step < kSteps; ++step) {
        const one_move::Vector ahead = one_move::in_sky(one_move::turned(
            {0, 0, -1}, {s / length, -c / length, s / length}, angle * step / kSteps));
        const double right_ascension = std::atan2(ahead[1], ahead[0]) / one_move::kDegree;
        // A column is 5 degrees wide; 24 h is the first, and the last is kept for the end.
        const auto column = static_cast<std::size_t>(std::lround((360.0 - right_ascension) / 5.0));
        if (std::asin(ahead[2]) / one_move::kDegree >= 25.0 && column < 72) {
            row[column] = '*';
        }
    }
    return row;
}

TEST(CameraInfo, SaysWhereItLooksAndDrawsThePath) {
    const ScratchFolder folder;
    // y by -90 turns the view from -z to +x: from 6 h to 0 h; x by 30 tilts it up.
    write_file(folder / "pan.chan", "0 0 0 0 0 0 0 90\n24 1 2 3 30 -90 0 90\n");
    const ToolResult result = run_tool({"camera", "info", folder / "pan.chan"});
    EXPECT_EQ(result.code, 0) << result.err;
    for (const char* part :
         {"pan\n", "2, 0.000 s to 1.000 s (frames 0 to 24 at 24 a second)",
          "ra 90.000, dec 0.000; at the end ra 0.000, dec 30.000",
          "[0, 0, 0]; at the end [1, -2, -3] parsecs", "field of view 90.000 degrees",
          "10.13 mm on film 36 mm wide"}) {  // 36 / 1920 * 540
        EXPECT_TRUE(holds(result.out, part)) << part << "\n" << result.out;
    }
    // 18 columns are 6 h: 6 h is in column 54 of the row of the equator, the tenth.
    EXPECT_TRUE(holds(result.out, "    0  |" + std::string(54, '.') + "S")) << result.out;
    EXPECT_TRUE(holds(result.out, "   30  |" + row_of_30_degrees() + "|\n")) << result.out;
}

TEST(CameraInfo, NamesAreAskedForWhereTheyAreNeeded) {
    const ScratchFolder folder;
    const std::string two = folder / "two:b.gltf";
    write_file(two, R"({"asset": {"version": "2.0"},
        "nodes": [{"name": "a", "camera": 0}, {"name": "b:c", "camera": 0}],
        "cameras": [{"type": "perspective", "perspective": {"yfov": 1}}]})");
    EXPECT_EQ(run_tool({"camera", "info", two}).code, 0);
    ToolResult result = run_tool({"camera", "convert", two, "-o", folder / "a.chan"});
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(holds(result.err, "has several cameras; name one of")) << result.err;
    EXPECT_EQ(run_tool({"camera", "convert", two + ":b:c", "-o", folder / "a.chan"}).code, 0);
    result = run_tool({"camera", "info", two + ":d"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "there is no camera \"d\" in it; it has \"a\", \"b:c\""));
    result = run_tool({"camera", "info", folder / "none.chan"});
    EXPECT_TRUE(holds(result.err, "none.chan: No such file")) << result.err;
    write_file(folder / "a.txt", "");
    EXPECT_TRUE(holds(run_tool({"camera", "info", folder / "a.txt"}).err, "tells no camera file"));
}

TEST(CameraInfo, SaysWhyAFileHasNoCameraThatIsOfUse) {
    const ScratchFolder folder;
    write_file(folder / "plan.gltf", R"({"asset": {"version": "2.0"},
        "nodes": [{"name": "plan", "camera": 0}], "cameras": [{"type": "orthographic",
        "orthographic": {"xmag": 1, "ymag": 1, "znear": 0, "zfar": 1}}]})");
    const ToolResult result = run_tool({"camera", "info", folder / "plan.gltf"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "there is no camera in it; ")) << result.err;
    EXPECT_TRUE(holds(result.err, "\"plan\" is not one of perspective")) << result.err;
}

TEST(CameraConvert, KeepsTheScenesOtherMembers) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", "0 0 0 0 0 0 0\n10 0 0 0 0 90 0\n");
    write_file(folder / "base.json",
               "{\"composition\": {\"width\": 640, \"frame_rate\": 10}, // mine\n"
               "\"camera\": {\"zoom\": 333}, \"controls\": {\"Star Brightness\": 7}}");
    const ToolResult result =
        run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.json", "--scene",
                  folder / "base.json", "--step", "0.5"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(holds(result.out, "21 samples; between them off the path by ")) << result.out;
    const host::Scene scene = host::load_scene(folder / "b.json");
    EXPECT_EQ(scene.composition.width, 640);
    EXPECT_EQ(scene.controls.at(0).name, "Star Brightness");
    // The file says nothing of a lens, and frame 5 is half a second.
    EXPECT_EQ(scene.camera->zoom(0.5), 333.0);
    // y by 45 turns the view to the left: from 6 h towards 12 h.
    EXPECT_NEAR(scene.camera->layer_to_world(0.5)[8], -std::sqrt(0.5), 1e-12);
    EXPECT_EQ(run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.txt"}).code, 2);
    EXPECT_EQ(run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.json", "--step",
                        "0.00001"})
                  .code,
              2);
}

TEST(CameraConvert, TakesAScenesNamedStarsAndStandardInput) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", "0 0 0 0 0 0 0 40\n10 0 0 0 0 90 0 40\n");
    write_file(
        folder / "base.json",
        R"({"camera": {"look_at": {"star": "Betelgeuse"}}, "controls": {"Tint Strength": 1}})");
    ToolOptions options;
    options.input = folder / "base.json";
    for (const std::string& base : {folder / "base.json", std::string("-")}) {
        const ToolResult result = run_tool(
            {"camera", "convert", folder / "a.chan", "-o", folder / "b.json", "--scene", base},
            options);
        ASSERT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(host::load_scene(folder / "b.json").controls.at(0).name, "Tint Strength");
    }
}

TEST(CameraConvert, KeepsALensThatChangesInTheScene) {
    const ScratchFolder folder;
    // One sample, without a lens; the scene zooms.
    write_file(folder / "a.chan", "0 0 0 0 0 0 0\n");
    write_file(folder / "base.json",
               R"({"composition": {"frame_rate": 24, "duration": 2}, "camera": {"zoom":
                   {"keys": [{"time": 0, "value": 500}, {"time": 2, "value": 5000}]}}})");
    ASSERT_EQ(run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.json", "--scene",
                        folder / "base.json"})
                  .code,
              0);
    EXPECT_NEAR(host::load_scene(folder / "b.json").camera->zoom(1.0), 2750.0, 1e-9);
    EXPECT_NEAR(host::load_scene(folder / "b.json").camera->zoom(2.0), 5000.0, 1e-9);
}

/// The number before `unit` in the summary of a conversion.
double told(const std::string& out, const std::string& unit) {
    const std::size_t end = out.find(" " + unit);
    return end == std::string::npos ? -1.0 : std::stod(out.substr(out.rfind(' ', end - 1)));
}

TEST(CameraConvert, SaysHowMuchACoarseStepLoses) {
    const ScratchFolder folder;
    // A quarter turn to the left and back, two parsecs aside and back. With the first and the last
    // frame alone, all of it is lost: at most, so near to the middle as the summary looks.
    write_file(folder / "a.chan", "0 0 0 0 0 0 0 40\n24 2 0 0 0 90 0 40\n48 0 0 0 0 0 0 40\n");
    const auto converted = [&](const char* step) {
        const ToolResult result = run_tool(
            {"camera", "convert", folder / "a.chan", "-o", folder / "b.json", "--step", step});
        EXPECT_EQ(result.code, 0) << result.err;
        return result.out;
    };
    const std::string coarse = converted("48");
    EXPECT_NEAR(told(coarse, "degrees"), 0.75 * 90, 1.0) << coarse;
    EXPECT_NEAR(told(coarse, "parsecs"), 0.75 * 2, 0.1) << coarse;
    const std::string fine = converted("1");
    EXPECT_LT(told(fine, "degrees"), 1e-6) << fine;
    // The last frame stays, though 48 is no multiple of 20.
    (void)converted("20");
    const host::Scene scene = host::load_scene(folder / "b.json");
    EXPECT_NEAR(scene.camera->layer_to_world(2.0)[12], 0.0, 1e-12);
    EXPECT_NEAR(scene.camera->layer_to_world(40.0 / 24.0)[12], 2.0 / 3.0, 1e-12);
}

TEST(CameraConvert, StaysOnAPathOnWhichTheHostsAnglesTurnOver) {
    const ScratchFolder folder;
    // Two seconds past 0 h, 0.3 degrees north of the equator.
    std::string chan;
    for (int frame = 0; frame <= 48; ++frame) {
        const double part = frame / 48.0;
        chan +=
            std::to_string(frame) + " 0 0 0 0.3 " + std::to_string(-80.0 - 20.0 * part) + " 0 40\n";
    }
    write_file(folder / "a.chan", chan);
    ToolResult result = run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.json"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_GE(told(result.out, "degrees"), 0.0);
    EXPECT_LT(told(result.out, "degrees"), 0.01) << result.out;
    EXPECT_TRUE(holds(result.out,
                      "; written as matrices, as angles to type into the host would be "
                      "off by 0."))
        << result.out;
    // Half a frame between two keys, by the file itself.
    const host::Scene scene = host::load_scene(folder / "b.json");
    const double angle = (90.0 - 80.0 - 20.0 * 24.5 / 48.0) * std::numbers::pi / 180.0;
    const host::Matrix matrix = scene.camera->layer_to_world(24.5 / 24.0);
    const double length = std::hypot(matrix[8], matrix[9], matrix[10]);
    // -z turned about y by -90 degrees is +x, 0 h; beyond, the view turns on toward +z of the file.
    EXPECT_NEAR(matrix[8] / length, std::cos(angle) * std::cos(0.3 * std::numbers::pi / 180.0),
                1e-4);
    // Elsewhere they are angles, as before.
    write_file(folder / "a.chan", "0 0 0 0 0 0 0 40\n24 0 0 0 0 20 0 40\n");
    result = run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.json"});
    EXPECT_EQ(result.out.find("matrices"), std::string::npos) << result.out;
}

TEST(CameraConvert, RefusesFramesThatCannotBeCounted) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", "2e10 0 0 0 0 0 0 40\n");
    const ToolResult result = run_tool(
        {"camera", "convert", folder / "a.chan", "-o", folder / "b.chan", "--step", "1e-6"});
    EXPECT_EQ(result.code, 2) << result.err;
    // A scene of this length there is none: the file that was there stays.
    write_file(folder / "b.json", "mine");
    EXPECT_EQ(run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.json"}).code, 1);
    EXPECT_EQ(read_file(folder / "b.json"), "mine");
}

TEST(CameraConvert, MeansABroadcastRateByItsDecimals) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", "1000 0 0 0 0 0 0 40\n1001 1 0 0 0 0 0 40\n");
    ASSERT_EQ(run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.json",
                        "--frame-rate", "23.976"})
                  .code,
              0);
    // Frame 1000 at 24000/1001 a second.
    const host::Scene scene = host::load_scene(folder / "b.json");
    EXPECT_NEAR(scene.camera->layer_to_world(1000.0 * 1001.0 / 24000.0)[12], 0.0, 1e-9);
    EXPECT_NEAR(scene.camera->layer_to_world(1000.5 * 1001.0 / 24000.0)[12], 0.5, 1e-9);
}

TEST(CameraInfo, AsksForAMatrixForRowVectors) {
    const ScratchFolder folder;
    write_file(folder / "a.csv",
               "time,m00,m01,m02,m03,m10,m11,m12,m13,m20,m21,m22,m23,m30,m31,m32,m33\n"
               "0,1,0,0,5,0,1,0,6,0,0,1,7,0,0,0,1\n");
    const ToolResult result = run_tool({"camera", "info", folder / "a.csv"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "whose last column is not 0, 0, 0, 1")) << result.err;
}

/// The middle of the light of a picture's first channel.
one_move::Pixel middle_of_light(const std::string& name) {
    const ReadBack picture = read_back(name);
    double light = 0.0;
    one_move::Pixel sum = {0.0, 0.0};
    for (int y = 0; y < picture.spec.height; ++y) {
        for (int x = 0; x < picture.spec.width; ++x) {
            const auto value = static_cast<double>(picture.at<float>(x, y, 0));
            light += value;
            sum.x += x * value;
            sum.y += y * value;
        }
    }
    EXPECT_GT(light, 0.0);
    return {sum.x / light, sum.y / light};
}

TEST(RenderCamera, DrawsAStarWhereTheFileSays) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", one_move::as_chan());
    write_file(folder / "z.csv", one_move::as_csv(true));
    write_file(folder / "xyz.chan", one_move::as_chan_xyz_in_light_years());
    write_file(folder / "a.gltf", one_move::gltf_keys().json(one_move::gltf_members(
                                      R"(, "aspectRatio": 1.7777777777777777)")));
    const std::string controls =
        R"("controls": {"Star Saturation": 1, "Star Spot Size": 12, "Parallax Crush": 0}})";
    write_file(folder / "wide.json", "{" + controls);
    write_file(folder / "narrow.json",
               R"({"composition": {"width": 1000, "height": 800}, )" + controls);
    const one_move::Star star = {2, 3, 60};
    support::write_catalogue(folder / "one.stars", support::kVersion2,
                             {{.lon = star.ra, .lat = star.dec, .distance = star.parsecs}});
    // The shutter opens a quarter of a frame before the frame.
    const one_move::Moment moment = one_move::moments().at(9);
    ASSERT_EQ(moment.frame, 0.75);
    const one_move::Picture narrow = {1000, 800, 16.0 / 9.0};
    const struct {
        std::vector<std::string> camera;
        const char* scene;
        one_move::Picture picture;
    } cases[] = {
        {{folder / "a.chan"}, "wide.json", {}},
        {{folder / "z.csv", "--camera-up", "z"}, "wide.json", {}},
        {{folder / "xyz.chan", "--camera-rotation-order", "XYZ", "--camera-unit", "ly"},
         "wide.json",
         {}},
        {{folder / "a.gltf:head"}, "narrow.json", narrow},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.camera.front());
        const one_move::Pixel want = one_move::seen(moment, star, each.picture);
        std::vector<std::string> arguments = {
            "render",      folder / each.scene,  "-o",      folder / "a.exr",
            "--catalogue", folder / "one.stars", "--frame", "1",
            "--camera"};
        arguments.insert(arguments.end(), each.camera.begin(), each.camera.end());
        const ToolResult result = run_tool(arguments);
        ASSERT_EQ(result.code, 0) << result.err;
        const one_move::Pixel got = middle_of_light(folder / "a.exr");
        EXPECT_NEAR(got.x, want.x, 0.02);
        EXPECT_NEAR(got.y, want.y, 0.02);
    }
}

TEST(RenderCamera, SaysWhatDoesNotGoTogether) {
    const ScratchFolder folder;
    write_file(folder / "s.json", "{}");
    write_file(folder / "a.chan", "0 0 0 0 0 0 0\n");
    const auto said = [&](std::vector<std::string> more) {
        std::vector<std::string> arguments = {"render", folder / "s.json", "-o", folder / "a.png"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.code, 2) << result.err;
        return result.err;
    };
    EXPECT_TRUE(holds(said({"--camera-up", "z"}), "go with --camera"));
    const std::string file = folder / "a.chan";
    EXPECT_TRUE(holds(said({"--camera", file, "--camera-up", "x"}), "give y or z"));
    EXPECT_TRUE(holds(said({"--camera", file, "--camera-unit", "mile"}), "there is no unit"));
    EXPECT_TRUE(holds(said({"--camera", file, "--camera-rotation-order", "XX"}),
                      "there is no rotation order"));
}

}  // namespace
