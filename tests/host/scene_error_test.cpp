// Every way a scene can be wrong, with the whole text that the user gets.
#include <host/scene.h>

#include <gtest/gtest.h>
#include <scene_text.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace {

template <class Run>
std::string error_of_run(Run run) {
    try {
        run();
    } catch (const host::SceneError& error) {
        return error.what();
    }
    return "no error";
}

std::string error_of(const std::string& text) {
    return error_of_run([&text] { host::parse_scene(text, "s.json"); });
}

std::string composition_error(const std::string& members) {
    return error_of("{\"composition\": {" + members + "}}");
}
std::string camera_error(const std::string& members) {
    return error_of("{\"camera\": {" + members + "}}");
}
std::string control_error(const std::string& value) {
    return error_of("{\"controls\": {\"A\": " + value + "}}");
}

/// A folder that goes away with the test.
class LoadErrors : public testing::Test {
protected:
    LoadErrors() {
        std::string name = testing::TempDir() + "scene_XXXXXX";
        folder_ = ::mkdtemp(name.data());
    }
    ~LoadErrors() override { std::filesystem::remove_all(folder_); }

    std::string write(const std::string& text) const {
        std::string path = folder_ + "/scene.json";
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    static std::string error_of_file(const std::string& path) {
        return error_of_run([&path] { host::load_scene(path); });
    }

    std::string folder_;
};

TEST_F(LoadErrors, AMissingFileIsTold) {
    const std::string path = folder_ + "/none.json";
    EXPECT_EQ(error_of_file(path), path + ": cannot read the scene: No such file or directory");
}

TEST_F(LoadErrors, AFolderIsTold) {
    EXPECT_EQ(error_of_file(folder_), folder_ + ": cannot read the scene: Is a directory");
}

TEST_F(LoadErrors, APathThroughAFileIsTold) {
    const std::string path = write("{}") + "/more.json";
    EXPECT_EQ(error_of_file(path), path + ": cannot read the scene: Not a directory");
}

TEST_F(LoadErrors, AnEmptyFileIsTold) {
    const std::string path = write("");
    EXPECT_EQ(error_of_file(path),
              path + ": expected a scene (a JSON object), found an empty file");
}

TEST_F(LoadErrors, AFileLargerThanAnySceneIsTold) {
    const std::string mebibyte(std::size_t{1} << 20U, ' ');
    EXPECT_EQ(host::read_scene_text(write(mebibyte), 1), mebibyte);
    const std::string path = write(mebibyte + ' ');
    EXPECT_EQ(host::read_scene_text(path, 2), mebibyte + ' ');
    EXPECT_EQ(error_of_run([&] { host::read_scene_text(path, 1); }),
              path + ": expected a scene, found a file of more than 1 MiB");
}

// Reading by lines loses both bytes: zeros anywhere, 0xFF behind the end of a line.
TEST_F(LoadErrors, BytesThatNoTextHasAreToldWithTheirPlace) {
    const std::string zero = ": expected text, found the byte 0x00; save the scene as UTF-8 text";
    const std::string ff = ": expected text, found the byte 0xFF; save the scene as UTF-8 text";
    const auto error_of_bytes = [this](const std::string& bytes) {
        const std::string path = write(bytes);
        const std::string error = error_of_file(path);
        EXPECT_EQ(error.substr(0, path.size() + 2), path + ": ") << error;
        return error.substr(std::min(path.size() + 2, error.size()));
    };
    using namespace std::string_literals;
    EXPECT_EQ(error_of_bytes("\0{}"s), "line 1, column 1" + zero);
    EXPECT_EQ(error_of_bytes("{}\0"s), "line 1, column 3" + zero);
    EXPECT_EQ(error_of_bytes("{\n \"\xC3\xA9\0\": 1}"s), "line 2, column 4" + zero);
    EXPECT_EQ(error_of_bytes("{}\r\n\xFF"), "line 2, column 1" + ff);
    EXPECT_EQ(error_of_bytes("{\n\xFF}\n"), "line 2, column 1" + ff);
    EXPECT_EQ(error_of_bytes("{\"a\": \"\xFF\"}"), "line 1, column 8" + ff);
    // The first of several.
    EXPECT_EQ(error_of_bytes("{\n\xFF\0}"s), "line 2, column 1" + ff);
    // UTF-16, with a byte-order mark and without.
    EXPECT_EQ(error_of_bytes("\xFF\xFE{\0}\0"s), "line 1, column 1" + ff);
    EXPECT_EQ(error_of_bytes("{\0}\0"s), "line 1, column 2" + zero);
    // Beyond any buffer.
    EXPECT_EQ(error_of_bytes(std::string(10000, '\n') + "\xFF{}"), "line 10001, column 1" + ff);
    EXPECT_EQ(error_of_bytes("{}" + std::string(9998, ' ') + '\0'), "line 1, column 10001" + zero);
}

TEST_F(LoadErrors, AnEndlessFileOfZerosIsTold) {
    EXPECT_EQ(error_of_file("/dev/zero"),
              "/dev/zero: line 1, column 1: expected text, found the byte 0x00; save the scene as "
              "UTF-8 text");
}

TEST_F(LoadErrors, ErrorsInTheSceneNameTheFile) {
    const std::string path = write("{\"camera\": 1}");
    EXPECT_EQ(error_of_file(path), path + ": /camera: expected an object, found 1");
}

TEST_F(LoadErrors, ASceneThroughAPipeIsReadToItsEnd) {
    const std::string path = folder_ + "/pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&path] {
        std::ofstream pipe(path);
        pipe << "{\"camera\": " << std::flush;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        pipe << "1}";
    });
    EXPECT_EQ(error_of_file(path), path + ": /camera: expected an object, found 1");
    writer.join();
}

