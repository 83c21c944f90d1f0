// Samples the composition's camera across the shutter.
#include <AE/instance.h>
#include <base/to_int.h>

#include <cstdint>

namespace {

// The composition as far as the camera needs it.
struct CameraView {
    AEGP_LayerH camera_layer = nullptr;
    A_long comp_width = 0;
    A_long comp_height = 0;
    A_Time shutter_start = {};
    A_Time shutter_duration = {};
};

/// Asks the host, one question after the other up to the first that fails.
A_Err find_camera(PF_InData* in_data, AEGP_SuiteHandler& suites, CameraView& view) {
    A_Time comp_time = {};
    A_Err err = suites.PFInterfaceSuite1()->AEGP_ConvertEffectToCompTime(
        in_data->effect_ref, in_data->current_time, in_data->time_scale, &comp_time);
    if (err == A_Err_NONE) {
        err = suites.PFInterfaceSuite1()->AEGP_GetEffectCamera(in_data->effect_ref, &comp_time,
                                                               &view.camera_layer);
    }
    AEGP_LayerH effect_layer = nullptr;
    if (err == A_Err_NONE) {
        err = suites.PFInterfaceSuite1()->AEGP_GetEffectLayer(in_data->effect_ref, &effect_layer);
    }
    AEGP_CompH comp = nullptr;
    if (err == A_Err_NONE) {
        err = suites.LayerSuite5()->AEGP_GetLayerParentComp(effect_layer, &comp);
    }
    AEGP_ItemH comp_item = nullptr;
    if (err == A_Err_NONE) {
        err = suites.CompSuite4()->AEGP_GetItemFromComp(comp, &comp_item);
    }
    if (err == A_Err_NONE) {
        err = suites.ItemSuite6()->AEGP_GetItemDimensions(comp_item, &view.comp_width,
                                                          &view.comp_height);
    }
    if (err == A_Err_NONE) {
        err = suites.CompSuite4()->AEGP_GetCompShutterFrameRange(
            comp, &comp_time, &view.shutter_start, &view.shutter_duration);
    }
    return err;
}

double seconds(const A_Time& time) {
    return static_cast<double>(time.value) / static_cast<double>(time.scale);
}

/// The end of part `k` of `n` equal parts of the time the shutter stays open, on a scale `n` times
/// finer than that of its opening. Coarse scales quantise it; times that come out equal are kept.
A_Time segment_end(const CameraView& view, std::int32_t k, std::int32_t n) {
    const A_u_long start_scale = view.shutter_start.scale;
    const double start = seconds(view.shutter_start);
    const double end = start + seconds(view.shutter_duration);
    const double t = k * (end - start) / n + start;
    A_Time time = {};
    time.value = s32_from_double(0.5 + static_cast<double>(start_scale) * t * n);
    time.scale = start_scale * static_cast<A_u_long>(n);
    return time;
}

/// Turns the vertical axis round on both sides of the matrix: the host's y points down, ours up.
void flip_y(Matrix4<double>& m) {
    for (int i = 0; i < 4; ++i) {
        m(1, i) = -m(1, i);
    }
    for (int i = 0; i < 4; ++i) {
        m(i, 1) = -m(i, 1);
    }
}

}  // namespace

void get_camera_sample(camera& out, A_Time& comp_time, AEGP_SuiteHandler& suites,
                       AEGP_LayerH camera_layer, int comp_width, int comp_height) {
    out = camera();

    // The camera stands at the origin if the host does not say where.
    A_Matrix4 layer_to_world = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
    A_Err err =
        suites.LayerSuite5()->AEGP_GetLayerToWorldXform(camera_layer, &comp_time, &layer_to_world);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            out.xform(row, column) = layer_to_world.mat[row][column];
        }
    }
    out.xform.invert();
    flip_y(out.xform);

    if (err == A_Err_NONE) {
        AEGP_StreamVal zoom = {};
        err = suites.StreamSuite2()->AEGP_GetLayerStreamValue(camera_layer, AEGP_LayerStream_ZOOM,
                                                              AEGP_LTimeMode_CompTime, &comp_time,
                                                              0, &zoom, nullptr);
        if (err == A_Err_NONE) {
            const double width = comp_width;
            const double height = comp_height;
            out.focal = 2.0 * (width / height) * zoom.one_d / width;
        }
    }
}

void sample_cameras(PF_InData* in_data, MyInstance& instance, AEGP_SuiteHandler& suites) {
    CameraView view;
    const A_Err err = find_camera(in_data, suites, view);
    if (err != A_Err_NONE || view.camera_layer == nullptr) {
        return;
    }
    const auto append_sample = [&](A_Time time) {
        camera sample;
        get_camera_sample(sample, time, suites, view.camera_layer, view.comp_width,
                          view.comp_height);
        instance.cameras.append(sample);
    };
    append_sample(view.shutter_start);
    if (in_data->shutter_angle != 0 && view.shutter_duration.value != 0) {
        for (std::int32_t k = 1; k <= instance.mb_segments; ++k) {
            append_sample(segment_end(view, k, instance.mb_segments));
        }
    }
}
