// What a scene says and what it leaves to the defaults.
#include <gtest/gtest.h>
#include <host/scene.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using host::Colour;
using host::ControlSetting;
using host::Interpolation;
using host::Matrix;
using host::Scene;
using host::Track;

Scene parse(const std::string& text) { return host::parse_scene(text, "s.json"); }

/// The only control of a scene that sets it to `value`.
ControlSetting control(const std::string& value) {
    const Scene scene = parse("{\"controls\": {\"A\": " + value + "}}");
    EXPECT_EQ(scene.controls.size(), 1U);
    return scene.controls.at(0);
}

Track number(const std::string& value) { return std::get<Track>(control(value).value); }

host::FrameRate rate(const std::string& value) {
    return parse("{\"composition\": {\"frame_rate\": " + value + "}}").composition.frame_rate;
}

TEST(Track, KeysAreJoinedByStraightLinesAndHeldOutside) {
    const Track constant = 3.5;
    EXPECT_TRUE(constant.is_constant());
    const Track track({{1.0, 10.0}, {3.0, 20.0}, {4.0, 0.0}});
    EXPECT_FALSE(track.is_constant());
    const std::pair<double, double> values[] = {{-5.0, 10.0}, {1.0, 10.0}, {1.5, 12.5},
                                                {2.0, 15.0},  {3.0, 20.0}, {3.75, 5.0},
                                                {4.0, 0.0},   {100.0, 0.0}};
    for (const auto& [time, value] : values) {
        EXPECT_EQ(track.at(time), value) << time;
        EXPECT_EQ(constant.at(1e7 * time), 3.5);
    }
}

TEST(Track, AtAKeyTheValueIsExactlyTheKeysAndBetweenEqualOnesNothingMoves) {
    const Track track({{0.1, 0.1}, {0.2, 0.7}, {0.7, -0.3}});
    for (const Track::Key& key : track.keys()) {
        EXPECT_EQ(track.at(key.time), key.value);
    }
    const Track still({{0.0, 0.1}, {1.0, 0.1}});
    for (int i = 0; i <= 100; ++i) {
        EXPECT_EQ(still.at(i / 100.0), 0.1);
    }
}

TEST(Track, HeldKeysJumpAtTheNextKeysTime) {
    const Track track({{0.0, 5.0, Interpolation::Hold}, {1.0, 7.0}, {2.0, 9.0}});
    EXPECT_EQ(track.at(0.999), 5.0);
    EXPECT_EQ(track.at(1.0), 7.0);
    EXPECT_EQ(track.at(1.5), 8.0);
}

