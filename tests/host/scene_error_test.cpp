// Every way a scene can be wrong, with the whole text that the user gets.
#include <gtest/gtest.h>
#include <host/scene.h>
#include <host/scene_text.h>
#include <support/scratch.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

class LoadErrors : public testing::Test {
protected:
    std::string write(const std::string& text) const {
        const std::string path = folder_ / "scene.json";
        write_file(path, text);
        return path;
    }
    static std::string error_of_file(const std::string& path) {
        return error_of_run([&path] { host::load_scene(path); });
    }

    ScratchFolder folder_;
};

TEST_F(LoadErrors, AFileThatCannotBeReadIsTold) {
    const std::string beyond = write("{}") + "/more.json";
    for (const auto& [path, reason] :
         {std::pair{folder_ / "none.json", "No such file or directory"},
          {folder_.path(), "Is a directory"},
          {beyond, "Not a directory"}}) {
        EXPECT_EQ(error_of_file(path), "cannot read " + path + ": " + reason);
    }
}

TEST_F(LoadErrors, ErrorsInTheSceneNameTheFile) {
    for (const auto& [text, error] :
         {std::pair{"", "expected a scene (a JSON object), found an empty file"},
          {"{\"camera\": 1}", "/camera: expected an object, found 1"}}) {
        const std::string path = write(text);
        EXPECT_EQ(error_of_file(path), path + ": " + error);
    }
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
        return error_of_file(path).substr(path.size() + 2);
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
    // Without an end.
    EXPECT_EQ(error_of_file("/dev/zero"), "/dev/zero: line 1, column 1" + zero);
}

TEST_F(LoadErrors, ASceneThroughAPipeIsReadToItsEnd) {
    const std::string path = folder_ / "pipe";
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
                                       ": expected the end of the scene, found x");
}

const std::string kName = "expected a member's name in double quotes, found ";
const std::string kValue = "expected a value, found ";
const std::string kSide = ": expected a whole number from 1 to 30000, found ";
const std::string kRate = ": expected a number from 0.001 to 999, found ";
const std::string kOneWay = ": expected one way to place the camera, found ";
const std::string kSameMembers = ": expected the same members as in the first key, found ";

struct Wrong {
    std::string value;
    std::string error;  ///< behind the file's name and the place that all have in common
};

void expect_errors(const std::string& before, const std::string& behind, const std::string& place,
                   const std::vector<Wrong>& rows) {
    for (const Wrong& row : rows) {
        EXPECT_EQ(error_of(before + row.value + behind), "s.json: " + place + row.error)
            << row.value;
    }
}

