// glTF: hierarchies, interpolation and lenses by hand, and files that cannot be read.
#include "gltf_file.h"

#include <gtest/gtest.h>
#include <host/camera.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "camera_opening.h"
#include "camera_path.h"
#include "gltf_writer.h"
#include "support/scratch.h"
#include "tools/failure_of.h"

namespace {

using lumivar::CameraFile;
using lumivar::FileCamera;

const std::string kLens =
    R"("cameras": [{"type": "perspective", "perspective": {"yfov": 1.5707963267948966}}])";

CameraFile read(const std::string& bytes, const std::string& name = "") {
    const ScratchFolder folder;
    write_file(folder / "a.gltf", bytes);
    return lumivar::read_gltf(folder / "a.gltf", name);
}

/// Without the folder's name.
std::string gltf_failure(const std::string& bytes, const std::string& name = "") {
    const ScratchFolder folder;
    write_file(folder / "a.gltf", bytes);
    const std::string text = failure_of([&] {
        lumivar::read_camera_paths({folder / "a.gltf", name}, lumivar::CameraReading());
    });
    const std::size_t at = text.find("a.gltf");
    return at == std::string::npos ? text : text.substr(at);
}

lumivar::CameraPaths paths_of(const std::string& bytes) {
    const ScratchFolder folder;
    write_file(folder / "a.gltf", bytes);
    return lumivar::read_camera_paths({folder / "a.gltf", ""}, lumivar::CameraReading());
}

/// A camera on a node that one sampler moves: input 0, output 1.
std::string moved_by(const std::string& path, const std::string& interpolation) {
    return kLens +
           R"(, "nodes": [{"camera": 0}], "animations": [{"samplers": [{"input": 0, "output": 1,
               "interpolation": ")" +
           interpolation + R"("}], "channels": [{"sampler": 0, "target": {"node": 0, "path": ")" +
           path + R"("}}]}])";
}

/// The element of the host's matrix at a time.
double world_at(const FileCamera& camera, double seconds, std::size_t element) {
    std::vector<host::CameraSample> samples;
    for (const auto& sample : lumivar::world_path(camera, 1.0, "a.gltf").samples) {
        samples.push_back({sample.time, sample.layer_to_world, sample.lens->zoom(200, 100)});
    }
    return host::path_camera(samples)->layer_to_world(seconds)[element];
}

TEST(GltfFile, PutsTheCameraWhereItsNodesPutIt) {
    // The camera's node is 3 to the right of a node that is turned by a quarter about y (x goes to
    // -z) and scaled by 2, on one that a matrix moves up by 10 and scales by 0.5.
    const CameraFile file = read(R"({"asset": {"version": "2.0"}, )" + kLens + R"(, "nodes": [
        {"matrix": [0.5,0,0,0, 0,0.5,0,0, 0,0,0.5,0, 0,10,0,1], "children": [2]},
        {"name": "eye", "camera": 0, "translation": [3, 0, 0]},
        {"rotation": [0, 0.7071067811865476, 0, 0.7071067811865476], "scale": [2, 2, 2],
         "children": [1]}]})");
    ASSERT_EQ(file.cameras.size(), 1U);
    EXPECT_EQ(file.cameras[0].name, "eye");
    ASSERT_EQ(file.cameras[0].samples.size(), 1U);
    const auto path = lumivar::world_path(file.cameras[0], 1.0, "a.gltf");
    // In the file: at (0, 10, -3), looking along -x with y up, so x is -z. In the world y and z
    // turn over: at (0, -10, 3), its x axis to +z, its z axis (ahead) to -x.
    const host::Matrix want = {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, -10, 3, 1};
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(path.samples[0].layer_to_world[i], want[i], 1e-14) << i;
    }
    EXPECT_NEAR(path.samples[0].lens->zoom(1920, 1080), 540.0, 1e-9);
}

TEST(GltfFile, TheFilmsShapeGoesByTheWidth) {
    const CameraFile file = read(R"({"asset": {"version": "2.0"}, "nodes": [{"camera": 0}],
        "cameras": [{"name": "wide", "type": "perspective",
                     "perspective": {"yfov": 1.5707963267948966, "aspectRatio": 2}}]})");
    EXPECT_EQ(file.cameras[0].name, "wide");
    // tan(xfov / 2) = 2: half the width is twice the distance, on any picture.
    EXPECT_NEAR(file.cameras[0].samples[0].lens->zoom(1000, 10), 250.0, 1e-9);
}