TEST_F(LoadErrors, AGoodFileIsNone) { EXPECT_EQ(error_of_file(write("{}")), "no error"); }

TEST_F(LoadErrors, AnyLineEndingIsGood) {
    for (const char* const end : {"\n", "\r", "\r\n", "\n\r"}) {
        std::string text = "{@@\"camera\":@{@}@@}@";
        for (std::size_t at = 0; (at = text.find('@', at)) != std::string::npos;) {
            text.replace(at, 1, end);
        }
        EXPECT_EQ(error_of_file(write(text)), "no error") << testing::PrintToString(end);
    }
}

TEST_F(LoadErrors, ASceneOfOneLongLineIsReadWhole) {
    // A megabyte, as scripts write it; the error at its end shows that nothing in front is lost.
    std::string numbers = "1";
    while (numbers.size() < 1000000) {
        numbers += ",1";
    }
    const std::string start = R"({"camera": {"position": [)";
    const std::string path = write(start + numbers + "]}} x");
    EXPECT_EQ(error_of_file(path), path + ": line 1, column " +
                                       std::to_string(start.size() + numbers.size() + 5) +
                                       ": expected a value, found invalid literal");
}

TEST(SyntaxErrors, TellLineAndColumnOfTheWrongToken) {
    EXPECT_EQ(error_of("{\"camera\": {},}"),
              "s.json: line 1, column 15: expected a member's name in double quotes, found '}'");
    EXPECT_EQ(error_of("{\n  \"camera\": {}\n  \"controls\": {}\n}"),
              "s.json: line 3, column 3: expected ',' or '}', found \"controls\"");
    EXPECT_EQ(error_of("{\"camera\" {}}"), "s.json: line 1, column 11: expected ':', found '{'");
    EXPECT_EQ(error_of("{\"camera\": }"), "s.json: line 1, column 12: expected a value, found '}'");
    EXPECT_EQ(error_of("{\"a\": [1 -2.5]}"),
              "s.json: line 1, column 10: expected ',' or ']', found -2.5");
    EXPECT_EQ(error_of("{\"a\": [\"b\" false]}"),
              "s.json: line 1, column 12: expected ',' or ']', found false");
    EXPECT_EQ(error_of("{\"a\", 1}"), "s.json: line 1, column 5: expected ':', found ','");
    EXPECT_EQ(error_of("{camera: 1}"),
              "s.json: line 1, column 2: expected a member's name in double quotes, found invalid "
              "literal");
}

TEST(SyntaxErrors, TellWhereTheTextEnds) {
    EXPECT_EQ(error_of("{\"camera\": {"),
              "s.json: line 1, column 13: expected a member's name in double quotes, found end of "
              "input");
    EXPECT_EQ(error_of("{\n"),
              "s.json: line 2, column 1: expected a member's name in double quotes, found end of "
              "input");
    EXPECT_EQ(error_of(" "), "s.json: line 1, column 2: expected a value, found end of input");
    EXPECT_EQ(error_of("// nothing\n"),
              "s.json: line 2, column 1: expected a value, found end of input");
}

