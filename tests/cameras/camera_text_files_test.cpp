// .chan files, tables and JSON samples: what they mean, and what is told of those that cannot be
// read.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <optional>
#include <string>

#include "camera_path.h"
#include "camera_reading.h"
#include "chan_file.h"
#include "csv_file.h"
#include "samples_json.h"
#include "tools/failure_of.h"

namespace {

using lumivar::CameraFile;
using lumivar::CameraReading;

const CameraReading kUsual;

std::string chan_failure(const std::string& text) {
    return failure_of([&] { lumivar::read_chan(text, "a.chan", kUsual); });
}

std::string csv_failure(const std::string& text) {
    return failure_of([&] { lumivar::read_camera_csv(text, "a.csv", kUsual); });
}

std::string json_failure(const std::string& text) {
    return failure_of([&] { lumivar::read_camera_json(text, "usd"); });
}

TEST(ChanFile, CountsTheScenesFramesAndTurnsAboutZThenXThenY) {
    CameraReading reading;
    reading.frames_per_second = 25.0;
    const CameraFile file = lumivar::read_chan(
        "\xEF\xBB\xBF# comment\r\n\r\n-5 1 2 3 90 90 0 60\r\n\t2.5 +4 5e0 .6 0 0 90  90 \n",
        "shots/a.chan", reading);
    ASSERT_EQ(file.cameras.size(), 1U);
    EXPECT_EQ(file.cameras[0].name, "a");
    const auto& samples = file.cameras[0].samples;
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_DOUBLE_EQ(samples[0].time, -0.2);
    EXPECT_DOUBLE_EQ(samples[1].time, 0.1);
    // By hand: x by 90 takes y to z and z to -y; then y by 90 takes z to x and x to -z.
    const host::Matrix want = {0, 0, -1, 0, 1, 0, 0, 0, 0, -1, 0, 0, 1, 2, 3, 1};
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(samples[0].camera_to_world[i], want[i], 1e-15) << i;
    }
    // z by 90 takes x to y.
    EXPECT_NEAR(samples[1].camera_to_world[1], 1.0, 1e-15);
    EXPECT_NEAR(samples[1].camera_to_world[14], 0.6, 1e-15);
    // tan 30 = 1 / sqrt 3, tan 45 = 1.
    EXPECT_NEAR(samples[0].lens->zoom(1920, 1080), 540.0 * std::sqrt(3.0), 1e-9);
    EXPECT_NEAR(samples[1].lens->zoom(1920, 1080), 540.0, 1e-9);
}

TEST(ChanFile, CountsFromTheScenesFirstFrame) {
    CameraReading reading;
    reading.frames_per_second = 25.0;
    reading.first_frame = 1001;
    const CameraFile chan = lumivar::read_chan("1001 0 0 0 0 0 0\n1026 0 0 1 0 0 0", "a", reading);
    EXPECT_EQ(chan.cameras[0].samples[0].time, 0.0);
    EXPECT_EQ(chan.cameras[0].samples[1].time, 1.0);
    const CameraFile table =
        lumivar::read_camera_csv("frame,tx,ty,tz,rx,ry,rz\n1026,0,0,1,0,0,0", "a", reading);
    EXPECT_EQ(table.cameras[0].samples[0].time, 1.0);
    host::CameraSample sample;
    sample.time = 1.0;
    sample.layer_to_world = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    sample.zoom = 540.0;
    EXPECT_NE(lumivar::chan_text({sample}, 1080, reading).find("\n1026 "), std::string::npos);
}

TEST(ChanFile, MayLeaveTheLensToTheScene) {
    const CameraFile file = lumivar::read_chan("0 0 0 0 0 0 0\n", "a.chan", kUsual);
    EXPECT_FALSE(file.cameras[0].samples[0].lens);
}

TEST(ChanFile, SaysWhatIsWrongAndWhere) {
    EXPECT_EQ(chan_failure("# nothing\n"), "a.chan: there is no line of numbers in it");
    EXPECT_EQ(chan_failure("0 1 2 x3 4 5 6 7\n"),
              "a.chan: line 1: expected a number, found \"x3\"");
    EXPECT_EQ(chan_failure("0 1 2 nan 4 5 6 7\n"),
              "a.chan: line 1: expected a number, found \"nan\"");
    EXPECT_TRUE(holds(chan_failure("\n0 1 2\n"), "a.chan: line 2: expected 8 numbers"));
    EXPECT_TRUE(holds(chan_failure("0 1 2 3 4 5 6 7\n1 1 2 3 4 5 6\n"),
                      "line 2: expected 8 numbers as in the lines before, found 7"));
    EXPECT_EQ(chan_failure("3 1 2 3 4 5 6 7\n3 1 2 3 4 5 6 7\n"),
              "a.chan: line 2: expected a frame after 3, found 3");
    EXPECT_TRUE(
        holds(chan_failure("3 1 2 3 4 5 6 180\n"), "above 0 and below 180 degrees, found 180"));
}