TEST(GltfFile, StepsHoldUntilTheNextKey) {
    GltfWriter writer;
    writer.add("SCALAR", {1, 2});
    writer.add("VEC3", {5, 0, 0, 7, 0, 0});
    const FileCamera camera = read(writer.json(moved_by("translation", "STEP"))).cameras.at(0);
    EXPECT_EQ(world_at(camera, 0.0, 12), 5.0);
    EXPECT_EQ(world_at(camera, 1.9999, 12), 5.0);
    EXPECT_EQ(world_at(camera, 2.0, 12), 7.0);
}

TEST(GltfFile, SplinesAreFollowedBetweenTheirKeys) {
    GltfWriter writer;
    writer.add("SCALAR", {0, 2});
    // In-tangent, value, out-tangent of each key.
    writer.add("VEC3", {0, 0, 0, 1, 0, 0, 3, 0, 0, -4, 0, 0, 5, 0, 0, 0, 0, 0});
    const FileCamera camera =
        read(writer.json(moved_by("translation", "CUBICSPLINE"))).cameras.at(0);
    EXPECT_GT(camera.samples.size(), 100U);
    // The cubic through 1 with slope 3 and through 5 with slope -4, two seconds apart: with x =
    // 1 + 3 t + a t^2 + b t^3, 7 + 4 a + 8 b = 5 and 3 + 4 a + 12 b = -4, so b = -5/4, a = 2.
    for (const double t : {0.0, 0.3, 0.77, 1.0, 1.41, 1.9, 2.0}) {
        EXPECT_NEAR(world_at(camera, t, 12), 1 + 3 * t + 2 * t * t - 1.25 * t * t * t, 5e-6) << t;
    }
}

TEST(GltfFile, RotationsTakeTheShortWayAndMayBeIntegers) {
    GltfWriter writer;
    writer.add("SCALAR", {0, 1});
    // A quarter about y, the second key as the quaternion's negative.
    const int half = 23170;  // 32767 / sqrt 2
    writer.add_shorts("VEC4", {0, 0, 0, 32767, 0, -half, 0, -half});
    const FileCamera camera = read(writer.json(moved_by("rotation", "LINEAR"))).cameras.at(0);
    // Halfway its x axis has turned by 45 degrees towards -z in the file, +z in the world.
    EXPECT_NEAR(world_at(camera, 0.5, 0), std::sqrt(0.5), 1e-4);
    EXPECT_NEAR(world_at(camera, 0.5, 2), std::sqrt(0.5), 1e-4);
}

TEST(GltfFile, ATurnAboveAMovedCameraIsFollowedAlongItsArc) {
    GltfWriter writer;
    writer.add("SCALAR", {0, 1});
    writer.add("VEC4", {0, 0, 0, 1, 0, std::sqrt(0.5), 0, std::sqrt(0.5)});
    const CameraFile file = read(writer.json(
        kLens + R"(, "nodes": [{"children": [1]}, {"camera": 0, "translation": [0, 0, 100]}],
            "animations": [{"samplers": [{"input": 0, "output": 1}], "channels":
             [{"sampler": 0, "target": {"node": 0, "path": "rotation"}}]}])"));
    // A third of the way it stands at 30 degrees on a circle of 100.
    EXPECT_NEAR(world_at(file.cameras.at(0), 1.0 / 3.0, 12), 50.0, 1e-4);
    EXPECT_NEAR(world_at(file.cameras.at(0), 1.0 / 3.0, 14), -100.0 * std::sqrt(0.75), 1e-4);
}

TEST(GltfFile, NamesAreKeptApartAndOtherCamerasPassedOver) {
    const CameraFile file = read(R"({"asset": {"version": "2.0"},
        "nodes": [{"name": "a", "camera": 0}, {"name": "a", "camera": 0}, {"camera": 1}],
        "cameras": [{"type": "perspective", "perspective": {"yfov": 1}},
                    {"name": "plan", "type": "orthographic", "orthographic": {}}]})");
    ASSERT_EQ(file.cameras.size(), 2U);
    EXPECT_EQ(file.cameras[0].name, "a");
    EXPECT_EQ(file.cameras[1].name, "a#2");
    ASSERT_EQ(file.warnings.size(), 1U);
    EXPECT_TRUE(holds(file.warnings[0], "\"plan\" is not one of perspective"));
}

