// lumivar camera tour
#include <host/printable.h>

#include <cstddef>
#include <cstdio>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "atomic_file.h"
#include "camera_commands.h"
#include "failure.h"
#include "render_request.h"
#include "star_tour.h"

namespace lumivar {
namespace {

struct TourArguments {
    std::vector<std::string> stops;
    std::string output;
    std::string size = "1920x1080";
    StarTour tour;
};

void tour_command(const TourArguments& arguments) {
    if (!arguments.output.ends_with(".json")) {
        throw UsageError("a tour is written as a scene; give NAME.json, not \"" + arguments.output +
                         "\"");
    }
    check_output_path(arguments.output);
    StarTour tour = arguments.tour;
    std::tie(tour.width, tour.height) = parse_size(arguments.size);
    if (arguments.stops == std::vector<std::string>{"-"}) {
        tour.stops = read_tour_stops(std::cin, "standard input");
    } else {
        for (const std::string& stop : arguments.stops) {
            tour.stops.push_back(parse_tour_stop(stop));
        }
    }
    const std::string scene = tour_scene(tour);
    AtomicFile file(arguments.output);
    file.write(std::as_bytes(std::span(scene)));
    file.publish();
    const std::size_t stars = tour.stops.size();
    std::printf("%s: %zu %s, %g s\n", host::printable(arguments.output).c_str(), stars,
                stars == 1 ? "star" : "stars", tour.stops.back().time + tour.hold);
}

}  // namespace

void add_camera_tour_command(Command& camera) {
    auto arguments = std::make_shared<TourArguments>();
    Command command =
        camera.add_command("tour", "Write a scene whose camera turns from star to star");
    command
        .add_all("STOP", arguments->stops,
                 "STAR@SECONDS: when a star is in the middle of the picture; or - for lines "
                 "\"SECONDS STAR\" on standard input")
        .required();
    command.add("-o,--output", arguments->output, "The scene to write, a JSON file").required();
    command.add("--hold", arguments->tour.hold, "Seconds that the camera rests at each star");
    command.add("--fov", arguments->tour.vertical_fov,
                "Angle from the bottom to the top of the picture, degrees; 30 if not given");
    command.add("--size", arguments->size, "WIDTHxHEIGHT of the frames; 1920x1080 if not given");
    command.add("--frame-rate", arguments->tour.frame_rate, "Frames a second; 24 if not given");
    command.footer(
        "A star is called by its proper name, by its designation (Gam2 Vel, Gamma2 Velorum,\n"
        "86 Peg), or by its number in the Hipparcos or the Bright Star Catalogue (HIP 27989,\n"
        "HR 2061). Those to magnitude 6.5 are known. The camera stands at the Sun, leaves each\n"
        "star and reaches the next one gently, and turns the short way; north is up. The scene\n"
        "can be changed by hand: scenes/README.md says how.\n\n"
        "Examples:\n"
        "  lumivar camera tour Betelgeuse@0 Rigel@2 Sirius@5 -o tour.json --hold 0.5\n"
        "  lumivar camera tour \"Gam2 Vel@0\" \"HIP 30438@3\" -o tour.json --fov 20\n"
        "  printf '0 Vega\\n4 Deneb\\n' | lumivar camera tour - -o tour.json --size 960x540\n"
        "  lumivar render tour.json -o tour.####.png --frames 0-47\n");
    command.run([arguments] { tour_command(*arguments); });
}

}  // namespace lumivar
