// lumivar render over the frames of a shot: worker processes, what is kept, and what goes wrong on
// the way.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "read_back.h"
#include "star_table.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Arguments = std::vector<std::string>;

/// A second over the star of `one_star_database`, whose spot grows from frame to frame.
constexpr const char* kShot = R"({
    "composition": {"width": 64, "height": 32, "frame_rate": 24, "duration": 1.0},
    "camera": {"look_at": {"ra": 90, "dec": 0}, "vertical_fov": 24.0},
    "controls": {"Star Spot Size": {"keys": [{"time": 0, "value": 10}, {"time": 1, "value": 80}]}}
})";

/// Enough large stars that a frame takes a while.
std::string many_stars() {
    std::string stars = bytes_of(lumivar::encode_header());
    for (int i = 0; i < 3000; ++i) {
        stars += white_star(81.0 + 0.006 * i, 0.0, 0.25F);
    }
    return stars;
}

class RenderShot : public testing::Test {
protected:
    RenderShot() {
        fs::create_directory(folder / "out");
        fs::create_directory(folder / "tmp");
        write_file(folder / "scene.json", kShot);
        write_file(folder / "one.stars", one_star_database());
        options.environment = {"TMPDIR=" + (folder / "tmp")};
    }
    ~RenderShot() override { EXPECT_TRUE(names_in(folder / "tmp").empty()); }

