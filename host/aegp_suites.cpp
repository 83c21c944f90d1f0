// The AEGP suites: the composition and its camera, served from the scene.
#include <algorithm>
#include <string>

#include "host_state.h"
#include "suites.h"
#include "unprovided.h"

namespace host {
namespace {

std::string shown(const A_Time* time) {
    return time == nullptr ? "time=null" : "time=" + shown_time(time->value, time->scale);
}

/// A call that asks about the frame being made: outside frames, or with arguments that are not this
/// host's, it fails.
template <class Body>
A_Err answer_query(const char* name, const std::string& arguments, Body&& body) {
    return answer_call(name, arguments, [&](HostState& state) -> A_Err {
        if (state.frame == nullptr) {
            state.violation(std::string(name) + ": no frame is being made");
            return A_Err_GENERIC;
        }
        return body(state, *state.frame);
    });
}

A_Err refuse(HostState& state, const char* name) {
    state.violation(std::string(name) + ": null, a time scale of 0, or an object of another kind");
    return A_Err_PARAMETER;
}

bool usable(const A_Time* time) { return time != nullptr && time->scale != 0; }

Time scene_time(const A_Time& time) { return {time.value, time.scale}; }

A_Err get_effect_layer(PF_ProgPtr effect_ref, AEGP_LayerH* layer_out) {
    const char* const name = "AEGP_GetEffectLayer";
    return answer_query(name, "", [&](HostState& state, FrameState& frame) -> A_Err {
        if (effect_ref != state.effect_ref() || layer_out == nullptr) {
            return refuse(state, name);
        }
        *layer_out = frame.layer_handle();
        return A_Err_NONE;
    });
}

A_Err convert_effect_to_comp_time(PF_ProgPtr effect_ref, A_long time, A_u_long time_scale,
                                  A_Time* comp_time_out) {
    const char* const name = "AEGP_ConvertEffectToCompTime";
    return answer_query(
        name, "time=" + shown_time(time, time_scale),
        [&](HostState& state, FrameState& frame) -> A_Err {
            if (effect_ref != state.effect_ref() || time_scale == 0 || comp_time_out == nullptr) {
                return refuse(state, name);
            }
            const Time converted = frame.layer.composition_time({time, time_scale});
            *comp_time_out = {converted.value, converted.scale};
            return A_Err_NONE;
        });
}

A_Err get_effect_camera(PF_ProgPtr effect_ref, const A_Time* comp_time, AEGP_LayerH* camera_out) {
    const char* const name = "AEGP_GetEffectCamera";
    return answer_query(name, shown(comp_time), [&](HostState& state, FrameState& frame) -> A_Err {
        if (effect_ref != state.effect_ref() || !usable(comp_time) || camera_out == nullptr) {
            return refuse(state, name);
        }
        *camera_out =
            frame.camera_handle(frame.project.camera_at(scene_time(*comp_time).seconds()));
        return A_Err_NONE;
    });
}

A_Err get_layer_parent_comp(AEGP_LayerH layer, AEGP_CompH* comp_out) {
    const char* const name = "AEGP_GetLayerParentComp";
    return answer_query(name, "", [&](HostState& state, FrameState& frame) -> A_Err {
        const bool known = layer == frame.layer_handle() || frame.camera_of(layer) != nullptr;
        if (!known || comp_out == nullptr) {
            return refuse(state, name);
        }
        *comp_out = frame.composition_handle();
        return A_Err_NONE;
    });
}

A_Err get_layer_to_world(AEGP_LayerH layer, const A_Time* comp_time, A_Matrix4* transform_out) {
    const char* const name = "AEGP_GetLayerToWorldXform";
    return answer_query(name, shown(comp_time), [&](HostState& state, FrameState& frame) -> A_Err {
        const CameraLayer* const camera = frame.camera_of(layer);
        if (camera == nullptr || !usable(comp_time) || transform_out == nullptr) {
            return refuse(state, name);
        }
        const Time time = scene_time(*comp_time);
        frame.camera_times.push_back(time);
        const Matrix matrix = camera->camera->layer_to_world(time.seconds());
        std::copy(matrix.begin(), matrix.end(), &transform_out->mat[0][0]);
        return A_Err_NONE;
    });
}

A_Err get_item_dimensions(AEGP_ItemH item, A_long* width_out, A_long* height_out) {
    const char* const name = "AEGP_GetItemDimensions";
    return answer_query(name, "", [&](HostState& state, FrameState& frame) -> A_Err {
        if (item != frame.item_handle() || width_out == nullptr || height_out == nullptr) {
            return refuse(state, name);
        }
        *width_out = frame.composition().width;
        *height_out = frame.composition().height;
        return A_Err_NONE;
    });
}

A_Err get_item_from_comp(AEGP_CompH comp, AEGP_ItemH* item_out) {
    const char* const name = "AEGP_GetItemFromComp";
    return answer_query(name, "", [&](HostState& state, FrameState& frame) -> A_Err {
        if (comp != frame.composition_handle() || item_out == nullptr) {
            return refuse(state, name);
        }
        *item_out = frame.item_handle();
        return A_Err_NONE;
    });
}

A_Err get_shutter_frame_range(AEGP_CompH comp, const A_Time* comp_time, A_Time* start_out,
                              A_Time* duration_out) {
    const char* const name = "AEGP_GetCompShutterFrameRange";
    return answer_query(name, shown(comp_time), [&](HostState& state, FrameState& frame) -> A_Err {
        if (comp != frame.composition_handle() || !usable(comp_time) || start_out == nullptr ||
            duration_out == nullptr) {
            return refuse(state, name);
        }
        Time start;
        Time duration;
        frame.composition().shutter_range(scene_time(*comp_time), start, duration);
        *start_out = {start.value, start.scale};
        *duration_out = {duration.value, duration.scale};
        return A_Err_NONE;
    });
}

A_Err get_layer_stream_value(AEGP_LayerH layer, AEGP_LayerStream stream, AEGP_LTimeMode time_mode,
                             const A_Time* time, A_Boolean, AEGP_StreamVal* value_out,
                             AEGP_StreamType* type_out) {
    const char* const name = "AEGP_GetLayerStreamValue";
    return answer_query(name, "stream=" + std::to_string(stream) + " " + shown(time),
                        [&](HostState& state, FrameState& frame) -> A_Err {
                            const CameraLayer* const camera = frame.camera_of(layer);
                            // Camera layers' own time is the composition's: both time modes agree.
                            const bool mode = time_mode == AEGP_LTimeMode_CompTime ||
                                              time_mode == AEGP_LTimeMode_LayerTime;
                            if (camera == nullptr || !mode || stream != AEGP_LayerStream_ZOOM ||
                                !usable(time) || value_out == nullptr) {
                                return refuse(state, name);
                            }
                            value_out->one_d = camera->camera->zoom(scene_time(*time).seconds());
                            if (type_out != nullptr) {
                                *type_out = AEGP_StreamType_OneD;
                            }
                            return A_Err_NONE;
                        });
}

const AEGP_PFInterfaceSuite1 pf_interface_suite = {
    .AEGP_GetEffectLayer = get_effect_layer,
    UNPROVIDED("AEGP PF Interface Suite 1", AEGP_GetNewEffectForEffect),
    .AEGP_ConvertEffectToCompTime = convert_effect_to_comp_time,
    .AEGP_GetEffectCamera = get_effect_camera,
    UNPROVIDED("AEGP PF Interface Suite 1", AEGP_GetEffectCameraMatrix),
};

const AEGP_LayerSuite5 layer_suite = {
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetCompNumLayers),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetCompLayerByIndex),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetActiveLayer),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerIndex),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerSourceItem),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerSourceItemID),
    .AEGP_GetLayerParentComp = get_layer_parent_comp,
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerName),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerQuality),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerQuality),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerFlags),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerFlag),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_IsLayerVideoReallyOn),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_IsLayerAudioReallyOn),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerCurrentTime),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerInPoint),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerDuration),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerInPointAndDuration),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerOffset),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerOffset),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerStretch),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerStretch),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerTransferMode),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerTransferMode),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_IsAddLayerValid),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_AddLayer),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_ReorderLayer),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerMaskedBounds),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerObjectType),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_IsLayer3D),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_IsLayer2D),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_IsVideoActive),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_IsLayerUsedAsTrackMatte),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_DoesLayerHaveTrackMatte),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_ConvertCompToLayerTime),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_ConvertLayerToCompTime),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerDancingRandValue),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerID),
    .AEGP_GetLayerToWorldXform = get_layer_to_world,
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerToWorldXformFromView),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerName),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerParent),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_SetLayerParent),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_DeleteLayer),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_DuplicateLayer),
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerFromLayerID),
};