TEST(GltfFile, WhatMovesNoCameraIsNotLookedAt) {
    // Node 0 has the camera. What moves node 1 cannot be read, and is there twice; node 2 is moved
    // in a way that no node knows.
    GltfWriter writer;
    writer.add("SCALAR", {0, 1});
    writer.add("VEC3", {1, 0, 0, 3, 0, 0});
    const std::string samplers =
        R"("samplers": [{"input": 0, "output": 1}, {"input": 0, "output": 77}])";
    const std::string of_bones =
        R"({"sampler": 1, "target": {"node": 1, "path": "translation"}},
           {"sampler": 0, "target": {"node": 1, "path": "rotation"}},
           {"sampler": 0, "target": {"node": 2, "path": "colour"}})";
    const std::string members =
        kLens + R"(, "nodes": [{"camera": 0}, {}, {}], "animations": [{)" + samplers +
        R"(, "channels": [{"sampler": 0, "target": {"node": 0, "path": "translation"}}, )" +
        of_bones + "]}, {" + samplers + R"(, "channels": [)" + of_bones + "]}]";
    const CameraFile file = read(writer.json(members));
    EXPECT_TRUE(file.warnings.empty()) << file.warnings.front();
    EXPECT_NEAR(world_at(file.cameras.at(0), 0.5, 12), 2.0, 1e-12);

    // With the camera on node 1 or below node 2 the same is refused.
    const auto hung = [&](const std::string& nodes) {
        std::string text = members;
        const std::string before = R"([{"camera": 0}, {}, {}])";
        return gltf_failure(writer.json(text.replace(text.find(before), before.size(), nodes)));
    };
    EXPECT_TRUE(holds(hung(R"([{}, {"camera": 0}, {}])"), "/animations/0/samplers/1/output"));
    EXPECT_TRUE(holds(hung(R"([{"camera": 0}, {}, {"children": [0]}])"),
                      "/animations/0/channels/3/target/path: expected \"translation\""));
}

TEST(GltfFile, OfTwoAnimationsOfACameraTheFirstHolds) {
    GltfWriter writer;
    writer.add("SCALAR", {0});
    writer.add("VEC3", {1, 0, 0});
    writer.add("VEC3", {2, 0, 0});
    const std::string channels =
        R"("channels": [{"sampler": 0, "target": {"node": 0, "path": "translation"}}]})";
    const CameraFile file = read(
        writer.json(kLens + R"(, "nodes": [{"children": [1, 2]}, {"camera": 0}, {"camera": 0}],
            "animations": [{"samplers": [{"input": 0, "output": 1}], )" +
                    channels + R"(, {"samplers": [{"input": 0, "output": 2}], )" + channels + "]"));
    // Once, though two cameras hang there.
    EXPECT_EQ(file.warnings, std::vector<std::string>{"several animations move "
                                                      "/nodes/0/translation; the first is taken"});
    EXPECT_EQ(world_at(file.cameras.at(1), 0.0, 12), 1.0);
}

TEST(GltfFile, OnlyWholePointersMoveACamera) {
    GltfWriter writer;
    writer.add("SCALAR", {0});
    writer.add("VEC3", {4, 4, 4});
    writer.add("SCALAR", {0.5});
    const auto moved = [&](const std::string& pointer, int output) {
        return read(writer.json(
            kLens + R"(, "nodes": [{"camera": 0}], "animations": [{"samplers": [{"input": 0,
                "output": )" +
            std::to_string(output) + R"(}], "channels": [{"sampler": 0, "target": {"path":
                "pointer", "extensions": {"KHR_animation_pointer": {"pointer": ")" +
            pointer + R"("}}}}]}])"));
    };
    EXPECT_EQ(world_at(moved("/nodes/0/translation", 1).cameras.at(0), 0.0, 12), 4.0);
    for (const std::string pointer :
         {"/nodes/0/extensions/EXT_other/translation", "/nodes/00/translation",
          "/nodes/translation", "/nodes/0/extras/scale"}) {
        const CameraFile file = moved(pointer, 1);
        EXPECT_EQ(world_at(file.cameras.at(0), 0.0, 12), 0.0) << pointer;
        EXPECT_TRUE(file.warnings.empty()) << pointer;
    }
    const auto ratio = [](const CameraFile& file) {
        return file.cameras.at(0).samples[0].lens->ratio;
    };
    // Half a height at the tangent of half the angle.
    EXPECT_NEAR(ratio(moved("/cameras/0/perspective/yfov", 2)), 0.5 / std::tan(0.25), 1e-12);
    const CameraFile file = moved("/cameras/0/extensions/EXT_other/perspective/yfov", 2);
    EXPECT_NEAR(ratio(file), 0.5, 1e-12);
    EXPECT_EQ(file.warnings,
              std::vector<std::string>{"the animation of /cameras/0/extensions/EXT_other/"
                                       "perspective/yfov is not read"});
}