TEST(Track, SmoothKeysAreJoinedByTheCubicWithTheirNeighboursSlope) {
    constexpr auto kSmooth = Interpolation::Smooth;
    const struct {
        const char* what;
        Track track;
        double time, value;
    } cases[] = {
        // Between two keys alone: 3 / 16 - 2 / 64 of the way after a quarter of it.
        {"two keys", Track({{0.0, 0.0, kSmooth}, {4.0, 8.0}}), 1.0, 1.25},
        // The slope at 1 is 2 / 3. In the middle of a way the ends' slopes count an eighth of its
        // length.
        {"before", Track({{0.0, 0.0, kSmooth}, {1.0, 1.0, kSmooth}, {3.0, 2.0}}), 0.5,
         0.5 - 2.0 / 3.0 / 8.0},
        {"after", Track({{0.0, 0.0, kSmooth}, {1.0, 1.0, kSmooth}, {3.0, 2.0}}), 2.0,
         1.5 + 2.0 * 2.0 / 3.0 / 8.0},
        // 21 / 2 is cut to three times the rise of 1.
        {"too steep", Track({{0.0, 0.0, kSmooth}, {1.0, 1.0, kSmooth}, {2.0, 21.0}}), 0.5,
         0.5 - 3.0 / 8.0},
        {"down", Track({{0.0, 0.0, kSmooth}, {1.0, -1.0, kSmooth}, {2.0, -21.0}}), 0.5,
         -0.5 + 3.0 / 8.0},
        {"turning point", Track({{0.0, 0.0, kSmooth}, {1.0, 1.0, kSmooth}, {2.0, 0.0}}), 1.25,
         1.0 - 0.15625},
        {"behind a line", Track({{0.0, 0.0}, {1.0, 1.0, kSmooth}, {2.0, 3.0}}), 1.5,
         2.0 + 1.0 / 8.0},
        {"before a line", Track({{0.0, 0.0, kSmooth}, {1.0, 2.0}, {2.0, 3.0}}), 0.5,
         1.0 - 1.0 / 8.0},
        {"behind a hold", Track({{0.0, 0.0, Interpolation::Hold}, {1.0, 1.0, kSmooth}, {2.0, 3.0}}),
         1.5, 2.0},
        {"a rest",
         Track({{0.0, 0.0, kSmooth}, {1.0, 1.0, kSmooth}, {2.0, 1.0, kSmooth}, {3.0, 5.0}}), 1.3,
         1.0},
        // Their difference is beyond the largest number.
        {"huge", Track({{0.0, -1.5e308, kSmooth}, {1.0, 1.5e308}}), 0.5, 0.0},
    };
    for (const auto& each : cases) {
        EXPECT_NEAR(each.track.at(each.time), each.value, 1e-15) << each.what;
        for (const Track::Key& key : each.track.keys()) {
            EXPECT_EQ(each.track.at(key.time), key.value) << each.what;
        }
    }
}

TEST(Track, ASmoothWayHasNoCornerAndNeverLeavesItsKeys) {
    const Track track({{0.0, 0.0, Interpolation::Smooth},
                       {1.0, 1.0, Interpolation::Smooth},
                       {1.5, 30.0, Interpolation::Smooth},
                       {4.0, 31.0, Interpolation::Smooth},
                       {5.0, -7.0, Interpolation::Smooth},
                       {9.0, -7.0}});
    constexpr double kStep = 1e-6;
    for (const Track::Key& key : track.keys()) {
        const double before = (key.value - track.at(key.time - kStep)) / kStep;
        const double after = (track.at(key.time + kStep) - key.value) / kStep;
        EXPECT_NEAR(before, after, 1e-3) << key.time;
    }
    for (std::size_t i = 1; i < track.keys().size(); ++i) {
        const auto& from = track.keys()[i - 1];
        const auto& to = track.keys()[i];
        for (int step = 0; step <= 1000; ++step) {
            const double value = track.at(from.time + (to.time - from.time) * step / 1000.0);
            EXPECT_GE(value, std::min(from.value, to.value));
            EXPECT_LE(value, std::max(from.value, to.value));
        }
    }
}

TEST(Track, ScaledHasTheProductsAtAllTimes) {
    const Track track(
        {{0.0, 1.0, Interpolation::Smooth}, {1.0, 3.0, Interpolation::Hold}, {2.0, 4.0}});
    for (const double time : {-1.0, 0.0, 0.25, 1.5, 2.0}) {
        EXPECT_EQ(track.scaled(-4.0).at(time), -4.0 * track.at(time));
    }
}

