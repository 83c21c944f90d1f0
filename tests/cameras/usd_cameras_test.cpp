// Cameras of USD files. How the converter is called is tried with a stand-in for its Python; what
// it reads, with the real one where scripts/install-usd has put it. The expected matrices are
// worked out here from the numbers in the samples.
#include "usd_cameras.h"

#include <gtest/gtest.h>
#include <host/camera.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "failure.h"
#include "support/scratch.h"
#include "support/variable.h"
#include "tools/failure_of.h"
#include "usd_here.h"

namespace fs = std::filesystem;
using lumivar::CameraFile;
using lumivar::FileCamera;
using lumivar::FileCameraSample;
using lumivar::read_usd_cameras;
using lumivar::UpAxis;

namespace {

std::string message_of(const std::function<void()>& call) {
    try {
        call();
    } catch (const lumivar::Failure& failure) {
        return failure.what();
    }
    return "(no failure)";
}

/// A folder like that of scripts/install-usd, whose Python is the given shell script.
class StandInPython {
public:
    explicit StandInPython(const std::string& script) : variable_("LUMIVAR_USD", folder_.path()) {
        fs::create_directory(folder_ / "bin");
        write_file(folder_ / "bin/python", "#!/bin/sh\n" + script + "\n");
        fs::permissions(folder_ / "bin/python", fs::perms::owner_all);
    }

    std::string operator/(const std::string& name) const { return folder_ / name; }

private:
    ScratchFolder folder_;
    Variable variable_;
};

std::string sample(const std::string& name) { return std::string(CAMERA_SAMPLES "/") + name; }

// Row vectors, right-handed, angles in degrees: what the format's operations of these names are.
using Matrix = host::Matrix;

double cos_of(double degrees) { return std::cos(degrees * std::numbers::pi / 180.0); }
double sin_of(double degrees) { return std::sin(degrees * std::numbers::pi / 180.0); }

Matrix about_x(double a) {
    return {1, 0, 0, 0, 0, cos_of(a), sin_of(a), 0, 0, -sin_of(a), cos_of(a), 0, 0, 0, 0, 1};
}
Matrix about_y(double a) {
    return {cos_of(a), 0, -sin_of(a), 0, 0, 1, 0, 0, sin_of(a), 0, cos_of(a), 0, 0, 0, 0, 1};
}
Matrix about_z(double a) {
    return {cos_of(a), sin_of(a), 0, 0, -sin_of(a), cos_of(a), 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}
Matrix move(double x, double y, double z) {
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1};
}

Matrix product(const std::vector<Matrix>& factors) {
    Matrix result = factors.front();
    for (std::size_t f = 1; f < factors.size(); ++f) {
        Matrix next{};
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t j = 0; j < 4; ++j) {
                for (std::size_t k = 0; k < 4; ++k) {
                    next[4 * i + j] += result[4 * i + k] * factors[f][4 * k + j];
                }
            }
        }
        result = next;
    }
    return result;
}

double largest_difference(const Matrix& a, const Matrix& b) {
    double largest = 0.0;
    for (std::size_t i = 0; i < 16; ++i) {
        largest = std::max(largest, std::abs(a[i] - b[i]));
    }
    return largest;
}

/// On a straight line from `first` at the code `from` to `last` at `to`, held outside.
double ramp(double code, double from, double to, double first, double last) {
    return first + (last - first) * std::clamp((code - from) / (to - from), 0.0, 1.0);
}

/// rig_y_up.usda at a time code of its own.
Matrix rig_y_up(double code) {
    return product({about_x(20), move(ramp(code, 3, 12.5, 0, 0.5), 0, 0.4),
                    about_y(ramp(code, 0, 24, 10, 100)), move(1, 2, 3)});
}
double rig_focal_length(double code) { return ramp(code, 0, 6.25, 35, 50); }

/// A world with y up as a world with z up sees it: (x, y, z) becomes (x, -z, y).
Matrix z_up_twin(const Matrix& camera_to_world) { return product({camera_to_world, about_x(90)}); }

bool has_time(const FileCamera& camera, double seconds) {
    return std::any_of(
        camera.samples.begin(), camera.samples.end(),
        [&](const FileCameraSample& s) { return std::abs(s.time - seconds) < 1e-12; });
}

}  // namespace