    Arguments command(const std::string& picture, const std::string& frames,
                      const Arguments& more = {}) const {
        Arguments arguments = {"render",      folder / "scene.json",
                               "-o",          folder / ("out/" + picture),
                               "--frames",    frames,
                               "--catalogue", folder / "one.stars"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    ToolResult render(const std::string& picture, const std::string& frames,
                      const Arguments& more = {}) const {
        return run_tool(command(picture, frames, more), options);
    }
    /// How many frames of a good run were rendered and kept: "3 rendered, 1 kept".
    std::string counts(const std::string& frames, Arguments more) const {
        more.emplace_back("--json");
        const ToolResult result = render("a.####.exr", frames, more);
        EXPECT_EQ(result.code, 0) << result.err;
        const json object = json::parse(result.out)["frames"];
        return std::to_string(object["rendered"].get<int>()) + " rendered, " +
               std::to_string(object["kept"].get<int>()) + " kept";
    }
    ReadBack picture(const std::string& name) const { return read_back(folder / ("out/" + name)); }
    /// The process that writes a picture at the moment, by the name of its working folder.
    pid_t writing_process() const {
        pid_t found = 0;
        wait_until([&] {
            for (const std::string& name : names_in(folder / "out")) {
                if (name.rfind(".lumivar-work-", 0) == 0) {
                    found = std::stoi(name.substr(14));
                }
            }
            return found != 0;
        });
        return found;
    }

    ScratchFolder folder;
    ToolOptions options;
};

TEST_F(RenderShot, ManyWorkersDrawTheFramesOfOne) {
    EXPECT_EQ(render("one.####.exr", "0-7", {"--jobs", "1"}).code, 0);
    EXPECT_EQ(render("many.%04d.exr", "0-7", {"--jobs", "5"}).code, 0);
    for (int frame = 0; frame < 8; ++frame) {
        const std::string end = ".000" + std::to_string(frame) + ".exr";
        EXPECT_EQ(picture("one" + end).bytes, picture("many" + end).bytes) << frame;
    }
    EXPECT_NE(picture("one.0000.exr").bytes, picture("one.0007.exr").bytes);
}

TEST_F(RenderShot, HoldsOneFloatImageOfALargeFrame) {
    options.program = LUMIVAR_PROGRAM;
    const ToolResult result =
        render("a.####.exr", "0", {"--size", "4096x2048", "--compression", "rle"});
    EXPECT_EQ(result.code, 0) << result.err;
    if (result.peak_bytes == 0) {
        GTEST_SKIP() << "the sanitizer's own memory is no measure";
    }
    constexpr double kFloatImage = 4096.0 * 2048 * 16;
    EXPECT_GE(result.peak_bytes, kFloatImage);
    EXPECT_LT(result.peak_bytes, 1.5 * kFloatImage);
}

TEST_F(RenderShot, RendersEveryFrameAnewUnlessToldOtherwise) {
    EXPECT_EQ(counts("0-3", {}), "4 rendered, 0 kept");
    EXPECT_EQ(counts("0-3", {}), "4 rendered, 0 kept");
}

TEST_F(RenderShot, ResumesWhatIsMissingDamagedOrMadeOfOtherThings) {
    EXPECT_EQ(counts("0-3", {"--resume"}), "4 rendered, 0 kept");
    const auto whole = picture("a.0001.exr").bytes;
    EXPECT_EQ(counts("0-3", {"--resume"}), "0 rendered, 4 kept");
    fs::remove(folder / "out/a.0000.exr");
    fs::resize_file(folder / "out/a.0001.exr", fs::file_size(folder / "out/a.0001.exr") - 20);
    write_file(folder / "out/a.0002.exr", "no picture");
    EXPECT_EQ(counts("0-3", {"--resume"}), "3 rendered, 1 kept");
    EXPECT_EQ(picture("a.0001.exr").bytes, whole);
    // A frame under another's name is not that frame.
    fs::copy_file(folder / "out/a.0002.exr", folder / "out/a.0003.exr",
                  fs::copy_options::overwrite_existing);
    EXPECT_EQ(counts("0-3", {"--resume"}), "1 rendered, 3 kept");
}

TEST_F(RenderShot, ResumesByContentAndNotByTimesOrNames) {
    EXPECT_EQ(counts("0-1", {}), "2 rendered, 0 kept");
    // The same scene written otherwise, and the same catalogue under a new time and name.
    write_file(folder / "scene.json", "// a shot\n" + json::parse(kShot).dump(4));
    fs::rename(folder / "one.stars", folder / "b.stars");
    fs::copy_file(folder / "b.stars", folder / "one.stars");
    EXPECT_EQ(counts("0-1", {"--resume"}), "0 rendered, 2 kept");
    const std::pair<const char*, Arguments> changes[] = {
        {"a control", {"--set", "Star Brightness=8"}},
        {"the size", {"--size", "32x16"}},
        {"the depth", {"--depth", "16"}},
        {"a halo", {"--halo", "1"}},
        {"the limit", {"--limiting-magnitude", "5"}}};
    for (const auto& [what, more] : changes) {
        Arguments arguments = more;
        arguments.emplace_back("--resume");
        EXPECT_EQ(counts("0-1", arguments), "2 rendered, 0 kept") << what;
        EXPECT_EQ(counts("0-1", arguments), "0 rendered, 2 kept") << what;
    }
    EXPECT_EQ(counts("0-1", {"--resume"}), "2 rendered, 0 kept");
    write_file(folder / "one.stars", one_star_database() + white_star(91.0, 0.0, 0.25F));
    EXPECT_EQ(counts("0-1", {"--resume"}), "2 rendered, 0 kept") << "another catalogue";
    json scene = json::parse(kShot);
    scene["camera"]["vertical_fov"] = 25.0;
    write_file(folder / "scene.json", scene.dump());
    EXPECT_EQ(counts("0-1", {"--resume"}), "2 rendered, 0 kept") << "another scene";
}

TEST_F(RenderShot, ResumesAfterTheCameraOrThePluginChanged) {
    write_file(folder / "shot.chan", "0 0 0 0 0 0 0 24\n1 0 0 0 0 1 0 24\n");
    const Arguments more = {"--resume", "--camera", folder / "shot.chan"};
    EXPECT_EQ(counts("0-1", more), "2 rendered, 0 kept");
    write_file(folder / "shot.chan", "# written again\n0 0 0 0 0 0 0 24\n1 0 0 0 0 1 0 24\n");
    EXPECT_EQ(counts("0-1", more), "0 rendered, 2 kept");
    write_file(folder / "shot.chan", "0 0 0 0 0 0 0 24\n1 0 0 0 0 2 0 24\n");
    EXPECT_EQ(counts("0-1", more), "2 rendered, 0 kept");
    fs::copy(LUMIVAR_BUNDLE, folder / "Lumivar.plugin", fs::copy_options::recursive);
    Arguments other = more;
    other.insert(other.end(), {"--plugin", folder / "Lumivar.plugin"});
    EXPECT_EQ(counts("0-1", other), "0 rendered, 2 kept") << "the same build elsewhere";
    const std::string module = folder / "Lumivar.plugin/Contents/MacOS/Lumivar";
    write_file(module, read_file(module) + "another build");
    EXPECT_EQ(counts("0-1", other), "2 rendered, 0 kept");
}

TEST_F(RenderShot, ResumesEveryKindOfPicture) {
    for (const char* name : {"a.#.png", "a.#.jpg", "a.#.tif"}) {
        EXPECT_EQ(render(name, "0-1").code, 0);
        const ToolResult again = render(name, "0-1", {"--resume", "--json"});
        EXPECT_EQ(json::parse(again.out)["frames"]["kept"], 2) << name;
    }
}

TEST_F(RenderShot, SkipsWhateverIsThere) {
    write_file(folder / "out/a.0001.exr", "mine");
    EXPECT_EQ(counts("0-3", {"--skip-existing"}), "3 rendered, 1 kept");
    EXPECT_EQ(read_file(folder / "out/a.0001.exr"), "mine");
    EXPECT_EQ(render("a.#.exr", "0", {"--skip-existing", "--resume"}).code, 2);
}

TEST_F(RenderShot, TriesAFrameAgainWhoseWorkerWasKilled) {
    write_file(folder / "one.stars", many_stars());
    ToolProcess process(command("a.####.exr", "0-3", {"--size", "1024x1024", "--jobs", "2"}),
                        options);
    kill(writing_process(), SIGKILL);
    const ToolResult result = process.wait();
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.err.find("its worker died (killed by SIGKILL); it is tried once more"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(names_in(folder / "out").size(), 4U);
    EXPECT_EQ(render("b.####.exr", "0-3", {"--size", "1024x1024"}).code, 0);
    for (int frame = 0; frame < 4; ++frame) {
        const std::string end = ".000" + std::to_string(frame) + ".exr";
        EXPECT_EQ(picture("a" + end).bytes, picture("b" + end).bytes) << frame;
    }
}

TEST_F(RenderShot, StopsAtAFullDiskAndGoesOnLater) {
    // Dark up to frame 16, then full of stars: pictures from 17 on are too large for the disk.
    fs::copy(LUMIVAR_BUNDLE, folder / "Lumivar.plugin", fs::copy_options::recursive);
    write_file(folder / "one.stars", many_stars());
    json scene = json::parse(kShot);
    scene["controls"]["Star Brightness"] = json::parse(R"({"interpolation": "hold",
        "keys": [{"time": 0, "value": 0}, {"time": 0.7, "value": 5}]})");
    write_file(folder / "scene.json", scene.dump());
    const auto run = [this](const std::string& name, const std::string& frames, Arguments more) {
        Arguments arguments = {"render",   folder / "scene.json",
                               "-o",       folder / ("out/" + name),
                               "--frames", frames,
                               "--plugin", folder / "Lumivar.plugin",
                               "--quiet",  "--jobs",
                               "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_tool(arguments, options);
    };
    ASSERT_EQ(run("size.##.exr", "0,17", {}).code, 0);
    const auto dark = fs::file_size(folder / "out/size.00.exr");
    const auto lit = fs::file_size(folder / "out/size.17.exr");
    ASSERT_GT(lit, dark + 1000);
    options.file_size_limit = (dark + lit) / 2;
    const ToolResult full = run("a.##.exr", "0-23", {});
    EXPECT_EQ(full.code, 1);
    const std::string why = "cannot write " + (folder / "out/a.17.exr") + ": File too large";
    EXPECT_EQ(full.err.rfind("lumivar: frame 17: " + why + "\n", 0), 0U) << full.err;
    // The next frame may have been under way already.
    EXPECT_NE(full.err.find("; frames 17-23 of 24 frames are missing; the same command with "
                            "--resume renders what is missing\n"),
              std::string::npos)
        << full.err;
    EXPECT_EQ(names_in(folder / "out").size(), 2U + 17U) << "nothing half-written";
    options.file_size_limit.reset();
    const ToolResult rest = run("a.##.exr", "0-23", {"--resume", "--json"});
    EXPECT_EQ(json::parse(rest.out)["frames"]["kept"], 17);
    EXPECT_EQ(json::parse(rest.out)["frames"]["rendered"], 7);
}

TEST_F(RenderShot, StopsWhenTheCatalogueIsReplaced) {
    write_file(folder / "one.stars", many_stars());
    ToolProcess process(command("a.####.exr", "0-23", {"--size", "512x512", "--jobs", "1"}),
                        options);
    wait_until([this] { return fs::exists(folder / "out/a.0000.exr"); });
    write_file(folder / "new.stars", one_star_database());
    fs::rename(folder / "new.stars", folder / "one.stars");
    const ToolResult result = process.wait();
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("one.stars was changed while frames were drawn from it"),
              std::string::npos)
        << result.err;
    EXPECT_LT(names_in(folder / "out").size(), 24U);
}

TEST_F(RenderShot, TwoRunsMayWriteTheSameFolder) {
    ToolProcess first(command("a.####.exr", "0-11"), options);
    ToolProcess second(command("a.####.exr", "0-11"), options);
    EXPECT_EQ(first.wait().code, 0);
    EXPECT_EQ(second.wait().code, 0);
    EXPECT_EQ(names_in(folder / "out").size(), 12U);
    EXPECT_EQ(counts("0-11", {"--resume"}), "0 rendered, 12 kept");
}

TEST_F(RenderShot, InterruptedSaysHowToGoOnWithinASecond) {
    write_file(folder / "one.stars", many_stars());
    ToolProcess process(command("a.####.exr", "0-23", {"--size", "512x512"}), options);
    wait_until([this] { return fs::exists(folder / "out/a.0000.exr"); });
    const auto start = std::chrono::steady_clock::now();
    process.send(SIGINT);
    const ToolResult result = process.wait();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(result.signal, SIGINT);
    EXPECT_NE(result.err.find(" of 24 frames are there; the same command with --resume renders "
                              "the others\n"),
              std::string::npos)
        << result.err;
    for (const std::string& name : names_in(folder / "out")) {
        EXPECT_NO_THROW(picture(name)) << name;
    }
}

TEST_F(RenderShot, ResumesAfterAHardKillAtAnyMoment) {
    write_file(folder / "one.stars", many_stars());
    const Arguments size = {"--size", "320x320"};
    ASSERT_EQ(render("whole.##.exr", "0-11", size).code, 0);
    for (const char* last : {"00", "03", "07"}) {
        SCOPED_TRACE(last);
        ToolProcess process(command("a.##.exr", "0-11", size), options);
        wait_until([&] { return fs::exists(folder / ("out/a." + std::string(last) + ".exr")); });
        process.send(SIGKILL);
        EXPECT_EQ(process.wait().signal, SIGKILL);
        const ToolResult rest = render("a.##.exr", "0-11", {"--size", "320x320", "--resume"});
        EXPECT_EQ(rest.code, 0) << rest.err;
        for (int frame = 0; frame < 12; ++frame) {
            const std::string end = (frame < 10 ? ".0" : ".") + std::to_string(frame) + ".exr";
            EXPECT_EQ(picture("a" + end).bytes, picture("whole" + end).bytes) << frame;
            fs::remove(folder / ("out/a" + end));
        }
    }
}

TEST_F(RenderShot, WarnsOfACameraThatIsShorterThanTheRange) {
    write_file(folder / "shot.chan", "2 0 0 0 0 0 0 24\n3 0 0 0 0 1 0 24\n4 0 0 0 0 1 0 24\n");
    const ToolResult result = render("a.##.exr", "0-6", {"--camera", folder / "shot.chan"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "lumivar: warning: the camera of " + (folder / "shot.chan") +
                              " does not reach frames 0-1,5-6; it stands still there\n");
    EXPECT_EQ(render("a.##.exr", "2-4", {"--camera", folder / "shot.chan"}).err, "");
}

TEST_F(RenderShot, TellsAProgramWhatItDoesAndWhatCameOfIt) {
    fs::create_directory(folder / "out/a.0002.exr");
    const ToolResult result =
        render("a.####.exr", "1-2", {"--progress", "json", "--json", "--jobs", "1"});
    EXPECT_EQ(result.code, 1);
    ASSERT_NE(result.out, "") << result.err;
    const json object = json::parse(result.out);
    EXPECT_EQ(object["frames"]["asked"], 2);
    EXPECT_EQ(object["frames"]["rendered"], 1);
    EXPECT_EQ(object["frames"]["failed"][0]["frame"], 2);
    EXPECT_EQ(object["missing"], "2");
    EXPECT_EQ(object["width"], 64);
    EXPECT_EQ(object["catalogue"]["stars"], 1);
    // Up to the run's own end all lines are objects, what is said among them too.
    std::istringstream lines(result.err);
    std::vector<std::string> told;
    for (std::string line; std::getline(lines, line);) {
        if (told.size() == 4) {
            EXPECT_EQ(line.rfind("lumivar: frame 2 of 2 frames is missing; ", 0), 0U) << line;
            continue;
        }
        const json event = json::parse(line);
        told.push_back(event["event"].get<std::string>() + " " + event.value("state", ""));
    }
    EXPECT_EQ(told,
              (std::vector<std::string>{"start ", "frame rendered", "message ", "frame failed"}))
        << result.err;
}

TEST_F(RenderShot, WritesPicturesWithoutThreadsToo) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer has to come first";
#endif
    options.program = LUMIVAR_PROGRAM;
    options.environment.push_back("LD_PRELOAD=" NO_THREADS);
    const ToolResult result = render("a.####.exr", "0-3", {"--json", "--jobs", "2"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(json::parse(result.out)["frames"]["rendered"], 4);
    EXPECT_EQ(names_in(folder / "out").size(), 4U);
}

TEST_F(RenderShot, SaysThatItsResultIsLost) {
    options.program = LUMIVAR_PROGRAM;
    options.output = "/dev/full";
    const ToolResult result = render("a.####.exr", "0-3", {"--json"});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("lumivar: cannot write to standard output\n"), std::string::npos)
        << result.err;
}

TEST_F(RenderShot, LeavesNothingOfAFilmThatIsInterrupted) {
    // In place of the encoder: waits for its end, and says who it is.
    write_file(folder / "ffmpeg", "#!/bin/sh\n[ \"$1\" = -version ] && exit\necho $$ >'" +
                                      (folder / "encoder") + "'\nexec sleep 60\n");
    chmod((folder / "ffmpeg").c_str(), 0755);
    options.program = LUMIVAR_PROGRAM;
    options.environment.push_back("PATH=" + folder.path() + ":/usr/bin:/bin");
    ToolProcess run(command("a.####.png", "0-3", {"--preview", folder / "out/a.mp4"}), options);
    std::string encoder;
    wait_until([&] {
        encoder = fs::exists(folder / "encoder") ? read_file(folder / "encoder") : "";
        return !encoder.empty() && encoder.back() == '\n';
    });
    run.send(SIGTERM);
    EXPECT_EQ(run.wait().signal, SIGTERM);
    wait_until([&] { return kill(std::stoi(encoder), 0) != 0; });
}

TEST_F(RenderShot, MakesAFilmInAFolderOfAnyName) {
    fs::create_directory(folder / "tmp/%03d");
    options.environment = {"TMPDIR=" + (folder / "tmp/%03d")};
    const ToolResult result = render("a.##.png", "0-2", {"--preview", folder / "out/a.mp4"});
    EXPECT_EQ(result.code, 0) << result.err;
    fs::remove(folder / "tmp/%03d");
}

TEST_F(RenderShot, RendersCubesToALimitingMagnitude) {
    const ToolResult result =
        render("a.FACE.##.exr", "0-1", {"--cube-map", "16", "--limiting-magnitude", "6", "--json"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(json::parse(result.out)["frames"]["rendered"], 12);
}

TEST_F(RenderShot, RefusesNamesThatDoNotSayWhereTheNumberOrTheFaceGoes) {
    EXPECT_EQ(render("100%done.####.exr", "0-1").code, 2);
    EXPECT_EQ(render("SURFACE.##.exr", "0-1", {"--cube-map", "16"}).code, 2);
}

TEST_F(RenderShot, ResumesPicturesOfAllFormats) {
    for (const std::string end : {".png", ".tif", ".jpg"}) {
        const std::string name = "b.####" + end;
        ASSERT_EQ(render(name, "0-1").code, 0);
        const std::string path = folder / ("out/b.0001" + end);
        fs::resize_file(path, fs::file_size(path) - 20);
        const json object = json::parse(render(name, "0-1", {"--resume", "--json"}).out);
        EXPECT_EQ(object["frames"]["rendered"], 1) << end;
        EXPECT_EQ(object["frames"]["kept"], 1) << end;
    }
}

TEST_F(RenderShot, ResumesByWhatAColourConfigurationDoes) {
    const auto table = [this](const char* last) {
        write_file(
            folder / "curve.spi1d",
            std::string("Version 1\nFrom 0 1\nLength 2\nComponents 1\n{\n0\n") + last + "\n}\n");
    };
    table("1");
    write_file(folder / "config.ocio", R"(ocio_profile_version: 1
search_path: "."
roles:
  default: linear
  scene_linear: linear
displays:
  screen:
    - !<View> {name: Curve, colorspace: curved}
colorspaces:
  - !<ColorSpace>
    name: linear
  - !<ColorSpace>
    name: half
    to_reference: !<MatrixTransform> {matrix: [0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 1]}
  - !<ColorSpace>
    name: curved
    from_reference: !<FileTransform> {src: curve.spi1d, interpolation: linear}
)");
    const auto rendered = [this](Arguments more) {
        more.insert(more.end(), {"--resume", "--json", "--ocio", folder / "config.ocio"});
        const ToolResult result = render("c.####.png", "0-1", more);
        EXPECT_EQ(result.code, 0) << result.err;
        return json::parse(result.out)["frames"]["rendered"].get<int>();
    };
    EXPECT_EQ(rendered({}), 2);
    EXPECT_EQ(rendered({}), 0);
    EXPECT_EQ(rendered({"--ocio-space", "half"}), 2) << "another space";
    EXPECT_EQ(rendered({"--ocio-space", "half"}), 0);
    table("0.5");
    EXPECT_EQ(rendered({"--ocio-space", "half"}), 2) << "another table";
    EXPECT_EQ(rendered({"--ocio-space", "half"}), 0);
}

TEST_F(RenderShot, GoesOnAsToldAfterAnInterrupt) {
    write_file(folder / "one.stars", many_stars());
    ToolProcess process(command("a.####.exr", "0-23", {"--size", "512x512", "--skip-existing"}),
                        options);
    wait_until([this] { return fs::exists(folder / "out/a.0000.exr"); });
    process.send(SIGINT);
    EXPECT_NE(process.wait().err.find(" are there; the same command renders the others\n"),
              std::string::npos);
}

TEST_F(RenderShot, MakesAFilmWithTheColoursOfThePictures) {
    // A spot that fills the picture with one colour, as far as light and codes go: 20000
    // thousandths of half the width.
    json scene = json::parse(kShot);
    scene["controls"] = {{"Star Spot Size", 1000},  {"Star Brightness", 0.5},
                         {"Maximum Luminance", 10}, {"Tint Strength", 1},
                         {"Star Saturation", 1},    {"Tint Color", {255, 96, 32}}};
    write_file(folder / "scene.json", scene.dump());
    ASSERT_EQ(
        render("a.##.exr", "0-2", {"--preview", folder / "out/a.mp4", "--view", "plain"}).code, 2)
        << "an .exr has no view";
    const ToolResult result = render("a.##.exr", "0-2", {"--preview", folder / "out/a.mp4"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(names_in(folder / "out").size(), 4U);
    ASSERT_EQ(render("b.##.png", "0-2").code, 0);
    // Decoded again by the colours that the film says it has.
    const std::string decode = "ffmpeg -v error -i " + (folder / "out/a.mp4") +
                               " -vf scale=in_color_matrix=bt709:in_range=tv,format=rgb24 " +
                               (folder / "out/film.%02d.png");
    ASSERT_EQ(std::system(decode.c_str()), 0);
    EXPECT_TRUE(fs::exists(folder / "out/film.03.png")) << "three frames";
    const ReadBack film = picture("film.01.png");
    const ReadBack still = picture("b.00.png");
    for (int c = 0; c < 3; ++c) {
        EXPECT_NEAR(film.at<std::uint8_t>(32, 16, c), still.at<std::uint8_t>(32, 16, c), 4) << c;
    }
    EXPECT_GT(still.at<std::uint8_t>(32, 16, 0), still.at<std::uint8_t>(32, 16, 2) + 40)
        << "there is a colour to lose";
    // Frames that are kept are in the film too.
    fs::remove(folder / "out/a.mp4");
    const ToolResult again =
        render("a.##.exr", "0-2", {"--preview", folder / "out/a.mp4", "--resume", "--json"});
    EXPECT_EQ(json::parse(again.out)["frames"]["kept"], 3);
    EXPECT_TRUE(fs::exists(folder / "out/a.mp4"));
}

TEST_F(RenderShot, RefusesAFilmThatCannotBe) {
    EXPECT_EQ(render("a.#.exr", "0-2", {"--preview", folder / "out/a.mov"}).code, 2);
    EXPECT_EQ(render("a.#.exr", "0", {"--preview", folder / "out/a.mp4"}).code, 2);
    options.environment.push_back("PATH=" + (folder / "tmp"));
    const ToolResult result = render("a.#.exr", "0-2", {"--preview", folder / "out/a.mp4"});
    EXPECT_EQ(result.err,
              "lumivar: --preview needs the program ffmpeg; install it (on Debian the "
              "package ffmpeg)\n");
    EXPECT_TRUE(names_in(folder / "out").empty());
}

TEST_F(RenderShot, RefusesOtherThanAFewJobs) {
    EXPECT_EQ(render("a.#.exr", "0", {"--jobs", "0"}).code, 2);
    EXPECT_EQ(render("a.#.exr", "0", {"--jobs", "-2"}).code, 2);
    EXPECT_EQ(render("a.#.exr", "0", {"--jobs", "2000"}).code, 2);
}

}  // namespace