TEST(SceneErrors, OfTheWholeAreTold) {
    expect_errors(
        "", "", "",
        {
            // A wrong token, with line and column.
            {"{\"camera\": {},}", "line 1, column 15: " + kName + "'}'"},
            {"{\n  \"camera\": {}\n  \"controls\": {}\n}",
             "line 3, column 3: expected ',' or '}', found \"controls\""},
            {"{\"camera\" {}}", "line 1, column 11: expected ':', found '{'"},
            {"{\"camera\": }", "line 1, column 12: " + kValue + "'}'"},
            {"{\"a\": [1 -2.5]}", "line 1, column 10: expected ',' or ']', found -2.5"},
            {"{\"a\": [\"b\" false]}", "line 1, column 12: expected ',' or ']', found false"},
            {"{\"a\", 1}", "line 1, column 5: expected ':', found ','"},
            {"{camera: 1}", "line 1, column 2: " + kName + "invalid literal"},
            // Where the text ends.
            {"{\"camera\": {", "line 1, column 13: " + kName + "end of input"},
            {"{\n", "line 2, column 1: " + kName + "end of input"},
            {" ", "line 1, column 2: " + kValue + "end of input"},
            {"// nothing\n", "line 2, column 1: " + kValue + "end of input"},
            // What follows the scene.
            {"{} {}", "line 1, column 4: expected the end of the scene, found '{'"},
            {"{} x", "line 1, column 4: expected the end of the scene, found x"},
            {"{} nul", "line 1, column 4: expected the end of the scene, found nul"},
            {"{} nulx y", "line 1, column 4: expected the end of the scene, found nulx"},
            {"{} -", "line 1, column 4: expected the end of the scene, found -"},
            {"{}\n // end\n  \"x", "line 3, column 3: expected the end of the scene, found \"x"},
            {"{}/* c */tru", "line 1, column 10: expected the end of the scene, found tru"},
            {"{}x1 y", "line 1, column 3: expected the end of the scene, found x1"},
            {"{}\n\n  tru", "line 3, column 3: expected the end of the scene, found tru"},
            {"{} nuts /* too */", "line 1, column 4: expected the end of the scene, found nuts"},
            {"{} @", "line 1, column 4: expected the end of the scene, found @"},
            {"{} \xC3\xA9",
             "line 1, column 4: expected the end of the scene, found invalid literal"},
            // Columns are counted in characters.
            {"{\"\xC3\xA9toile\" 5}", "line 1, column 11: expected ':', found 5"},
            // Broken tokens, at the break.
            {"{\"a\": tru}", "line 1, column 10: " + kValue + "invalid literal"},
            {"{\"a\": NaN}", "line 1, column 7: " + kValue + "invalid literal"},
            {"{\"a\": \"\xFF\"}",
             "line 1, column 8: " + kValue + "invalid string: ill-formed UTF-8 byte"},
            {"{} /* open",
             "line 1, column 11: " + kValue + "invalid comment; missing closing '*/'"},
            // Long tokens are not repeated.
            {"{\"a\" \"" + std::string(59, 'x') + "\"}",
             "line 1, column 6: expected ':', found a long string literal"},
            {"{\"a", "line 1, column 4: " + kName + "invalid string: missing closing quote"},
            {"{\"a\": 1e999}", "line 1, column 7: expected a finite number, found 1e999"},
            // Members twice.
            {R"({"camera": {}, "camera": {}})",
             "/camera: expected each member once, found \"camera\" twice"},
            {R"({"controls": {"a/b": 1, "a/b": 2}})",
             "/controls/a~1b: expected each member once, found \"a/b\" twice"},
            // Unknown members, with the nearest name.
            {R"({"compositon": {}})",
             "/compositon: expected one of \"composition\", \"camera\", \"controls\", \"picture\", "
             "found "
             "\"compositon\"; did you mean \"composition\"?"},
            {R"({"Camera": {}})",
             "/Camera: expected one of \"composition\", \"camera\", \"controls\", \"picture\", "
             "found "
             "\"Camera\"; did you mean \"camera\"?"},
            // Parts of the wrong type.
            {"[]", "expected an object, found an empty array"},
            {"[1, 2]", "expected an object, found an array of 2"},
            {"null", "expected an object, found null"},
            {R"({"composition": "big"})", "/composition: expected an object, found \"big\""},
            {R"({"camera": null})", "/camera: expected an object, found null"},
            {R"({"controls": [1]})", "/controls: expected an object, found an array of 1"},
            // Names that would break the line are escaped.
            {R"({"controls": {"a\u0000\nb": []}})",
             "/controls/a\\u0000\\nb: expected a colour ([red, green, blue] from 0 to 255, or "
             "\"#rrggbb\"), found an empty array"},
            {R"({"a\nb": 1})",
             "/a\\nb: expected one of \"composition\", \"camera\", \"controls\", \"picture\", "
             "found \"a\\nb\""},
            {R"({"a\nb": 1, "a\nb": 1})",
             "/a\\nb: expected each member once, found \"a\\nb\" twice"},
            // Long texts are not repeated.
            {"\"" + std::string(60, 'x') + "\"",
             "expected an object, found \"" + std::string(60, 'x') + "\""},
            {"\"" + std::string(61, 'x') + "\"", "expected an object, found a long string"},
        });
}