// --------------------------------------------------------------------------------------- the call

TEST(UsdConverter, IsKnownByTheNamesOfTheFormat) {
    for (const char* name : {"a.usd", "a.usda", "a.usdc", "a.usdz", "a.USDA"}) {
        EXPECT_TRUE(lumivar::is_usd_name(name)) << name;
    }
    EXPECT_FALSE(lumivar::is_usd_name("usd"));
    EXPECT_FALSE(lumivar::is_usd_name("a.usdx"));
}

TEST(UsdConverter, IsLookedForWhereItsInstallationPutsIt) {
    Variable named("LUMIVAR_USD", "/somewhere");
    Variable data("XDG_DATA_HOME", "/data");
    Variable home("HOME", "/home/artist");
    EXPECT_EQ(lumivar::usd_environment(), "/somewhere");
    named.set("");
    EXPECT_EQ(lumivar::usd_environment(), "/data/lumivar/usd");
    data.set("");
    EXPECT_EQ(lumivar::usd_environment(), "/home/artist/.local/share/lumivar/usd");
}

TEST(UsdConverter, MissingIsToldWithTheRemedy) {
    const ScratchFolder folder;
    const Variable variable("LUMIVAR_USD", folder / "none");
    EXPECT_EQ(message_of([] { read_usd_cameras("a.usda"); }),
              "a.usda: USD files are read by usd-core, and there is none in " + folder / "none" +
                  "; run scripts/install-usd once, or name its folder in LUMIVAR_USD");
}

TEST(UsdConverter, GetsFileAndNameAndHandsOverCameras) {
    const StandInPython python(R"(printf '%s\n' "$@" >"$(dirname "$0")/arguments"
echo '{"cameras": [{"name": "/c", "up_axis": "Z", "samples": [{"time": 0.5,'
echo '"matrix": [1,0,0,0, 0,1,0,0, 0,0,1,0, 7,8,9,1], "focal_length": 50, "horizontal_aperture": 25}]}],'
echo '"warnings": ["one"]}')");
    const CameraFile file = read_usd_cameras("-a b.usda", "/c");
    ASSERT_EQ(file.cameras.size(), 1U);
    EXPECT_EQ(file.cameras[0].name, "/c");
    EXPECT_EQ(file.cameras[0].up, UpAxis::Z);
    ASSERT_EQ(file.cameras[0].samples.size(), 1U);
    EXPECT_EQ(file.cameras[0].samples[0].time, 0.5);
    EXPECT_EQ(file.cameras[0].samples[0].camera_to_world[13], 8.0);
    EXPECT_EQ(file.cameras[0].samples[0].lens.value().zoom(1000, 500), 2000.0);
    EXPECT_EQ(file.warnings, std::vector<std::string>{"one"});

    const std::string arguments = read_file(python / "bin/arguments");
    EXPECT_TRUE(arguments.starts_with("-I\n")) << arguments;
    EXPECT_TRUE(arguments.ends_with("/lib/lumivar/usd_cameras.py\n--camera=/c\n--\n-a b.usda\n"))
        << arguments;
}

TEST(UsdConverter, ItsOwnLineIsPassedOn) {
    const StandInPython python("echo noise >&2; echo 'a.usda: it has no camera' >&2; exit 1");
    EXPECT_EQ(message_of([] { read_usd_cameras("a.usda"); }), "a.usda: it has no camera");
}

TEST(UsdConverter, AnotherLineIsToldAsItsOwn) {
    const StandInPython python("echo 'cannot load usd-core' >&2; exit 1");
    EXPECT_EQ(message_of([] { read_usd_cameras("a.usda"); }),
              "a.usda: the converter of USD cameras says: cannot load usd-core");
}

TEST(UsdConverter, ASilentEndIsTold) {
    const StandInPython python("kill -SEGV $$");
    EXPECT_EQ(message_of([] { read_usd_cameras("a.usda"); }),
              "a.usda: the converter of USD cameras killed by SIGSEGV");
}

TEST(UsdConverter, APythonThatCannotBeStartedIsTold) {
    const StandInPython python("");
    const std::string file = python / "bin/python";
    fs::permissions(file, fs::perms::owner_read);
    EXPECT_EQ(message_of([] { read_usd_cameras("a.usda"); }),
              "a.usda: the converter of USD cameras says: " + file +
                  " cannot be started: Permission denied");
}

