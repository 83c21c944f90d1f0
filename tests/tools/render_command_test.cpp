// lumivar render, through the built plug-in.
#include <gtest/gtest.h>
#include <libkelvimage/metadata.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "read_back.h"
#include "star_table.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;
using Names = std::vector<std::string>;

/// Looks at the star of `one_star_database`.
constexpr const char* kScene = R"({
    "composition": {"width": 64, "height": 32, "frame_rate": 24, "duration": 1.0},
    "camera": {"look_at": {"ra": 90, "dec": 0}, "vertical_fov": 24.0},
    "controls": {"Star Spot Size": 40}
})";

/// Half up in single precision, then the ends of the scale.
int rounded_code(float value, int white) {
    return std::clamp(static_cast<int>(std::floor(value * static_cast<float>(white) + 0.5F)), 0,
                      white);
}

class Render : public testing::Test {
protected:
    Render() {
        fs::create_directory(folder / "out");
        fs::create_directory(folder / "tmp");
        write_file(folder / "scene.json", kScene);
        write_file(folder / "one.stars", one_star_database());
        options.environment = {"TMPDIR=" + (folder / "tmp")};
    }
    ~Render() override {
        // However a run ended, no staged copy is left.
        EXPECT_TRUE(names_in(folder / "tmp").empty());
    }

    /// Renders the scene with the database of one star unless told otherwise.
    ToolResult render(const std::string& picture, Arguments more = {}) {
        Arguments arguments = {"render", folder / "scene.json", "-o", folder / ("out/" + picture)};
        if (std::find(more.begin(), more.end(), "--plugin") == more.end() &&
            std::find(more.begin(), more.end(), "--catalogue") == more.end()) {
            more.insert(more.end(), {"--catalogue", folder / "one.stars"});
        }
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_tool(arguments, options);
    }
    /// The one line of a render that fails with code 1 and leaves no picture.
    std::string failure(const Arguments& more, int code = 1) {
        const ToolResult result = render("a.exr", more);
        EXPECT_EQ(result.code, code) << result.out;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_TRUE(names_in(folder / "out").empty());
        return result.err;
    }
    /// A render that fails with these words in its one line.
    void expect_failure(const Arguments& more, const std::string& words, int code = 1) {
        const std::string line = failure(more, code);
        EXPECT_NE(line.find(words), std::string::npos) << line;
    }
    /// The frames of the scene in the background, once the first of them is under way.
    std::unique_ptr<ToolProcess> start_sequence(const std::string& size) {
        auto process = std::make_unique<ToolProcess>(
            Arguments{"render", folder / "scene.json", "-o", folder / "out/a.####.exr", "--frames",
                      "0-23", "--size", size, "--catalogue", folder / "one.stars"},
            options);
        wait_until([this] { return !names_in(folder / "out").empty(); });
        return process;
    }
    /// A copy of the bundle in a folder of its own, where the test puts databases.
    std::string own_bundle() {
        fs::create_directory(folder / "own");
        fs::copy(LUMIVAR_BUNDLE, folder / "own/Lumivar.plugin", fs::copy_options::recursive);
        return folder / "own/Lumivar.plugin";
    }

    ScratchFolder folder;
    ToolOptions options;
};

TEST_F(Render, DrawsTheStarThatTheCameraLooksAtInTheMiddle) {
    options.program = LUMIVAR_PROGRAM;
    const ToolResult result = render("a.exr");
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const std::string start = (folder / "out/a.exr") +
                              ": 64x32, float, frame 0 (0.000 s), catalogue one.stars (1 star), ";
    EXPECT_EQ(result.out.substr(0, start.size()), start);
    EXPECT_EQ(names_in(folder / "out"), Names{"a.exr"});

    const ReadBack picture = read_back(folder / "out/a.exr");
    ASSERT_EQ(picture.spec.width, 64);
    ASSERT_EQ(picture.spec.height, 32);
    float brightest = 0.0F;
    int x_of = -1;
    int y_of = -1;
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 64; ++x) {
            if (picture.at<float>(x, y, 0) > brightest) {
                brightest = picture.at<float>(x, y, 0);
                x_of = x;
                y_of = y;
            }
            EXPECT_EQ(picture.at<float>(x, y, 3), 1.0F);
        }
    }
    // The axis of the camera meets the frame at (width / 2, height / 2).
    EXPECT_EQ(x_of, 32);
    EXPECT_EQ(y_of, 16);
    EXPECT_NEAR(picture.at<float>(31, 16, 0) / picture.at<float>(33, 16, 0), 1.0, 1e-3);
}

