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
#include "gltf_writer.h"
#include "one_move_camera.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using one_move::Moment;

using Quaternion = std::array<double, 4>;  // x, y, z, w

Quaternion quaternion(std::size_t axis, double degrees) {
    Quaternion q = {0, 0, 0, std::cos(degrees * one_move::kDegree / 2)};
    q[axis] = std::sin(degrees * one_move::kDegree / 2);
    return q;
}

/// Hamilton's product: `b` turns first.
Quaternion times(const Quaternion& a, const Quaternion& b) {
    return {a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
            a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
            a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3],
            a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

/// The move in glTF: the position on a node above the camera's, the turn on the camera's own, the
/// lens by a pointer.
GltfWriter buffer_of_the_move() {
    std::vector<double> times_of_keys, positions, turns, lenses;
    for (const Moment& m : one_move::moments()) {
        times_of_keys.push_back(m.frame / one_move::kFramesPerSecond);
        positions.insert(positions.end(), m.position.begin(), m.position.end());
        const Quaternion q = times(quaternion(1, m.angles[1]),
                                   times(quaternion(0, m.angles[0]), quaternion(2, m.angles[2])));
        turns.insert(turns.end(), q.begin(), q.end());
        lenses.push_back(m.vertical_fov * one_move::kDegree);
    }
    GltfWriter writer;
    writer.add("SCALAR", times_of_keys);
    writer.add("VEC3", positions);
    writer.add("VEC4", turns);
    writer.add("SCALAR", lenses);
    return writer;
}

const char* const kGltfMove =
    R"("nodes": [{"name": "dolly", "children": [1]}, {"name": "head", "camera": 0}],
       "cameras": [{"type": "perspective", "perspective": {"yfov": 1, "znear": 0.1}}],
       "animations": [{"samplers": [{"input": 0, "output": 1}, {"input": 0, "output": 2},
                                    {"input": 0, "output": 3}],
         "channels": [{"sampler": 0, "target": {"node": 0, "path": "translation"}},
                      {"sampler": 1, "target": {"node": 1, "path": "rotation"}},
                      {"sampler": 2, "target": {"path": "pointer", "extensions":
                        {"KHR_animation_pointer": {"pointer": "/cameras/0/perspective/yfov"}}}}]}])";

void expect_the_move(const host::Camera& camera, double pixels) {
    for (const Moment& moment : one_move::moments()) {
        const double time = moment.frame / one_move::kFramesPerSecond;
        for (const one_move::Star& star : one_move::stars()) {
            const one_move::Pixel want = one_move::seen(moment, star);
            const one_move::Pixel got = one_move::drawn(camera, time, star);
            ASSERT_NEAR(got.x, want.x, pixels) << "frame " << moment.frame;
            ASSERT_NEAR(got.y, want.y, pixels) << "frame " << moment.frame;
        }
    }
}

TEST(OneMove, IsTheSameInEveryFormat) {
    const ScratchFolder folder;
    const GltfWriter writer = buffer_of_the_move();
    write_file(folder / "a.chan", one_move::as_chan());
    write_file(folder / "a.csv", one_move::as_csv(false));
    write_file(folder / "a.gltf", writer.json(kGltfMove));
    write_file(folder / "b.gltf", writer.json(kGltfMove, "b%20c.bin"));
    write_file(folder / "b c.bin", writer.bytes());
    write_file(folder / "a.glb", writer.binary(kGltfMove));
    expect_the_move(*one_move::camera_of(folder / "a.chan"), 1e-6);
    expect_the_move(*one_move::camera_of(folder / "a.csv"), 1e-6);
    // Its floats of 32 bits are good for two hundredths of a pixel.
    for (const char* name : {"a.gltf", "b.gltf", "a.glb"}) {
        SCOPED_TRACE(name);
        expect_the_move(*one_move::camera_of(folder / name), 0.02);
    }
}

TEST(OneMove, IsTheSameInItsTwinWithZUp) {
    const ScratchFolder folder;
    write_file(folder / "z.csv", one_move::as_csv(true));
    lumivar::CameraReading reading;
    reading.up = lumivar::UpAxis::Z;
    expect_the_move(*one_move::camera_of(folder / "z.csv", reading), 1e-6);
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