const AEGP_ItemSuite6 item_suite = {
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetFirstProjItem),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetNextProjItem),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetActiveItem),
    UNPROVIDED("AEGP Item Suite 10", AEGP_IsItemSelected),
    UNPROVIDED("AEGP Item Suite 10", AEGP_SelectItem),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemType),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetTypeName),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemName),
    UNPROVIDED("AEGP Item Suite 10", AEGP_SetItemName),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemID),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemFlags),
    UNPROVIDED("AEGP Item Suite 10", AEGP_SetItemUseProxy),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemParentFolder),
    UNPROVIDED("AEGP Item Suite 10", AEGP_SetItemParentFolder),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemDuration),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemCurrentTime),
    .AEGP_GetItemDimensions = get_item_dimensions,
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemPixelAspectRatio),
    UNPROVIDED("AEGP Item Suite 10", AEGP_DeleteItem),
    UNPROVIDED("AEGP Item Suite 10", AEGP_CreateNewFolder),
    UNPROVIDED("AEGP Item Suite 10", AEGP_SetItemCurrentTime),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemCommentLength),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemComment),
    UNPROVIDED("AEGP Item Suite 10", AEGP_SetItemComment),
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemLabel),
    UNPROVIDED("AEGP Item Suite 10", AEGP_SetItemLabel),
};