TEST(SceneErrors, OfTheCompositionAreTold) {
    expect_errors(
        R"({"composition": {)", "}}", "/composition",
        {
            // Members twice.
            {R"("width": 1, "height": 2, "width": 3)",
             "/width: expected each member once, found \"width\" twice"},
            // Unknown members, with the nearest name.
            {R"("fps": 24)",
             "/fps: expected one of \"width\", \"height\", \"frame_rate\", \"duration\", "
             "\"first_frame\", \"motion_blur\", \"shutter_angle\", \"shutter_phase\", found "
             "\"fps\""},
            // Sizes are whole numbers.
            {R"("width": 0)", "/width" + kSide + "0"},
            {R"("height": 30001)", "/height" + kSide + "30001"},
            {R"("width": 1920.5)", "/width" + kSide + "1920.5"},
            {R"("width": "1920")", "/width" + kSide + "\"1920\""},
            {R"("width": true)", "/width" + kSide + "true"},
            {R"("frame_rate": 0)", "/frame_rate" + kRate + "0"},
            {R"("frame_rate": 999.5)", "/frame_rate" + kRate + "999.5"},
            {R"("duration": 0)", "/duration: expected a number above 0, found 0"},
            {R"("duration": -2)", "/duration: expected a number above 0, found -2"},
            // A duration must fit the host's times.
            // (2147483647 - 3) / 24 = 89478485.17; at 23.976 (2147483647 - 3003) / 24000 =
            // 89478.36.
            {R"("duration": 89478486)",
             "/duration: expected at most 89478485.0 seconds at this frame rate, found 89478486"},
            {R"("frame_rate": 23.976, "duration": 1e5)",
             "/duration: expected at most 89478.0 seconds at this frame rate, found 100000.0"},
            {R"("shutter_angle": -1)", "/shutter_angle: expected a number from 0 to 720, found -1"},
            {R"("shutter_angle": {"keys": [{"time": 0, "value": 721}]})",
             "/shutter_angle/keys/0/value: expected a number from 0 to 720, found 721"},
            {R"("shutter_phase": 360.5)",
             "/shutter_phase: expected a number from -360 to 360, found 360.5"},
            {R"("shutter_phase": "0")",
             "/shutter_phase: expected a number from -360 to 360 or {\"keys\": [...]}, found "
             "\"0\""},
            {R"("motion_blur": 1)", "/motion_blur: expected true or false, found 1"},
            // Size, rate and duration do not change.
            {R"("width": {"keys": [{"time": 0, "value": 640}, {"time": 1, "value": 800}]})",
             "/width/keys/1/value: expected the first key's value, 640, since this does not change "
             "over time, found 800"},
            {R"("duration": {"keys": [{"time": 0, "value": 1}, {"time": 1, "value": 2}]})",
             "/duration/keys/1/value: expected the first key's value, 1, since this does not "
             "change over time, found 2"},
            {R"("frame_rate": {"keys": [{"time": 0, "value": 0}]})",
             "/frame_rate/keys/0/value" + kRate + "0"},
        });
    EXPECT_EQ(error_of(R"({"composition": {"duration": 89478485}})"), "no error");
}