TEST(SyntaxErrors, TellWhatFollowsTheScene) {
    EXPECT_EQ(error_of("{} {}"),
              "s.json: line 1, column 4: expected the end of the scene, found '{'");
}

TEST(SyntaxErrors, CountColumnsInCharacters) {
    EXPECT_EQ(error_of("{\"\xC3\xA9toile\" 5}"),
              "s.json: line 1, column 11: expected ':', found 5");
}

TEST(SyntaxErrors, TellBrokenTokensAtTheBreak) {
    EXPECT_EQ(error_of("{\"a\": tru}"),
              "s.json: line 1, column 10: expected a value, found invalid literal");
    EXPECT_EQ(error_of("{\"a\": NaN}"),
              "s.json: line 1, column 7: expected a value, found invalid literal");
    EXPECT_EQ(error_of("{\"a\": \"\xFF\"}"),
              "s.json: line 1, column 8: expected a value, found invalid string: ill-formed UTF-8 "
              "byte");
    EXPECT_EQ(error_of("{} /* open"),
              "s.json: line 1, column 11: expected a value, found invalid comment; missing closing "
              "'*/'");
}

TEST(SyntaxErrors, LongTokensAreNotRepeated) {
    EXPECT_EQ(error_of("{\"a\" \"" + std::string(59, 'x') + "\"}"),
              "s.json: line 1, column 6: expected ':', found a long string literal");
}

TEST(SyntaxErrors, AStringWithoutItsEndIsTold) {
    EXPECT_EQ(error_of("{\"a"),
              "s.json: line 1, column 4: expected a member's name in double quotes, found invalid "
              "string: missing closing quote");
}

TEST(SyntaxErrors, ANumberBeyondDoubleIsTold) {
    EXPECT_EQ(error_of("{\"a\": 1e999}"),
              "s.json: line 1, column 7: expected a finite number, found 1e999");
}

TEST(RepeatedMembers, AreTold) {
    EXPECT_EQ(error_of(R"({"camera": {}, "camera": {}})"),
              "s.json: /camera: expected each member once, found \"camera\" twice");
    EXPECT_EQ(composition_error(R"("width": 1, "height": 2, "width": 3)"),
              "s.json: /composition/width: expected each member once, found \"width\" twice");
    EXPECT_EQ(control_error(R"([1, {"keys": [{"time": 0, "value": 1}, {"time": 1, "time": 2}]}])"),
              "s.json: /controls/A/1/keys/1/time: expected each member once, found \"time\" twice");
    EXPECT_EQ(error_of(R"({"controls": {"a/b": 1, "a/b": 2}})"),
              "s.json: /controls/a~1b: expected each member once, found \"a/b\" twice");
}

TEST(UnknownMembers, AreToldWithTheNearestName) {
    EXPECT_EQ(
        error_of(R"({"compositon": {}})"),
        "s.json: /compositon: expected one of \"composition\", \"camera\", \"controls\", found "
        "\"compositon\"; did you mean \"composition\"?");
    EXPECT_EQ(error_of(R"({"Camera": {}})"),
              "s.json: /Camera: expected one of \"composition\", \"camera\", \"controls\", found "
              "\"Camera\"; did you mean \"camera\"?");
    EXPECT_EQ(composition_error(R"("fps": 24)"),
              "s.json: /composition/fps: expected one of \"width\", \"height\", \"frame_rate\", "
              "\"duration\", \"motion_blur\", \"shutter_angle\", \"shutter_phase\", found \"fps\"");
    EXPECT_EQ(camera_error(R"("fov": 24)"),
              "s.json: /camera/fov: expected one of \"look_at\", \"position\", \"orientation\", "
              "\"matrix\", \"zoom\", \"vertical_fov\", found \"fov\"");
    EXPECT_EQ(camera_error(R"("look_at": {"rol": 24})"),
              "s.json: /camera/look_at/rol: expected one of \"ra\", \"dec\", \"roll\", found "
              "\"rol\"; did you mean \"roll\"?");
    EXPECT_EQ(
        control_error(R"({"kyes": []})"),
        "s.json: /controls/A/kyes: expected \"keys\", found \"kyes\"; did you mean \"keys\"?");
    EXPECT_EQ(control_error(R"({"keys": [{"tme": 0, "value": 1}]})"),
              "s.json: /controls/A/keys/0/tme: expected one of \"time\", \"value\", found \"tme\"; "
              "did you mean \"time\"?");
    EXPECT_EQ(control_error(R"({"keys": [{"time": 0, "value": 1}], "ease": 1})"),
              "s.json: /controls/A/ease: expected \"keys\", found \"ease\"");
}

