#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "effect.h"

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

/// Draws one pixel as the mischief has it.
void draw_pixel(int mischief, char* pixel, PF_PixelFormat format, double red) {
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

bool is_half(const PF_RationalScale& scale) { return scale.num == 1 && scale.den == 2; }

/// What a pre-render has at hand.
struct PreRender {
    PF_InData* in;
    PF_OutData* out;
    PF_PreRenderExtra* extra;
    A_long frame;
    A_long id;
    PF_CheckoutResult result{};

    PF_Err checkout_layer() {
        PF_RenderRequest request = extra->input->output_request;
        return extra->cb->checkout_layer(in->effect_ref, 0, id, &request, in->current_time,
                                         in->time_step, in->time_scale, &result);
    }
    void checkout_param(int parameter, A_long time, A_long step, A_u_long scale) const {
        PF_ParamDef def;
        in->inter.checkout_param(in->effect_ref, parameter, time, step, scale, &def);
    }
};

const Deed<PreRender> kBeforeCheckout[] = {
    {kCallInThird,
     [](PreRender& at) {
         PF_ParamDef none;
         if (at.frame == 2) {
             at.in->inter.checkin_param(at.in->effect_ref, &none);
         }
     }},
    {kKeepThird,
     [](PreRender& at) {
         if (at.frame == 2) {
             at.checkout_param(kGainId, at.in->current_time, at.in->time_step, at.in->time_scale);
         }
     }},
    {kWriteInData, [](PreRender& at) { at.in->current_time += 1; }},
    {kChangeFlags,
     [](PreRender& at) {
         at.out->out_flags |= PF_OutFlag_I_EXPAND_BUFFER;
         at.out->out_flags2 &= ~PF_OutFlag2_I_USE_3D_CAMERA;
     }},
    {kAskForRefresh, [](PreRender& at) { at.out->out_flags |= PF_OutFlag_REFRESH_UI; }},
    {kCrashPreRender, [](PreRender&) { __builtin_trap(); }},
    {kIgnoreOnce,
     [](PreRender& at) {
         if (!made_frames) {
             at.in->inter.abort(at.in->effect_ref);
         }
     }},
};

const Deed<PreRender> kAfterCheckout[] = {
    {kDuplicateCheckout, [](PreRender& at) { at.checkout_layer(); }},
    {kZeroTimeScale, [](PreRender& at) { at.checkout_param(kGainId, 0, 1, 0); }},
    {kUnknownParameter, [](PreRender& at) { at.checkout_param(99, 0, 1, 1); }},
    {kLargeResult, [](PreRender& at) { at.extra->output->result_rect.right += 1; }},
    {kEmptyResult, [](PreRender& at) { at.extra->output->result_rect = {}; }},
};

/// What a smart render has at hand.
struct Render {
    PF_InData* in;
    PF_OutData* out;
    PF_SmartRenderExtra* extra;
    A_long id;
    PF_EffectWorld* input = nullptr;
    PF_EffectWorld* output = nullptr;
    PF_PixelFormat format = PF_PixelFormat_INVALID;
    PF_Err err = PF_Err_NONE;

    /// The renders in which the worst happens, so that those of other depths go on.
    bool deep() const { return extra->input->bitdepth == 16; }
    bool floating() const { return extra->input->bitdepth == 32; }

    PF_Err fetch(A_long checkout_id) {
        return extra->cb->checkout_layer_pixels(in->effect_ref, checkout_id, &input);
    }
    PF_Err return_layer() const { return extra->cb->checkin_layer_pixels(in->effect_ref, id); }
    PF_Err fetch_output() { return extra->cb->checkout_output(in->effect_ref, &output); }

    /// Where the host put its callbacks.
    void leave_for_callbacks(const void* pointer) const {
        std::memcpy(static_cast<void*>(&extra->cb), &pointer, sizeof pointer);
    }
    void leave_handle() const { leave_for_callbacks(in->utils->host_new_handle(1)); }

    char* output_byte(int offset) const { return reinterpret_cast<char*>(output->data) + offset; }
    int output_end() const { return output->rowbytes * output->height; }
    int middle_of_row() const { return output->width / 2 * pixel_size(format); }

    void fail_with(const char* message) {
        out->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
        in->utils->ansi.strcpy(out->return_msg, message);
        err = PF_Err_BAD_CALLBACK_PARAM;
    }

    /// Works in place on pixels that are not its own.
    template <class Change>
    void change_input(Change change) const {
        for (int y = 0; y < input->height; ++y) {
            char* const row = reinterpret_cast<char*>(input->data) + y * input->rowbytes;
            std::transform(row, row + input->width * pixel_size(format), row, change);
        }
    }
};

const Deed<Render> kAtOnce[] = {
    {kThrowStandard, [](Render&) { throw std::runtime_error("boom"); }},
    {kThrowForeign, [](Render&) { throw ForeignTrouble(); }},
    {kThrowNumber, [](Render&) { throw 516; }},
    {kCrash, [](Render& at) { at.deep() ? __builtin_trap() : void(); }},
    {kHang,
     [](Render& at) {
         while (at.deep()) {
             pause();
         }
     }},
    {kLeakMemory, [](Render&) { lose_memory(); }},
    {kLeakInFloat, [](Render& at) { at.floating() ? lose_memory() : void(); }},
    {kLeakEverySecond, [](Render&) { renders++ % 2 == 0 ? lose_memory() : void(); }},
    {kLeakDescriptor, [](Render&) { lose_descriptor(); }},
    {kLeakMapping, [](Render&) { lose_mapping(); }},
    {kEndProcess, [](Render& at) { at.deep() ? _exit(0) : void(); }},
    {kExit, [](Render& at) { at.deep() ? std::exit(0) : void(); }},
    {kLeaveProcess, [](Render& at) { at.deep() ? leave_process(false) : void(); }},
    {kLeaveSession, [](Render& at) { at.deep() ? leave_process(true) : void(); }},
    {kCrashSmart, [](Render&) { __builtin_trap(); }},
    {kCrashAfterFlatten, [](Render&) { reopened ? __builtin_trap() : void(); }},
    {kStayLoaded, [](Render&) { stay_loaded(); }},
    {kCallUnprovided,
     [](Render& at) {
         const Suite<AEGP_LayerSuite5> layers(at.in, kAEGPLayerSuite, 11);
         layers->AEGP_GetLayerName();
     }},
    {kOutputFirst, [](Render& at) { at.fetch_output(); }},
};

/// Of an effect that conforms: before it gives the layer back.
const Deed<Render> kWithoutOutput[] = {
    {kLeakOnError, [](Render&) { lose_memory(); }},
    {kSwallowCancel,
     [](Render& at) {
         at.err = at.err == PF_Interrupt_CANCEL ? PF_Err{PF_Err_INTERNAL_STRUCT_DAMAGED} : at.err;
     }},
    {kThrowOnError, [](Render&) { throw std::runtime_error("no output"); }},
    {kSlowLeakOnError,
     [](Render& at) {
         if (at.floating() && at.err == PF_Err_OUT_OF_MEMORY) {
             usleep(100000);
             lose_memory();
         }
     }},
};

const Deed<Render> kBeforeDrawing[] = {
    {kUnknownCheckout,
     [](Render& at) {
         PF_EffectWorld* const input = at.input;
         at.fetch(99);
         at.input = input;
     }},
    {kFetchTwice, [](Render& at) { at.fetch(at.id); }},
    {kLeakSuite,
     [](Render& at) {
         const void* table = nullptr;
         at.in->pica_basicP->AcquireSuite(kPFWorldSuite, 2, &table);
     }},
    {kReleaseUnheldSuite, [](Render& at) { at.in->pica_basicP->ReleaseSuite(kPFWorldSuite, 2); }},
    {kUnknownSuite,
     [](Render& at) {
         const void* table = at.in;
         const SPErr found = at.in->pica_basicP->AcquireSuite(kAEGPLayerSuite, 14, &table);
         at.err = found == 0 || table != nullptr ? 1 : 0;
     }},
    {kWriteInput, [](Render& at) { reinterpret_cast<char*>(at.input->data)[1] = 1; }},
    {kClearInput, [](Render& at) { at.change_input([](char) { return char{0}; }); }},
    {kHalveInput,
     [](Render& at) { at.change_input([](char byte) { return static_cast<char>(byte / 2); }); }},
};

/// After the drawing, and after the layer was given back.
const Deed<Render> kAtTheEnd[] = {
    {kWritePastRow,
     [](Render& at) {
         *at.output_byte(at.output->rowbytes + at.output->width * pixel_size(at.format) + 3) = 1;
     }},
    {kWriteBefore, [](Render& at) { *at.output_byte(-2) = 1; }},
    {kWriteBehind, [](Render& at) { *at.output_byte(at.output_end() + 5) = 1; }},
    {kWriteRowAbove,
     [](Render& at) {
         put(at.output_byte(at.middle_of_row() - at.output->rowbytes), at.format, 1.0);
     }},
    {kWriteRowBelow,
     [](Render& at) { put(at.output_byte(at.middle_of_row() + at.output_end()), at.format, 1.0); }},
    {kOverlongMessage,
     [](Render& at) {
         at.in->utils->ansi.sprintf(at.out->return_msg, "%s", std::string(300, 'm').c_str());
     }},
    {kUnterminatedMessage,
     [](Render& at) { std::memset(at.out->return_msg, 'u', sizeof at.out->return_msg); }},
    {kWriteRenderInput,
     [](Render& at) {
         at.extra->input->bitdepth = 8;
         at.output->height -= 1;
         at.input->height -= 1;
     }},
    {kChangeCount, [](Render& at) { ++at.out->num_params; }},
    {kCallFromThread,
     [](Render& at) {
         std::thread([in = at.in] {
             in->inter.abort(in->effect_ref);
             in->utils->host_dispose_handle(nullptr);
             in->pica_basicP->ReleaseSuite(kPFWorldSuite, 2);
         }).join();
     }},
    {kLeakHandle, [](Render& at) { at.in->utils->host_new_handle(8); }},
    {kDisposeTwice,
     [](Render& at) {
         const PF_Handle handle = at.in->utils->host_new_handle(8);
         at.in->utils->host_dispose_handle(handle);
         at.in->utils->host_dispose_handle(handle);
     }},
    {kReturnLayerTwice, [](Render& at) { at.return_layer(); }},
    {kHandleForCallbacks, [](Render& at) { at.leave_handle(); }},
    {kRubbishForCallbacks, [](Render& at) { at.leave_for_callbacks(at.in->utils); }},
    {kFailWithMessage, [](Render& at) { at.fail_with("no can do"); }},
    {kActOnTheTerminal,
     [](Render& at) {
         if (at.deep()) {
             at.fail_with(
                 "\x1B[2Jnone\n\xC2\x9B"
                 "2J");
         }
     }},
};

void draw(const Instance& instance, const Render& at) {
    const int mischief = instance.mischief;
    const PF_EffectWorld& output = *at.output;
    const int rows = mischief == kDrawHalf ? output.height / 2 : output.height;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < output.width; ++x) {
            const double red =
                !kConforming && y == 0 && x < kFactEnd && at.format == PF_PixelFormat_ARGB128
                    ? instance.facts[static_cast<std::size_t>(x)]
                    : x + 10.0 * y + (mischief == kForgetInFlatten && reopened ? 1.0 : 0.0);
            draw_pixel(mischief, at.output_byte(y * output.rowbytes + x * pixel_size(at.format)),
                       at.format, red);
        }
    }
}

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
    PreRender at{in, out, extra, frame, mischief == kNegativeCheckout ? -7 : 0};
    act(kBeforeCheckout, mischief, at);
    const PF_Err err = at.checkout_layer();
    const PF_CheckoutResult result = at.result;
    instance->facts[kInputAspectNum] = result.par.num;
    instance->facts[kInputAspectDen] = result.par.den;
    instance->facts[kReferenceWidth] = result.ref_width;
    instance->facts[kReferenceHeight] = result.ref_height;
    PF_PreRenderOutput& output = *extra->output;
    output.result_rect = result.result_rect;
    output.max_result_rect = result.max_result_rect;
    act(kAfterCheckout, mischief, at);
    if (first == PF_Err_NONE) {
        first = err;
    }
    if (mischief == kNoDeleter) {
        static Instance forever;
        forever = *instance;
        output.pre_render_data = &forever;
        return first;
    }
    ++living_instances;
    instance->handle = in->utils->host_new_handle(1);
    if (instance->handle == nullptr) {
        crash_for(kCrashWithoutHandle);
    }
    output.pre_render_data = instance.release();
    output.delete_pre_render_data_func = delete_instance;
    return first;
}