TEST(GltfFile, OfSeveralCamerasThoseThatCannotBeUsedAreLeftOut) {
    GltfWriter writer;
    writer.add("SCALAR", {0, 1});
    writer.add("VEC3", {0, 0, 0, 1, 0, 0});
    // One is mirrored and moves, one is mirrored and stands, one is moved by what is not there.
    const std::string text =
        writer.json(kLens + R"(, "nodes": [{"name": "bad", "camera": 0, "scale": [-1, 1, 1]},
            {"name": "cam", "camera": 0}, {"name": "still", "camera": 0, "scale": [1, -1, 1]},
            {"name": "lost", "camera": 0}],
            "animations": [{"samplers": [{"input": 0, "output": 1}, {"input": 0, "output": 9}],
             "channels": [{"sampler": 0, "target": {"node": 0, "path": "translation"}},
                          {"sampler": 1, "target": {"node": 3, "path": "translation"}}]}])");
    const lumivar::CameraPaths paths = paths_of(text);
    ASSERT_EQ(paths.paths.size(), 1U);
    EXPECT_EQ(paths.paths[0].name, "cam");
    ASSERT_EQ(paths.warnings.size(), 3U);
    EXPECT_TRUE(holds(paths.warnings[0], "the camera \"still\" is left out: "));
    EXPECT_TRUE(holds(paths.warnings[1], "the camera \"bad\" is left out: "));
    EXPECT_TRUE(
        holds(paths.warnings[2], "the camera \"lost\" is left out: /animations/0/samplers/1"));

    EXPECT_EQ(gltf_failure(text, "cam"), "no failure");
    const std::string mirrors =
        "has a matrix that mirrors; take the negative scale from the camera or from what it hangs "
        "on";
    EXPECT_EQ(gltf_failure(text, "bad"), "a.gltf: the camera \"bad\" at 0 s " + mirrors);
    EXPECT_EQ(gltf_failure(text, "still"), "a.gltf: the camera \"still\" at 0 s " + mirrors);
    EXPECT_TRUE(holds(gltf_failure(text, "lost"), "/animations/0/samplers/1/output"));
    EXPECT_EQ(gltf_failure(text, "eye"),
              "a.gltf: there is no camera \"eye\" in it; it has \"bad\", \"cam\", \"still\", "
              "\"lost\"");
}

TEST(GltfFile, WithoutAUsableCameraItSaysWhy) {
    const std::string text = R"({"asset": {"version": "2.0"}, "nodes": [{"camera": 0}],
        "cameras": [{"name": "plan", "type": "orthographic", "orthographic": {}}]})";
    EXPECT_EQ(gltf_failure(text),
              "a.gltf: there is no camera in it; the camera \"plan\" is not one of "
              "perspective and is passed over");
    EXPECT_EQ(gltf_failure(text, "plan"), "a.gltf: the camera \"plan\" is not one of perspective");
    EXPECT_EQ(gltf_failure(R"({"asset": {"version": "2.0"}})"), "a.gltf: there is no camera in it");
    EXPECT_TRUE(holds(gltf_failure(R"({"asset": {"version": "2.0"}, )" + kLens + R"(, "nodes": [
                      {"camera": 0, "scale": [-1, 1, 1]}, {"camera": 0, "scale": [0, 1, 1]}]})"),
                      "there is no camera in it; the camera \"camera 0\" is left out: "));
}