TEST(UsdConverter, MuchOnBothStreamsDoesNotBlock) {
    const StandInPython python(R"(head -c 300000 /dev/zero >&2
head -c 300000 /dev/zero | tr '\0' ' '
echo '{"cameras": []}')");
    EXPECT_TRUE(read_usd_cameras("a.usda").cameras.empty());
}

TEST(UsdConverter, LeavesNoDescriptorOpen) {
    const StandInPython python("echo '{\"cameras\": []}'");
    const int before = open_descriptors();
    read_usd_cameras("a.usda");
    EXPECT_EQ(open_descriptors(), before);
}

TEST(UsdConverter, BrokenJsonIsToldWithTheFile) {
    const StandInPython python("echo '{\"cameras\": 3}'");
    EXPECT_TRUE(message_of([] { read_usd_cameras("a.usda"); }).starts_with("a.usda: /cameras:"));
}

// ------------------------------------------------------------------------------------- the stages

class UsdStages : public testing::Test {
protected:
    void SetUp() override { SKIP_WITHOUT_USD(); }
};

TEST_F(UsdStages, HaveTheCameraWhereItsMatricesSay) {
    const CameraFile file = read_usd_cameras(sample("rig_y_up.usda"));
    ASSERT_EQ(file.cameras.size(), 1U);
    const FileCamera& camera = file.cameras[0];
    EXPECT_EQ(camera.name, "/rig/shot");
    EXPECT_EQ(camera.up, UpAxis::Y);
    EXPECT_TRUE(file.warnings.empty());
    for (const FileCameraSample& s : camera.samples) {
        const double code = 24.0 * s.time;
        // The angles are single precision in the file's own arithmetic.
        EXPECT_LT(largest_difference(s.camera_to_world, rig_y_up(code)), 2e-6) << code;
        EXPECT_NEAR(s.lens.value().ratio, rig_focal_length(code) / 36, 1e-6) << code;
    }
}

TEST_F(UsdStages, KeepTheTimesOfLensCameraAndParent) {
    const FileCamera camera = read_usd_cameras(sample("rig_y_up.usda")).cameras.at(0);
    for (const double code : {0.0, 3.0, 6.25, 12.5, 24.0}) {
        EXPECT_TRUE(has_time(camera, code / 24.0)) << code;
    }
    EXPECT_EQ(camera.samples.front().time, 0.0);
    EXPECT_EQ(camera.samples.back().time, 1.0);
}

TEST_F(UsdStages, WithZUpAreTurnedTwinsOfThoseWithYUp) {
    const FileCamera camera = read_usd_cameras(sample("rig_z_up.usda")).cameras.at(0);
    EXPECT_EQ(camera.up, UpAxis::Z);
    EXPECT_GT(camera.samples.size(), 5U);
    for (const FileCameraSample& s : camera.samples) {
        const Matrix expected = z_up_twin(rig_y_up(24.0 * s.time));
        EXPECT_LT(largest_difference(s.camera_to_world, expected), 2e-6) << s.time;
    }
}

TEST_F(UsdStages, AreRetimedByAReference) {
    // Codes of the rig are 1/24 s, those of the outer stage 1/48 s: code c is second (10 + 2 * 2 c)
    // / 48.
    const FileCamera camera = read_usd_cameras(sample("retimed.usda")).cameras.at(0);
    EXPECT_EQ(camera.name, "/take/shot");
    for (const double code : {0.0, 3.0, 6.25, 12.5, 24.0}) {
        EXPECT_TRUE(has_time(camera, (10.0 + 4.0 * code) / 48.0)) << code;
    }
    for (const FileCameraSample& s : camera.samples) {
        const double code = (48.0 * s.time - 10.0) / 4.0;
        EXPECT_LT(largest_difference(s.camera_to_world, rig_y_up(code)), 2e-6) << code;
        EXPECT_NEAR(s.lens.value().ratio, rig_focal_length(code) / 36, 1e-6) << code;
    }
}

