// lumivar farm
#include "farm_commands.h"

namespace lumivar {

void add_farm_command(Command& program) {
    Command farm = program.add_command("farm", "Render a shot on a farm, chunk by chunk");
    add_farm_slurm_command(farm);
}

}  // namespace lumivar
