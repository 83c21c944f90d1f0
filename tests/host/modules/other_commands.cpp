#include "effect.h"

namespace test_effect {

void declare_other_commands(PF_OutData* out) {
    switch (asked_mischief()) {
        case kDeclareInterfaces:
            out->out_flags |=
                PF_OutFlag_I_DO_DIALOG | PF_OutFlag_CUSTOM_UI | PF_OutFlag_I_USE_AUDIO;
            out->out_flags2 |= PF_OutFlag2_SUPPORTS_GPU_RENDER_F32;
            break;
        case kDeclareUpdates:
        case kRefuseUpdates:
            out->out_flags |= PF_OutFlag_SEND_UPDATE_PARAMS_UI;
            break;
        default:
            break;
    }
}

PF_Err other_command(PF_Cmd command, PF_ParamDef** params, void* extra) {
    switch (command) {
        case PF_Cmd_USER_CHANGED_PARAM:
            crash_for(kSupervise);
            return refuse_for(kRefuseUserChange);
        case PF_Cmd_UPDATE_PARAMS_UI:
            // It looks at its controls there.
            if (asked_mischief() == kDeclareUpdates &&
                (params == nullptr || params[kCountId]->u.sd.value != 3)) {
                return PF_Err_BAD_CALLBACK_PARAM;
            }
            return refuse_for(kRefuseUpdates);
        case PF_Cmd_ARBITRARY_CALLBACK:
            if (asked_mischief() == kWriteArbitrary) {
                *static_cast<unsigned char*>(extra) = 1;
            }
            return PF_Err_NONE;
        case PF_Cmd_GPU_DEVICE_SETUP:
            crash_for(kCrashInGpuSetup);
            [[fallthrough]];
        case PF_Cmd_DO_DIALOG:
        case PF_Cmd_EVENT:
        case PF_Cmd_AUDIO_RENDER:
        case PF_Cmd_AUDIO_SETUP:
        case PF_Cmd_AUDIO_SETDOWN:
        case PF_Cmd_SMART_RENDER_GPU:
        case PF_Cmd_GPU_DEVICE_SETDOWN:
            // No host sends them which could not do what goes with them.
            crash_for(kDeclareInterfaces);
            return PF_Err_NONE;
        default:
            return PF_Err_NONE;
    }
}

}  // namespace test_effect
