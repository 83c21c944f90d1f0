#include <cstddef>
#include <cstring>

#include "effect.h"

namespace test_effect {
namespace {

template <class Table>
int null_slots(const Table* table, std::size_t size = sizeof(Table)) {
    int nulls = 0;
    for (std::size_t i = 0; i + sizeof(void*) <= size; i += sizeof(void*)) {
        void* slot = nullptr;
        std::memcpy(&slot, reinterpret_cast<const char*>(table) + i, sizeof slot);
        nulls += slot == nullptr ? 1 : 0;
    }
    return nulls;
}

template <class Table>
int suite_nulls(const PF_InData* in, const char* name, int version) {
    const Suite<Table> suite(in, name, version);
    return suite ? null_slots(suite.get()) : 1000;
}

/// Slots of functions, in all tables that the host handed out, that are null.
int all_null_slots(const PF_InData* in) {
    // The utility table has one plain pointer and two spare numbers, which may be zero.
    const PF_UtilCallbacks& u = *in->utils;
    int nulls = null_slots(&u, offsetof(PF_UtilCallbacks, get_batch_func_is_deprecated));
    nulls += null_slots(&u.end_sampling, offsetof(PF_UtilCallbacks, ansi) -
                                             offsetof(PF_UtilCallbacks, end_sampling));
    nulls += null_slots(&u.ansi, offsetof(PF_ANSICallbacksBlock, unused_longA));
    nulls += null_slots(&u.colorCB,
                        offsetof(PF_UtilCallbacks, reserved) - offsetof(PF_UtilCallbacks, colorCB));
    nulls += null_slots(&in->inter, offsetof(PF_InteractCallbacks, reserved_str));
    nulls += null_slots(in->pica_basicP);
    nulls += suite_nulls<PF_HandleSuite1>(in, kPFHandleSuite, 2);
    nulls += suite_nulls<PF_ANSICallbacksSuite1>(in, kPFANSISuite, 1);
    nulls += suite_nulls<PF_FillMatteSuite2>(in, kPFFillMatteSuite, 2);
    nulls += suite_nulls<AEGP_PFInterfaceSuite1>(in, kAEGPPFInterfaceSuite, 1);
    nulls += suite_nulls<AEGP_LayerSuite5>(in, kAEGPLayerSuite, 11);
    nulls += suite_nulls<AEGP_ItemSuite6>(in, kAEGPItemSuite, 10);
    nulls += suite_nulls<AEGP_CompSuite4>(in, kAEGPCompSuite, 9);
    nulls += suite_nulls<AEGP_StreamSuite2>(in, kAEGPStreamSuite, 7);
    nulls += suite_nulls<PF_WorldSuite2>(in, kPFWorldSuite, 2);
    return nulls;
}

}  // namespace

PF_Err read_camera(PF_InData* in, Facts& facts) {
    const Suite<AEGP_PFInterfaceSuite1> interface(in, kAEGPPFInterfaceSuite, 1);
    const Suite<AEGP_LayerSuite5> layers(in, kAEGPLayerSuite, 11);
    const Suite<AEGP_ItemSuite6> items(in, kAEGPItemSuite, 10);
    const Suite<AEGP_CompSuite4> comps(in, kAEGPCompSuite, 9);
    const Suite<AEGP_StreamSuite2> streams(in, kAEGPStreamSuite, 7);
    if (!interface || !layers || !items || !comps || !streams) {
        return PF_Err_NONE;
    }
    A_Time time{};
    AEGP_LayerH layer = nullptr;
    AEGP_LayerH camera = nullptr;
    AEGP_CompH comp = nullptr;
    AEGP_ItemH item = nullptr;
    A_long width = 0;
    A_long height = 0;
    A_Time start{};
    A_Time duration{};
    if (interface->AEGP_ConvertEffectToCompTime(in->effect_ref, in->current_time, in->time_scale,
                                                &time) != 0 ||
        interface->AEGP_GetEffectCamera(in->effect_ref, &time, &camera) != 0 ||
        interface->AEGP_GetEffectLayer(in->effect_ref, &layer) != 0 ||
        layers->AEGP_GetLayerParentComp(layer, &comp) != 0 ||
        comps->AEGP_GetItemFromComp(comp, &item) != 0 ||
        items->AEGP_GetItemDimensions(item, &width, &height) != 0 ||
        comps->AEGP_GetCompShutterFrameRange(comp, &time, &start, &duration) != 0) {
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    facts[kItemWidth] = width;
    facts[kItemHeight] = height;
    facts[kShutterStart] = start.value;
    facts[kShutterScale] = start.scale;
    facts[kShutterDuration] = duration.value;
    facts[kHasCamera] = camera != nullptr ? 1 : 0;
    if (camera == nullptr) {
        return PF_Err_NONE;
    }
    A_Matrix4 matrix{};
    const PF_Err err = layers->AEGP_GetLayerToWorldXform(camera, &start, &matrix);
    for (int i = 0; i < 16; ++i) {
        facts[kMatrix + i] = matrix.mat[i / 4][i % 4];
    }
    AEGP_StreamVal zoom{};
    const PF_Err zoom_err = streams->AEGP_GetLayerStreamValue(
        camera, AEGP_LayerStream_ZOOM, AEGP_LTimeMode_CompTime, &start, 0, &zoom, nullptr);
    facts[kZoom] = zoom.one_d;
    return err != PF_Err_NONE ? err : zoom_err;
}

void tell_in_data(const PF_InData* in, Facts& facts) {
    facts[kShutterAngle] = in->shutter_angle / 65536.0;
    facts[kCurrentTime] = in->current_time;
    facts[kTimeStep] = in->time_step;
    facts[kTimeScale] = in->time_scale;
    facts[kTotalTime] = in->total_time;
    facts[kInWidth] = in->width;
    facts[kInHeight] = in->height;
    facts[kDownsampleNum] = in->downsample_x.num;
    facts[kDownsampleDen] = in->downsample_x.den;
    facts[kNumParams] = in->num_params;
    facts[kAspectNum] = in->pixel_aspect_ratio.num;
    facts[kAspectDen] = in->pixel_aspect_ratio.den;
    facts[kNullSlots] = all_null_slots(in);
}

}  // namespace test_effect