TEST(CameraTable, TakesTimesOrFramesAnglesOrMatricesAndEitherLens) {
    const CameraFile angles = lumivar::read_camera_csv(
        "Frame;tx;ty;tz;rx;ry;rz;vfov;note\n# x\n12;1;2;3;0;0;0;90;\"hello\"\n", "a.csv", kUsual);
    const auto& sample = angles.cameras[0].samples[0];
    EXPECT_DOUBLE_EQ(sample.time, 0.5);
    EXPECT_EQ(sample.camera_to_world,
              (host::Matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}));
    EXPECT_NEAR(sample.lens->zoom(100, 80), 40.0, 1e-12);
    ASSERT_EQ(angles.warnings.size(), 1U);
    EXPECT_EQ(angles.warnings[0], "no use is made of the columns \"note\"");
    const CameraFile film = lumivar::read_camera_csv(
        "time\ttx\tty\ttz\trx\try\trz\tfocal_length\thorizontal_aperture\n"
        "1\t0\t0\t0\t0\t0\t0\t50\t36\n",
        "a.csv", kUsual);
    // The width tells, whatever the picture's shape.
    EXPECT_NEAR(film.cameras[0].samples[0].lens->zoom(720, 99), 1000.0, 1e-12);
}

TEST(CameraTable, SaysWhatIsWrongAndWhere) {
    const std::string names = "time,tx,ty,tz,rx,ry,rz\n";
    EXPECT_TRUE(holds(csv_failure(names), "expected a line of column names and lines of numbers"));
    EXPECT_EQ(csv_failure("tx,ty,tz,rx,ry,rz\n0,0,0,0,0,0\n"),
              "a.csv: line 1: there is no column time (in seconds) or frame");
    EXPECT_EQ(csv_failure("time,tx,ty,rx,ry,rz\n0,0,0,0,0,0\n"),
              "a.csv: line 1: there is no column tz");
    EXPECT_TRUE(holds(csv_failure("time,vfov\n0,0\n"), "there are no columns tx, ty, tz"));
    EXPECT_TRUE(holds(csv_failure("time,frame,tx,ty,tz,rx,ry,rz\n0,0,0,0,0,0,0,0\n"), "not both"));
    EXPECT_TRUE(holds(csv_failure("time,time\n0,0\n"), "the column \"time\" stands there twice"));
    EXPECT_EQ(csv_failure(names + "0,0,0\n"), "a.csv: line 2: expected 7 fields, found 3");
    EXPECT_EQ(csv_failure(names + "0,0,0,0,0,0,\n"),
              "a.csv: line 2: expected a number in column 7, found \"\"");
    EXPECT_TRUE(holds(csv_failure(names + "1,0,0,0,0,0,0\n1,0,0,0,0,0,0\n"),
                      "line 3: its time is not after"));
    EXPECT_TRUE(
        holds(csv_failure(
                  "time,tx,ty,tz,rx,ry,rz,focal_length,horizontal_aperture\n0,0,0,0,0,0,0,50,0\n"),
              "above 0, found 50 and 0"));
}

TEST(CameraJson, GivesItsCameras) {
    const CameraFile file = lumivar::read_camera_json(
        R"({"cameras": [{"name": "/a", "up_axis": "Z", "samples": [
             {"time": -1.5, "matrix": [1,0,0,0, 0,1,0,0, 0,0,1,0, 7,8,9,1], "focal_length": 50,
              "horizontal_aperture": 25, "more": true}]},
            {"name": "/b", "samples": [{"time": 0, "matrix": [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]}]}],
            "warnings": ["w"]})",
        "usd");
    ASSERT_EQ(file.cameras.size(), 2U);
    EXPECT_EQ(file.cameras[0].up, lumivar::UpAxis::Z);
    EXPECT_EQ(file.cameras[0].samples[0].time, -1.5);
    EXPECT_EQ(file.cameras[0].samples[0].camera_to_world[13], 8.0);
    EXPECT_EQ(file.cameras[0].samples[0].lens->zoom(100, 1), 200.0);
    EXPECT_EQ(file.cameras[1].up, lumivar::UpAxis::Y);
    EXPECT_FALSE(file.cameras[1].samples[0].lens);
    ASSERT_EQ(file.warnings.size(), 1U);
}

