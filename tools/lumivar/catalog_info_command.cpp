// lumivar catalog info
#include <cstdio>
#include <memory>
#include <string>

#include "catalog_commands.h"
#include "database/info.h"

namespace lumivar {

void add_catalog_info_command(Command& catalog) {
    auto path = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    Command command = catalog.add_command("info", "Say what a star database holds");
    command.add("DATABASE", *path, "The .stars file").required();
    command.add_flag("--json", *json, "As JSON, for other programs");
    command.footer(
        "Shows version, number of stars, the range of every field, stars by magnitude, and\n"
        "warns of values that are not numbers or out of range and of trailing bytes.\n\n"
        "Examples:\n"
        "  lumivar catalog info hipparcos.stars\n"
        "  lumivar catalog info hipparcos.stars --json\n");
    command.run([path, json] {
        const CatalogueInfo info = examine_catalogue(*path);
        std::fputs((*json ? info_as_json(info) : info_as_text(info)).c_str(), stdout);
    });
}

}  // namespace lumivar
