// The host's render commands.
#include <AE/commands.h>
#include <AE/instance.h>
#include <AE/render.h>
#include <AE/suites.h>
#include <base/exceptions.h>

#include <cstddef>
#include <cstring>
#include <new>

namespace {

constexpr PF_ParamIndex kInputLayer = 0;
constexpr A_long kInputCheckout = 0;

// What hosts without smart rendering get: no stars, but a sign of life.
constexpr PF_Pixel kFillColour = {40, 50, 60, 70};

/// 0..255 to 0..32768, rounded.
A_u_short widened(A_long code) { return static_cast<A_u_short>((code * 32768 + 128) / 255); }

void paint_ramp(PF_Pixel16* pixels, const PF_LayerDef& output) {
    char* row = reinterpret_cast<char*>(pixels);
    for (A_long y = 0; y < output.height; ++y, row += output.rowbytes) {
        char* to = row;
        for (A_long x = 0; x < output.width; ++x, to += sizeof(PF_Pixel16)) {
            const PF_Pixel16 pixel = {32768, widened(x % 256), widened(y % 256),
                                      widened(x % 128 * 2)};
            std::memcpy(to, &pixel, sizeof pixel);
        }
    }
}

/// The depth of `world` as the host's world suite tells it; unchanged when the host fails.
PF_Err pixel_format_of(const void* world_suite, const PF_EffectWorld* world,
                       PF_PixelFormat* format) {
    return static_cast<const PF_WorldSuite2*>(world_suite)->PF_GetPixelFormat(world, format);
}

}  // namespace

void delete_MyInstance(void* instance) { delete static_cast<MyInstance*>(instance); }

PF_Err SmartPreRender(PF_InData* in_data, PF_OutData* /*out_data*/, PF_PreRenderExtra* extra) {
    const PF_RenderRequest request = extra->input->output_request;
    auto* instance = new (std::nothrow) MyInstance;
    if (instance == nullptr) {
        return PF_Err_OUT_OF_MEMORY;
    }
    // The host's from here on, whatever happens next.
    extra->output->pre_render_data = instance;
    extra->output->delete_pre_render_data_func = delete_MyInstance;

    AEGP_SuiteHandler suites(in_data->pica_basicP);
    get_params(in_data, *instance, suites);

    PF_CheckoutResult input = {};
    const PF_Err err = extra->cb->checkout_layer(in_data->effect_ref, kInputLayer, kInputCheckout,
                                                 &request, in_data->current_time,
                                                 in_data->time_step, in_data->time_scale, &input);
    UnionLRect(input.result_rect, extra->output->result_rect);
    UnionLRect(input.max_result_rect, extra->output->max_result_rect);
    return err;
}

PF_Err SmartRender(PF_InData* in_data, PF_OutData* out_data, PF_SmartRenderExtra* extra) {
    const auto* instance = static_cast<const MyInstance*>(extra->input->pre_render_data);
    if (instance == nullptr) {
        return PF_Err_NONE;
    }
    PF_EffectWorld* input = nullptr;
    PF_EffectWorld* output = nullptr;
    PF_PixelFormat format = PF_PixelFormat_INVALID;
    const void* world_suite = nullptr;

    PF_Err err = extra->cb->checkout_layer_pixels(in_data->effect_ref, kInputCheckout, &input);
    if (err == PF_Err_NONE) {
        err = extra->cb->checkout_output(in_data->effect_ref, &output);
    }
    if (err == PF_Err_NONE) {
        err = AEFX_AcquireSuite(in_data, out_data, kPFWorldSuite, kPFWorldSuiteVersion2,
                                "Couldn't load suite.", &world_suite);
    }
    if (err == PF_Err_NONE) {
        err = pixel_format_of(world_suite, input, &format);
    }
    // Also after a failure above, deliberately: the output and the format as they then are decide
    // how it ends.
    try {
        XASSERT(output != nullptr);
        Lumivar_Render(*instance, output->width, output->height, format, output);
    } catch (const Xception&) {
        err = PF_Err_BAD_CALLBACK_PARAM;
    }
    // Both are done whatever failed before; an earlier error stands.
    const PF_Err release_err = AEFX_ReleaseSuite(in_data, out_data, kPFWorldSuite,
                                                 kPFWorldSuiteVersion2, "Couldn't release suite.");
    if (err == PF_Err_NONE) {
        err = release_err;
    }
    const PF_Err checkin_err = extra->cb->checkin_layer_pixels(in_data->effect_ref, kInputCheckout);
    if (err == PF_Err_NONE) {
        err = checkin_err;
    }
    return err;
}

PF_Err Render(PF_InData* in_data, PF_OutData* /*out_data*/, PF_ParamDef* /*params*/[],
              PF_LayerDef* output) {
    if ((output->world_flags & PF_WorldFlag_DEEP) != 0) {
        PF_Pixel16* pixels = nullptr;
        const PF_Err err = in_data->utils->get_pixel_data16(output, nullptr, &pixels);
        if (err == PF_Err_NONE && pixels != nullptr) {
            paint_ramp(pixels, *output);
        }
        return err;
    }
    if (in_data->appl_id == kAppID_Premiere) {
        return in_data->utils->fill(in_data->effect_ref, &kFillColour, nullptr, output);
    }
    AEGP_SuiteHandler suites(in_data->pica_basicP);
    return suites.FillMatteSuite2()->fill(in_data->effect_ref, &kFillColour, nullptr, output);
}

PF_Err QueryDynamicFlags(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* /*params*/[],
                         void* /*extra*/) {
    PF_ParamDef stars_3d = {};
    PF_Err err = in_data->inter.checkout_param(in_data->effect_ref, k3DStars, in_data->current_time,
                                               in_data->time_step, in_data->time_scale, &stars_3d);
    if (err == PF_Err_NONE) {
        // Whether or not the box is checked: the stars follow the camera either way.
        out_data->out_flags2 |= PF_OutFlag2_I_USE_3D_LIGHTS | PF_OutFlag2_I_USE_3D_CAMERA;
    }
    const PF_Err checkin_err = in_data->inter.checkin_param(in_data->effect_ref, &stars_3d);
    return err != PF_Err_NONE ? err : checkin_err;
}