TEST(Keys, HaveAnInterpolationOfTheirOwnOrThatOfTheirList) {
    const Track own = number(R"({"keys": [{"time": 0, "value": 0, "interpolation": "hold"},
        {"time": 1, "value": 8, "interpolation": "smooth"}, {"time": 5, "value": 0}]})");
    EXPECT_EQ(own.at(0.5), 0.0);
    EXPECT_EQ(own.at(2.0), 8.0 - 1.25);
    const Track shared = number(R"({"interpolation": "smooth", "keys": [{"time": 0, "value": 0},
        {"time": 4, "value": 8, "interpolation": "linear"}, {"time": 5, "value": 0}]})");
    EXPECT_EQ(shared.at(1.0), 1.25);
    EXPECT_EQ(shared.at(4.25), 6.0);
    // Wherever keys stand.
    const std::string keys = R"({"interpolation": "hold", "keys": [)";
    const Scene scene = parse(R"({"composition": {"shutter_angle": )" + keys +
                              R"({"time": 0, "value": 10}, {"time": 1, "value": 20}]}},
        "camera": {"position": )" +
                              keys + R"({"time": 0, "value": [1, 2, 3]},
            {"time": 1, "value": [4, 5, 6]}]}, "zoom": )" +
                              keys +
                              R"({"time": 0, "value": 5}, {"time": 1, "value": 6}]}},
        "controls": {"A": )" + keys +
                              R"({"time": 0, "value": "#010203"},
            {"time": 1, "value": "#040506"}]}}})");
    EXPECT_EQ(scene.composition.shutter_angle.at(0.9), 10.0);
    EXPECT_EQ(scene.camera->layer_to_world(0.9)[12], 1.0);
    EXPECT_EQ(scene.camera->zoom(0.9), 5.0);
    EXPECT_EQ(std::get<Colour>(scene.controls.at(0).value).channels[2].at(0.9), 3.0);
}

TEST(Track, RefusesKeysOutOfOrderAndNoKeys) {
    EXPECT_THROW(Track(std::vector<Track::Key>{}), std::invalid_argument);
    EXPECT_THROW(Track({{1.0, 0.0}, {1.0, 1.0}}), std::invalid_argument);
    EXPECT_THROW(Track({{1.0, 0.0}, {0.5, 1.0}}), std::invalid_argument);
}

TEST(Scene, AnEmptyObjectIsANewCompositionWithoutCameraAndSettings) {
    for (const char* text : {"{}", R"({"composition": {}, "controls": {}})"}) {
        const Scene scene = parse(text);
        EXPECT_EQ(scene.source, "s.json");
        EXPECT_EQ(scene.composition.width, 1920);
        EXPECT_EQ(scene.composition.height, 1080);
        EXPECT_EQ(scene.composition.frame_rate.num, 24U);
        EXPECT_EQ(scene.composition.frame_rate.den, 1U);
        EXPECT_EQ(scene.composition.duration, 10.0);
        EXPECT_EQ(scene.composition.first_frame, 0);
        EXPECT_FALSE(scene.composition.motion_blur);
        EXPECT_EQ(scene.composition.shutter_angle.at(0.0), 180.0);
        EXPECT_EQ(scene.composition.shutter_phase.at(0.0), -90.0);
        EXPECT_EQ(scene.camera, nullptr);
        EXPECT_TRUE(scene.controls.empty());
    }
}

TEST(Composition, TakesEveryMember) {
    const auto made = parse(R"({"composition": {"width": 1, "height": 30000, "frame_rate": 25,
        "duration": 0.5, "motion_blur": true, "shutter_angle": 720, "shutter_phase": -360,
        "first_frame": -8}})")
                          .composition;
    EXPECT_EQ(made.first_frame, -8);
    EXPECT_EQ(made.width, 1);
    EXPECT_EQ(made.height, 30000);
    EXPECT_EQ(made.frame_rate.num, 25U);
    EXPECT_EQ(made.duration, 0.5);
    EXPECT_TRUE(made.motion_blur);
    EXPECT_EQ(made.shutter_angle.at(0.0), 720.0);
    EXPECT_EQ(made.shutter_phase.at(0.0), -360.0);
    // A whole number may be written with a point, and comments are skipped.
    EXPECT_EQ(parse(R"({"composition": {"width": 1280.0}})").composition.width, 1280);
    EXPECT_EQ(parse("// a scene\n{/* of */ \"composition\": {\"width\": 8} // small\n}\n")
                  .composition.width,
              8);
}

