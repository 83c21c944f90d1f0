// lumivar controls
#include <cstdio>
#include <memory>
#include <string>

#include "command_line.h"
#include "controls_table.h"
#include "player.h"

namespace lumivar {

void add_controls_command(Command& program) {
    struct Arguments {
        std::string plugin;
        bool json = false;
    };
    auto arguments = std::make_shared<Arguments>();
    Command command = program.add_command("controls", "List the plug-in's controls");
    command.add("--plugin", arguments->plugin,
                "The plug-in's bundle; if not given, the one that goes with this program");
    command.add_flag("--json", arguments->json, "As JSON, for other programs");
    command.footer(
        "Name, kind, the values it may have, what its slider covers, and the default, as the\n"
        "plug-in declares them. A default of 0 for a choice means that none is chosen. The\n"
        "plug-in declares nothing without a database beside it.\n\n"
        "Examples:\n"
        "  lumivar controls\n"
        "  lumivar controls --json --plugin build/release/plugin/Lumivar.plugin\n");
    command.run([arguments] {
        Player player(arguments->plugin, "");
        const auto& controls = player.session().controls();
        std::fputs(
            (arguments->json ? controls_as_json(controls) : controls_as_text(controls)).c_str(),
            stdout);
        player.close();
    });
}

}  // namespace lumivar