/// The one-line form of the settings, for programs to read back.
Kelv::ImageSpec::MetaData settings_in(const OIIO::ImageSpec& spec) {
    Kelv::ImageSpec::MetaData settings;
    settings.from_string(spec.get_string_attribute("lumivar:settings").c_str());
    return settings;
}

std::string text_in(const Kelv::ImageSpec::MetaData& settings, const char* name) {
    String value;
    EXPECT_EQ(settings.get_meta("string", name, value), 0) << name;
    return value.c_str();
}

TEST_F(Render, SaysInTheFileHowItWasMade) {
    ASSERT_EQ(render("a.exr", {"--set", "Star Brightness=8.5", "--set", "Projection=HemiSph",
                               "--set", "Tint Color=1,2,3", "--frame", "6"})
                  .code,
              0);
    const OIIO::ImageSpec spec = read_back(folder / "out/a.exr").spec;
    const std::pair<const char*, std::string> attributes[] = {
        {"Software", "Lumivar 2.0.0"},
        {"lumivar:catalogue", "one.stars, 1 star, version 2"},
        {"lumivar:plugin", "2.0.0"},
        {"lumivar:scene", folder / "scene.json"},
        {"lumivar:composition", "64x32, 24 frames/s"},
        {"lumivar:control:Star Brightness", "8.5"},
        {"lumivar:control:Star Spot Size", "40"},
        {"lumivar:control:Projection", "HemiSph"},
        {"lumivar:control:Tint Color", "1, 2, 3"},
        {"lumivar:control:3D Stars", "on"},
        {"lumivar:control:Star Database", "one.stars"}};
    for (const auto& [name, text] : attributes) {
        EXPECT_EQ(spec.get_string_attribute(name), text) << name;
    }
    // 16 / tan(12 degrees) = 75.27409
    const std::string shown = spec.get_string_attribute("lumivar:camera");
    EXPECT_EQ(shown.substr(0, 11), "zoom 75.274");

    const Kelv::ImageSpec::MetaData settings = settings_in(spec);
    const std::pair<const char*, std::string> texts[] = {
        {"scene", folder / "scene.json"},  {"catalogue", "one.stars"},
        {"catalogue.stars", "1"},          {"plugin", "2.0.0"},
        {"control:Projection", "HemiSph"}, {"control:Tint_Color", "1, 2, 3"},
        {"control:3D_Stars", "on"},        {"control:Star_Database", "one.stars"}};
    for (const auto& [name, text] : texts) {
        EXPECT_EQ(text_in(settings, name), text) << name;
    }
    // Kept to six digits, which hides that the threshold's default is rounded to single precision.
    const std::pair<const char*, float> numbers[] = {{"time", 0.25F},
                                                     {"frame_rate", 24.0F},
                                                     {"catalogue.version", 2.0F},
                                                     {"control:Star_Brightness", 8.5F},
                                                     {"control:Star_Spot_Size", 40.0F},
                                                     {"control:Luminance_Threshold", 0.0001F},
                                                     {"zoom", 75.2741F}};
    for (const auto& [name, number] : numbers) {
        float value = -12345.0F;
        EXPECT_EQ(settings.get_meta("float", name, value), 0) << name;
        EXPECT_EQ(value, number) << name;
    }
    Matrix4<float> camera(0.0F);
    EXPECT_EQ(settings.get_meta("m44f", "camera", camera), 0);
    // The same matrix as the text for people has it, whose numbers have nine digits.
    const std::string marker = "layer to world";
    const char* place = shown.c_str() + shown.find(marker) + marker.size();
    for (int i = 0; i < 16; ++i) {
        char* end = nullptr;
        EXPECT_EQ(camera(i / 4, i % 4), std::strtof(place, &end)) << i;
        place = end;
    }
    // Without motion blur there is no shutter.
    float angle = 0;
    EXPECT_EQ(settings.get_meta("float", "shutter_angle", angle), 1);
}