TEST(SceneErrors, OfControlsAreTold) {
    const std::string kList =
        ": expected a list of keys, each {\"time\": seconds, \"value\": ...}, found ";
    const std::string kColour =
        ": expected a colour ([red, green, blue] from 0 to 255, or \"#rrggbb\"), found ";
    expect_errors(
        R"({"controls": {"A": )", "}}", "/controls/A",
        {
            // Members twice.
            {R"([1, {"keys": [{"time": 0, "value": 1}, {"time": 1, "time": 2}]}])",
             "/1/keys/1/time: expected each member once, found \"time\" twice"},
            // Unknown members, with the nearest name.
            {R"({"kyes": []})",
             "/kyes: expected one of \"keys\", \"interpolation\", found \"kyes\"; did you mean "
             "\"keys\"?"},
            {R"({"keys": [{"tme": 0, "value": 1}]})",
             "/keys/0/tme: expected one of \"time\", \"value\", \"interpolation\", found \"tme\"; "
             "did you mean "
             "\"time\"?"},
            {R"({"keys": [{"time": 0, "value": 1}], "ease": 1})",
             "/ease: expected one of \"keys\", \"interpolation\", found \"ease\""},
            {R"({"keys": [{"time": 0, "value": 1, "interpolation": "cubic"}]})",
             "/keys/0/interpolation: expected \"linear\", \"smooth\" or \"hold\", found "
             "\"cubic\""},
            {R"({"keys": [{"time": 0, "value": 1}], "interpolation": 2})",
             "/interpolation: expected \"linear\", \"smooth\" or \"hold\", found 2"},
            // Keys.
            {"{}", ": expected \"keys\", found an empty object"},
            {R"({"keys": []})", "/keys" + kList + "an empty array"},
            {R"({"keys": 3})", "/keys" + kList + "3"},
            {R"({"keys": [3]})", "/keys/0: expected an object, found 3"},
            {R"({"keys": [{"value": 3}]})",
             "/keys/0: expected \"time\" and \"value\", found no \"time\""},
            {R"({"keys": [{"time": 3}]})",
             "/keys/0: expected \"time\" and \"value\", found no \"value\""},
            {R"({"keys": [{"time": "1s", "value": 3}]})",
             "/keys/0/time: expected a time in seconds, found \"1s\""},
            // Times must increase.
            {R"({"keys": [{"time": 2, "value": 0}, {"time": 1.5, "value": 0}]})",
             "/keys/1/time: expected a time after that of the key before, 2, found 1.5"},
            {R"({"keys": [{"time": 2, "value": 0}, {"time": 2, "value": 0}]})",
             "/keys/1/time: expected a time after that of the key before, 2, found 2"},
            // Values of no kind.
            {"null",
             ": expected a number, true or false, the name of a choice, a colour ([red, green, "
             "blue] from 0 to 255, or \"#rrggbb\"), or {\"keys\": [...]}, found null"},
            {"\"\"", ": expected the name of a choice, found \"\""},
            {R"({"keys": [{"time": 0, "value": "Persp"}]})",
             "/keys/0/value: expected a number, or true or false, found \"Persp\""},
            {R"({"keys": [{"time": 0, "value": 1}, {"time": 1, "value": [1, 2, 3]}]})",
             "/keys/1/value: expected a number, or true or false, found an array of 3"},
            // Colours.
            {"[1, 2]", kColour + "an array of 2"},
            {"[]", kColour + "an empty array"},
            {"\"#12345\"", kColour + "\"#12345\""},
            {"\"#1234567\"", kColour + "\"#1234567\""},
            {"\"#12345g\"", kColour + "\"#12345g\""},
            {"\"#\"", kColour + "\"#\""},
            {"[1, 2, 256]", "/2: expected a number from 0 to 255, found 256"},
            {"[1, \"2\", 3]",
             "/1: expected a number from 0 to 255 or {\"keys\": [...]}, found \"2\""},
            {R"({"keys": [{"time": 0, "value": [1, -1, 2]}]})",
             "/keys/0/value/1: expected a number from 0 to 255, found -1"},
            {R"({"keys": [{"time": 0, "value": "#000000"}, {"time": 1, "value": 7}]})",
             "/keys/1/value" + kColour + "7"},
        });
}

TEST(SceneErrors, AnUnknownStarIsToldWithTheNearestName) {
    const auto error = [](const char* likely) {
        return error_of_run([likely] {
            host::parse_scene(R"({"camera": {"look_at": {"keys": [
                {"time": 0, "value": {"star": "Riegl"}}]}}})",
                              "s.json", [likely](const std::string&) {
                                  return host::StarAnswer{std::nullopt,
                                                          *likely != '\0'
                                                              ? std::optional<std::string>(likely)
                                                              : std::nullopt};
                              });
        });
    };
    const std::string told =
        "s.json: /camera/look_at/keys/0/value/star: expected the name of a star, found \"Riegl\"";
    EXPECT_EQ(error("Rigel"), told + "; did you mean \"Rigel\"?");
    EXPECT_EQ(error(""), told);
}