TEST(GltfFile, SaysWhatIsWrongAndWhere) {
    const auto document = [](const std::string& members) {
        return R"({"asset": {"version": "2.0"}, )" + members + "}";
    };
    EXPECT_TRUE(holds(gltf_failure("solid"), "a.gltf: line 1, column 1: this is no JSON"));
    EXPECT_EQ(gltf_failure("{}"), "a.gltf: expected a member \"asset\", found none");
    EXPECT_TRUE(holds(gltf_failure(R"({"asset": {"version": "1.0"}})"), "/asset/version"));
    EXPECT_EQ(gltf_failure(document(kLens + R"(, "nodes": [{"camera": 3}])")),
              "a.gltf: /nodes/0/camera: expected a whole number from 0 to 0, found 3");
    EXPECT_EQ(gltf_failure(document(kLens + R"(, "nodes": [{"camera": -1}])")),
              "a.gltf: /nodes/0/camera: expected a whole number from 0 to 0, found -1");
    EXPECT_EQ(gltf_failure(document(kLens + R"(, "nodes": [{"camera": 0, "children": [0]}])")),
              "a.gltf: /nodes/0: it hangs on itself");
    EXPECT_TRUE(holds(gltf_failure(document(kLens + R"(, "nodes": [{"children": [2]},
                      {"children": [2]}, {"camera": 0}])")),
                      "node 2 hangs on two nodes"));
    EXPECT_TRUE(holds(gltf_failure(document(kLens + R"(, "nodes": [{"camera": 0,
                      "scale": [-1, 1, 1]}])")),
                      "has a matrix that mirrors"));
    EXPECT_TRUE(holds(gltf_failure(document(kLens + R"(, "nodes": [{"camera": 0,
                      "scale": [1, 0, 1]}])")),
                      "has a matrix that flattens"));
    EXPECT_TRUE(holds(gltf_failure(document(R"("nodes": [{"camera": 0}], "cameras": [{"type":
                      "perspective", "perspective": {"yfov": 4}}])")),
                      "/cameras/0/perspective/yfov: expected an angle above 0 and below pi"));
}

TEST(GltfFile, SaysWhatIsWrongWithItsNumbers) {
    const std::string moved = moved_by("translation", "LINEAR");
    const auto failure = [](const std::vector<double>& times, const std::vector<double>& values,
                            const std::string& members) {
        GltfWriter writer;
        writer.add("SCALAR", times);
        writer.add("VEC3", values);
        return gltf_failure(writer.json(members));
    };
    EXPECT_TRUE(holds(failure({0, 1}, {1, 2, 3}, moved), "expected 2 values for its 2 times"));
    EXPECT_TRUE(holds(failure({1, 1}, {1, 2, 3, 4, 5, 6}, moved), "do not increase"));
    EXPECT_TRUE(holds(failure({}, {}, moved), "it has no key"));
    EXPECT_TRUE(holds(failure({0}, {1, 2, HUGE_VAL}, moved), "element 0 is not finite"));
    EXPECT_TRUE(holds(failure({0}, {1, 2, 3}, moved_by("rotation", "LINEAR")),
                      "/accessors/1/type: expected \"VEC4\", found \"VEC3\""));
    EXPECT_TRUE(holds(failure({0}, {1, 2, 3}, moved_by("translation", "WAVE")),
                      "expected \"LINEAR\", \"STEP\" or \"CUBICSPLINE\", found \"WAVE\""));

    GltfWriter writer;
    writer.add("SCALAR", {0, 1});
    writer.add("VEC3", {1, 2, 3, 4, 5, 6});
    const auto changed = [&](const std::string& from, const std::string& to) {
        std::string text = writer.json(moved);
        const std::size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return gltf_failure(text.replace(at, from.size(), to));
    };
    EXPECT_TRUE(holds(changed("\"count\": 2", "\"count\": 9"), "/accessors/0: it reaches beyond"));
    EXPECT_TRUE(holds(changed("\"byteLength\": 24", "\"byteLength\": 25"),
                      "/bufferViews/1: it reaches beyond"));
    EXPECT_TRUE(holds(changed("\"byteOffset\": 8", "\"byteOffset\": 8, \"byteStride\": 8"),
                      "/bufferViews/1/byteStride: expected 12 bytes at least, the size of an "
                      "element, found 8"));
    EXPECT_EQ(changed("\"byteOffset\": 8", "\"byteOffset\": 8, \"byteStride\": 12"), "no failure");
    EXPECT_TRUE(holds(changed("base64,", "base64,*"), "expected data in base64"));
    EXPECT_TRUE(holds(changed("\"byteLength\": 32", "\"byteLength\": 99"), "cut short"));
    EXPECT_TRUE(holds(changed("\"bufferView\": 0,", "\"bufferView\": 0, \"sparse\": {},"),
                      "sparse accessors are not read"));
    EXPECT_TRUE(holds(gltf_failure(writer.json(moved, "https://example.org/a.bin")),
                      "nothing is fetched from elsewhere"));
    EXPECT_TRUE(holds(gltf_failure(writer.json(moved, "missing.bin")), "No such file"));
    EXPECT_TRUE(holds(gltf_failure(writer.json(moved, "-")), "expected a uri, found none"));
    // Every cut of a binary file is told.
    const std::string binary = writer.binary(moved);
    for (std::size_t size = 4; size < binary.size(); size += 7) {
        EXPECT_TRUE(holds(gltf_failure(binary.substr(0, size)), "a.gltf")) << size;
    }
}

}  // namespace
