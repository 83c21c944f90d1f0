// lumivar render
#include <host/printable.h>
#include <host/scene.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
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
#include "failure.h"
#include "magnitudes.h"
#include "picture_arguments.h"
#include "picture_file.h"
#include "picture_info.h"
#include "player.h"
#include "progress.h"
#include "render_request.h"
#include "run_hints.h"
#include "shot_plan.h"
#include "star_resolver.h"

namespace lumivar {
namespace {

struct RenderArguments {
    std::string scene;
    std::string picture;
    ShotRequest shots;
    int depth = 32;
    std::string size;
    std::vector<std::string> settings;
    std::string plugin;
    std::string catalogue;
    PictureArguments picture_arguments;
    bool quiet = false;
    MagnitudeArguments magnitudes;
    CameraArguments camera;
};

FrameView view_of(const host::World& world) {
    return {world.row(0), world.row_bytes(), world.width(), world.height(), world.depth()};
}

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

void render_command(const RenderArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const host::Depth depth{arguments.depth};
    host::RenderOptions options;
    options.depth = depth;
    if (!arguments.size.empty()) {
        std::tie(options.width, options.height) = parse_size(arguments.size);
    }
    std::vector<host::ControlSetting> settings;
    for (const std::string& text : arguments.settings) {
        settings.push_back(parse_setting(text));
    }
    host::Scene scene = host::load_scene(arguments.scene, resolve_star);
    bring_camera(arguments.camera, scene);
    const char* const ocio = std::getenv("OCIO");
    const PictureContent content =
        picture_content(arguments.picture_arguments, picture_wishes(scene), arguments.picture,
                        depth, ocio != nullptr ? ocio : "");
    const std::vector<Shot> shots =
        plan_shots(arguments.shots, scene.composition, FrameNames(arguments.picture));
    check_output_path(shots.front().path);
    const std::vector<host::Time> times = times_of(shots);
    const bool by_magnitude =
        bring_limiting_magnitude(arguments.magnitudes, settings, times, scene);
    for (host::ControlSetting& setting : settings) {
        scene.controls.push_back(std::move(setting));
    }

    Player player(arguments.plugin, arguments.catalogue);
    player.choose_catalogue(scene);
    warn_of_catalogues(player.session(), scene, times);
    RunHints hints(arguments.quiet, player.session(), scene, times);
    hints.before();
    std::optional<CatalogueUsed> catalogue;
    int width = 0;
    int height = 0;
    {
        Progress progress(shots.size(), "frames");
        std::uint64_t done = 0;
        for (const Shot& shot : shots) {
            const host::Frame frame = player.render(scene, shot.time, options);
            catalogue = player.catalogue_used(scene, shot.time);
            hints.note(frame.world);
            width = frame.world.width();
            height = frame.world.height();
            PictureInfo info = picture_info(player.session(), scene, shot.time, catalogue);
            info.details.emplace_back("picture", content_text(content));
            info.shot = shot_info(scene, shot.time, shot.frame);
            write_picture(shot.path, view_of(frame.world), info, content);
            progress.update(++done);
        }
    }
    hints.after(catalogue);
    const std::vector<std::string> magnitudes =
        magnitude_lines(player.session(), scene, shots.front().time, shots.back().time,
                        by_magnitude, content.look ? content.look->exposure : 0.0);
    player.close();

    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    const std::string what = shots.size() == 1
                                 ? shown_time(shots.front())
                                 : shown_time(shots.front()) + " to " + shown_time(shots.back());
    const std::string stars =
        catalogue ? catalogue->name + " (" + counted(catalogue->stars, "star", "stars") + ")"
                  : "none";
    std::printf("%s: %dx%d, %s, %s, catalogue %s, %s, %.2f s\n",
                (shots.size() == 1 ? shots.front().path : arguments.picture).c_str(), width, height,
                depth_text(depth), what.c_str(), stars.c_str(), content_text(content).c_str(),
                seconds.count());
    for (const std::string& line : magnitudes) {
        std::printf("  %s\n", line.c_str());
    }
}

}  // namespace

void add_render_command(Command& program) {
    auto arguments = std::make_shared<RenderArguments>();
    Command command = program.add_command("render", "Render a scene through the plug-in");
    command
        .add("SCENE", arguments->scene,
             "The scene, a JSON file (see scenes/README.md); - is standard input")
        .required();
    command
        .add("-o,--output", arguments->picture,
             "The picture: .exr and .tif hold linear light, .png and .jpg are for looking at")
        .required();
    Argument time =
        command.add("--time", arguments->shots.time, "The moment to render, in seconds");
    Argument frame = command.add("--frame", arguments->shots.frame,
                                 "The frame to render; the first if nothing is said");
    const Argument frames = command.add("--frames", arguments->shots.frames,
                                        "Frames such as 1001-1240, 1-100x2 or 1,5,9-12, with "
                                        "#### or %04d in the picture's name");
    time.excludes(frame).excludes(frames);
    frame.excludes(frames);
    command.add("--depth", arguments->depth, "Bits a channel that the plug-in renders in")
        .one_of({8, 16, 32});
    command.add("--size", arguments->size,
                "WIDTHxHEIGHT instead of the composition's; what is in the picture from top "
                "to bottom stays");
    command.add("--set", arguments->settings,
                "NAME=VALUE: a control, in place of the scene's; may be repeated");
    command.add("--plugin", arguments->plugin,
                "The plug-in's bundle; if not given, the one that goes with this program");
    command.add("--catalogue", arguments->catalogue,
                "A database beside the bundle by name, or the path of any .stars file");
    add_picture_arguments(command, arguments->picture_arguments);
    command.add_flag("--quiet", arguments->quiet,
                     "No hints at settings that the picture does not show");
    add_magnitude_arguments(command, arguments->magnitudes);
    add_camera_arguments(command, arguments->camera);
    command.footer(
        "Of an 8- or 16-bit frame .exr and .tif hold the codes divided by 255 or 32768.\n"
        ".png and .jpg show a float frame in the photo view and an 8- or 16-bit one, which is\n"
        "cut off at white already, in the plain view; .tif does so where --view, --exposure,\n"
        "--bits or an --ocio option asks for it, and holds linear light otherwise. With --raw\n"
        "they hold the codes themselves (16-bit white is 32768).\n"
        "--set takes numbers, on and off, names of choices, colours as R,G,B in 0..255, and all\n"
        "that a scene takes: \"#ffc880\", [255, 200, 128], {\"keys\": [...]}. lumivar controls\n"
        "lists the controls. Without --catalogue and a choice in the scene\n"
        "the plug-in uses the first database beside it. For the path of a database it is\n"
        "copied to a temporary folder (TMPDIR) with that database alone.\n\n"
        "Examples:\n"
        "  lumivar render scenes/orion.json -o orion.exr\n"
        "  lumivar render scenes/orion.json -o orion.png --set \"Star Brightness=8\" --size "
        "960x540\n"
        "  lumivar render scenes/orion-pan.json -o pan.####.png --frames 0-23\n"
        "  lumivar render scenes/orion.json -o bright.png --exposure 1.5 --halo 2\n"
        "  lumivar render scenes/orion.json -o eye.png --limiting-magnitude 6\n"
        "  lumivar render scenes/orion.json -o plain.png --view plain\n"
        "  lumivar render scenes/orion.json -o codes.png --depth 16 --raw\n"
        "  lumivar render scenes/flight.json -o shot.####.exr --frames 0-47 --camera shot.chan\n"
        "  lumivar render scenes/orion.json -o mine.exr --catalogue ~/stars/mine.stars\n");
    command.run([arguments] { render_command(*arguments); });
}

}  // namespace lumivar