TEST(WrongTypes, OfThePartsAreTold) {
    EXPECT_EQ(error_of("[]"), "s.json: expected an object, found an empty array");
    EXPECT_EQ(error_of("[1, 2]"), "s.json: expected an object, found an array of 2");
    EXPECT_EQ(error_of("null"), "s.json: expected an object, found null");
    EXPECT_EQ(error_of(R"({"composition": "big"})"),
              "s.json: /composition: expected an object, found \"big\"");
    EXPECT_EQ(error_of(R"({"camera": null})"), "s.json: /camera: expected an object, found null");
    EXPECT_EQ(error_of(R"({"controls": [1]})"),
              "s.json: /controls: expected an object, found an array of 1");
}

TEST(WrongTypes, NamesThatWouldBreakTheLineAreEscaped) {
    EXPECT_EQ(
        error_of(R"({"controls": {"a\u0000\nb": []}})"),
        "s.json: /controls/a\\u0000\\nb: expected a colour ([red, green, blue] from 0 to 255, or "
        "\"#rrggbb\"), found an empty array");
    EXPECT_EQ(error_of(R"({"a\nb": 1})"),
              "s.json: /a\\nb: expected one of \"composition\", \"camera\", \"controls\", found "
              "\"a\\nb\"");
    EXPECT_EQ(error_of(R"({"a\nb": 1, "a\nb": 1})"),
              "s.json: /a\\nb: expected each member once, found \"a\\nb\" twice");
}

TEST(WrongTypes, LongTextsAreNotRepeated) {
    EXPECT_EQ(error_of("\"" + std::string(60, 'x') + "\""),
              "s.json: expected an object, found \"" + std::string(60, 'x') + "\"");
    EXPECT_EQ(error_of("\"" + std::string(61, 'x') + "\""),
              "s.json: expected an object, found a long string");
}

TEST(CompositionErrors, SizesAreWholeNumbersInRange) {
    EXPECT_EQ(composition_error(R"("width": 0)"),
              "s.json: /composition/width: expected a whole number from 1 to 30000, found 0");
    EXPECT_EQ(composition_error(R"("height": 30001)"),
              "s.json: /composition/height: expected a whole number from 1 to 30000, found 30001");
    EXPECT_EQ(composition_error(R"("width": 1920.5)"),
              "s.json: /composition/width: expected a whole number from 1 to 30000, found 1920.5");
    EXPECT_EQ(
        composition_error(R"("width": "1920")"),
        "s.json: /composition/width: expected a whole number from 1 to 30000, found \"1920\"");
    EXPECT_EQ(composition_error(R"("width": true)"),
              "s.json: /composition/width: expected a whole number from 1 to 30000, found true");
}

TEST(CompositionErrors, RatesAndDurationsHaveRanges) {
    EXPECT_EQ(composition_error(R"("frame_rate": 0)"),
              "s.json: /composition/frame_rate: expected a number from 0.001 to 999, found 0");
    EXPECT_EQ(composition_error(R"("frame_rate": 999.5)"),
              "s.json: /composition/frame_rate: expected a number from 0.001 to 999, found 999.5");
    EXPECT_EQ(composition_error(R"("duration": 0)"),
              "s.json: /composition/duration: expected a number above 0, found 0");
    EXPECT_EQ(composition_error(R"("duration": -2)"),
              "s.json: /composition/duration: expected a number above 0, found -2");
}

TEST(CompositionErrors, ADurationMustFitTheHostsTimes) {
    // (2147483647 - 3) / 24 = 89478485.17; at 23.976 (2147483647 - 3003) / 24000 = 89478.36.
    EXPECT_EQ(composition_error(R"("duration": 89478485)"), "no error");
    EXPECT_EQ(composition_error(R"("duration": 89478486)"),
              "s.json: /composition/duration: expected at most 89478485.0 seconds at this frame "
              "rate, found 89478486");
    EXPECT_EQ(composition_error(R"("frame_rate": 23.976, "duration": 1e5)"),
              "s.json: /composition/duration: expected at most 89478.0 seconds at this frame rate, "
              "found 100000.0");
}

