// The one symbol that the module exports. The registration resource names it.
#include <AE/commands.h>

extern "C" __attribute__((visibility("default"))) PF_Err EntryPointFunc(
    PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
    PF_LayerDef* output, void* extra) {
    return dispatch_command(cmd, in_data, out_data, params, output, extra);
}