TEST(Composition, TheShutterMayChangeOverTimeAndTheRestMayHaveKeysOfOneValue) {
    const auto made = parse(R"({"composition": {
        "shutter_angle": {"keys": [{"time": 0, "value": 0}, {"time": 2, "value": 360}]},
        "shutter_phase": {"keys": [{"time": 1, "value": -90}]},
        "width": {"keys": [{"time": 0, "value": 640}, {"time": 1, "value": 640.0}]},
        "duration": {"keys": [{"time": 0, "value": 4}]}}})")
                          .composition;
    EXPECT_EQ(made.shutter_angle.at(1.0), 180.0);
    EXPECT_TRUE(made.shutter_phase.is_constant());
    EXPECT_EQ(made.shutter_phase.at(0.0), -90.0);
    EXPECT_EQ(made.width, 640);
    EXPECT_EQ(made.duration, 4.0);
}

TEST(Composition, RatesAreExactFractionsAndThoseOfBroadcastsFractionsOf1001) {
    const struct {
        const char* written;
        std::uint32_t num, den;
    } cases[] = {{"23.976", 24000, 1001},
                 {"29.97", 30000, 1001},
                 {"59.94", 60000, 1001},
                 {"47.952", 48000, 1001},
                 {"119.88", 120000, 1001},
                 {"23.97602", 24000, 1001},
                 {"23.9765", 24000, 1001},
                 {"29.9705", 30000, 1001},
                 {"24", 24, 1},
                 {"24.0", 24, 1},
                 {"12.5", 25, 2},
                 {"23.98", 1199, 50},
                 {"0.001", 1, 1000},
                 {"33.333333333333336", 100, 3},
                 {"999", 999, 1},
                 {"15.015", 3003, 200}};
    for (const auto& each : cases) {
        EXPECT_EQ(rate(each.written).num, each.num) << each.written;
        EXPECT_EQ(rate(each.written).den, each.den) << each.written;
    }
}

TEST(Controls, KeepTheOrderOfTheFileAndTellTheirPlace) {
    const Scene scene = parse(R"({"controls": {"Tint Color": 1, "3D/2D ~": 2, "A": 3}})");
    ASSERT_EQ(scene.controls.size(), 3U);
    EXPECT_EQ(scene.controls[0].name, "Tint Color");
    EXPECT_EQ(scene.controls[0].place, "s.json: /controls/Tint Color");
    EXPECT_EQ(scene.controls[1].name, "3D/2D ~");
    EXPECT_EQ(scene.controls[1].place, "s.json: /controls/3D~12D ~0");
    EXPECT_EQ(scene.controls[2].name, "A");
}

TEST(Controls, TakeNumbersSwitchesChoicesByNameAndKeys) {
    EXPECT_EQ(number("2.5").at(7.0), 2.5);
    EXPECT_EQ(number("-1e3").at(7.0), -1000.0);
    EXPECT_EQ(number("true").at(0.0), 1.0);
    EXPECT_EQ(number("false").at(0.0), 0.0);
    EXPECT_EQ(std::get<std::string>(control(R"("HemiSph")").value), "HemiSph");
    const Track track = number(R"({"keys": [{"time": -1, "value": 2}, {"value": 4, "time": 1}]})");
    EXPECT_EQ(track.at(0.0), 3.0);
    EXPECT_EQ(
        number(R"({"keys": [{"time": 0, "value": true}, {"time": 1, "value": false}]})").at(0.0),
        1.0);
}

TEST(Controls, TakeColours) {
    const struct {
        const char* written;
        std::array<double, 3> at_half_a_second;
    } cases[] = {
        {"[255, 0, 12.5]", {255.0, 0.0, 12.5}},
        {R"("#Ff8009")", {255.0, 128.0, 9.0}},
        // Keys number by number.
        {R"([10, {"keys": [{"time": 0, "value": 0}, {"time": 1, "value": 200}]}, 30])",
         {10.0, 100.0, 30.0}},
        // Keys of whole colours in either form.
        {R"({"keys": [{"time": 0, "value": "#000a14"}, {"time": 1, "value": [100, 20, 20]}]})",
         {50.0, 15.0, 20.0}},
    };
    for (const auto& each : cases) {
        const Colour made = std::get<Colour>(control(each.written).value);
        for (std::size_t channel = 0; channel < 3; ++channel) {
            EXPECT_EQ(made.channels[channel].at(0.5), each.at_half_a_second[channel])
                << each.written;
        }
    }
}

TEST(CameraObject, EmptyIsANewCameraBeforeTheMiddleOfThePicture) {
    // The composition may stand behind the camera.
    const Scene scene = parse(R"({"camera": {}, "composition": {"width": 720, "height": 480}})");
    ASSERT_NE(scene.camera, nullptr);
    EXPECT_EQ(scene.camera->zoom(0.0), 1000.0);  // 720 * 50 / 36
    const Matrix want = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 360, 240, -1000, 1};
    EXPECT_EQ(scene.camera->layer_to_world(0.0), want);
}