TEST_F(Render, NamesTheChoicesThatNobodyMade) {
    ASSERT_EQ(render("a.exr", {"--plugin", own_bundle(), "--catalogue", folder / "one.stars"}).code,
              0);
    const OIIO::ImageSpec spec = read_back(folder / "out/a.exr").spec;
    EXPECT_EQ(spec.get_string_attribute("lumivar:control:Projection"), "Persp");
    EXPECT_EQ(spec.get_string_attribute("lumivar:control:Treat Pixels As"), "Linear Luminance");
    const Kelv::ImageSpec::MetaData settings = settings_in(spec);
    EXPECT_EQ(text_in(settings, "control:Projection"), "Persp");
    // The database that the plug-in takes by itself: the only one beside its bundle.
    ASSERT_EQ(run_tool({"render", folder / "scene.json", "-o", folder / "out/a.exr"}, options).code,
              0);
    EXPECT_EQ(
        read_back(folder / "out/a.exr").spec.get_string_attribute("lumivar:control:Star Database"),
        "hipparcos.stars");
}

TEST_F(Render, ReadsTheSceneFromStandardInput) {
    options.input = folder / "scene.json";
    const auto from_input = [this](const std::string& picture) {
        return run_tool(
            {"render", "-", "-o", folder / ("out/" + picture), "--catalogue", folder / "one.stars"},
            options);
    };
    const ToolResult result = from_input("b.exr");
    ASSERT_EQ(result.code, 0) << result.err;
    ASSERT_EQ(render("a.exr").code, 0);
    const ReadBack piped = read_back(folder / "out/b.exr");
    EXPECT_EQ(piped.samples<float>(), read_back(folder / "out/a.exr").samples<float>());
    EXPECT_EQ(piped.spec.get_string_attribute("lumivar:scene"), "standard input");
    write_file(folder / "broken.json", "{\"camera\": 1}");
    options.input = folder / "broken.json";
    EXPECT_EQ(from_input("c.exr").err,
              "lumivar: standard input: /camera: expected an object, found 1\n");
}

TEST_F(Render, LeavesOutOfTheSettingsWhatTheirTextDoesNotCarry) {
    // With a blank and a backslash: the file's name cannot come back, all else does.
    fs::rename(folder / "scene.json", folder / "a \\ b.json");
    const ToolResult result = run_tool({"render", folder / "a \\ b.json", "-o",
                                        folder / "out/a.exr", "--catalogue", folder / "one.stars"},
                                       options);
    ASSERT_EQ(result.code, 0) << result.err;
    const OIIO::ImageSpec spec = read_back(folder / "out/a.exr").spec;
    EXPECT_EQ(spec.get_string_attribute("lumivar:scene"), folder / "a \\ b.json");
    const Kelv::ImageSpec::MetaData settings = settings_in(spec);
    String scene;
    EXPECT_EQ(settings.get_meta("string", "scene", scene), 1);
    EXPECT_EQ(text_in(settings, "catalogue"), "one.stars");
}

TEST_F(Render, DepthsAgreeByTheRoundingOfTheEffect) {
    for (const auto& [name, format] : {std::pair{"f.exr", Arguments{}},
                                       {"8.png", {"--depth", "8", "--raw"}},
                                       {"16.png", {"--depth", "16", "--raw"}}}) {
        Arguments bright = {"--set", "Star Brightness=20", "--set", "Maximum Luminance=1"};
        bright.insert(bright.end(), format.begin(), format.end());
        ASSERT_EQ(render(name, bright).code, 0) << name;
    }
    const ReadBack real = read_back(folder / "out/f.exr");
    const ReadBack codes8 = read_back(folder / "out/8.png");
    const ReadBack codes16 = read_back(folder / "out/16.png");
    ASSERT_EQ(codes8.spec.format, OIIO::TypeUInt8);
    ASSERT_EQ(codes16.spec.format, OIIO::TypeUInt16);
    int lit = 0;
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 64; ++x) {
            for (int c = 0; c < 3; ++c) {
                const float value = real.at<float>(x, y, c);
                lit += value > 0.0F;
                ASSERT_EQ(codes8.at<std::uint8_t>(x, y, c), rounded_code(value, 255));
                ASSERT_EQ(codes16.at<std::uint16_t>(x, y, c), rounded_code(value, 32768));
            }
        }
    }
    EXPECT_GT(lit, 20);
}

