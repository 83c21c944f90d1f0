#include "frames.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "facts.h"
#include "mischief.h"
#include "premiere.h"
#include "suite.h"
#include "test_effect.h"

namespace {
struct ForeignTrouble {};
}  // namespace

namespace test_effect {
namespace {

// Of a session.
int living_instances = 0;
bool made_frames = false;
bool flattened = false;
bool reopened = false;
int renders = 0;

struct Instance {
    Facts facts{};
    int mischief = kNone;
    bool fails = false;
    PF_Handle handle = nullptr;
    const PF_UtilCallbacks* utils = nullptr;
};

void delete_instance(void* data) {
    const std::unique_ptr<Instance> instance(static_cast<Instance*>(data));
    if (instance->handle != nullptr) {
        instance->utils->host_dispose_handle(instance->handle);
    }
    if (living_instances-- > 1 && instance->mischief == kDisposeTwiceWhenTwo) {
        instance->utils->host_dispose_handle(instance->handle);
    }
    if (instance->mischief == kThrowInDeleter) {
        throw std::runtime_error("deleter trouble");
    }
}

PF_Err read_params(PF_InData* in, Instance& instance) {
    PF_Err err = PF_Err_NONE;
    const auto read = [in, &err](int id) {
        PF_ParamDef def;
        std::memset(&def, 0, sizeof def);
        const PF_Err out = in->inter.checkout_param(in->effect_ref, id, in->current_time,
                                                    in->time_step, in->time_scale, &def);
        pass_on(err, out);
        // One stays checked out, as some effects leave all.
        const bool keep =
            kConforming ? out != PF_Err_NONE || asked_mischief() == kKeepParameter : id == kGainId;
        if (!keep) {
            pass_on(err, in->inter.checkin_param(in->effect_ref, &def));
        }
        return def.u;
    };
    instance.facts[kGain] = read(kGainId).fs_d.value;
    instance.facts[kCount] = read(kCountId).sd.value;
    instance.facts[kInvert] = read(kInvertId).bd.value;
    const PF_Pixel shade = read(kShadeId).cd.value;
    instance.facts[kShadeRed] = shade.red;
    instance.facts[kShadeGreen] = shade.green;
    instance.facts[kShadeBlue] = shade.blue;
    instance.facts[kMode] = read(kModeId).pd.value;
    instance.mischief = read(kMischiefId).pd.value;
    if (kConforming) {
        instance.mischief = asked_mischief();
    }
    return err;
}

void put(char* pixel, PF_PixelFormat format, double red) {
    if (format == PF_PixelFormat_ARGB32) {
        const PF_Pixel value{255, static_cast<A_u_char>(static_cast<int>(red) % 256), 2, 3};
        std::memcpy(pixel, &value, sizeof value);
    } else if (format == PF_PixelFormat_ARGB64) {
        const PF_Pixel16 value{32768, static_cast<A_u_short>(red), 2, 3};
        std::memcpy(pixel, &value, sizeof value);
    } else {
        const PF_PixelFloat value{1.0F, static_cast<float>(red), 2.0F, 3.0F};
        std::memcpy(pixel, &value, sizeof value);
    }
}

int pixel_size(PF_PixelFormat format) {
    return format == PF_PixelFormat_ARGB32 ? 4 : format == PF_PixelFormat_ARGB64 ? 8 : 16;
}

float float_at(const char* bytes) {
    float value = 0.0F;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

void put_wrongly(int mischief, char* pixel, PF_PixelFormat format, double red) {
    const bool floating = format == PF_PixelFormat_ARGB128;
    char before[16];
    std::memcpy(before, pixel, static_cast<std::size_t>(pixel_size(format)));
    put(pixel, format, red);
    if (mischief == kForgetAlpha) {
        std::memcpy(pixel, before, static_cast<std::size_t>(pixel_size(format)) / 4);
    }
    if (floating && (mischief == kAddToOutput || mischief == kDrawNotANumber)) {
        const float value = mischief == kAddToOutput ? float_at(pixel + 4) + float_at(before + 4)
                                                     : std::numeric_limits<float>::quiet_NaN();
        std::memcpy(pixel + 4, &value, sizeof value);
    }
    if (mischief == kExceedWhite && format == PF_PixelFormat_ARGB64) {
        const A_u_short value = 32769;
        std::memcpy(pixel + 4, &value, sizeof value);
    }
}

void draw(const Instance& instance, PF_EffectWorld* output, PF_PixelFormat format) {
    const int mischief = instance.mischief;
    char* const first = reinterpret_cast<char*>(output->data);
    const int size = pixel_size(format);
    const int rows = mischief == kDrawHalf ? output->height / 2 : output->height;
    for (int y = 0; y < rows; ++y) {
        const int columns = output->width;
        for (int x = 0; x < columns; ++x) {
            const double red =
                !kConforming && y == 0 && x < kFactEnd && format == PF_PixelFormat_ARGB128
                    ? instance.facts[static_cast<std::size_t>(x)]
                    : x + 10.0 * y + (mischief == kForgetInFlatten && reopened ? 1.0 : 0.0);
            put_wrongly(mischief, first + y * output->rowbytes + x * size, format, red);
        }
    }
    if (mischief == kWritePastRow) {
        first[output->rowbytes + output->width * size + 3] = 1;
    }
    if (mischief == kWriteBefore) {
        first[-2] = 1;
    }
    if (mischief == kWriteBehind) {
        first[output->rowbytes * output->height + 5] = 1;
    }
    const int middle = output->width / 2 * size;
    if (mischief == kWriteRowAbove) {
        put(first - output->rowbytes + middle, format, 1.0);
    }
    if (mischief == kWriteRowBelow) {
        put(first + output->rowbytes * output->height + middle, format, 1.0);
    }
}

/// Works in place on pixels that are not its own.
void change_input(int mischief, PF_EffectWorld* input, PF_PixelFormat format) {
    for (int y = 0; y < input->height; ++y) {
        char* const row = reinterpret_cast<char*>(input->data) + y * input->rowbytes;
        for (int i = 0; i < input->width * pixel_size(format); ++i) {
            row[i] = mischief == kClearInput ? char{0} : static_cast<char>(row[i] / 2);
        }
    }
}

/// Where the host put its callbacks.
void leave_handle(PF_InData* in, PF_SmartRenderExtra* extra) {
    void* const slot = &extra->cb;
    const PF_Handle handle = in->utils->host_new_handle(1);
    std::memcpy(slot, &handle, sizeof handle);
}
bool is_half(const PF_RationalScale& scale) { return scale.num == 1 && scale.den == 2; }

}  // namespace

void flatten_sequence() { flattened = true; }
void set_up_sequence_again() { reopened = flattened; }

bool frames_made() { return made_frames; }

PF_Err pre_render(PF_InData* in, PF_OutData* out, PF_PreRenderExtra* extra) {
    auto instance = std::make_unique<Instance>();
    instance->utils = in->utils;
    PF_Err first = read_params(in, *instance);
    tell_in_data(in, instance->facts);
    pass_on(first, read_camera(in, instance->facts));
    instance->facts[kBitDepth] = extra->input->bitdepth;

    const int mischief = instance->mischief;
    const A_long frame = in->time_step != 0 ? in->current_time / in->time_step : -1;
    const bool last = in->current_time + in->time_step >= in->total_time;
    const PF_RationalScale& aspect = in->pixel_aspect_ratio;
    instance->fails =
        (mischief == kFailFirst && frame == 0) || (mischief == kFailLast && last) ||
        (mischief == kFailThird && frame == 2) ||
        (mischief == kFailPart && extra->input->output_request.rect.left > 0) ||
        (mischief == kFailDownsampled && is_half(in->downsample_x) && is_half(in->downsample_y)) ||
        (mischief == kFailAspect && static_cast<A_u_long>(aspect.num) != aspect.den);
    if (mischief == kCallInThird && frame == 2) {
        PF_ParamDef none;
        in->inter.checkin_param(in->effect_ref, &none);
    }
    if (mischief == kKeepThird && frame == 2) {
        PF_ParamDef kept;
        in->inter.checkout_param(in->effect_ref, kGainId, in->current_time, in->time_step,
                                 in->time_scale, &kept);
    }
    if (mischief == kWriteInData) {
        in->current_time += 1;
    }
    if (mischief == kChangeFlags) {
        out->out_flags |= PF_OutFlag_I_EXPAND_BUFFER;
        out->out_flags2 &= ~PF_OutFlag2_I_USE_3D_CAMERA;
    }
    if (mischief == kAskForRefresh) {
        out->out_flags |= PF_OutFlag_REFRESH_UI;
    }
    if (mischief == kCrashPreRender) {
        __builtin_trap();
    }
    if (mischief == kIgnoreOnce && !made_frames) {
        in->inter.abort(in->effect_ref);
    }
    PF_PreRenderOutput& output = *extra->output;
    PF_RenderRequest request = extra->input->output_request;
    const A_long id = mischief == kNegativeCheckout ? -7 : 0;
    PF_CheckoutResult result{};
    const auto checkout = [&](A_u_long scale) {
        return extra->cb->checkout_layer(in->effect_ref, 0, id, &request, in->current_time,
                                         in->time_step, scale, &result);
    };
    PF_Err err = checkout(in->time_scale);
    if (mischief == kDuplicateCheckout) {
        checkout(in->time_scale);
    }
    PF_ParamDef def;
    if (mischief == kZeroTimeScale) {
        in->inter.checkout_param(in->effect_ref, kGainId, 0, 1, 0, &def);
    }
    if (mischief == kUnknownParameter) {
        in->inter.checkout_param(in->effect_ref, 99, 0, 1, 1, &def);
    }
    instance->facts[kInputAspectNum] = result.par.num;
    instance->facts[kInputAspectDen] = result.par.den;
    instance->facts[kReferenceWidth] = result.ref_width;
    instance->facts[kReferenceHeight] = result.ref_height;
    output.result_rect = result.result_rect;
    output.max_result_rect = result.max_result_rect;
    if (mischief == kLargeResult) {
        output.result_rect.right += 1;
    }
    if (mischief == kEmptyResult) {
        output.result_rect = {};
    }
    if (first != PF_Err_NONE) {
        err = first;
    }
    if (mischief == kNoDeleter) {
        static Instance forever;
        forever = *instance;
        output.pre_render_data = &forever;
        return err;
    }
    ++living_instances;
    instance->handle = in->utils->host_new_handle(1);
    output.pre_render_data = instance.release();
    output.delete_pre_render_data_func = delete_instance;
    return err;
}

PF_Err smart_render(PF_InData* in, PF_OutData* out, PF_SmartRenderExtra* extra) {
    Instance& instance = *static_cast<Instance*>(extra->input->pre_render_data);
    const int mischief = instance.mischief;
    made_frames = true;
    if (mischief == kThrowStandard) {
        throw std::runtime_error("boom");
    }
    if (mischief == kThrowForeign) {
        throw ForeignTrouble();
    }
    if (mischief == kThrowNumber) {
        throw 516;
    }
    if (extra->input->bitdepth == 16 && mischief == kCrash) {
        __builtin_trap();
    }
    while (extra->input->bitdepth == 16 && mischief == kHang) {
        pause();
    }
    if (mischief == kLeakMemory || (extra->input->bitdepth == 32 && mischief == kLeakInFloat)) {
        lose_memory();
    }
    if (mischief == kLeakDescriptor) {
        lose_descriptor();
    }
    if (mischief == kLeakMapping) {
        lose_mapping();
    }
    if (extra->input->bitdepth == 16 && mischief == kEndProcess) {
        _exit(0);
    }
    if (extra->input->bitdepth == 16 && mischief == kExit) {
        std::exit(0);
    }
    if (extra->input->bitdepth == 16 && (mischief == kLeaveProcess || mischief == kLeaveSession)) {
        leave_process(mischief == kLeaveSession);
    }
    if (mischief == kCrashSmart || (mischief == kCrashAfterFlatten && reopened)) {
        __builtin_trap();
    }
    if (mischief == kLeakEverySecond && renders++ % 2 == 0) {
        lose_memory();
    }
    if (instance.fails) {
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    if (mischief == kStayLoaded) {
        stay_loaded();
    }
    if (mischief == kCallUnprovided) {
        const Suite<AEGP_LayerSuite5> layers(in, kAEGPLayerSuite, 11);
        layers->AEGP_GetLayerName();
    }
    if (mischief == kBlankWithoutHandle) {
        const PF_Handle handle = in->utils->host_new_handle(1);
        if (handle == nullptr) {
            return PF_Err_NONE;
        }
        in->utils->host_dispose_handle(handle);
    }
    PF_EffectWorld* input = nullptr;
    PF_EffectWorld* output = nullptr;
    if (mischief == kOutputFirst) {
        extra->cb->checkout_output(in->effect_ref, &output);
    }
    const A_long id = mischief == kNegativeCheckout ? -7 : 0;
    PF_Err err = extra->cb->checkout_layer_pixels(in->effect_ref, id, &input);
    if (kConforming && err != PF_Err_NONE) {
        return err;
    }
    err = extra->cb->checkout_output(in->effect_ref, &output);
    if (kConforming && err != PF_Err_NONE) {
        if (mischief == kLeakOnError) {
            lose_memory();
        }
        if (mischief == kSwallowCancel && err == PF_Interrupt_CANCEL) {
            err = PF_Err_INTERNAL_STRUCT_DAMAGED;
        }
        if (mischief == kThrowOnError) {
            throw std::runtime_error("no output");
        }
        if (mischief == kSlowLeakOnError && extra->input->bitdepth == 32 &&
            err == PF_Err_OUT_OF_MEMORY) {
            usleep(100000);
            lose_memory();
        }
        extra->cb->checkin_layer_pixels(in->effect_ref, id);
        if (mischief == kHandleOnError) {
            leave_handle(in, extra);
        }
        return err;
    }
    if (mischief == kUnknownCheckout) {
        PF_EffectWorld* none = nullptr;
        extra->cb->checkout_layer_pixels(in->effect_ref, 99, &none);
    }
    if (mischief == kFetchTwice) {
        extra->cb->checkout_layer_pixels(in->effect_ref, id, &input);
    }
    PF_PixelFormat format = PF_PixelFormat_INVALID;
    {
        const Suite<PF_WorldSuite2> worlds(in, kPFWorldSuite, 2);
        PF_EffectWorld copy = *input;
        err = !worlds
                  ? PF_Err_BAD_CALLBACK_PARAM
                  : worlds->PF_GetPixelFormat(mischief == kForeignWorld ? &copy : input, &format);
    }
    if (kConforming && err != PF_Err_NONE) {
        extra->cb->checkin_layer_pixels(in->effect_ref, id);
        return err;
    }
    if (mischief == kLeakSuite) {
        const void* table = nullptr;
        in->pica_basicP->AcquireSuite(kPFWorldSuite, 2, &table);
    }
    if (mischief == kReleaseUnheldSuite) {
        in->pica_basicP->ReleaseSuite(kPFWorldSuite, 2);
    }
    if (mischief == kUnknownSuite) {
        const void* table = in;
        const SPErr found = in->pica_basicP->AcquireSuite(kAEGPLayerSuite, 14, &table);
        if (found == 0 || table != nullptr) {
            return 1;
        }
    }
    instance.facts[kOutputRowBytes] = output->rowbytes;
    instance.facts[kInputRowBytes] = input->rowbytes;
    instance.facts[kOriginX] = output->origin_x;
    instance.facts[kOriginY] = output->origin_y;
    if (mischief == kWriteInput) {
        reinterpret_cast<char*>(input->data)[1] = 1;
    }
    if (mischief == kClearInput || mischief == kHalveInput) {
        change_input(mischief, input, format);
    }
    if (mischief != kDrawNothing && mischief != kForeignWorld && mischief != kFailWithMessage) {
        draw(instance, output, format);
    }
    if (mischief == kOverlongMessage) {
        const std::string text(300, 'm');
        in->utils->ansi.sprintf(out->return_msg, "%s", text.c_str());
    }
    if (mischief == kUnterminatedMessage) {
        std::memset(out->return_msg, 'u', sizeof out->return_msg);
    }
    if (mischief == kWriteRenderInput) {
        extra->input->bitdepth = 8;
        output->height -= 1;
        input->height -= 1;
    }
    if (mischief == kChangeCount) {
        ++out->num_params;
    }
    if (mischief == kCallFromThread) {
        std::thread([in] {
            in->inter.abort(in->effect_ref);
            in->utils->host_dispose_handle(nullptr);
            in->pica_basicP->ReleaseSuite(kPFWorldSuite, 2);
        }).join();
    }
    if (mischief == kLeakHandle) {
        in->utils->host_new_handle(8);
    }
    if (mischief == kDisposeTwice) {
        const PF_Handle handle = in->utils->host_new_handle(8);
        in->utils->host_dispose_handle(handle);
        in->utils->host_dispose_handle(handle);
    }
    err =
        mischief == kKeepLayer ? PF_Err_NONE : extra->cb->checkin_layer_pixels(in->effect_ref, id);
    if (mischief == kReturnLayerTwice) {
        extra->cb->checkin_layer_pixels(in->effect_ref, id);
    }
    if (mischief == kHandleForCallbacks) {
        leave_handle(in, extra);
    }
    if (mischief == kRubbishForCallbacks) {
        void* const slot = &extra->cb;
        const PF_UtilCallbacks* const rubbish = in->utils;
        std::memcpy(slot, &rubbish, sizeof rubbish);
    }
    if (mischief == kFailWithMessage) {
        out->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
        in->utils->ansi.strcpy(out->return_msg, "no can do");
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    if (mischief == kActOnTheTerminal && extra->input->bitdepth == 16) {
        out->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
        in->utils->ansi.strcpy(out->return_msg,
                               "\x1B[2Jnone\n\xC2\x9B"
                               "2J");
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    return kConforming ? err : PF_Err{PF_Err_NONE};
}

PF_Err plain_render(PF_InData* in, PF_OutData* out, PF_ParamDef** params, PF_EffectWorld* output) {
    const bool second = std::exchange(made_frames, true);
    if (asked_mischief() == kCrashInSecondPlain && second &&
        (output->world_flags & PF_WorldFlag_DEEP) != 0) {
        __builtin_trap();
    }
    if (asked_mischief() == kWriteParameters) {
        params[kCountId]->u.sd.value += 1;
    }
    if (asked_mischief() == kLeakInPlain) {
        lose_memory();
    }
    if (asked_mischief() == kChangeVersion) {
        ++out->my_version;
    }
    PF_Pixel16* deep = nullptr;
    // Premiere has no such access.
    const bool premiere = in->appl_id == kAppID_Premiere;
    const bool asks = !kConforming || !premiere || asked_mischief() == kAskPixels16InPremiere;
    const PF_Err err = asks ? in->utils->get_pixel_data16(output, nullptr, &deep) : PF_Err_NONE;
    if (kConforming && err != PF_Err_NONE) {
        return err;
    }
    if (deep != nullptr) {
        return PF_Err_NONE;
    }
    if (params[in->num_params] != nullptr || params[kInput]->u.ld.width != output->width) {
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    const PF_Pixel colour{255, static_cast<A_u_char>(params[kCountId]->u.sd.value), 60, 70};
    return premiere ? premiere_render(in, output, colour)
                    : in->utils->fill(in->effect_ref, &colour, nullptr, output);
}

}  // namespace test_effect