TEST(CameraObject, ANewCameraSeesTheCompositionsPlanePixelForPixel) {
    // A point (x, y, 0) of the world, less the position, times zoom over its depth: itself.
    for (const char* lens : {"", "\"zoom\": 500", "\"vertical_fov\": 30",
                             "\"zoom\": {\"keys\": [{\"time\": 0, \"value\": 800}, {\"time\": 1, "
                             "\"value\": 900}]}"}) {
        const Scene scene = parse(std::string("{\"camera\": {") + lens + "}}");
        const Matrix m = scene.camera->layer_to_world(0.0);
        const double scale = scene.camera->zoom(0.0) / (0.0 - m[14]);
        EXPECT_NEAR((100.0 - m[12]) * scale + 960.0, 100.0, 1e-9) << lens;
        EXPECT_NEAR((900.0 - m[13]) * scale + 540.0, 900.0, 1e-9) << lens;
    }
}

TEST(CameraObject, ALaterZoomDoesNotMoveTheCamera) {
    const Scene scene = parse(
        R"({"camera": {"zoom": {"keys": [{"time": 0, "value": 800}, {"time": 1, "value": 900}]}}})");
    EXPECT_EQ(scene.camera->zoom(1.0), 900.0);
    EXPECT_EQ(scene.camera->layer_to_world(1.0)[14], -800.0);
}

/// What a camera's matrix is some time into the scene, in the elements that are no rotation.
void expect_place(const std::string& camera, double seconds, const std::array<double, 3>& place) {
    const Matrix m = parse("{\"camera\": {" + camera + "}}").camera->layer_to_world(seconds);
    EXPECT_EQ((std::array{m[12], m[13], m[14]}), place) << camera;
}

TEST(CameraObject, TakesPositionAndOrientation) {
    const std::string turned = R"("position": [1, 2, 3], "orientation": [0, 90, 0], "zoom": 50)";
    expect_place(turned, 0.0, {1, 2, 3});
    // A quarter about y: ahead is x.
    const Scene scene = parse("{\"camera\": {" + turned + "}}");
    EXPECT_NEAR(scene.camera->layer_to_world(0.0)[8], 1.0, 1e-12);
    EXPECT_NEAR(scene.camera->layer_to_world(0.0)[10], 0.0, 1e-12);
    EXPECT_EQ(scene.camera->zoom(0.0), 50.0);
    // Orientation alone, at the default position.
    expect_place(R"("orientation": [0, 0, 0], "zoom": 7)", 0.0, {960, 540, -7});
}

TEST(CameraObject, ArraysTakeKeysNumberByNumberOrAsAWhole) {
    for (
        const char* position :
        {R"([{"keys": [{"time": 0, "value": 0}, {"time": 1, "value": 10}]}, 5, -100])",
         R"({"keys": [{"time": 0, "value": [0, 5, -100]}, {"time": 1, "value": [10, 5, -100]}]})"}) {
        expect_place(std::string("\"position\": ") + position, 0.25, {2.5, 5, -100});
    }
}