TEST(CompositionErrors, TheShutterHasRanges) {
    EXPECT_EQ(composition_error(R"("shutter_angle": -1)"),
              "s.json: /composition/shutter_angle: expected a number from 0 to 720, found -1");
    EXPECT_EQ(composition_error(R"("shutter_angle": {"keys": [{"time": 0, "value": 721}]})"),
              "s.json: /composition/shutter_angle/keys/0/value: expected a number from 0 to 720, "
              "found 721");
    EXPECT_EQ(
        composition_error(R"("shutter_phase": 360.5)"),
        "s.json: /composition/shutter_phase: expected a number from -360 to 360, found 360.5");
    EXPECT_EQ(
        composition_error(R"("shutter_phase": "0")"),
        "s.json: /composition/shutter_phase: expected a number from -360 to 360 or {\"keys\": "
        "[...]}, found \"0\"");
}

TEST(CompositionErrors, MotionBlurIsASwitch) {
    EXPECT_EQ(composition_error(R"("motion_blur": 1)"),
              "s.json: /composition/motion_blur: expected true or false, found 1");
}

TEST(CompositionErrors, SizeRateAndDurationDoNotChange) {
    EXPECT_EQ(composition_error(
                  R"("width": {"keys": [{"time": 0, "value": 640}, {"time": 1, "value": 800}]})"),
              "s.json: /composition/width/keys/1/value: expected the first key's value, 640, since "
              "this does not change over time, found 800");
    EXPECT_EQ(
        composition_error(
            R"("duration": {"keys": [{"time": 0, "value": 1}, {"time": 1, "value": 2}]})"),
        "s.json: /composition/duration/keys/1/value: expected the first key's value, 1, since "
        "this does not change over time, found 2");
    EXPECT_EQ(composition_error(R"("frame_rate": {"keys": [{"time": 0, "value": 0}]})"),
              "s.json: /composition/frame_rate/keys/0/value: expected a number from 0.001 to 999, "
              "found 0");
}

TEST(KeyErrors, AreToldWithTheirPlace) {
    const std::string list =
        "expected a list of keys, each {\"time\": seconds, \"value\": ...}, found ";
    EXPECT_EQ(control_error("{}"), "s.json: /controls/A: expected \"keys\", found an empty object");
    EXPECT_EQ(control_error(R"({"keys": []})"),
              "s.json: /controls/A/keys: " + list + "an empty array");
    EXPECT_EQ(control_error(R"({"keys": 3})"), "s.json: /controls/A/keys: " + list + "3");
    EXPECT_EQ(control_error(R"({"keys": [3]})"),
              "s.json: /controls/A/keys/0: expected an object, found 3");
    EXPECT_EQ(control_error(R"({"keys": [{"value": 3}]})"),
              "s.json: /controls/A/keys/0: expected \"time\" and \"value\", found no \"time\"");
    EXPECT_EQ(control_error(R"({"keys": [{"time": 3}]})"),
              "s.json: /controls/A/keys/0: expected \"time\" and \"value\", found no \"value\"");
    EXPECT_EQ(control_error(R"({"keys": [{"time": "1s", "value": 3}]})"),
              "s.json: /controls/A/keys/0/time: expected a time in seconds, found \"1s\"");
}

TEST(KeyErrors, TimesMustIncrease) {
    EXPECT_EQ(control_error(R"({"keys": [{"time": 2, "value": 0}, {"time": 1.5, "value": 0}]})"),
              "s.json: /controls/A/keys/1/time: expected a time after that of the key before, 2, "
              "found 1.5");
    EXPECT_EQ(control_error(R"({"keys": [{"time": 2, "value": 0}, {"time": 2, "value": 0}]})"),
              "s.json: /controls/A/keys/1/time: expected a time after that of the key before, 2, "
              "found 2");
}