TEST_F(Render, SizeKeepsTheFraming) {
    // A second star, 6 degrees north: half way up of the half height, tan 6 / tan 12 = 0.49449.
    write_file(folder / "one.stars",
               bytes_of(lumivar::encode_header()) + white_star(90.0, 6.0, 0.25F));
    for (const auto& [size, height] : {std::pair{"64x32", 32}, std::pair{"256x256", 256}}) {
        ASSERT_EQ(render("a.exr", {"--size", size}).code, 0);
        const ReadBack picture = read_back(folder / "out/a.exr");
        ASSERT_EQ(picture.spec.height, height);
        double weight = 0.0;
        double moment = 0.0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < picture.spec.width; ++x) {
                weight += picture.at<float>(x, y, 0);
                moment += y * static_cast<double>(picture.at<float>(x, y, 0));
            }
        }
        EXPECT_NEAR(moment / weight, height / 2.0 * (1.0 - 0.49449), 0.01 * height);
    }
}

TEST_F(Render, TimeAndFramePickTheMoment) {
    write_file(folder / "scene.json", R"({
        "composition": {"width": 32, "height": 32, "frame_rate": 4, "duration": 1.0},
        "camera": {"look_at": {"ra": 90, "dec": 0}, "vertical_fov": 24.0},
        "controls": {"Star Spot Size": {"keys": [{"time": 0, "value": 10}, {"time": 1, "value": 50}]}}})");
    const auto spot_size = [&] {
        return read_back(folder / "out/a.exr")
            .spec.get_string_attribute("lumivar:control:Star Spot Size");
    };
    ToolResult result = render("a.exr", {"--frame", "2"});
    EXPECT_NE(result.out.find("frame 2 (0.500 s)"), std::string::npos) << result.out;
    EXPECT_EQ(spot_size(), "30");
    result = render("a.exr", {"--time", "0.25"});
    EXPECT_NE(result.out.find("float, 0.250 s, "), std::string::npos) << result.out;
    EXPECT_EQ(spot_size(), "20");
    render("a.exr");
    EXPECT_EQ(spot_size(), "10");
}