TEST_F(UsdStages, AreRetimedByALayer) {
    const FileCamera camera = read_usd_cameras(sample("sublayers.usda")).cameras.at(0);
    for (const double code : {0.0, 3.0, 6.25, 12.5, 24.0}) {
        EXPECT_TRUE(has_time(camera, (-6.0 + 0.5 * code) / 24.0)) << code;
    }
    for (const FileCameraSample& s : camera.samples) {
        const double code = (24.0 * s.time + 6.0) / 0.5;
        EXPECT_LT(largest_difference(s.camera_to_world, rig_y_up(code)), 2e-6) << code;
    }
}

/// The largest way in pixels of a frame 1920 wide between where a star far away is seen in the
/// middle of the picture and where `turn`, given time codes, says.
double largest_miss(const FileCamera& camera, double last_code,
                    const std::function<Matrix(double)>& turn) {
    std::vector<host::CameraSample> samples;
    for (const FileCameraSample& s : camera.samples) {
        samples.push_back({s.time, s.camera_to_world, s.lens.value().zoom(1920, 1080)});
    }
    const auto path = host::path_camera(samples);
    double largest = 0.0;
    for (int i = 0; i <= 4999; ++i) {
        const double code = last_code * i / 4999.0;
        const Matrix seen = path->layer_to_world(code / 24.0);
        const double zoom = path->zoom(code / 24.0);
        largest = std::max(largest, zoom * largest_difference(seen, turn(code)));
    }
    return largest;
}

TEST_F(UsdStages, TurnBetweenKeysAsTheirAnglesDo) {
    // Two whole turns between two keys: by the keys alone the camera would hardly move.
    const FileCamera camera = read_usd_cameras(sample("spin.usda")).cameras.at(0);
    const auto turn = [](double code) {
        const double part = code / 24.0;
        return product({about_x(60 * part), about_y(720 * part), about_z(30 * part)});
    };
    EXPECT_LT(largest_miss(camera, 24.0, turn), 0.02);
    EXPECT_LT(camera.samples.size(), 5000U);
}

/// A stage of 24 codes a second, with a camera that turns from 170 to -170 degrees up to the code.
std::string half_turn(const std::string& last_code) {
    return "#usda 1.0\n(\n    timeCodesPerSecond = 24\n)\ndef Camera \"c\"\n{\n"
           "    double xformOp:rotateY.timeSamples = {\n        0: 170,\n        " +
           last_code +
           ": -170,\n    }\n    uniform token[] xformOpOrder = [\"xformOp:rotateY\"]\n}\n";
}

TEST_F(UsdStages, TurnTheShortWayWhereAnglesJumpWithinAFrame) {
    const ScratchFolder folder;
    const std::string stage = folder / "jump.usda";
    write_file(stage, half_turn("1"));
    const CameraFile jump = read_usd_cameras(stage);
    EXPECT_EQ(jump.warnings, std::vector<std::string>{
                                 "/c: its angles jump within a frame, first behind time code 0; it "
                                 "is turned the short way there"});
    EXPECT_EQ(jump.cameras.at(0).samples.size(), 2U);
    // In a quarter of a second a camera may well turn by 340 degrees.
    write_file(stage, half_turn("6"));
    const CameraFile turn = read_usd_cameras(stage);
    EXPECT_TRUE(turn.warnings.empty());
    const auto about = [](double code) { return about_y(170 - 340 * code / 6); };
    EXPECT_LT(largest_miss(turn.cameras.at(0), 6.0, about), 0.02);
}

TEST_F(UsdStages, FollowSplines) {
    // Both tangents are level and a third of the way long, so the time is the curve's own
    // parameter.
    const FileCamera camera = read_usd_cameras(sample("spline.usda")).cameras.at(0);
    const auto turn = [](double code) {
        const double t = code / 24.0;
        return about_y(90.0 * (3.0 - 2.0 * t) * t * t);
    };
    EXPECT_LT(largest_miss(camera, 24.0, turn), 0.02);
}

TEST_F(UsdStages, KeepTheCamerasWhereALayerOfTheWholeStageIsLost) {
    const ScratchFolder folder;
    write_file(folder / "shot.usda",
               "#usda 1.0\n(subLayers = [@./gone.usda@])\ndef Camera \"cam\" {}\n");
    const CameraFile file = read_usd_cameras(folder / "shot.usda");
    ASSERT_EQ(file.cameras.size(), 1U);
    EXPECT_EQ(file.cameras[0].name, "/cam");
    ASSERT_EQ(file.warnings.size(), 1U);
    EXPECT_NE(file.warnings[0].find("gone.usda"), std::string::npos);
}