TEST(ControlErrors, OtherValuesAreTold) {
    EXPECT_EQ(
        control_error("null"),
        "s.json: /controls/A: expected a number, true or false, the name of a choice, a colour "
        "([red, green, blue] from 0 to 255, or \"#rrggbb\"), or {\"keys\": [...]}, found null");
    EXPECT_EQ(control_error("\"\""),
              "s.json: /controls/A: expected the name of a choice, found \"\"");
    EXPECT_EQ(control_error(R"({"keys": [{"time": 0, "value": "Persp"}]})"),
              "s.json: /controls/A/keys/0/value: expected a number, or true or false, found "
              "\"Persp\"");
    EXPECT_EQ(
        control_error(R"({"keys": [{"time": 0, "value": 1}, {"time": 1, "value": [1, 2, 3]}]})"),
        "s.json: /controls/A/keys/1/value: expected a number, or true or false, found an array "
        "of 3");
}

TEST(ControlErrors, ColoursHaveThreeNumbersFrom0To255) {
    const std::string colour =
        "expected a colour ([red, green, blue] from 0 to 255, or \"#rrggbb\"), found ";
    EXPECT_EQ(control_error("[1, 2]"), "s.json: /controls/A: " + colour + "an array of 2");
    EXPECT_EQ(control_error("[]"), "s.json: /controls/A: " + colour + "an empty array");
    for (const char* broken : {"\"#12345\"", "\"#1234567\"", "\"#12345g\"", "\"#\""}) {
        EXPECT_EQ(control_error(broken), "s.json: /controls/A: " + colour + broken);
    }
    EXPECT_EQ(control_error("[1, 2, 256]"),
              "s.json: /controls/A/2: expected a number from 0 to 255, found 256");
    EXPECT_EQ(control_error("[1, \"2\", 3]"),
              "s.json: /controls/A/1: expected a number from 0 to 255 or {\"keys\": [...]}, found "
              "\"2\"");
    EXPECT_EQ(control_error(R"({"keys": [{"time": 0, "value": [1, -1, 2]}]})"),
              "s.json: /controls/A/keys/0/value/1: expected a number from 0 to 255, found -1");
    EXPECT_EQ(
        control_error(R"({"keys": [{"time": 0, "value": "#000000"}, {"time": 1, "value": 7}]})"),
        "s.json: /controls/A/keys/1/value: " + colour + "7");
}

TEST(CameraErrors, OneWayToPlaceTheCameraAtATime) {
    const std::string one = "s.json: /camera: expected one way to place the camera, found ";
    EXPECT_EQ(camera_error(R"("look_at": {}, "position": [0, 0, 0])"),
              one + "\"look_at\" and \"position\"; remove one of them");
    EXPECT_EQ(camera_error(R"("look_at": {}, "orientation": [0, 0, 0])"),
              one + "\"look_at\" and \"orientation\"; remove one of them");
    EXPECT_EQ(camera_error(R"("matrix": [], "orientation": [0, 0, 0], "position": [0, 0, 0])"),
              one + "\"position\" with \"orientation\" and \"matrix\"; remove one of them");
    EXPECT_EQ(camera_error(R"("look_at": {}, "matrix": [], "position": [0, 0, 0])"),
              one + "\"look_at\", \"position\" and \"matrix\"; remove two of them");
}

TEST(CameraErrors, OneWayToSayHowMuchIsSeen) {
    EXPECT_EQ(
        camera_error(R"("look_at": {}, "zoom": 100, "vertical_fov": 24)"),
        "s.json: /camera: expected one way to say how much the camera sees, found \"zoom\" and "
        "\"vertical_fov\"; remove one of them");
}

TEST(CameraErrors, ZoomAndAngleOfViewHaveRanges) {
    EXPECT_EQ(camera_error(R"("zoom": 0)"),
              "s.json: /camera/zoom: expected a number above 0, found 0");
    EXPECT_EQ(camera_error(R"("vertical_fov": 0)"),
              "s.json: /camera/vertical_fov: expected a number above 0 and below 180, found 0");
    EXPECT_EQ(camera_error(R"("vertical_fov": {"keys": [{"time": 0, "value": 180}]})"),
              "s.json: /camera/vertical_fov/keys/0/value: expected a number above 0 and below 180, "
              "found 180");
}

TEST(CameraErrors, LookAtIsAnObjectOfAngles) {
    EXPECT_EQ(camera_error(R"("look_at": [83, -1])"),
              "s.json: /camera/look_at: expected an object, found an array of 2");
    EXPECT_EQ(
        camera_error(R"("look_at": {"ra": "5h35m"})"),
        "s.json: /camera/look_at/ra: expected a number or {\"keys\": [...]}, found \"5h35m\"");
    EXPECT_EQ(camera_error(R"("look_at": {"dec": 90.5})"),
              "s.json: /camera/look_at/dec: expected a number from -90 to 90, found 90.5");
    EXPECT_EQ(camera_error(R"("look_at": {"keys": [], "ra": 1})"),
              "s.json: /camera/look_at/ra: expected \"keys\", found \"ra\"");
    EXPECT_EQ(camera_error(R"("look_at": {"keys": [{"time": 0, "value": 5}]})"),
              "s.json: /camera/look_at/keys/0/value: expected an object, found 5");
}

TEST(CameraErrors, KeysOfLookAtGiveTheSameMembers) {
    EXPECT_EQ(
        camera_error(R"("look_at": {"keys": [{"time": 0, "value": {"ra": 1, "dec": 5}},
                                                   {"time": 1, "value": {"ra": 1}}]})"),
        "s.json: /camera/look_at/keys/1/value: expected the same members as in the first key, "
        "found no \"dec\"");
    EXPECT_EQ(
        camera_error(R"("look_at": {"keys": [{"time": 0, "value": {"ra": 1}},
                                                   {"time": 1, "value": {"ra": 1, "roll": 2}}]})"),
        "s.json: /camera/look_at/keys/1/value: expected the same members as in the first key, "
        "found \"roll\"");
}

