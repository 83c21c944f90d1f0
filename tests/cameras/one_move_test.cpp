// The same move in each format puts every star where vectors put it, at each sample of the shutter.
#include "one_move.h"

#include <gtest/gtest.h>
#include <host/camera.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "camera_opening.h"
#include "one_move_camera.h"
#include "one_move_gltf.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using one_move::Moment;

void expect_the_move(const host::Camera& camera, double pixels,
                     const one_move::Picture& picture = {}) {
    for (const Moment& moment : one_move::moments()) {
        const double time = moment.frame / one_move::kFramesPerSecond;
        for (const one_move::Star& star : one_move::stars()) {
            const one_move::Pixel want = one_move::seen(moment, star, picture);
            const one_move::Pixel got = one_move::drawn(camera, time, star, picture);
            ASSERT_NEAR(got.x, want.x, pixels) << "frame " << moment.frame;
            ASSERT_NEAR(got.y, want.y, pixels) << "frame " << moment.frame;
        }
    }
}

TEST(OneMove, IsTheSameInEveryFormat) {
    const ScratchFolder folder;
    const GltfWriter writer = one_move::gltf_keys();
    write_file(folder / "a.chan", one_move::as_chan());
    write_file(folder / "a.csv", one_move::as_csv(false));
    write_file(folder / "a.gltf", writer.json(one_move::gltf_members()));
    write_file(folder / "b.gltf", writer.json(one_move::gltf_members(), "b%20c.bin"));
    write_file(folder / "b c.bin", writer.bytes());
    write_file(folder / "a.glb", writer.binary(one_move::gltf_members()));
    expect_the_move(*one_move::camera_of(folder / "a.chan"), 1e-6);
    expect_the_move(*one_move::camera_of(folder / "a.csv"), 1e-6);
    write_file(folder / "angles.csv", one_move::as_csv_of_angles(false));
    expect_the_move(*one_move::camera_of(folder / "angles.csv"), 1e-6);
    // Its floats of 32 bits are good for two hundredths of a pixel.
    for (const char* name : {"a.gltf", "b.gltf", "a.glb"}) {
        SCOPED_TRACE(name);
        expect_the_move(*one_move::camera_of(folder / name + ":head"), 0.02);
    }
}

TEST(OneMove, IsTheSameInItsTwinWithZUp) {
    const ScratchFolder folder;
    write_file(folder / "matrices.csv", one_move::as_csv(true));
    write_file(folder / "angles.csv", one_move::as_csv_of_angles(true));
    write_file(folder / "z.chan", one_move::as_chan_with_z_up());
    write_file(folder / "z.gltf", one_move::gltf_keys(true).json(one_move::gltf_members()));
    lumivar::CameraReading reading;
    reading.up = lumivar::UpAxis::Z;
    for (const char* name : {"matrices.csv", "angles.csv", "z.chan"}) {
        SCOPED_TRACE(name);
        expect_the_move(*one_move::camera_of(folder / name, reading), 1e-6);
    }
    expect_the_move(*one_move::camera_of(folder / "z.gltf:head", reading), 0.02);
}

TEST(OneMove, IsTheSameInAnotherOrderOfAnglesAndAnotherUnit) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", one_move::as_chan_xyz_in_light_years());
    lumivar::CameraReading reading;
    reading.rotation_order = lumivar::RotationOrder("XYZ");
    reading.parsecs_per_unit = lumivar::parsecs_of_unit("ly");
    expect_the_move(*one_move::camera_of(folder / "a.chan", reading), 1e-6);
}

TEST(OneMove, KeepsWhatItsFormatSaysInAPictureOfAnotherShape) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", one_move::as_chan());
    write_file(folder / "a.csv", one_move::as_csv(false));
    const GltfWriter keys = one_move::gltf_keys();
    write_file(folder / "a.gltf", keys.json(one_move::gltf_members()));
    // 1.777... of the picture it was made for.
    write_file(folder / "wide.gltf",
               keys.json(one_move::gltf_members(R"(, "aspectRatio": 1.7777777777777777)")));
    // A field of view alone goes by the picture's height.
    const one_move::Picture by_height = {1000, 800, 1000.0 / 800.0};
    expect_the_move(*one_move::camera_of(folder / "a.chan", {}, by_height), 1e-6, by_height);
    expect_the_move(*one_move::camera_of(folder / "a.gltf:head", {}, by_height), 0.02, by_height);
    // A film back, and a field of view with the film's shape, go by its width.
    const one_move::Picture by_width = {1000, 800, 16.0 / 9.0};
    expect_the_move(*one_move::camera_of(folder / "a.csv", {}, by_width), 1e-6, by_width);
    expect_the_move(*one_move::camera_of(folder / "wide.gltf:head", {}, by_width), 0.02, by_width);
}

TEST(OneMove, IsKeptByConverting) {
    const ScratchFolder folder;
    write_file(folder / "a.chan", one_move::as_chan());
    ToolResult result = run_tool({"camera", "convert", folder / "a.chan", "-o", folder / "b.chan"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("36 samples"), std::string::npos) << result.out;
    expect_the_move(*one_move::camera_of(folder / "b.chan"), 1e-6);
    result = run_tool({"camera", "convert", folder / "b.chan", "-o", folder / "b.json"});
    ASSERT_EQ(result.code, 0) << result.err;
    const host::Scene scene = host::load_scene(folder / "b.json");
    ASSERT_TRUE(scene.camera);
    expect_the_move(*scene.camera, 1e-6);
    EXPECT_EQ(scene.composition.frames(), 4);
    ASSERT_EQ(scene.controls.size(), 1U);
    EXPECT_EQ(scene.controls[0].name, "Parallax Crush");
}

}  // namespace