const AEGP_CompSuite4 comp_suite = {
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompFromItem),
    .AEGP_GetItemFromComp = get_item_from_comp,
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompDownsampleFactor),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetCompDownsampleFactor),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompBGColor),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompFlags),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompFramerate),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetCompFrameRate),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompShutterAnglePhase),
    .AEGP_GetCompShutterFrameRange = get_shutter_frame_range,
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompWorkAreaStart),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompWorkAreaDuration),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetCompWorkAreaStartAndDuration),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_CreateSolidInComp),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_CreateCameraInComp),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_CreateLightInComp),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_CreateComp),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetNewCollectionFromCompSelection),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetSelection),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompDisplayStartTime),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetCompDisplayStartTime),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetCompDuration),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_CreateNullInComp),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetCompPixelAspectRatio),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_CreateTextLayerInComp),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_SetCompDimensions),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_DuplicateComp),
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompFrameDuration),
};

const AEGP_StreamSuite2 stream_suite = {
    UNPROVIDED("AEGP Stream Suite 7", AEGP_IsStreamLegal),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_CanVaryOverTime),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetValidInterpolations),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetNewLayerStream),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetEffectNumParamStreams),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetNewEffectStreamByIndex),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetNewMaskStream),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_DisposeStream),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetStreamName),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetStreamUnitsText),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetStreamProperties),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_IsStreamTimevarying),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetStreamType),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetNewStreamValue),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_DisposeStreamValue),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_SetStreamValue),
    .AEGP_GetLayerStreamValue = get_layer_stream_value,
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetExpressionState),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_SetExpressionState),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetExpression),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_SetExpression),
    UNPROVIDED("AEGP Stream Suite 7", AEGP_DuplicateStreamRef),
};

}  // namespace

const void* find_aegp_suite(std::string_view name, int version) {
    if (name == kAEGPPFInterfaceSuite && version == kAEGPPFInterfaceSuiteVersion1) {
        return &pf_interface_suite;
    }
    if (name == kAEGPLayerSuite && version == kAEGPLayerSuiteVersion5) {
        return &layer_suite;
    }
    if (name == kAEGPItemSuite && version == kAEGPItemSuiteVersion6) {
        return &item_suite;
    }
    if (name == kAEGPCompSuite && version == kAEGPCompSuiteVersion4) {
        return &comp_suite;
    }
    if (name == kAEGPStreamSuite && version == kAEGPStreamSuiteVersion2) {
        return &stream_suite;
    }
    return nullptr;
}

}  // namespace host
