// lumivar render
#include <base/string.h>
#include <host/printable.h>
#include <host/scene.h>
#include <host/scene_text.h>
#include <osapi/processes.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "atomic_file.h"
#include "camera_arguments.h"
#include "catalogue_warning.h"
#include "command_line.h"
#include "counted.h"
#include "cube_map.h"
#include "failure.h"
#include "frame_fingerprints.h"
#include "frame_range.h"
#include "frame_worker.h"
#include "magnitudes.h"
#include "picture_arguments.h"
#include "picture_file.h"
#include "player.h"
#include "preview_film.h"
#include "render_arguments.h"
#include "render_request.h"
#include "render_run.h"
#include "render_shots.h"
#include "render_summary.h"
#include "run_hints.h"
#include "shot_plan.h"
#include "star_resolver.h"
#include "worker_pool.h"
#include "working_folder.h"

namespace lumivar {
namespace {

const char* depth_text(host::Depth depth) {
    switch (depth) {
        case host::Depth::Bits8:
            return "8 bits";
        case host::Depth::Bits16:
            return "16 bits";
        case host::Depth::Float:
            break;
    }
    return "float";
}

void warn_of_catalogues(const host::Session& session, const host::Scene& scene,
                        const std::vector<host::Time>& times) {
    for (const std::string& warning : catalogue_warnings(session, scene, times)) {
        std::fprintf(stderr, "lumivar: warning: %s\n", host::printable(warning).c_str());
    }
}

/// A camera file that is shorter than the shot is a mistake more often than not: the camera stands
/// still there.
void warn_of_short_camera(const std::vector<host::CameraSample>& camera, const std::string& file,
                          const std::vector<Shot>& shots) {
    constexpr double kRounding = 1e-6;  // seconds; files have times as decimals
    if (camera.size() < 2) {
        return;  // a still one
    }
    std::vector<int> outside;
    for (const Shot& shot : shots) {
        const double seconds = shot.time.seconds();
        if (shot.frame && (seconds < camera.front().time - kRounding ||
                           seconds > camera.back().time + kRounding)) {
            outside.push_back(*shot.frame);
        }
    }
    outside.erase(std::unique(outside.begin(), outside.end()), outside.end());
    if (!outside.empty()) {
        std::fprintf(stderr,
                     "lumivar: warning: the camera of %s does not reach frames %s; it stands still "
                     "there\n",
                     host::printable(file).c_str(), frame_range_text(outside).c_str());
    }
}

/// What decides of the frames' pixels beside scene, camera, catalogue and plug-in.
std::vector<std::pair<std::string, std::string>> option_texts(const RenderArguments& arguments,
                                                              const PictureContent& content) {
    std::vector<std::pair<std::string, std::string>> options;
    for (const std::string& setting : arguments.settings) {
        options.emplace_back("set", setting);
    }
    options.emplace_back("depth", std::to_string(arguments.depth));
    options.emplace_back("size", arguments.size);
    options.emplace_back("cube", arguments.cube_side ? std::to_string(*arguments.cube_side) : "");
    if (const auto limit = arguments.magnitudes.limiting_magnitude) {
        options.emplace_back("limiting magnitude", String::fmt("%.17g", *limit).c_str());
    }
    options.emplace_back("picture", content_text(content));
    if (content.look) {
        options.emplace_back("exposure", String::fmt("%.17g", content.look->exposure).c_str());
        options.emplace_back("halo", String::fmt("%.17g", content.look->halo).c_str());
        options.emplace_back("bits", std::to_string(content.look->bits));
        if (const ManagedView& view = content.look->managed; !view.config.empty()) {
            options.emplace_back("managed view", fingerprint_of(view));
        }
    }
    options.emplace_back("linear halo", String::fmt("%.17g", content.linear_halo).c_str());
    return options;
}

Existing existing_of(const RenderArguments& arguments) {
    if (arguments.resume) {
        return Existing::Resume;
    }
    return arguments.skip_existing ? Existing::Keep : Existing::Replace;
}

int jobs_of(const RenderArguments& arguments, std::size_t shots) {
    constexpr int kMostJobs = 1024;
    if (arguments.jobs && (*arguments.jobs < 1 || *arguments.jobs > kMostJobs)) {
        throw UsageError("--jobs takes 1 to " + std::to_string(kMostJobs) + " worker processes");
    }
    const int wanted = arguments.jobs.value_or(OSAPI::usable_processors());
    return std::clamp(wanted, 1, static_cast<int>(std::min<std::size_t>(shots, kMostJobs)));
}

/// What the pictures of the film show: what a .png of the same command would.
PictureContent film_content(const RenderArguments& arguments, const PictureWishes& wishes,
                            host::Depth depth) {
    PictureArguments looked_at = arguments.picture_arguments;
    looked_at.raw = false;
    looked_at.half = false;
    looked_at.compression.clear();
    looked_at.bits = 8;
    const char* const ocio = std::getenv("OCIO");
    return picture_content(looked_at, wishes, "film.png", depth, ocio != nullptr ? ocio : "");
}

/// What can be told of the film before the first frame.
void check_preview(const RenderArguments& arguments, const std::vector<Shot>& shots) {
    if (arguments.preview.empty()) {
        return;
    }
    check_film_name(arguments.preview);
    if (shots.size() < 2 || arguments.cube_side) {
        throw UsageError(
            "--preview makes a film of several frames; give them with --frames, and without "
            "--cube-map");
    }
    check_output_path(arguments.preview);
    require_film_encoder();
}

std::string remedy_of(const RenderArguments& arguments) {
    return arguments.skip_existing ? "the same command" : "the same command with --resume";
}

/// Throws where a picture is missing; the summary is told by then.
void require_all(const RenderRun& run, const std::vector<Shot>& shots, const PoolEnd& end,
                 const std::string& remedy) {
    const std::vector<std::size_t> missing = run.missing();
    if (missing.empty()) {
        return;
    }
    if (shots.size() == 1) {
        throw Failure(run.last_failure());
    }
    throw Failure((end.stopped ? run.last_failure() + "; " : "") + run.names_of(missing) + " of " +
                  (shots.front().face.empty() ? counted(shots.size(), "frame", "frames")
                                              : counted(shots.size(), "picture", "pictures")) +
                  (missing.size() == 1 ? " is" : " are") + " missing; " + remedy +
                  " renders what is missing");
}

void render_command(const RenderArguments& arguments) {
    const host::Depth depth{arguments.depth};
    host::RenderOptions options;
    options.depth = depth;
    options.blank_input = true;
    // The plug-in's pixels are opaque, so that no drawn one is taken for a mark.
    options.mark = std::byte{};
    options.input_padding = 0;  // whose bytes would be touched in every row
    if (!arguments.size.empty()) {
        std::tie(options.width, options.height) = parse_size(arguments.size);
    }
    std::vector<host::ControlSetting> settings;
    for (const std::string& text : arguments.settings) {
        settings.push_back(parse_setting(text));
    }
    RunInputs inputs;
    inputs.scene_text = host::read_scene_text(arguments.scene);
    host::Scene scene =
        host::parse_scene(inputs.scene_text, host::name_of_scene(arguments.scene), resolve_star);
    inputs.camera = bring_camera(arguments.camera, scene);
    const char* const ocio = std::getenv("OCIO");
    const PictureContent content =
        picture_content(arguments.picture_arguments, picture_wishes(scene), arguments.picture,
                        depth, ocio != nullptr ? ocio : "");
    const std::vector<Shot> shots = shots_of(arguments, scene.composition);
    check_output_path(shots.front().path);
    check_preview(arguments, shots);
    warn_of_short_camera(inputs.camera, arguments.camera.camera, shots);
    const std::vector<host::Time> times = times_of(shots);
    const bool by_magnitude =
        bring_limiting_magnitude(arguments.magnitudes, settings, times, scene);
    for (host::ControlSetting& setting : settings) {
        scene.controls.push_back(std::move(setting));
    }
    inputs.options = option_texts(arguments, content);

    Player player(arguments.plugin, arguments.catalogue);
    player.choose_catalogue(scene);
    const std::vector<host::Scene> scenes =
        arguments.cube_side ? cube_scenes(scene, *arguments.cube_side) : std::vector{scene};
    if (arguments.cube_side) {
        scene = scenes.front();  // all have its size, lens and projection
    }
    player.require_drawable(scene, options);
    warn_of_catalogues(player.session(), scene, times);
    RunHints hints(arguments.quiet, player.session(), scene, times);
    hints.before();
    const FrameFingerprints fingerprints(inputs, player, scene, shots);
    FrameWork work{scenes, shots, fingerprints, options, content, existing_of(arguments)};
    std::optional<WorkingFolder> film_folder;
    if (!arguments.preview.empty()) {
        film_folder.emplace(std::filesystem::temp_directory_path(),
                            "cannot make the film " + arguments.preview);
        work.film_folder = film_folder->path();
        work.film_content = film_content(arguments, picture_wishes(scene), depth);
    }
    const int jobs = jobs_of(arguments, shots.size());
    RenderRun run(shots,
                  arguments.progress == "json"   ? ProgressStyle::Json
                  : arguments.progress == "none" ? ProgressStyle::None
                                                 : ProgressStyle::Text,
                  jobs);
    const PoolEnd end = run_worker_pool(
        shots.size(), jobs, [&](WorkerLink& link) { work_on_frames(link, player, work); }, run);
    run.end_progress();
    if (end.signal != 0) {
        film_folder.reset();  // what workers have put into it, no signal removes
        run.tell_interruption(remedy_of(arguments));
        std::raise(end.signal);  // removes what is left and ends the program
    }
    for (const auto& [item, report] : run.reports()) {
        if (!report.kept) {
            hints.note(report.brightest);
        }
    }
    if (run.rendered() > 0) {
        hints.after(player.catalogues_used(scene, times), least_visible_light(content));
    }
    // The control gives the same picture of a float frame alone: others are cut off at white first.
    const double told_exposure =
        content.look && depth == host::Depth::Float ? content.look->exposure : 0.0;
    const SummaryFacts facts{
        arguments.scene, arguments.picture, depth_text(depth), content_text(content), jobs,
        run.seconds()};
    const RunSummary summary = summary_of(run, shots, facts);
    if (arguments.json) {
        std::printf("%s\n", summary_json(summary).c_str());
    } else if (run.missing().size() < shots.size()) {
        std::printf("%s", summary_text(summary, shots).c_str());
        for (const std::string& line :
             magnitude_lines(player.session(), scene, shots.front().time, shots.back().time,
                             options.width != 0 ? options.width : scene.composition.width,
                             by_magnitude, told_exposure)) {
            std::printf("  %s\n", line.c_str());
        }
    }
    std::fflush(stdout);  // before what follows on standard error
    player.close();
    require_all(run, shots, end, remedy_of(arguments));
    if (film_folder) {
        // Workers have put them there: a signal while the film is made has to know them.
        for (std::size_t item = 0; item < shots.size(); ++item) {
            film_folder->file(film_picture(item));
        }
        film_folder->file(kFilmFile);
        const auto [num, den] =
            std::pair(scene.composition.frame_rate.num, scene.composition.frame_rate.den);
        make_film(film_folder->path(), {static_cast<int>(num), static_cast<int>(den)},
                  arguments.preview);
    }
}

}  // namespace

void add_render_command(Command& program) {
    auto arguments = std::make_shared<RenderArguments>();
    Command command = program.add_command("render", "Render a scene through the plug-in");
    add_render_arguments(command, *arguments);
    command.run([arguments] { render_command(*arguments); });
}

}  // namespace lumivar