TEST(CameraObject, TakesAMatrixRowByRowAndKeysOfWholeOnes) {
    const Scene scene = parse(R"({"camera": {"matrix": [2, 0, 0, 0,  0, 0, 1, 0,  0, -1, 0, 0,
        {"keys": [{"time": 0, "value": 7}, {"time": 1, "value": 9}]}, 8, 9, 1]}})");
    const Matrix want = {2, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 8, 8, 9, 1};
    EXPECT_EQ(scene.camera->layer_to_world(0.5), want);
    EXPECT_EQ(scene.camera->zoom(0.5), 1920 * 50.0 / 36.0);
    const Scene keyed = parse(R"({"camera": {"zoom": 10, "matrix": {"keys": [
        {"time": 0, "value": [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]},
        {"time": 2, "value": [3,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,8,1]}]}}})");
    EXPECT_EQ(keyed.camera->layer_to_world(1.0),
              (Matrix{2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 4, 1}));
}

TEST(CameraObject, LookAtDefaultsToTheOriginOfTheSkyAndTheNewCamerasZoom) {
    // ra 0, dec 0: ahead is +x, up is -y in the host's world, right is west: -z.
    const Scene scene = parse(R"({"camera": {"look_at": {}}})");
    const Matrix m = scene.camera->layer_to_world(0.0);
    const Matrix want = {0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1};
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(m[i], want[i], 1e-15) << i;
    }
    EXPECT_EQ(scene.camera->zoom(0.0), 1920 * 50.0 / 36.0);
}

TEST(CameraObject, LookAtTakesKeysNumberByNumberOrAsAWhole) {
    const Scene one = parse(R"({"camera": {"look_at": {"dec": 10,
        "ra": {"keys": [{"time": 0, "value": 80}, {"time": 1, "value": 90}]}}}})");
    const Scene whole = parse(R"({"camera": {"look_at": {"keys": [
        {"time": 0, "value": {"ra": 80, "dec": 10}}, {"time": 1, "value": {"dec": 10, "ra": 90}}]}}})");
    const Scene still = parse(R"({"camera": {"look_at": {"ra": 85, "dec": 10}}})");
    EXPECT_EQ(one.camera->layer_to_world(0.5), still.camera->layer_to_world(0.0));
    EXPECT_EQ(whole.camera->layer_to_world(0.5), still.camera->layer_to_world(0.0));
}

/// Two stars: one 100 parsecs off at ra 90 on the equator, one of unknown distance at the pole.
host::StarAnswer two_stars(const std::string& name) {
    if (name == "Near") {
        return {host::StarPlace{90.0, 0.0, 100.0}, std::nullopt};
    }
    if (name == "Pole") {
        return {host::StarPlace{0.0, 90.0, std::nullopt}, std::nullopt};
    }
    return {std::nullopt, "Near"};
}

/// The matrix of a camera among these stars.
Matrix among_stars(const std::string& camera, double seconds = 0.0) {
    return host::parse_scene("{\"camera\": {" + camera + "}}", "s.json", two_stars)
        .camera->layer_to_world(seconds);
}

void expect_row(const Matrix& m, std::size_t row, const std::array<double, 3>& want) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(m[4 * row + i], want[i], 1e-12) << "element " << i;
    }
}

TEST(CameraObject, LooksFromAPositionAtADirectionOrAPoint) {
    const double half = std::sqrt(0.5);
    expect_row(among_stars(R"("position": [50, 0, 0], "look_at": {"ra": 90})"), 2, {0, 0, 1});
    // The point (0, 0, 50) from (50, 0, 0).
    const Matrix m =
        among_stars(R"("position": [50, 0, 0], "look_at": {"ra": 90, "distance": 50})");
    expect_row(m, 2, {-half, 0, half});
    expect_row(m, 3, {50, 0, 0});
    // Keys of whole places, the distance interpolated too: (0, 0, 50) half way.
    expect_row(among_stars(R"("position": [50, 0, 0], "look_at": {"keys": [
        {"time": 0, "value": {"ra": 90, "distance": 20}},
        {"time": 1, "value": {"ra": 90, "distance": 80}}]})",
                           0.5),
               2, {-half, 0, half});
}

