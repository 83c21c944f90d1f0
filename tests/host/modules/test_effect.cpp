// An effect that tells what its host told it, and that breaks the rules when asked to.
//
// Built with CONFORMING it does all that its host may expect, but for the one thing that MISCHIEF
// in the environment names by its number.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "effect.h"

namespace {

using namespace test_effect;

/// Since the module was loaded, which every host session does anew.
bool about_asked = false;

PF_Err add_params(PF_InData* in, PF_OutData* out) {
    PF_Err first = PF_Err_NONE;
    const auto add = [in, &first](int id, const char* name, PF_ParamType type, auto fill) {
        PF_ParamDef def;
        std::memset(&def, 0, sizeof def);
        def.uu.id = id;
        def.param_type = type;
        def.flags = asked_mischief() == kSupervise && id == kGainId ? PF_ParamFlag_SUPERVISE : 0;
        in->utils->ansi.strcpy(def.name, name);
        fill(def.u);
        spoil_control(def);
        const PF_Err added = in->inter.add_param(in->effect_ref, PF_ParamIndex_APPEND, &def);
        pass_on(first, added);
        return added;
    };
    add(kGainId, "Gain", PF_Param_FLOAT_SLIDER, [](PF_ParamDefUnion& u) {
        u.fs_d.value = 1.5;
        u.fs_d.dephault = 1.5F;
        u.fs_d.valid_max = 10.0F;
        u.fs_d.slider_max = 4.0F;
        u.fs_d.precision = 3;
        u.fs_d.fs_flags = PF_FSliderFlag_WANT_PHASE;
        u.fs_d.curve_tolerance = 0.25F;
    });
    add(kCountId, "Count", PF_Param_SLIDER, [](PF_ParamDefUnion& u) {
        u.sd.value = u.sd.dephault = 3;
        u.sd.valid_min = -5;
        u.sd.valid_max = 20;
        u.sd.slider_max = 10;
    });
    add(kInvertId, "Invert", PF_Param_CHECKBOX, [](PF_ParamDefUnion& u) {
        u.bd.value = u.bd.dephault = 1;
        u.bd.u.nameptr = "flip it";
    });
    add(kShadeId, "Shade", PF_Param_COLOR, [](PF_ParamDefUnion& u) {
        u.cd.value = u.cd.dephault = {255, 10, 20, 30};
    });
    // The choices lie in memory that goes away, the value is outside, the count is wrong.
    const std::string modes = "Ramp|Flat|Full Range";
    auto copy = std::make_unique<std::string>(modes);
    add(kModeId, "Mode", PF_Param_POPUP, [&](PF_ParamDefUnion& u) {
        u.pd.num_choices = static_cast<A_short>(modes.size());
        if (kConforming) {
            u.pd.value = u.pd.dephault = 1;
            u.pd.num_choices = 3;
        }
        u.pd.u.namesptr = copy->c_str();
    });
    std::fill(copy->begin(), copy->end(), '?');
    copy.reset();
    std::string mischiefs;
    for (int mischief = kNone; mischief < kMischiefEnd; ++mischief) {
        mischiefs += (mischief == kNone ? "" : "|") + std::to_string(mischief);
    }
    const PF_Err err = add(kMischiefId, "Mischief", PF_Param_POPUP, [&](PF_ParamDefUnion& u) {
        u.pd.value = u.pd.dephault = 1;
        u.pd.num_choices = kMischiefEnd - 1;
        u.pd.u.namesptr = mischiefs.c_str();
    });
    out->num_params = kParamCount + (asked_mischief() == kWrongCount ? 1 : 0);
    for (const PF_ParamDef& further : further_controls()) {
        PF_ParamDef def = further;
        pass_on(first, in->inter.add_param(in->effect_ref, PF_ParamIndex_APPEND, &def));
        ++out->num_params;
    }
    return first != PF_Err_NONE ? first : err;
}

PF_Err describe_dependencies(PF_InData* in, PF_ExtDependenciesExtra* extra) {
    if (about_asked && in->appl_id == kAppID_Premiere) {
        crash_for(kCrashAfterAbout);
    }
    if (extra->check_type == PF_DepCheckType_MISSING_DEPENDENCIES) {
        return PF_Err_NONE;
    }
    const char text[] = "one font";
    extra->dependencies_strH = in->utils->host_new_handle(sizeof text);
    if (extra->dependencies_strH == nullptr) {
        lose_memory_for(kLeakWhenDenied);
        return PF_Err_OUT_OF_MEMORY;
    }
    std::memcpy(*extra->dependencies_strH, text, sizeof text);
    return PF_Err_NONE;
}

PF_Err query_flags(PF_InData* in, PF_OutData* out) {
    out->out_flags2 |= PF_OutFlag2_I_USE_3D_LIGHTS;
    if (asked_mischief() == kTurnOnFlag) {
        out->out_flags |= PF_OutFlag_NON_PARAM_VARY;
    }
    if (asked_mischief() == kTurnOnFlag2) {
        out->out_flags2 |= PF_OutFlag2_REVEALS_ZERO_ALPHA;
    }
    lose_memory_for(kLeakInFlagQuery);
    if (asked_mischief() == kKeepFlagParameter) {
        PF_ParamDef def;
        return in->inter.checkout_param(in->effect_ref, kGainId, in->current_time, in->time_step,
                                        in->time_scale, &def);
    }
    return PF_Err_NONE;
}

PF_Err global_setup(PF_InData* in, PF_OutData* out) {
    lose_memory_for(kLeakAtSetUp);
    out->my_version = PF_VERSION(9, 3, 1, PF_Stage_RELEASE, 7);
    out->out_flags = PF_OutFlag_DEEP_COLOR_AWARE | PF_OutFlag_I_USE_SHUTTER_ANGLE |
                     PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES;
    out->out_flags2 = PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS | PF_OutFlag2_I_USE_3D_CAMERA |
                      PF_OutFlag2_SUPPORTS_SMART_RENDER | PF_OutFlag2_FLOAT_COLOR_AWARE;
    declare_other_commands(out);
    if (asked_mischief() == kNoFloat) {
        out->out_flags2 &= ~PF_OutFlag2_FLOAT_COLOR_AWARE;
    }
    if (asked_mischief() == kOverrideFlags) {
        out->out_flags |= PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS;
    }
    if (asked_mischief() == kFloatWithoutSmart) {
        out->out_flags &= ~PF_OutFlag_DEEP_COLOR_AWARE;
        out->out_flags2 &= ~PF_OutFlag2_SUPPORTS_SMART_RENDER;
    }
    if (asked_mischief() == kNoSmart) {
        // Nor 16 bits, in which it leaves the plain way blank.
        out->out_flags &= ~PF_OutFlag_DEEP_COLOR_AWARE;
        out->out_flags2 &= ~(PF_OutFlag2_FLOAT_COLOR_AWARE | PF_OutFlag2_SUPPORTS_SMART_RENDER);
    }
    if (kConforming) {
        // The query may turn it on.
        out->out_flags2 |= PF_OutFlag2_I_USE_3D_LIGHTS;
    }
    if (in->appl_id == kAppID_Premiere) {
        declare_premiere_formats(in);
    }
    return PF_Err_NONE;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) PF_Err EntryPointFunc(PF_Cmd cmd, PF_InData* in,
                                                                        PF_OutData* out,
                                                                        PF_ParamDef* params[],
                                                                        PF_LayerDef* output,
                                                                        void* extra) {
    switch (cmd) {
        case PF_Cmd_ABOUT:
            lose_memory_for(kLeakInAbout);
            about_asked = true;
            in->utils->ansi.sprintf(out->return_msg, "%s v%d", "Test effect", 9);
            return PF_Err_NONE;
        case PF_Cmd_GLOBAL_SETUP:
            return global_setup(in, out);
        case PF_Cmd_GLOBAL_SETDOWN:
            crash_for(kCrashInSetDown);
            return refuse_for(kRefuseSetDown);
        case PF_Cmd_SEQUENCE_SETDOWN:
            if (asked_mischief() == kCallAtSequenceDown && frames_made()) {
                PF_ParamDef def;
                in->inter.checkout_param(in->effect_ref, kGainId, 0, 1, 1, &def);
            }
            return PF_Err_NONE;
        case PF_Cmd_SEQUENCE_RESETUP:
            lose_memory_for(kLeakInResetup);
            if (asked_mischief() == kCrashDeniedResetup && !gets_handle(in)) {
                __builtin_trap();
            }
            set_up_sequence_again();
            return PF_Err_NONE;
        case PF_Cmd_SEQUENCE_FLATTEN:
            flatten_sequence();
            lose_memory_for(kLeakInFlatten);
            return in->appl_id == kAppID_Premiere ? refuse_for(kRefuseFlatten) : PF_Err_NONE;
        case PF_Cmd_PARAMS_SETUP:
            return add_params(in, out);
        case PF_Cmd_RENDER:
            return plain_render(in, out, params, output);
        case PF_Cmd_GET_EXTERNAL_DEPENDENCIES:
            return describe_dependencies(in, static_cast<PF_ExtDependenciesExtra*>(extra));
        case PF_Cmd_QUERY_DYNAMIC_FLAGS:
            return query_flags(in, out);
        case PF_Cmd_SMART_PRE_RENDER:
            return pre_render(in, out, static_cast<PF_PreRenderExtra*>(extra));
        case PF_Cmd_SMART_RENDER:
            return smart_render(in, out, static_cast<PF_SmartRenderExtra*>(extra));
        default:
            return other_command(cmd, params, extra);
    }
}
