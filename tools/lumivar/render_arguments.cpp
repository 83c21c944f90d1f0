#include "render_arguments.h"

#include <CLI/CLI.hpp>

#include "failure.h"

namespace lumivar {

void add_render_arguments(Command& command, RenderArguments& arguments) {
    command
        .add("SCENE", arguments.scene,
             "The scene, a JSON file (see scenes/README.md); - is standard input")
        .required();
    command
        .add("-o,--output", arguments.picture,
             "The picture: .exr and .tif hold linear light, .png and .jpg are for looking at")
        .required();
    Argument time = command.add("--time", arguments.shots.time, "The moment to render, in seconds");
    Argument frame = command.add("--frame", arguments.shots.frame,
                                 "The frame to render; the first if nothing is said");
    const Argument frames = command.add("--frames", arguments.shots.frames,
                                        "Frames such as 1001-1240, 1-100x2 or 1,5,9-12, with "
                                        "#### or %04d in the picture's name");
    time.excludes(frame).excludes(frames);
    frame.excludes(frames);
    command.add("--depth", arguments.depth, "Bits a channel that the plug-in renders in")
        .one_of({8, 16, 32});
    Argument size =
        command.add("--size", arguments.size,
                    "WIDTHxHEIGHT instead of the composition's; what is in the picture from top "
                    "to bottom stays");
    size.excludes(command.add(
        "--cube-map", arguments.cube_side,
        "SIDE: six square pictures around the camera instead of one, front, right, back, left, up "
        "and down, with FACE in the picture's name"));
    command.add("--set", arguments.settings,
                "NAME=VALUE: a control, in place of the scene's; may be repeated");
    command.add("--plugin", arguments.plugin,
                "The plug-in's bundle; if not given, the one that goes with this program");
    command.add("--catalogue", arguments.catalogue,
                "A database beside the bundle by name, or the path of any .stars file");
    add_picture_arguments(command, arguments.picture_arguments);
    command.add("--jobs", arguments.jobs,
                "Worker processes that draw frames side by side; as many as the cores that this "
                "program may "
                "use if nothing is said");
    command.add(
        "--preview", arguments.preview,
        "NAME.mp4: a film of the frames too, as a .png of the same command would show them");
    Argument resume = command.add_flag(
        "--resume", arguments.resume,
        "Render only what is missing, unreadable or made of other things than it would be now");
    resume.excludes(command.add_flag("--skip-existing", arguments.skip_existing,
                                     "Leave every picture alone that is there, whatever it holds"));
    command
        .add("--progress", arguments.progress,
             "text: a line on a terminal, elsewhere one every ten seconds; json: an object a "
             "frame on standard error; none")
        .one_of(std::vector<std::string>{"text", "json", "none"});
    command.add_flag("--json", arguments.json, "Print the result as a JSON object");
    command.add_flag("--quiet", arguments.quiet,
                     "No hints at settings that the picture does not show");
    add_magnitude_arguments(command, arguments.magnitudes);
    add_camera_arguments(command, arguments.camera);
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
        "  lumivar render scenes/orion-pan.json -o pan.####.exr --frames 0-23 --preview pan.mp4\n"
        "  lumivar render scenes/orion.json -o sky.FACE.exr --cube-map 2048\n"
        "  lumivar render scenes/orion.json -o mine.exr --catalogue ~/stars/mine.stars\n");
}

RenderArguments parse_render_arguments(const std::vector<std::string>& words) {
    CLI::App app("", "lumivar render");
    Command command(&app);
    RenderArguments arguments;
    add_render_arguments(command, arguments);
    try {
        // The library takes them from the back.
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::Error& error) {
        throw UsageError(error.what());
    }
    return arguments;
}

}  // namespace lumivar
