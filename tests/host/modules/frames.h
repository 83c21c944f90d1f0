// The test effect's parameters and frames.
#pragma once

#include <host_api/effect_interface.h>

namespace test_effect {

enum Parameter {
    kInput,
    kGainId,
    kCountId,
    kInvertId,
    kShadeId,
    kModeId,
    kMischiefId,
    kParamCount
};

/// The sequence was flattened, and set up again since.
void flatten_sequence();
void set_up_sequence_again();

/// Whether any were drawn since the module was loaded, which every host session does anew.
bool frames_made();

PF_Err pre_render(PF_InData* in, PF_OutData* out, PF_PreRenderExtra* extra);
PF_Err smart_render(PF_InData* in, PF_OutData* out, PF_SmartRenderExtra* extra);
/// The plain way: alpha full, red from the first slider, through the host's own fill.
PF_Err plain_render(PF_InData* in, PF_OutData* out, PF_ParamDef** params, PF_EffectWorld* output);

}  // namespace test_effect
