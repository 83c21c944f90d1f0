// lumivar camera convert
#include <base/string.h>
#include <host/camera.h>
#include <host/printable.h>
#include <host/scene.h>
#include <host/scene_text.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <numbers>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "atomic_file.h"
#include "camera_arguments.h"
#include "camera_commands.h"
#include "camera_opening.h"
#include "chan_file.h"
#include "failure.h"
#include "path_scene.h"
#include "star_resolver.h"

namespace lumivar {
namespace {

struct CameraConvertArguments {
    CameraArguments camera;
    std::string output;
    std::string scene;
    std::optional<double> frame_rate;
    std::optional<double> step;
};

constexpr double kMostSamples = 1e6;
/// Between keys, beyond which angles are not good enough: less than a pixel of the widest lens.
constexpr double kMostDegreesOff = 0.01;

/// Every `step` frames from the first time to the last, and these two.
std::vector<double> stepped_times(double first, double last, double step,
                                  double frames_per_second) {
    constexpr double kRounding = 1e-9;
    constexpr double kCountable = 1e15;  // beyond, adding 1 to a number may leave it as it is
    const double interval = step / frames_per_second;
    const double begin = std::ceil(first / interval - kRounding) + 0.0;  // not -0
    const double end = std::floor(last / interval + kRounding);
    if (!(end - begin < kMostSamples && std::fabs(begin) < kCountable &&
          std::fabs(end) < kCountable)) {
        throw UsageError("--step is so small that there would be more than a million samples");
    }
    std::vector<double> times = {first};
    const auto steps = static_cast<std::int64_t>(end - begin);
    for (std::int64_t i = 0; i <= steps; ++i) {
        const double time = (begin + static_cast<double>(i)) * step / frames_per_second;
        if (time > times.back() + kRounding * interval) {
            times.push_back(time);
        }
    }
    if (last > times.back() + kRounding * interval) {
        times.push_back(last);
    }
    return times;
}

/// Both, in order and each once.
std::vector<double> united(std::vector<double> times, const std::vector<double>& more) {
    times.insert(times.end(), more.begin(), more.end());
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

std::vector<double> own_times(const CameraPath& path) {
    std::vector<double> times;
    times.reserve(path.samples.size());
    for (const PathSample& sample : path.samples) {
        times.push_back(sample.time);
    }
    return times;
}

/// When the camera is to be written down: at its own samples or every `step` frames; where its lens
/// is the scene's and changes, at all frames of the scene too.
std::vector<double> written_times(const CameraPath& path, const host::Camera& camera,
                                  std::optional<double> step, const host::Scene& scene,
                                  double frames_per_second) {
    std::vector<double> times = own_times(path);
    if (step) {
        times = stepped_times(times.front(), times.back(), *step, frames_per_second);
    }
    if (!path.samples.front().lens) {
        const std::vector<double> frames = stepped_times(
            std::min(0.0, times.front()), std::max(scene.composition.duration, times.back()), 1.0,
            frames_per_second);
        if (std::any_of(frames.begin(), frames.end(), [&](double time) {
                return camera.zoom(time) != camera.zoom(frames.front());
            })) {
            times = united(std::move(times), frames);
        }
    }
    return times;
}

std::vector<host::CameraSample> samples_at(const host::Camera& camera,
                                           const std::vector<double>& times) {
    std::vector<host::CameraSample> samples;
    samples.reserve(times.size());
    for (const double time : times) {
        samples.push_back({time, camera.layer_to_world(time), camera.zoom(time)});
    }
    return samples;
}

host::Matrix with_unit_axes(host::Matrix matrix) {
    for (std::size_t row = 0; row < 12; row += 4) {
        const double length = std::hypot(matrix[row], matrix[row + 1], matrix[row + 2]);
        for (std::size_t i = row; i < row + 3; ++i) {
            matrix[i] /= length;
        }
    }
    return matrix;
}

/// The largest angle, in degrees, by which an axis of one camera is off the other's.
double off_by(const host::Camera& one, const host::Camera& other, double seconds) {
    // Between keys of a matrix the axes are a little short, which no star shows.
    const host::Matrix a = with_unit_axes(one.layer_to_world(seconds));
    const host::Matrix b = with_unit_axes(other.layer_to_world(seconds));
    double largest = 0.0;
    for (std::size_t row = 0; row < 3; ++row) {
        const double chord = std::hypot(a[4 * row] - b[4 * row], a[4 * row + 1] - b[4 * row + 1],
                                        a[4 * row + 2] - b[4 * row + 2]);
        largest = std::max(largest, 2.0 * std::asin(std::min(1.0, chord / 2.0)));
    }
    return largest * (180.0 / std::numbers::pi);
}

/// How far one camera stands from where the other does, in parsecs.
double apart(const host::Camera& one, const host::Camera& other, double seconds) {
    const host::Matrix a = one.layer_to_world(seconds);
    const host::Matrix b = other.layer_to_world(seconds);
    return std::hypot(a[12] - b[12], a[13] - b[13], a[14] - b[14]);
}

struct Deviation {
    double degrees = 0.0;
    double parsecs = 0.0;
};

/// The largest between the times.
Deviation deviation(const host::Camera& path, const host::Camera& written,
                    const std::vector<double>& times) {
    Deviation largest;
    for (std::size_t i = 1; i < times.size(); ++i) {
        for (const double part : {0.25, 0.5, 0.75}) {
            const double time = times[i - 1] + part * (times[i] - times[i - 1]);
            largest.degrees = std::max(largest.degrees, off_by(path, written, time));
            largest.parsecs = std::max(largest.parsecs, apart(path, written, time));
        }
    }
    return largest;
}

/// What is to be written, read again.
std::shared_ptr<const host::Camera> read_again(const std::string& text, const std::string& name,
                                               bool is_chan, const host::Composition& composition,
                                               const CameraReading& reading) {
    if (!is_chan) {
        return host::parse_scene(text, name, resolve_star).camera;
    }
    const CameraFile file = read_chan(text, name, reading);
    const CameraPath path = world_path(file.cameras.front(), 1.0, name);
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
    double frames_per_second =
        host::frame_rate_of(arguments.frame_rate.value_or(24.0)).per_second();
    if (!arguments.scene.empty()) {
        base_text = host::read_scene_text(arguments.scene);
        base = host::parse_scene(base_text, host::name_of_scene(arguments.scene), resolve_star);
        frames_per_second = base.composition.frame_rate.per_second();
    }
    const CameraChoice choice = parse_camera_choice(arguments.camera.camera);
    const CameraPaths paths = read_camera_paths(
        choice, camera_reading(arguments.camera, frames_per_second, base.composition.first_frame));
    const CameraPath& path = only_path(paths, choice);
    warn_of_camera_file(choice, paths);
    const std::shared_ptr<const host::Camera> camera = camera_in_scene(path, base);
    const std::vector<double> times =
        written_times(path, *camera, arguments.step, base, frames_per_second);
    const std::vector<host::CameraSample> samples = samples_at(*camera, times);
    CameraReading written;  // y up, ZXY, parsecs
    written.frames_per_second = frames_per_second;
    written.first_frame = base.composition.first_frame;
    if (arguments.scene.empty()) {
        base_text = new_scene(frames_per_second, times.back());
    }
    const std::string source = host::name_of_scene(arguments.scene);
    std::string text = is_chan ? chan_text(samples, base.composition.height, written)
                               : scene_with_path(base_text, source, samples, Placing::Angles);
    const auto off_path = [&](const std::string& what) {
        // Before a file of this name gives way to it.
        const auto after = read_again(what, arguments.output, is_chan, base.composition, written);
        return deviation(*camera, *after, united(times, own_times(path)));
    };
    Deviation off = off_path(text);
    std::string note;
    if (!is_chan && off.degrees > kMostDegreesOff) {
        const std::string matrices = scene_with_path(base_text, source, samples, Placing::Matrices);
        const Deviation better = off_path(matrices);
        if (better.degrees < off.degrees) {
            note = String::fmt(
                       "; written as matrices, as angles to type into the host would be "
                       "off by %.2g degrees",
                       off.degrees)
                       .c_str();
            text = matrices;
            off = better;
        }
    }
    AtomicFile file(arguments.output);
    file.write(std::as_bytes(std::span(text.data(), text.size())));
    file.publish();
    std::printf(
        "%s: %zu %s; between them off the path by %.2g degrees and %.2g parsecs at most%s\n",
        host::printable(arguments.output).c_str(), samples.size(),
        samples.size() == 1 ? "sample" : "samples", off.degrees, off.parsecs, note.c_str());
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
