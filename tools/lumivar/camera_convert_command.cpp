// lumivar camera convert
#include <host/camera.h>
#include <host/printable.h>
#include <host/scene.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <numbers>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "atomic_file.h"
#include "camera_arguments.h"
#include "camera_commands.h"
#include "camera_opening.h"
#include "chan_file.h"
#include "failure.h"
#include "path_scene.h"
#include "whole_text.h"

namespace lumivar {
namespace {

struct CameraConvertArguments {
    CameraArguments camera;
    std::string output;
    std::string scene;
    std::optional<double> frame_rate;
    std::optional<double> step;
};

/// The path at every `step` frames, from the first whole one of them to the last.
std::vector<host::CameraSample> at_frames(const std::vector<host::CameraSample>& samples,
                                          double step, double frames_per_second) {
    constexpr double kMostSamples = 1e6;
    constexpr double kRounding = 1e-9;
    const double interval = step / frames_per_second;
    // Not -0, which would be written so.
    const double first = std::ceil(samples.front().time / interval - kRounding) + 0.0;
    const double last = std::floor(samples.back().time / interval + kRounding);
    if (!(last - first < kMostSamples)) {
        throw UsageError("--step is so small that there would be more than a million samples");
    }
    const auto camera = host::path_camera(samples);
    std::vector<host::CameraSample> found;
    for (double index = first; index <= last; ++index) {
        const double time = index * step / frames_per_second;
        found.push_back({time, camera->layer_to_world(time), camera->zoom(time)});
    }
    if (found.empty()) {
        throw UsageError("the path has no frame at a multiple of --step");
    }
    return found;
}

/// The largest angle, in degrees, by which an axis of one camera is off the other's.
double off_by(const host::Camera& one, const host::Camera& other, double seconds) {
    const host::Matrix a = one.layer_to_world(seconds);
    const host::Matrix b = other.layer_to_world(seconds);
    double largest = 0.0;
    for (std::size_t row = 0; row < 3; ++row) {
        const double chord = std::hypot(a[4 * row] - b[4 * row], a[4 * row + 1] - b[4 * row + 1],
                                        a[4 * row + 2] - b[4 * row + 2]);
        largest = std::max(largest, 2.0 * std::asin(std::min(1.0, chord / 2.0)));
    }
    return largest * (180.0 / std::numbers::pi);
}

/// What is written, read again.
std::shared_ptr<const host::Camera> read_again(const std::string& text, bool is_chan,
                                               const host::Composition& composition,
                                               const CameraReading& reading) {
    if (!is_chan) {
        return host::parse_scene(text, "the scene").camera;
    }
    const CameraFile file = read_chan(text, "the file", reading);
    const CameraPath path = world_path(file.cameras.front(), 1.0, "the file");
    const auto nothing = host::look_at_camera(0.0, 0.0, 0.0, host::Lens::zoom(1.0));
    return host::path_camera(
        samples_on_picture(path, composition.width, composition.height, *nothing));
}

void camera_convert_command(const CameraConvertArguments& arguments) {
    const bool is_chan = arguments.output.ends_with(".chan");
    if (!is_chan && !arguments.output.ends_with(".json")) {
        throw UsageError("the ending of \"" + arguments.output +
                         "\" tells no kind of file; give NAME.json for a scene or NAME.chan");
    }
    check_output_path(arguments.output);
    host::Scene base;
    std::string base_text;
    double frames_per_second = arguments.frame_rate.value_or(24.0);
    if (!arguments.scene.empty()) {
        base = host::load_scene(arguments.scene);
        base_text = whole_text(arguments.scene);
        frames_per_second = base.composition.frame_rate.per_second();
    }
    const CameraChoice choice = parse_camera_choice(arguments.camera.camera);
    const CameraPaths paths =
        read_camera_paths(choice, camera_reading(arguments.camera, frames_per_second));
    const CameraPath& path = only_path(paths, choice);
    warn_of_camera_file(choice, paths);
    std::vector<host::CameraSample> samples = samples_in_scene(path, base);
    if (arguments.step) {
        samples = at_frames(samples, *arguments.step, frames_per_second);
    }
    CameraReading written;  // y up, ZXY, parsecs
    written.frames_per_second = frames_per_second;
    if (base_text.empty()) {
        base_text = new_scene(frames_per_second, samples.back().time);
    }
    const std::string text = is_chan ? chan_text(samples, base.composition.height, written)
                                     : scene_with_path(base_text, arguments.scene, samples);
    AtomicFile file(arguments.output);
    file.write(std::as_bytes(std::span(text.data(), text.size())));
    file.publish();

    const auto before = host::path_camera(samples);
    const auto after = read_again(text, is_chan, base.composition, written);
    double between = 0.0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        between = std::max(between,
                           off_by(*before, *after, (samples[i - 1].time + samples[i].time) / 2.0));
    }
    std::printf("%s: %zu %s; between them off the path by %.2g degrees at most\n",
                host::printable(arguments.output).c_str(), samples.size(),
                samples.size() == 1 ? "sample" : "samples", between);
}

}  // namespace

void add_camera_convert_command(Command& camera) {
    auto arguments = std::make_shared<CameraConvertArguments>();
    Command command =
        camera.add_command("convert", "Write another program's camera as a scene or a .chan file");
    command
        .add("FILE", arguments->camera.camera,
             "The file, .chan, .csv, .gltf, .glb or of USD, or FILE:NAME for one camera of it")
        .required();
    command
        .add("-o,--output", arguments->output,
             "The file to write: NAME.json for a scene, or NAME.chan")
        .required();
    const Argument scene =
        command.add("--scene", arguments->scene,
                    "The scene whose camera is replaced, and whose frame rate and size count; if "
                    "not given, a new one of 1920x1080");
    command
        .add("--frame-rate", arguments->frame_rate,
             "Frames a second, without a scene; 24 if nothing is said")
        .between(0.001, 999.0)
        .excludes(scene);
    command
        .add("--step", arguments->step,
             "A sample every so many frames (1 for whole frames, 0.25 for four a frame) instead of "
             "the file's own samples")
        .between(1e-6, 1e6);
    add_reading_arguments(command, "--", arguments->camera);
    command.footer(
        "A scene gets keys of position, orientation and zoom that can be typed into the host as\n"
        "they are, with \"Parallax Crush\" 0: one unit is one parsec. Its angles run on past 180.\n"
        "At the keys the picture is the path's own. Between them the host draws each angle on a\n"
        "straight line, a path turns about one axis: the summary says by how much they differ.\n"
        "With --step there are more keys and less of that. A .chan is written y up, in parsecs,\n"
        "with the angles in the order ZXY. Comments of the scene are not kept.\n\n"
        "Examples:\n"
        "  lumivar camera convert shot.glb -o shot.json\n"
        "  lumivar camera convert shot.csv -o mine.json --scene scenes/flight.json\n"
        "  lumivar camera convert stage.gltf:ShotCam -o shot.chan --frame-rate 25 --step 1\n");
    command.run([arguments] { camera_convert_command(*arguments); });
}

}  // namespace lumivar
