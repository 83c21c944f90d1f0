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
            return state.refuse(name, "no frame is being made", A_Err_GENERIC);
        }
        return body(state, *state.frame);
    });
}

A_Err refuse(HostState& state, const char* name) {
    return state.refuse(name, "null, a time scale of 0, or an object of another kind",
                        A_Err_PARAMETER);
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
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetCompNumLayers, AEGP_GetCompLayerByIndex,
               AEGP_GetActiveLayer, AEGP_GetLayerIndex, AEGP_GetLayerSourceItem,
               AEGP_GetLayerSourceItemID),
    .AEGP_GetLayerParentComp = get_layer_parent_comp,
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerName, AEGP_GetLayerQuality, AEGP_SetLayerQuality,
               AEGP_GetLayerFlags, AEGP_SetLayerFlag, AEGP_IsLayerVideoReallyOn,
               AEGP_IsLayerAudioReallyOn, AEGP_GetLayerCurrentTime, AEGP_GetLayerInPoint,
               AEGP_GetLayerDuration, AEGP_SetLayerInPointAndDuration, AEGP_GetLayerOffset,
               AEGP_SetLayerOffset, AEGP_GetLayerStretch, AEGP_SetLayerStretch,
               AEGP_GetLayerTransferMode, AEGP_SetLayerTransferMode, AEGP_IsAddLayerValid,
               AEGP_AddLayer, AEGP_ReorderLayer, AEGP_GetLayerMaskedBounds, AEGP_GetLayerObjectType,
               AEGP_IsLayer3D, AEGP_IsLayer2D, AEGP_IsVideoActive, AEGP_IsLayerUsedAsTrackMatte,
               AEGP_DoesLayerHaveTrackMatte, AEGP_ConvertCompToLayerTime,
               AEGP_ConvertLayerToCompTime, AEGP_GetLayerDancingRandValue, AEGP_GetLayerID),
    .AEGP_GetLayerToWorldXform = get_layer_to_world,
    UNPROVIDED("AEGP Layer Suite 11", AEGP_GetLayerToWorldXformFromView, AEGP_SetLayerName,
               AEGP_GetLayerParent, AEGP_SetLayerParent, AEGP_DeleteLayer, AEGP_DuplicateLayer,
               AEGP_GetLayerFromLayerID),
};

const AEGP_ItemSuite6 item_suite = {
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetFirstProjItem, AEGP_GetNextProjItem,
               AEGP_GetActiveItem, AEGP_IsItemSelected, AEGP_SelectItem, AEGP_GetItemType,
               AEGP_GetTypeName, AEGP_GetItemName, AEGP_SetItemName, AEGP_GetItemID,
               AEGP_GetItemFlags, AEGP_SetItemUseProxy, AEGP_GetItemParentFolder,
               AEGP_SetItemParentFolder, AEGP_GetItemDuration, AEGP_GetItemCurrentTime),
    .AEGP_GetItemDimensions = get_item_dimensions,
    UNPROVIDED("AEGP Item Suite 10", AEGP_GetItemPixelAspectRatio, AEGP_DeleteItem,
               AEGP_CreateNewFolder, AEGP_SetItemCurrentTime, AEGP_GetItemCommentLength,
               AEGP_GetItemComment, AEGP_SetItemComment, AEGP_GetItemLabel, AEGP_SetItemLabel),
};

const AEGP_CompSuite4 comp_suite = {
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompFromItem),
    .AEGP_GetItemFromComp = get_item_from_comp,
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompDownsampleFactor, AEGP_SetCompDownsampleFactor,
               AEGP_GetCompBGColor, AEGP_GetCompFlags, AEGP_GetCompFramerate, AEGP_SetCompFrameRate,
               AEGP_GetCompShutterAnglePhase),
    .AEGP_GetCompShutterFrameRange = get_shutter_frame_range,
    UNPROVIDED("AEGP Comp Suite 9", AEGP_GetCompWorkAreaStart, AEGP_GetCompWorkAreaDuration,
               AEGP_SetCompWorkAreaStartAndDuration, AEGP_CreateSolidInComp,
               AEGP_CreateCameraInComp, AEGP_CreateLightInComp, AEGP_CreateComp,
               AEGP_GetNewCollectionFromCompSelection, AEGP_SetSelection,
               AEGP_GetCompDisplayStartTime, AEGP_SetCompDisplayStartTime, AEGP_SetCompDuration,
               AEGP_CreateNullInComp, AEGP_SetCompPixelAspectRatio, AEGP_CreateTextLayerInComp,
               AEGP_SetCompDimensions, AEGP_DuplicateComp, AEGP_GetCompFrameDuration),
};

const AEGP_StreamSuite2 stream_suite = {
    UNPROVIDED("AEGP Stream Suite 7", AEGP_IsStreamLegal, AEGP_CanVaryOverTime,
               AEGP_GetValidInterpolations, AEGP_GetNewLayerStream, AEGP_GetEffectNumParamStreams,
               AEGP_GetNewEffectStreamByIndex, AEGP_GetNewMaskStream, AEGP_DisposeStream,
               AEGP_GetStreamName, AEGP_GetStreamUnitsText, AEGP_GetStreamProperties,
               AEGP_IsStreamTimevarying, AEGP_GetStreamType, AEGP_GetNewStreamValue,
               AEGP_DisposeStreamValue, AEGP_SetStreamValue),
    .AEGP_GetLayerStreamValue = get_layer_stream_value,
    UNPROVIDED("AEGP Stream Suite 7", AEGP_GetExpressionState, AEGP_SetExpressionState,
               AEGP_GetExpression, AEGP_SetExpression, AEGP_DuplicateStreamRef),
};

}  // namespace

std::span<const OfferedSuite> aegp_suites() {
    static constexpr OfferedSuite kSuites[] = {
        {kAEGPPFInterfaceSuite, &pf_interface_suite, kAEGPPFInterfaceSuiteVersion1, true, false},
        {kAEGPLayerSuite, &layer_suite, kAEGPLayerSuiteVersion5, true, false},
        {kAEGPItemSuite, &item_suite, kAEGPItemSuiteVersion6, true, false},
        {kAEGPCompSuite, &comp_suite, kAEGPCompSuiteVersion4, true, false},
        {kAEGPStreamSuite, &stream_suite, kAEGPStreamSuiteVersion2, true, false},
    };
    return kSuites;
}

}  // namespace host