TEST(SceneErrors, OfThePictureAreTold) {
    expect_errors(
        R"({"picture": )", "}", "/picture",
        {
            {"1", ": expected an object, found 1"},
            {R"({"exposre": 1})",
             "/exposre: expected one of \"exposure\", \"view\", \"halo\", "
             "\"limiting_magnitude\", found \"exposre\"; did you mean \"exposure\"?"},
            {R"({"exposure": "1"})", "/exposure: expected a number from -100 to 100, found \"1\""},
            {R"({"exposure": 101})", "/exposure: expected a number from -100 to 100, found 101"},
            {R"({"view": "Photo"})", "/view: expected \"photo\" or \"plain\", found \"Photo\""},
            {R"({"view": 1})", "/view: expected \"photo\" or \"plain\", found 1"},
            {R"({"halo": -0.5})", "/halo: expected a number not below 0, found -0.5"},
            {R"({"limiting_magnitude": "6"})",
             "/limiting_magnitude: expected a number or {\"keys\": [...]}, found \"6\""},
        });
}

TEST(SceneErrors, OfTheCameraAreTold) {
    expect_errors(
        R"({"camera": {)", "}}", "/camera",
        {
            // Unknown members, with the nearest name.
            {R"("fov": 24)",
             "/fov: expected one of \"look_at\", \"position\", \"unit\", \"orientation\", "
             "\"matrix\", \"zoom\", \"vertical_fov\", found \"fov\""},
            {R"("look_at": {"rol": 24})",
             "/look_at/rol: expected one of \"ra\", \"dec\", \"distance\", \"roll\", \"star\", "
             "\"keys\", found \"rol\"; did you mean "
             "\"roll\"?"},
            // One way to place the camera.
            {R"("look_at": {}, "orientation": [0, 0, 0], "position": [0, 0, 0])",
             kOneWay + "\"look_at\" and \"orientation\"; remove one of them"},
            {R"("matrix": [], "position": [0, 0, 0])",
             kOneWay + "\"position\" and \"matrix\"; remove one of them"},
            {R"("matrix": [], "orientation": [0, 0, 0], "look_at": {})",
             kOneWay + "\"look_at\", \"orientation\" and \"matrix\"; remove two of them"},
            {R"("look_at": {}, "orientation": [0, 0, 0])",
             kOneWay + "\"look_at\" and \"orientation\"; remove one of them"},
            {R"("matrix": [], "orientation": [0, 0, 0], "position": [0, 0, 0])",
             kOneWay + "\"position\" with \"orientation\" and \"matrix\"; remove one of them"},
            {R"("look_at": {}, "matrix": [], "position": [0, 0, 0])",
             kOneWay + "\"look_at\" and \"matrix\"; remove one of them"},
            // One way to say how much it sees.
            {R"("look_at": {}, "zoom": 100, "vertical_fov": 24)",
             ": expected one way to say how much the camera sees, found \"zoom\" and "
             "\"vertical_fov\"; remove one of them"},
            {R"("zoom": 0)", "/zoom: expected a number above 0, found 0"},
            {R"("vertical_fov": 0)",
             "/vertical_fov: expected a number above 0 and below 180, found 0"},
            {R"("vertical_fov": {"keys": [{"time": 0, "value": 180}]})",
             "/vertical_fov/keys/0/value: expected a number above 0 and below 180, found 180"},
            // An object of angles.
            {R"("look_at": [83, -1])", "/look_at: expected an object, found an array of 2"},
            {R"("look_at": {"ra": "5h35m"})",
             "/look_at/ra: expected a number or {\"keys\": [...]}, found \"5h35m\""},
            {R"("look_at": {"dec": 90.5})",
             "/look_at/dec: expected a number from -90 to 90, found 90.5"},
            {R"("look_at": {"keys": [], "ra": 1})",
             "/look_at/ra: expected one of \"keys\", \"interpolation\", found \"ra\""},
            {R"("look_at": {"keys": [{"time": 0, "value": 5}]})",
             "/look_at/keys/0/value: expected an object, found 5"},
            // Keys that give the same members.
            {R"("look_at": {"keys": [{"time": 0, "value": {"ra": 1, "dec": 5}},
                                                   {"time": 1, "value": {"ra": 1}}]})",
             "/look_at/keys/1/value" + kSameMembers + "no \"dec\""},
            {R"("look_at": {"keys": [{"time": 0, "value": {"ra": 1}},
                                                   {"time": 1, "value": {"ra": 1, "roll": 2}}]})",
             "/look_at/keys/1/value" + kSameMembers + "\"roll\""},
            // Stars, where none is known by name, and places.
            {R"("look_at": {"star": "Rigel"})",
             "/look_at/star: expected \"ra\" and \"dec\" instead, as no stars are known by name "
             "here, found \"Rigel\""},
            {R"("look_at": {"star": 7})", "/look_at/star: expected the name of a star, found 7"},
            {R"("look_at": {"star": "Rigel", "ra": 7})",
             "/look_at/ra: expected one of \"star\", \"roll\", found \"ra\""},
            {R"("look_at": {"ra": 7, "distance": 0})",
             "/look_at/distance: expected a number above 0, found 0"},
            {R"("position": {"distance": 7})",
             "/position: expected \"toward\" a star, or \"ra\" and \"dec\", found no \"ra\""},
            {R"("position": {"ra": 7, "dec": 0})",
             "/position: expected a \"distance\" from the Sun, found an object"},
            {R"("position": {"toward": "Rigel", "ra": 7, "distance": 1})",
             "/position/ra: expected either \"toward\" or \"ra\" and \"dec\", not both, found 7"},
            {R"("position": [0, 0, 0], "unit": "mi")",
             "/unit: expected \"pc\", \"ly\", \"au\", \"km\" or \"m\", found \"mi\""},
            {R"("matrix": [], "unit": "ly")",
             "/unit: expected no \"unit\" beside \"matrix\", whose translation is in parsecs, "
             "found \"ly\""},
            // Arrays of so many numbers.
            {R"("position": [1, 2])",
             "/position: expected an array of 3 numbers, found an array of 2"},
            {R"("position": 5)",
             "/position: expected an array of 3 numbers or {\"keys\": [...]}, found 5"},
            {R"("orientation": {"keys": [{"time": 0, "value": [1, 2, 3, 4]}]})",
             "/orientation/keys/0/value: expected an array of 3 numbers, found an array of 4"},
            {R"("orientation": [1, null, 3])",
             "/orientation/1: expected a number or {\"keys\": [...]}, found null"},
            {R"("orientation": {"keys": [{"time": 0, "value": [1, "2", 3]}]})",
             "/orientation/keys/0/value/1: expected a number, found \"2\""},
            {R"("matrix": [1, 0, 0])",
             "/matrix: expected an array of 16 numbers, found an array of 3"},
            // A matrix written for column vectors.
            {R"("matrix": [1,0,0,5, 0,1,0,6, 0,0,1,7, 0,0,0,1])",
             "/matrix/3: expected 0 (the matrix's rows end in 0, 0, 0 and 1, and the translation "
             "is its last row), found 5"},
            {R"("matrix": {"keys": [{"time": 0, "value": [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,2]}]})",
             "/matrix/keys/0/value/15: expected 1 (the matrix's rows end in 0, 0, 0 and 1, and the "
             "translation is its last row), found 2"},
            // A matrix without an inverse.
            {R"("matrix": [1,0,0,0, 0,1,0,0, 0,0,0,0, 1,2,3,1])",
             "/matrix: expected a matrix that can be inverted, found one that flattens space at "
             "0.0 s"},
            // Scaled by z: 1 at 0 s, 0 at 1.5 s.
            {R"("matrix": [1,0,0,0, 0,1,0,0, 0,0,{"keys": [{"time": 0, "value": 1},
                              {"time": 1.5, "value": 0}]},0, 1,2,3,1])",
             "/matrix: expected a matrix that can be inverted, found one that flattens space at "
             "1.5 s"},
        });
}

}  // namespace