TEST_F(UsdStages, NeedTimeCodesThatGoForward) {
    const ScratchFolder folder;
    for (const char* rate : {"0", "-24"}) {
        write_file(folder / "shot.usda", std::string("#usda 1.0\n(timeCodesPerSecond = ") + rate +
                                             ")\ndef Camera \"cam\" {}\n");
        const std::string fault = failure_of([&] { (void)read_usd_cameras(folder / "shot.usda"); });
        EXPECT_NE(fault.find("no time codes or frames per second"), std::string::npos) << fault;
    }
}

TEST_F(UsdStages, SayWhatIsLost) {
    const CameraFile file = read_usd_cameras(sample("losses.usda"));
    ASSERT_EQ(file.cameras.size(), 2U);
    EXPECT_EQ(file.cameras[0].name, "/set/wide");
    EXPECT_EQ(file.cameras[0].samples.size(), 1U);
    EXPECT_EQ(file.cameras[1].name, "/other/wide");
    const auto warned = [&](const std::string& text) {
        return std::any_of(file.warnings.begin(), file.warnings.end(),
                           [&](const std::string& w) { return w.find(text) != std::string::npos; });
    };
    EXPECT_TRUE(warned("/set/wide: its aperture offset is left out"));
    EXPECT_TRUE(warned("/set/wide: its shutter is left out"));
    EXPECT_TRUE(warned("/set/wide: its f-stop is left out"));
    EXPECT_TRUE(warned("/set/wide: its uneven scale is taken off"));
    EXPECT_TRUE(warned("left out: the camera /other/plan is orthographic"));
    EXPECT_TRUE(warned("left out: the camera /mirrored"));
    EXPECT_TRUE(warned("left out: the camera /lost/part lacks a part"));
    EXPECT_TRUE(warned("nowhere.usda"));
    EXPECT_FALSE(warned("/other/wide"));
}

TEST_F(UsdStages, AreAskedForOneCamera) {
    const std::string losses = sample("losses.usda");
    EXPECT_EQ(read_usd_cameras(losses, "/other/wide").cameras.at(0).name, "/other/wide");
    EXPECT_EQ(read_usd_cameras(sample("rig_y_up.usda"), "shot").cameras.at(0).name, "/rig/shot");
    EXPECT_EQ(message_of([&] { read_usd_cameras(losses, "wide"); }),
              losses +
                  ": several cameras are called \"wide\": /set/wide, /other/wide; give the "
                  "whole path of one");
    EXPECT_EQ(message_of([&] { read_usd_cameras(losses, "/set"); }),
              losses +
                  ": there is no camera \"/set\"; there is /set/wide, /other/wide, "
                  "/other/plan, /mirrored, /lost/part");
    EXPECT_EQ(
        message_of([&] { read_usd_cameras(losses, "plan"); }),
        losses + ": the camera /other/plan is orthographic; only a perspective one sees stars");
    EXPECT_EQ(message_of([&] { read_usd_cameras(losses, "mirrored"); }),
              losses + ": the camera /mirrored at time code 0 is mirrored by a negative scale");
}

TEST_F(UsdStages, ThatCannotBeReadAreTold) {
    const ScratchFolder folder;
    const std::string broken = folder / "broken.usda";
    write_file(broken, "#usda 1.0\ndef Camera \"c\" (\n{\n");
    EXPECT_TRUE(message_of([&] {
                    read_usd_cameras(broken);
                }).starts_with(broken + ": cannot be read as USD: line "));
    const std::string noise = folder / "noise.usdc";
    write_file(noise, "PXR-USDC\x01");
    EXPECT_TRUE(message_of([&] {
                    read_usd_cameras(noise);
                }).starts_with(noise + ": cannot be read as USD: "));
    const std::string empty = folder / "empty.usda";
    write_file(empty, "#usda 1.0\ndef Xform \"c\"\n{\n}\n");
    EXPECT_EQ(message_of([&] { read_usd_cameras(empty); }), empty + ": it has no camera");
    EXPECT_EQ(message_of([] { read_usd_cameras("none.usda"); }),
              "none.usda: there is no such file");
}
