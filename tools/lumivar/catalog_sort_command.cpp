// lumivar catalog sort
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "catalog_commands.h"
#include "database/sort.h"

namespace lumivar {
namespace {

struct SortArguments {
    std::string input;
    std::string output;
    std::string order;
};

void sort_command(const SortArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const StarOrder order =
        arguments.order == "position" ? StarOrder::Position : StarOrder::Brightness;
    warn_of_cut_database(arguments.input);
    const std::uint64_t stars = sort_database(arguments.input, arguments.output, order);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s: %s by %s, %.2f s\n", arguments.output.c_str(), star_count(stars).c_str(),
                arguments.order.c_str(), seconds.count());
    warn_of_unlisted_name(arguments.output);
}

}  // namespace

void add_catalog_sort_command(Command& catalog) {
    auto arguments = std::make_shared<SortArguments>();
    Command command = catalog.add_command("sort", "Put the stars of a star database in order");
    command.add("DATABASE", arguments->input, "The .stars file").required();
    command.add("-o,--output", arguments->output, "The database to write, NAME.stars").required();
    command.add("--by", arguments->order, "What to sort by")
        .one_of(std::vector<std::string>{"brightness", "position"})
        .required();
    command.footer(
        "By brightness: the brightest star first, so that the head of the file is the naked-eye\n"
        "sky. By position: along a Hilbert curve on the faces of a cube round the observer, so\n"
        "that stars close to each other in the file are close on the sky. Stars that are equal\n"
        "keep their order; records stay as they are. The effect draws the same stars in any\n"
        "order.\n\n"
        "The output may be the input itself: it takes its place when it is whole. Beyond a\n"
        "million stars the work needs one and a quarter times the database's size on the disk\n"
        "beside the output, and twice that beyond some 180 million.\n\n"
        "Examples:\n"
        "  lumivar catalog sort gaia.stars -o gaia.stars --by brightness\n"
        "  lumivar catalog sort gaia.stars -o places.stars --by position\n");
    command.run([arguments] { sort_command(*arguments); });
}

}  // namespace lumivar