TEST(CameraObject, LooksAtAStarByItsName) {
    const double half = std::sqrt(0.5);
    expect_row(among_stars(R"("look_at": {"star": "Near"})"), 2, {0, 0, 1});
    expect_row(among_stars(R"("position": [100, 0, 0], "look_at": {"star": "Near"})"), 2,
               {-half, 0, half});
    // Of unknown distance it is infinitely far: straight up, which is -y.
    expect_row(among_stars(R"("position": [100, 0, 0], "look_at": {"star": "Pole"})"), 2,
               {0, -1, 0});
    // A quarter about the view: right is what was down.
    expect_row(among_stars(R"("look_at": {"star": "Near", "roll": 90})"), 0, {0, 1, 0});
}

TEST(CameraObject, KeysThatNameStarsAreJoinedByGreatCircles) {
    const std::string keys = R"("look_at": {"keys": [{"time": 0, "value": {"star": "Near"}},
        {"time": 2, "value": {"star": "Pole"}}, {"time": 4, "value": {"ra": 0, "dec": 0}}])";
    const double half = std::sqrt(0.5);
    expect_row(among_stars(keys + "}", 1.0), 2, {0, -half, half});
    expect_row(among_stars(keys + "}", 3.0), 2, {half, -half, 0});
    const double angle = 0.15625 * std::numbers::pi / 2.0;
    expect_row(among_stars(keys + R"(, "interpolation": "smooth"})", 0.5), 2,
               {0, -std::sin(angle), std::cos(angle)});
}

TEST(CameraObject, StandsTowardAStarOrAPlace) {
    expect_row(among_stars(R"("position": {"toward": "Near", "distance": -3})"), 3, {0, 0, -3});
    expect_row(among_stars(R"("position": {"ra": 0, "dec": 90, "distance":
        {"keys": [{"time": 0, "value": 0}, {"time": 1, "value": 8}]}})",
                           0.25),
               3, {0, -2, 0});
    // From one place to another in a straight line.
    expect_row(among_stars(R"("position": {"keys": [{"time": 0, "value": [4, 0, 0]},
        {"time": 1, "value": {"toward": "Near", "distance": 8}}]})",
                           0.5),
               3, {2, 0, 4});
}

TEST(CameraObject, LengthsHaveAUnit) {
    // A parsec is 3.26156 light years and 206264.806 astronomical units.
    const Matrix ly = among_stars(R"("unit": "ly", "position": [32.6156, 0, 0])");
    EXPECT_NEAR(ly[12], 10.0, 1e-4);
    const Matrix au =
        among_stars(R"("unit": "au", "position": {"toward": "Near", "distance": 412529.612})");
    EXPECT_NEAR(au[14], 2.0, 1e-8);
    // 1 pc is 3.0856776e13 km.
    const Matrix km = among_stars(R"("unit": "km", "position": [3.0856776e14, 0, 0])");
    EXPECT_NEAR(km[12], 10.0, 1e-6);
    const Matrix m = among_stars(R"("unit": "m", "position": [3.0856776e17, 0, 0])");
    EXPECT_NEAR(m[12], 10.0, 1e-6);
    EXPECT_EQ(among_stars(R"("unit": "pc", "position": [7, 0, 0])")[12], 7.0);
    const double half = std::sqrt(0.5);
    expect_row(among_stars(R"("unit": "ly", "position": [50, 0, 0],
        "look_at": {"ra": 90, "distance": 50})"),
               2, {-half, 0, half});
    // A star's distance is in parsecs whatever the scene's unit.
    const Matrix star = among_stars(R"("unit": "ly", "position": [326.156, 0, 0],
        "look_at": {"star": "Near"})");
    EXPECT_NEAR(star[8], -half, 1e-6);
}

TEST(CameraObject, AVerticalAngleOfViewSpansTheHeight) {
    const Scene scene =
        parse(R"({"composition": {"height": 600}, "camera": {"look_at": {}, "vertical_fov": 90}})");
    EXPECT_NEAR(scene.camera->zoom(0.0), 300.0, 1e-9);
}

