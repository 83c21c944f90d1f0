// The callbacks of smart rendering: layers checked out at pre-render, pixels at render.
#include <algorithm>
#include <cstddef>
#include <string>

#include "callbacks.h"
#include "host_state.h"
#include "unprovided.h"

namespace host {
namespace {

std::string shown_id(A_long checkout_id) { return "id=" + std::to_string(checkout_id); }

std::string about_id(const std::string& call, A_long checkout_id) {
    return call + ": the id " + std::to_string(checkout_id);
}

/// The part of `area` inside a layer; all zeroes when there is none.
Rect clipped(const PF_LRect& area, const Rect& layer) {
    const Rect part = {std::max(area.left, layer.left), std::max(area.top, layer.top),
                       std::min(area.right, layer.right), std::min(area.bottom, layer.bottom)};
    return part.empty() ? Rect{} : part;
}

PF_Err checkout_layer(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long checkout_id,
                      const PF_RenderRequest* request, A_long time, A_long, A_u_long time_scale,
                      PF_CheckoutResult* result_out) {
    const char* const name = "checkout_layer";
    return answer_effect_call(
        name, effect_ref,
        "index=" + std::to_string(index) + " " + shown_id(checkout_id) +
            " time=" + shown_time(time, time_scale),
        [&](HostState& state) -> PF_Err {
            FrameState* const frame = state.frame;
            if (frame == nullptr || state.command != PF_Cmd_SMART_PRE_RENDER ||
                request == nullptr || result_out == nullptr || time_scale == 0) {
                return state.refuse(name, "null, a time scale of 0, or outside pre-render");
            }
            if (index < 0 || static_cast<std::size_t>(index) >= state.parameters.size() ||
                state.parameters[static_cast<std::size_t>(index)].declared.kind !=
                    ControlKind::Layer) {
                return state.refuse(name, "parameter " + std::to_string(index) + " is no layer",
                                    PF_Err_INVALID_INDEX);
            }
            // Hosts ask for positive ids and accept 0.
            if (checkout_id < 0) {
                state.refuse(name, "a negative id, " + std::to_string(checkout_id));
            }
            if (!frame->layers.try_emplace(checkout_id, FrameState::Checkout{index}).second) {
                return state.refuse(name, "the id " + std::to_string(checkout_id) + " is in use");
            }
            *result_out = {};
            const Ratio& aspect = frame->layer.pixel_aspect;
            result_out->par = {aspect.num, aspect.den};
            if (index != 0) {
                return PF_Err_NONE;  // no other layer is chosen: empty rectangles
            }
            const Rect& layer = frame->whole;
            const Rect part = clipped(request->rect, layer);
            frame->input_area = part;
            result_out->result_rect = {part.left, part.top, part.right, part.bottom};
            result_out->max_result_rect = {layer.left, layer.top, layer.right, layer.bottom};
            result_out->ref_width = layer.width();
            result_out->ref_height = layer.height();
            return PF_Err_NONE;
        });
}

/// The running render, if pixels may be asked for now.
FrameState* rendering(HostState& state, const char* name) {
    FrameState* const frame = state.frame;
    if (frame == nullptr || state.command != PF_Cmd_SMART_RENDER) {
        state.refuse(name, "outside render");
        return nullptr;
    }
    return frame;
}

PF_Err checkout_layer_pixels(PF_ProgPtr effect_ref, A_long checkout_id,
                             PF_EffectWorld** pixels_out) {
    const char* const name = "checkout_layer_pixels";
    return answer_effect_call(
        name, effect_ref, shown_id(checkout_id), [&](HostState& state) -> PF_Err {
            FrameState* const frame = rendering(state, name);
            if (frame == nullptr || pixels_out == nullptr) {
                return PF_Err_BAD_CALLBACK_PARAM;
            }
            const auto checkout = frame->layers.find(checkout_id);
            if (checkout == frame->layers.end()) {
                state.violation(Rule::Layers,
                                about_id(name, checkout_id) + " was not checked out at pre-render");
                return PF_Err_INVALID_INDEX;
            }
            if (checkout->second.fetched) {
                state.violation(Rule::Layers, about_id(name, checkout_id) + " was fetched already");
                return PF_Err_BAD_CALLBACK_PARAM;
            }
            checkout->second.fetched = true;
            checkout->second.held = true;
            *pixels_out = checkout->second.index == 0 ? &frame->input_record : nullptr;
            return PF_Err_NONE;
        });
}

PF_Err checkin_layer_pixels(PF_ProgPtr effect_ref, A_long checkout_id) {
    const char* const name = "checkin_layer_pixels";
    return answer_effect_call(
        name, effect_ref, shown_id(checkout_id), [&](HostState& state) -> PF_Err {
            FrameState* const frame = rendering(state, name);
            if (frame == nullptr) {
                return PF_Err_BAD_CALLBACK_PARAM;
            }
            const auto checkout = frame->layers.find(checkout_id);
            if (checkout == frame->layers.end() || !checkout->second.held) {
                state.violation(Rule::LayerNotHeld,
                                about_id(name, checkout_id) + " is not checked out");
                return PF_Err_BAD_CALLBACK_PARAM;
            }
            checkout->second.held = false;
            return PF_Err_NONE;
        });
}

PF_Err checkout_output(PF_ProgPtr effect_ref, PF_EffectWorld** output_out) {
    const char* const name = "checkout_output";
    return answer_effect_call(name, effect_ref, "", [&](HostState& state) -> PF_Err {
        FrameState* const frame = rendering(state, name);
        if (frame == nullptr || output_out == nullptr) {
            return PF_Err_BAD_CALLBACK_PARAM;
        }
        const bool any_fetched =
            std::any_of(frame->layers.begin(), frame->layers.end(),
                        [](const auto& layer) { return layer.second.fetched; });
        if (!frame->layers.empty() && !any_fetched) {
            state.refuse(name, "the output is asked for before any input");
        }
        frame->output_out = true;
        *output_out = &frame->output_record;
        return PF_Err_NONE;
    });
}

}  // namespace

PF_PreRenderCallbacks* pre_render_callbacks() {
    static PF_PreRenderCallbacks callbacks = {
        .checkout_layer = checkout_layer,
        UNPROVIDED("pre-render", GuidMixInPtr),
    };
    return &callbacks;
}

PF_SmartRenderCallbacks* smart_render_callbacks() {
    static PF_SmartRenderCallbacks callbacks = {
        .checkout_layer_pixels = checkout_layer_pixels,
        .checkin_layer_pixels = checkin_layer_pixels,
        .checkout_output = checkout_output,
    };
    return &callbacks;
}

}  // namespace host
