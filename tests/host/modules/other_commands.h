// Commands that the test effect need not know.
#pragma once

#include <host_api/effect_interface.h>

namespace test_effect {

/// What it declares so that some of them come after all.
void declare_other_commands(PF_OutData* out);
PF_Err other_command(PF_Cmd command, PF_ParamDef** params, void* extra);

}  // namespace test_effect