PF_Err smart_render(PF_InData* in, PF_OutData* out, PF_SmartRenderExtra* extra) {
    Instance& instance = *static_cast<Instance*>(extra->input->pre_render_data);
    const int mischief = instance.mischief;
    made_frames = true;
    Render at{in, out, extra, mischief == kNegativeCheckout ? -7 : 0};
    act(kAtOnce, mischief, at);
    if (instance.fails) {
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    if (mischief == kBlankWithoutHandle && !gets_handle(in)) {
        return PF_Err_NONE;
    }
    at.err = at.fetch(at.id);
    if (kConforming && at.err != PF_Err_NONE) {
        return at.err;
    }
    at.err = at.fetch_output();
    if (kConforming && at.err != PF_Err_NONE) {
        act(kWithoutOutput, mischief, at);
        at.return_layer();
        if (mischief == kHandleOnError) {
            at.leave_handle();
        }
        return at.err;
    }
    {
        const Suite<PF_WorldSuite2> worlds(in, kPFWorldSuite, 2);
        PF_EffectWorld copy = *at.input;
        PF_EffectWorld* const asked = mischief == kForeignWorld ? &copy : at.input;
        at.err = !worlds ? PF_Err_BAD_CALLBACK_PARAM : worlds->PF_GetPixelFormat(asked, &at.format);
    }
    if (kConforming && at.err != PF_Err_NONE) {
        at.return_layer();
        return at.err;
    }
    at.err = PF_Err_NONE;
    act(kBeforeDrawing, mischief, at);
    if (at.err != PF_Err_NONE) {
        return at.err;
    }
    instance.facts[kOutputRowBytes] = at.output->rowbytes;
    instance.facts[kInputRowBytes] = at.input->rowbytes;
    instance.facts[kOriginX] = at.output->origin_x;
    instance.facts[kOriginY] = at.output->origin_y;
    if (mischief != kDrawNothing && mischief != kForeignWorld && mischief != kFailWithMessage) {
        draw(instance, at);
    }
    const PF_Err returned = mischief == kKeepLayer ? PF_Err{PF_Err_NONE} : at.return_layer();
    act(kAtTheEnd, mischief, at);
    pass_on(at.err, returned);
    return at.err;
}

PF_Err plain_render(PF_InData* in, PF_OutData* out, PF_ParamDef** params, PF_EffectWorld* output) {
    const bool second = std::exchange(made_frames, true);
    if (second && (output->world_flags & PF_WorldFlag_DEEP) != 0) {
        crash_for(kCrashInSecondPlain);
    }
    if (asked_mischief() == kWriteParameters) {
        params[kCountId]->u.sd.value += 1;
    }
    lose_memory_for(kLeakInPlain);
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