TEST_F(Render, WritesSequences) {
    const ToolResult result = render("a.##.png", {"--frames", "9-11"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "") << "no progress where there is no terminal";
    EXPECT_EQ(names_in(folder / "out"), (Names{"a.09.png", "a.10.png", "a.11.png"}));
    EXPECT_NE(result.out.find("a.##.png: 64x32, float, frame 9 (0.375 s) to frame 11 (0.458 s)"),
              std::string::npos)
        << result.out;
}

TEST_F(Render, ShowsProgressWithRateAndTimeLeftOnATerminal) {
    const std::string shown = shown_on_terminal(
        {"render", folder / "scene.json", "-o", folder / "out/a.##.exr", "--frames", "0-7",
         "--size", "1024x1024", "--catalogue", folder / "one.stars"},
        options, 0);
    EXPECT_NE(shown.find("/8 frames, "), std::string::npos) << shown;
    EXPECT_NE(shown.find(" s left"), std::string::npos) << shown;
    EXPECT_EQ(shown.substr(shown.size() - 4), "\r\x1b[K") << "the line is wiped at the end";
}

TEST_F(Render, RefusesUnusableRequestsAsUsage) {
    const std::pair<Arguments, const char*> requests[] = {
        {{"--frame", "24"}, "there is no frame 24; the scene has frames 0 to 23"},
        {{"--frame", "-1"}, "there is no frame -1"},
        {{"--time", "1.5"}, "lies outside the scene's 0 to 1.000 s"},
        {{"--time", "0", "--frame", "0"}, "--time excludes --frame"},
        {{"--frames", "0-3"}, "put #### for its number"},
        {{"--depth", "24"}, "24 not in {8,16,32}"},
        {{"--size", "big"}, "--size \"big\""},
        {{"--raw"}, "--raw writes integer codes"},
        {{"--set", "8"}, "--set \"8\""}};
    for (const auto& [arguments, words] : requests) {
        expect_failure(arguments, words, 2);
    }
}

TEST_F(Render, ChoosesADatabaseBesideTheBundleByName) {
    const std::string bundle = own_bundle();
    write_file(folder / "own/a.stars", bytes_of(lumivar::encode_header()));
    write_file(folder / "own/b.stars", one_star_database());
    write_file(folder / "own/c.stars",
               one_star_database() + white_star(91, 0, 0.1F) + white_star(92, 0, 0.1F));
    // The order of the list is the folder's: only the names tell.
    for (const auto& [name, stars] :
         {std::pair{"a.stars", "0 stars"}, {"b.stars", "1 star"}, {"c.stars", "3 stars"}}) {
        const ToolResult result = render("a.exr", {"--plugin", bundle, "--catalogue", name});
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_NE(result.out.find(std::string("catalogue ") + name + " (" + stars + ")"),
                  std::string::npos)
            << result.out;
    }
    EXPECT_NE(render("a.exr", {"--plugin", bundle}).out.find(", catalogue "), std::string::npos);
}

TEST_F(Render, RefusesToGuessAmongNamesThatTheListOfChoicesCannotTellApart) {
    const std::string bundle = own_bundle();
    write_file(folder / "own/a|b.stars", one_star_database());
    write_file(folder / "own/c.stars", one_star_database());
    EXPECT_EQ(failure({"--plugin", bundle, "--catalogue", "c.stars"}),
              "lumivar: the star database " + (folder / "own/a|b.stars") +
                  " makes the plug-in's list of databases ambiguous, as its name holds \"|\"; "
                  "rename it, or name a database by its path with --catalogue\n");
    EXPECT_EQ(failure({"--plugin", bundle}),
              failure({"--plugin", bundle, "--catalogue", "c.stars"}));
    // Alone in a stage even that one has an unambiguous name.
    EXPECT_EQ(render("a.exr", {"--plugin", bundle, "--catalogue", folder / "own/a|b.stars"}).code,
              0);
}

TEST_F(Render, LooksForTheNamedDatabaseWhereALinkedBundleReallyStands) {
    const std::string bundle = own_bundle();
    write_file(folder / "own/a.stars", one_star_database());
    fs::create_directory(folder / "links");
    fs::create_directory_symlink(bundle, folder / "links/Linked.plugin");
    const std::string module = bundle + "/Contents/MacOS/Lumivar";
    for (const std::string& plugin : {folder / "links/Linked.plugin", module}) {
        for (const std::string& catalogue : {std::string("a.stars"), folder / "one.stars"}) {
            const ToolResult result =
                render("a.exr", {"--plugin", plugin, "--catalogue", catalogue});
            EXPECT_EQ(result.code, 0) << result.err;
        }
    }
}

TEST_F(Render, MissingCatalogueIsOneLine) {
    EXPECT_EQ(failure({"--catalogue", "none.stars"}),
              "lumivar: there is no catalogue none.stars, neither beside the plug-in (" +
                  fs::path(LUMIVAR_BUNDLE).parent_path().string() +
                  " has: hipparcos.stars) nor as a file of its own\n");
    EXPECT_EQ(failure({"--catalogue", folder / "none.stars"}),
              "lumivar: cannot read " + (folder / "none.stars") + ": No such file or directory\n");
    expect_failure({"--plugin", own_bundle()}, "Cannot locate any Lumivar star database files.");
}

TEST_F(Render, CatalogueOnTheCommandLineOverrulesTheSceneAndWithoutStarsGivesABlackFrame) {
    write_file(folder / "scene.json",
               R"({"composition": {"width": 64, "height": 32},
                   "controls": {"Star Database": "elsewhere.stars"}})");
    write_file(folder / "one.stars", bytes_of(lumivar::encode_header()));
    EXPECT_EQ(render("a.exr").code, 0);
    std::vector<float> black(64 * 32 * 4, 0.0F);
    for (std::size_t alpha = 3; alpha < black.size(); alpha += 4) {
        black[alpha] = 1.0F;
    }
    EXPECT_EQ(read_back(folder / "out/a.exr").samples<float>(), black);
}