TEST(CameraErrors, ArraysHaveTheirNumberOfNumbers) {
    EXPECT_EQ(camera_error(R"("position": [1, 2])"),
              "s.json: /camera/position: expected an array of 3 numbers, found an array of 2");
    EXPECT_EQ(
        camera_error(R"("position": 5)"),
        "s.json: /camera/position: expected an array of 3 numbers or {\"keys\": [...]}, found 5");
    EXPECT_EQ(camera_error(R"("orientation": {"keys": [{"time": 0, "value": [1, 2, 3, 4]}]})"),
              "s.json: /camera/orientation/keys/0/value: expected an array of 3 numbers, found an "
              "array of 4");
    EXPECT_EQ(camera_error(R"("orientation": [1, null, 3])"),
              "s.json: /camera/orientation/1: expected a number or {\"keys\": [...]}, found null");
    EXPECT_EQ(camera_error(R"("orientation": {"keys": [{"time": 0, "value": [1, "2", 3]}]})"),
              "s.json: /camera/orientation/keys/0/value/1: expected a number, found \"2\"");
    EXPECT_EQ(camera_error(R"("matrix": [1, 0, 0])"),
              "s.json: /camera/matrix: expected an array of 16 numbers, found an array of 3");
}

TEST(CameraErrors, AMatrixWrittenForColumnVectorsIsTold) {
    EXPECT_EQ(
        camera_error(R"("matrix": [1,0,0,5, 0,1,0,6, 0,0,1,7, 0,0,0,1])"),
        "s.json: /camera/matrix/3: expected 0 (the matrix's rows end in 0, 0, 0 and 1, and the "
        "translation is its last row), found 5");
    EXPECT_EQ(
        camera_error(
            R"("matrix": {"keys": [{"time": 0, "value": [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,2]}]})"),
        "s.json: /camera/matrix/keys/0/value/15: expected 1 (the matrix's rows end in 0, 0, 0 "
        "and 1, and the translation is its last row), found 2");
}

TEST(CameraErrors, AMatrixMustHaveAnInverse) {
    EXPECT_EQ(camera_error(R"("matrix": [1,0,0,0, 0,1,0,0, 0,0,0,0, 1,2,3,1])"),
              "s.json: /camera/matrix: expected a matrix that can be inverted, found one that "
              "flattens space at 0.0 s");
    // Scaled by z: 1 at 0 s, 0 at 1.5 s.
    EXPECT_EQ(camera_error(R"("matrix": [1,0,0,0, 0,1,0,0, 0,0,{"keys": [{"time": 0, "value": 1},
                              {"time": 1.5, "value": 0}]},0, 1,2,3,1])"),
              "s.json: /camera/matrix: expected a matrix that can be inverted, found one that "
              "flattens space at 1.5 s");
}

}  // namespace