TEST(CameraJson, SaysWhatIsWrongAndWhere) {
    EXPECT_TRUE(
        holds(json_failure("{\n \"cameras\": ]"), "usd: line 2, column 13: this is no JSON"));
    EXPECT_EQ(json_failure("{}"), "usd: expected a member \"cameras\", found none");
    EXPECT_EQ(json_failure(R"({"cameras": [{"name": 7}]})"),
              "usd: /cameras/0/name: expected a text, found 7");
    EXPECT_EQ(json_failure(R"({"cameras": [{"name": "a", "up_axis": "X", "samples": []}]})"),
              "usd: /cameras/0/up_axis: expected \"Y\" or \"Z\", found \"X\"");
    EXPECT_EQ(json_failure(R"({"cameras": [{"name": "a", "samples": []}]})"),
              "usd: /cameras/0/samples: expected one sample at least, found []");
    EXPECT_EQ(
        json_failure(R"({"cameras": [{"name": "a", "samples": [{"time": 0, "matrix": [1]}]}]})"),
        "usd: /cameras/0/samples/0/matrix: expected 16 elements, found 1");
    EXPECT_TRUE(holds(json_failure("[1e999]"), "too large"));
}

TEST(CameraNumbers, ThatNoShotHasAreRefused) {
    const auto world_failure = [](const std::string& line) {
        return failure_of([&] {
            const CameraFile file = lumivar::read_chan(line, "a.chan", kUsual);
            lumivar::world_path(file.cameras[0], 1e30, "a.chan");
        });
    };
    EXPECT_EQ(world_failure("0 1e290 0 0 0 0 0 50"),
              "a.chan: the camera \"a\" at 0 s has a matrix with a number that is not finite");
    EXPECT_EQ(world_failure("2.4e11 0 0 0 0 0 0 50"),
              "a.chan: the camera \"a\" at 1e+10 s is too far away in time");
    EXPECT_EQ(world_failure("0 0 0 0 0 0 0 1e-200"),
              "a.chan: the camera \"a\" at 0 s has a lens that sees nothing");
}

TEST(CameraMatrices, LoseTheirScaleHoweverLargeOrSmall) {
    lumivar::FileCamera camera;
    for (const double scale : {1e-310, 1e-200, 0.3, 1e300}) {
        // x and y lean towards each other and towards z: z keeps its direction, y its side.
        camera.samples = {{0.0,
                           {scale, 0, 0, 0, scale / 2, scale, scale, 0, 0, 0, scale, 0, 0, 0, 0, 1},
                           std::nullopt}};
        const host::Matrix got = lumivar::world_path(camera, 1.0, "a").samples[0].layer_to_world;
        // y lies along (1/2, 1); x square to it. In the host's axes the signs of y and z turn over
        // twice, for the world and for the camera.
        const double c = 1 / std::sqrt(1.25), s = 0.5 / std::sqrt(1.25);
        const host::Matrix want = {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        for (std::size_t i = 0; i < 16; ++i) {
            EXPECT_NEAR(got[i], want[i], scale < 1e-300 ? 1e-9 : 1e-15) << scale << " " << i;
        }
    }
}

TEST(CameraUnits, AreInParsecs) {
    // The parsec's definition by the parallax of a second, small as it is: 1 au / tan(1") up to
    // 1e-11 of it; a light-year is a Julian year of 31 557 600 s at 299 792 458 m/s.
    const double au = 149597870700.0;
    const double parsec = au / std::tan(3.14159265358979324 / 648000.0);
    EXPECT_NEAR(lumivar::parsecs_of_unit("au") * parsec / au, 1.0, 1e-10);
    EXPECT_NEAR(lumivar::parsecs_of_unit("m") * parsec, 1.0, 1e-10);
    EXPECT_NEAR(lumivar::parsecs_of_unit("km") * parsec, 1000.0, 1e-7);
    EXPECT_NEAR(lumivar::parsecs_of_unit("ly") * parsec / (31557600.0 * 299792458.0), 1.0, 1e-10);
    EXPECT_EQ(lumivar::parsecs_of_unit("pc"), 1.0);
    EXPECT_EQ(lumivar::parsecs_of_unit("0.25"), 0.25);
    for (const char* wrong : {"mile", "0", "-1", ""}) {
        EXPECT_TRUE(
            holds(failure_of([&] { lumivar::parsecs_of_unit(wrong); }), "there is no unit"));
    }
}

}  // namespace
