// lumivar catalog filter
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "catalog_commands.h"
#include "database/filter.h"
#include "failure.h"
#include "number_list.h"

namespace lumivar {
namespace {

struct FilterArguments {
    std::string input;
    std::string output;
    std::optional<double> brighter;
    std::string cone;
    std::string box;
    std::optional<double> sample;
};

void require(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw UsageError(otherwise);
    }
}

bool is_right_ascension(double degrees) { return degrees >= 0.0 && degrees <= 360.0; }
bool is_declination(double degrees) { return degrees >= -90.0 && degrees <= 90.0; }

Cone parse_cone(const std::string& text) {
    const std::vector<double> numbers = parse_number_list("--cone", text, 3, "RA,DEC,RADIUS");
    const Cone cone = {numbers[0], numbers[1], numbers[2]};
    require(is_right_ascension(cone.right_ascension), "--cone: RA goes from 0 to 360 degrees");
    require(is_declination(cone.declination), "--cone: DEC goes from -90 to 90 degrees");
    require(cone.radius >= 0.0 && cone.radius <= 180.0,
            "--cone: RADIUS goes from 0 to 180 degrees");
    return cone;
}

Box parse_box(const std::string& text) {
    const std::vector<double> numbers = parse_number_list("--box", text, 4, "RA1,RA2,DEC1,DEC2");
    const Box box = {numbers[0], numbers[1], numbers[2], numbers[3]};
    require(
        is_right_ascension(box.right_ascension_from) && is_right_ascension(box.right_ascension_to),
        "--box: RA1 and RA2 go from 0 to 360 degrees");
    require(is_declination(box.declination_from) && is_declination(box.declination_to),
            "--box: DEC1 and DEC2 go from -90 to 90 degrees");
    require(box.declination_from <= box.declination_to,
            "--box: DEC1 is the lower edge and must not lie above DEC2");
    return box;
}

FilterRules rules_of(const FilterArguments& arguments) {
    FilterRules rules;
    rules.faintest = arguments.brighter;
    rules.sample = arguments.sample;
    if (!arguments.cone.empty()) {
        rules.cone = parse_cone(arguments.cone);
    }
    if (!arguments.box.empty()) {
        rules.box = parse_box(arguments.box);
    }
    require(rules.faintest || rules.sample || rules.cone || rules.box,
            "say which stars stay: --brighter, --cone, --box or --sample");
    return rules;
}

void filter_command(const FilterArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const FilterRules rules = rules_of(arguments);
    warn_of_cut_database(arguments.input);
    const FilterSummary summary = filter_database(arguments.input, arguments.output, rules);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::string dropped;
    const auto tell = [&dropped](bool asked, std::uint64_t stars, const char* why) {
        if (asked) {
            dropped += std::to_string(stars) + " ";
            dropped += why;
        }
    };
    tell(rules.faintest.has_value(), summary.too_faint, "too faint, ");
    tell(rules.cone.has_value(), summary.outside_cone, "outside the cone, ");
    tell(rules.box.has_value(), summary.outside_box, "outside the box, ");
    tell(rules.sample.has_value(), summary.not_sampled, "not in the sample, ");
    std::printf("%s: %s of %llu, %s%.2f s\n", arguments.output.c_str(),
                star_count(summary.written).c_str(), static_cast<unsigned long long>(summary.read),
                dropped.c_str(), seconds.count());
    warn_of_unlisted_name(arguments.output);
}

}  // namespace

void add_catalog_filter_command(Command& catalog) {
    auto arguments = std::make_shared<FilterArguments>();
    Command command = catalog.add_command("filter", "Keep some stars of a star database");
    command.add("DATABASE", arguments->input, "The .stars file").required();
    command.add("-o,--output", arguments->output, "The database to write, NAME.stars").required();
    command.add("--brighter", arguments->brighter, "M: stars of magnitude M and brighter ones");
    command.add("--cone", arguments->cone, "RA,DEC,RADIUS in degrees: stars within a circle");
    command.add("--box", arguments->box,
                "RA1,RA2,DEC1,DEC2 in degrees: stars within these edges; RA1 > RA2 goes over 0");
    command
        .add("--sample", arguments->sample,
             "F: this share of the stars, 0 to 1, always the same ones")
        .between(0.0, 1.0);
    command.footer(
        "A star stays when all that is asked of it holds; a star on an edge is inside. The order\n"
        "stays, and so do the records. The output may be the input itself: it takes its place\n"
        "when it is whole. Magnitude M means a luminance of 10^(-0.4 M) here.\n\n"
        "--sample decides by each star's place and light alone: a star is in or out whatever the\n"
        "file and its order, and a sample of 0.1 is part of the sample of 0.2.\n\n"
        "Examples:\n"
        "  lumivar catalog filter gaia.stars -o naked-eye.stars --brighter 6.5\n"
        "  lumivar catalog filter gaia.stars -o orion.stars --cone 83.8,-1.2,20\n"
        "  lumivar catalog filter gaia.stars -o strip.stars --box 350,10,-5,5 --brighter 12\n"
        "  lumivar catalog filter gaia.stars -o draft.stars --sample 0.01\n");
    command.run([arguments] { filter_command(*arguments); });
}

}  // namespace lumivar