// A quiet run leaves hints out, and no warning.
TEST_F(Render, WarnsOnceOfAFaultyCatalogueAndDrawsWhatItCan) {
    write_file(folder / "scene.json",
               R"({"composition": {"width": 64, "height": 32, "frame_rate": 2, "duration": 1}})");
    const std::string real = std::filesystem::canonical(folder.path()) / "bad.stars";
    const auto warning = [&](const std::string& bytes) {
        write_file(folder / "bad.stars", bytes);
        const ToolResult result =
            render("a.####.exr", {"--frames", "0-1", "--catalogue", real, "--quiet"});
        EXPECT_EQ(result.code, 0);
        return result.err;
    };
    EXPECT_EQ(warning(one_star_database().substr(0, 31)),
              "lumivar: warning: " + real +
                  " is faulty: the header is cut short: 31 bytes instead of 32; see lumivar "
                  "catalog verify " +
                  real + "\n");
    EXPECT_EQ(warning(one_star_database() + white_star(-1, 0, 1.0F) + white_star(0, 0, 0.0F)),
              "lumivar: warning: " + real +
                  " is faulty: 1 star with a lon outside 0 to 360 degrees (first: star 2), and "
                  "more; see lumivar catalog verify " +
                  real + "\n");
    EXPECT_EQ(warning(one_star_database()), "");
}

// What is told of such files is shown where they are looked at: here, that it reaches the user.
TEST_F(Render, FileThatIsNoCatalogueIsOneLine) {
    write_file(folder / "foreign.stars", "PK\x03\x04 a zip archive of something else entirely");
    const std::string begins = " it begins with \"PK.. a z\" (50 4b 03 04 20 61 20 7a) instead of ";
    EXPECT_EQ(failure({"--catalogue", folder / "foreign.stars"}),
              "lumivar: " + (folder / "foreign.stars") + " is not a star database:" + begins +
                  "\"LUMIVAR1\" or \"LUMIVAR2\"\n");
    const std::string bundle = own_bundle();
    const auto expect_words = [&](const Names& words) {
        const std::string line = failure({"--plugin", bundle});
        for (const std::string& word : words) {
            EXPECT_NE(line.find(word), std::string::npos) << line;
        }
    };
    // Beside the bundle the plug-in takes it without a word and then draws nothing, with status 0.
    fs::copy_file(folder / "foreign.stars", folder / "own/a.stars");
    expect_words({"the plug-in drew nothing: ", "own/a.stars", begins});
    // An empty file and a link to nowhere it refuses when it is set up.
    write_file(folder / "own/a.stars", "");
    expect_words({"Error reading Lumivar database file ", "own/a.stars", "is empty"});
    fs::remove(folder / "own/a.stars");
    write_file(folder / "own/good.stars", one_star_database());
    fs::create_symlink("nowhere", folder / "own/a.stars");
    expect_words({"Error reading Lumivar database file ", "a.stars"});
}

TEST_F(Render, UnusableScenesSettingsAndSizesAreOneLine) {
    const std::string begin = "lumivar: " + (folder / "scene.json") + ": ";
    for (const auto& [scene, place] :
         {std::pair{R"({"composition": {"widht": 64}})", "/composition"},
          {R"({"controls": {"Star Colour": 1}})", "/controls/Star Colour"},
          {"{\"composition\": }", ""}}) {
        write_file(folder / "scene.json", scene);
        expect_failure({}, begin + place);
    }
    fs::remove(folder / "scene.json");
    expect_failure(
        {}, "lumivar: cannot read " + (folder / "scene.json") + ": No such file or directory\n");
    write_file(folder / "scene.json", kScene);
    for (const auto& [setting, words] :
         {std::pair{"Star Brigthness=8", "the effect has no control"},
          {"Star Brightness=1001", ""},
          {"Projection=Fisheye", ""}}) {
        expect_failure({"--set", setting},
                       "lumivar: --set \"" + std::string(setting) + "\": " + words);
    }
    expect_failure({"--size", "20000x20000"}, "a frame of 20000 x 20000 pixels is too large");
}

