// The interaction callbacks: parameters declared and checked out, progress.
#include <cstddef>
#include <string>

#include "callbacks.h"
#include "declared_control.h"
#include "host_state.h"
#include "unprovided.h"

namespace host {
namespace {

PF_Err add_param(PF_ProgPtr effect_ref, PF_ParamIndex index, PF_ParamDef* param) {
    return answer_effect_call(
        "add_param", effect_ref, "index=" + std::to_string(index), [&](HostState& state) -> PF_Err {
            if (state.command != PF_Cmd_PARAMS_SETUP || param == nullptr) {
                return state.refuse("add_param", "null, or outside parameter set-up");
            }
            if (index != PF_ParamIndex_APPEND) {
                return state.refuse("add_param",
                                    "a place other than the end, " + std::to_string(index),
                                    PF_Err_INVALID_INDEX);
            }
            const int place = static_cast<int>(state.parameters.size());
            state.parameters.push_back(declared_parameter(*param, place, state.violations));
            return PF_Err_NONE;
        });
}

PF_Err checkout_param(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long time, A_long,
                      A_u_long time_scale, PF_ParamDef* param_out) {
    return answer_effect_call(
        "checkout_param", effect_ref,
        "index=" + std::to_string(index) + " time=" + shown_time(time, time_scale),
        [&](HostState& state) -> PF_Err {
            if (state.frame == nullptr || param_out == nullptr || time_scale == 0) {
                return state.refuse("checkout_param",
                                    "null, a time scale of 0, or no frame being made");
            }
            if (index < 0 || static_cast<std::size_t>(index) >= state.parameters.size()) {
                return state.refuse("checkout_param", "no parameter " + std::to_string(index),
                                    PF_Err_INVALID_INDEX);
            }
            const Parameter& parameter = state.parameters[static_cast<std::size_t>(index)];
            const Time at{time, time_scale};
            *param_out = valued_record(parameter, state.frame->values, at.seconds());
            ++state.frame->open_param_checkouts;
            return PF_Err_NONE;
        });
}

PF_Err checkin_param(PF_ProgPtr effect_ref, PF_ParamDef* param) {
    bool looked_at = false;
    const PF_Err status =
        answer_effect_call("checkin_param", effect_ref, "", [&](HostState& state) -> PF_Err {
            looked_at = true;
            if (state.frame == nullptr || param == nullptr ||
                state.frame->open_param_checkouts == 0) {
                state.violation(Rule::ParameterNotHeld,
                                "checkin_param: null, or nothing is checked out");
                return PF_Err_BAD_CALLBACK_PARAM;
            }
            --state.frame->open_param_checkouts;
            return PF_Err_NONE;
        });
    // Also when the filter makes it fail: the plug-in has checked the parameter in.
    HostState* const state = HostState::current();
    if (!looked_at && state != nullptr && state->frame != nullptr &&
        state->frame->open_param_checkouts > 0) {
        --state->frame->open_param_checkouts;
    }
    return status;
}

PF_Err abort_requested(PF_ProgPtr effect_ref) {
    return answer_effect_call("abort", effect_ref, "", [](HostState&) { return PF_Err_NONE; });
}

PF_Err progress(PF_ProgPtr effect_ref, A_long current, A_long total) {
    return answer_effect_call(
        "progress", effect_ref,
        "current=" + std::to_string(current) + " total=" + std::to_string(total),
        [](HostState&) { return PF_Err_NONE; });
}

}  // namespace

PF_InteractCallbacks interact_callbacks() {
    return {
        .checkout_param = checkout_param,
        .checkin_param = checkin_param,
        .add_param = add_param,
        .abort = abort_requested,
        .progress = progress,
        UNPROVIDED("inter", register_ui, checkout_layer_audio, checkin_layer_audio, get_audio_data),
        .reserved_str = {},
        .reserved = {},
    };
}

}  // namespace host