TEST(PictureObject, SaysWhatThePictureFileShallShow) {
    for (const char* text : {"{}", R"({"picture": {}})"}) {
        const host::Picture empty = parse(text).picture;
        EXPECT_FALSE(empty.exposure || empty.view || empty.halo || empty.limiting_magnitude);
        EXPECT_EQ(empty.limiting_magnitude_place, "");
    }
    const host::Picture picture = parse(R"({"picture": {"exposure": -1.5, "view": "plain",
        "halo": 0, "limiting_magnitude": {"keys": [{"time": 0, "value": 4},
                                                   {"time": 2, "value": 8}]}}})")
                                      .picture;
    EXPECT_EQ(picture.exposure, -1.5);
    EXPECT_EQ(picture.view, "plain");
    EXPECT_EQ(picture.halo, 0.0);
    ASSERT_TRUE(picture.limiting_magnitude);
    EXPECT_EQ(picture.limiting_magnitude->at(1.0), 6.0);
    EXPECT_EQ(picture.limiting_magnitude_place, "s.json: /picture/limiting_magnitude");
}

TEST(ScenesShipped, OrionFramesTheWholeFigure) {
    const Scene scene = host::load_scene(SCENES_DIR "/orion.json");
    EXPECT_EQ(scene.composition.width, 1920);
    EXPECT_EQ(scene.composition.height, 1080);
    // Places from the shipped catalogue: Betelgeuse, Bellatrix, Rigel, Saiph, Meissa, in degrees.
    // World y is down; the matrix turns, so its columns' products with a direction undo it.
    const Matrix m = scene.camera->layer_to_world(0.0);
    const double zoom = scene.camera->zoom(0.0);
    constexpr double kDegree = std::numbers::pi / 180.0;
    const double stars[][2] = {
        {88.793, 7.407}, {81.283, 6.350}, {78.634, -8.202}, {86.939, -9.670}, {83.784, 9.934}};
    for (const auto& [ra, dec] : stars) {
        const double d[] = {std::cos(dec * kDegree) * std::cos(ra * kDegree),
                            -std::sin(dec * kDegree),
                            std::cos(dec * kDegree) * std::sin(ra * kDegree)};
        double seen[3];
        for (std::size_t row = 0; row < 3; ++row) {
            seen[row] = d[0] * m[4 * row] + d[1] * m[4 * row + 1] + d[2] * m[4 * row + 2];
        }
        EXPECT_LT(std::fabs(seen[0] / seen[2] * zoom), 480.0);
        EXPECT_LT(std::fabs(seen[1] / seen[2] * zoom), 486.0);  // a tenth of the half stays free
        EXPECT_GT(seen[2], 0.0);
    }
}

TEST(ScenesShipped, ThePanMovesAndIsBlurred) {
    const Scene scene = host::load_scene(SCENES_DIR "/orion-pan.json");
    EXPECT_EQ(scene.composition.width, 960);
    EXPECT_EQ(scene.composition.height, 540);
    EXPECT_EQ(scene.composition.frames(), 24);
    EXPECT_TRUE(scene.composition.motion_blur);
    EXPECT_NE(scene.camera->layer_to_world(0.0), scene.camera->layer_to_world(1.0));
    ASSERT_EQ(scene.controls.size(), 2U);
    EXPECT_EQ(scene.controls[1].name, "Motion Blur Segments");
    EXPECT_EQ(std::get<Track>(scene.controls[1].value).at(0.0), 16.0);
}

host::StarAnswer any_star(const std::string&) { return {host::StarPlace{}, std::nullopt}; }

TEST(ScenesShipped, TheDescriptionsExamplesAreScenes) {
    std::ifstream file(SCENES_DIR "/README.md");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    int examples = 0;
    const std::string fence = "```json\n";
    for (std::size_t at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
        at += fence.size();
        EXPECT_NO_THROW(
            host::parse_scene(text.substr(at, text.find("```", at) - at), "s.json", any_star));
        ++examples;
    }
    EXPECT_EQ(examples, 8);
}

}  // namespace