TEST_F(Render, UnwritableOutputIsOneLineBeforeAnyWork) {
    fs::create_directory(folder / "a.exr");
    const std::pair<std::string, std::string> outputs[] = {
        {folder / "none/a.exr", "there is no folder " + (folder / "none") + "\n"},
        {folder / "a.exr", "it is a folder, give the name of a file\n"},
        // Not even the superuser makes a file there.
        {"/proc/a.exr", ""}};
    for (const auto& [output, reason] : outputs) {
        const ToolResult result =
            run_tool({"render", folder / "scene.json", "-o", output}, options);
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err.rfind("lumivar: cannot write " + output + ": " + reason, 0), 0U)
            << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
}

TEST_F(Render, UnusableTemporaryFolderIsOneLineThatNamesTheVariable) {
    options.environment = {"TMPDIR=" + (folder / "none")};
    EXPECT_EQ(failure({}),
              "lumivar: there is no folder for temporary files where TMPDIR says: No such file or "
              "directory; set TMPDIR to one\n");
    options.environment = {"TMPDIR=/proc"};
    expect_failure({}, " to the folder for temporary files /proc (TMPDIR): ");
}

#ifndef __SANITIZE_ADDRESS__  // whose own tables take more address space than any limit leaves
TEST_F(Render, LackOfMemoryIsOneLine) {
    options.memory_limit = 1UL << 30U;  // each float image of the frame takes as much
    EXPECT_EQ(failure({"--size", "8192x8192"}), "lumivar: there is not enough memory for this\n");
}
#endif

TEST_F(Render, FullDiskIsOneLineAndLeavesNothing) {
    options.file_size_limit = 100;  // with room for the complaint
    for (const char* name : {"out/a.exr", "out/a.tif", "out/a.png", "out/a.jpg"}) {
        // With the bundle as it is built: the limit would stop a copy of it as well.
        const ToolResult result =
            run_tool({"render", folder / "scene.json", "-o", folder / name}, options);
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err, "lumivar: cannot write " + (folder / name) + ": File too large\n");
        EXPECT_TRUE(names_in(folder / "out").empty());
    }
}

TEST_F(Render, MissingPluginIsOneLine) {
    EXPECT_EQ(failure({"--plugin", folder / "none.plugin"}),
              "lumivar: there is no plug-in " + (folder / "none.plugin") + "\n");
    fs::create_directory(folder / "hollow.plugin");
    expect_failure({"--plugin", folder / "hollow.plugin"}, "hollow.plugin");
    EXPECT_EQ(failure({"--plugin", folder / "hollow.plugin", "--catalogue", folder / "one.stars"}),
              "lumivar: \"" + (folder / "hollow.plugin") +
                  "\" is no plug-in bundle: it has no Contents/MacOS/hollow\n");
}

// Of the program as it is built: a thread of the picture library may be the one that is
// interrupted.
TEST_F(Render, SignalRemovesTheStagedPluginAndTheHalfMadePicture) {
    options.program = LUMIVAR_PROGRAM;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        // Enough large stars in each frame that the signal meets the program at work.
        std::string stars = bytes_of(lumivar::encode_header());
        for (int i = 0; i < 3000; ++i) {
            stars += white_star(81.0 + 0.006 * i, 0.0, 0.25F);
        }
        write_file(folder / "one.stars", stars);
        const auto process = start_sequence("512x512");
        wait_until([this] { return fs::exists(folder / "out/a.0000.exr"); });
        EXPECT_FALSE(names_in(folder / "tmp").empty());
        process->send(number);
        EXPECT_EQ(process->wait().signal, number);
        EXPECT_TRUE(names_in(folder / "tmp").empty());
        EXPECT_TRUE(fs::exists(folder / "out/a.0000.exr"));
        for (const std::string& name : names_in(folder / "out")) {
            EXPECT_EQ(name.rfind("a.00", 0), 0U) << name;
            EXPECT_NO_THROW(read_back(folder / ("out/" + name))) << "a whole picture";
            fs::remove(folder / ("out/" + name));
        }
    }
}

TEST_F(Render, NextRunRemovesTheStageThatAHardKillLeft) {
    const auto process = start_sequence("1024x1024");
    process->send(SIGKILL);
    EXPECT_EQ(process->wait().signal, SIGKILL);
    ASSERT_EQ(names_in(folder / "tmp").size(), 1U);
    EXPECT_EQ(render("b.exr").code, 0);
    EXPECT_TRUE(names_in(folder / "tmp").empty());
}

}  // namespace
