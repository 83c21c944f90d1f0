// An effect that tells what its host told it, and that breaks the rules when asked to.
//
// Built with CONFORMING it does all that its host may expect, but for the one thing that MISCHIEF
// in the environment names by its number.
#include <dlfcn.h>
#include <host_api/effect_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "test_effect.h"

namespace {

using namespace test_effect;

struct ForeignTrouble {};

#ifdef CONFORMING
constexpr bool kConforming = true;
#else
constexpr bool kConforming = false;
#endif

/// What the environment asks for; for all frames.
int asked_mischief() {
    if (kConforming) {
        if (const char* const text = std::getenv("MISCHIEF")) {
            return std::atoi(text);
        }
    }
    return kNone;
}

/// The first error is passed on; unless it conforms, the effect does not care.
void pass_on(PF_Err& err, PF_Err next) {
    if (kConforming && err == PF_Err_NONE) {
        err = next;
    }
}

/// Volatile, or the compiler leaves out an allocation that nobody uses.
void* volatile lost_block = nullptr;
volatile int lost_descriptor = -1;

void stay_loaded() {
    Dl_info self{};
    if (dladdr(reinterpret_cast<void*>(&stay_loaded), &self) != 0) {
        dlopen(self.dli_fname, RTLD_NOW);
    }
}

enum Parameter {
    kInput,
    kGainId,
    kCountId,
    kInvertId,
    kShadeId,
    kModeId,
    kMischiefId,
    kParamCount
};

/// A suite held for a scope.
template <class Table>
class Suite {
public:
    Suite(const PF_InData* in, const char* name, int version)
        : basic_(in->pica_basicP), name_(name), version_(version) {
        const void* table = nullptr;
        if (basic_->AcquireSuite(name, version, &table) == 0) {
            table_ = static_cast<const Table*>(table);
        }
    }
    ~Suite() {
        if (table_ != nullptr) {
            basic_->ReleaseSuite(name_, version_);
        }
    }
    Suite(const Suite&) = delete;
    Suite& operator=(const Suite&) = delete;
    explicit operator bool() const { return table_ != nullptr; }
    const Table* operator->() const { return table_; }
    const Table* get() const { return table_; }

private:
    SPBasicSuite* basic_;
    const char* name_;
    int version_;
    const Table* table_ = nullptr;
};

struct Instance {
    std::array<double, kFactEnd> facts{};
    int mischief = kNone;
    PF_Handle handle = nullptr;
    const PF_UtilCallbacks* utils = nullptr;
};

void delete_instance(void* data) {
    const std::unique_ptr<Instance> instance(static_cast<Instance*>(data));
    if (instance->handle != nullptr) {
        instance->utils->host_dispose_handle(instance->handle);
    }
    if (instance->mischief == kThrowInDeleter) {
        throw std::runtime_error("deleter trouble");
    }
}

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

PF_Err add_params(PF_InData* in, PF_OutData* out) {
    PF_Err first = PF_Err_NONE;
    const auto add = [in, &first](int id, const char* name, PF_ParamType type, auto fill) {
        PF_ParamDef def;
        std::memset(&def, 0, sizeof def);
        def.uu.id = id;
        def.param_type = type;
        in->utils->ansi.strcpy(def.name, name);
        fill(def.u);
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
    const PF_Err err = add(kMischiefId, "Mischief", PF_Param_POPUP, [](PF_ParamDefUnion& u) {
        u.pd.value = u.pd.dephault = 1;
        u.pd.num_choices = kMischiefEnd - 1;
        u.pd.u.namesptr = kMischiefNames;
    });
    out->num_params = kParamCount + (asked_mischief() == kWrongCount ? 1 : 0);
    return first != PF_Err_NONE ? first : err;
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

PF_Err read_camera(PF_InData* in, Instance& instance) {
    const Suite<AEGP_PFInterfaceSuite1> interface(in, kAEGPPFInterfaceSuite, 1);
    const Suite<AEGP_LayerSuite5> layers(in, kAEGPLayerSuite, 11);
    const Suite<AEGP_ItemSuite6> items(in, kAEGPItemSuite, 10);
    const Suite<AEGP_CompSuite4> comps(in, kAEGPCompSuite, 9);
    const Suite<AEGP_StreamSuite2> streams(in, kAEGPStreamSuite, 7);
    if (!interface || !layers || !items || !comps || !streams) {
        return PF_Err_NONE;
    }
    auto& facts = instance.facts;
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

void tell_in_data(const PF_InData* in, Instance& instance) {
    auto& facts = instance.facts;
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

PF_Err pre_render(PF_InData* in, PF_PreRenderExtra* extra) {
    auto instance = std::make_unique<Instance>();
    instance->utils = in->utils;
    PF_Err first = read_params(in, *instance);
    tell_in_data(in, *instance);
    pass_on(first, read_camera(in, *instance));
    instance->facts[kBitDepth] = extra->input->bitdepth;

    const int mischief = instance->mischief;
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
    instance->handle = in->utils->host_new_handle(1);
    output.pre_render_data = instance.release();
    output.delete_pre_render_data_func = delete_instance;
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
                    : x + 10.0 * y;
            put(first + y * output->rowbytes + x * size, format, red);
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
}

PF_Err render(PF_InData* in, PF_OutData* out, PF_SmartRenderExtra* extra) {
    Instance& instance = *static_cast<Instance*>(extra->input->pre_render_data);
    const int mischief = instance.mischief;
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
    if (mischief == kLeakMemory) {
        lost_block = std::malloc(1);
    }
    if (mischief == kLeakDescriptor) {
        lost_descriptor = dup(STDERR_FILENO);
    }
    if (mischief == kLeakMapping) {
        lost_block = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    }
    if (extra->input->bitdepth == 16 && mischief == kEndProcess) {
        _exit(0);
    }
    if (mischief == kStayLoaded) {
        stay_loaded();
    }
    if (mischief == kCallUnprovided) {
        const Suite<AEGP_LayerSuite5> layers(in, kAEGPLayerSuite, 11);
        layers->AEGP_GetLayerName();
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
            lost_block = std::malloc(1);
        }
        extra->cb->checkin_layer_pixels(in->effect_ref, id);
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
    if (mischief == kLeakHandle) {
        in->utils->host_new_handle(8);
    }
    if (mischief == kDisposeTwice) {
        const PF_Handle handle = in->utils->host_new_handle(8);
        in->utils->host_dispose_handle(handle);
        in->utils->host_dispose_handle(handle);
    }
    err = extra->cb->checkin_layer_pixels(in->effect_ref, id);
    void* const slot = &extra->cb;
    if (mischief == kHandleForCallbacks) {
        const PF_Handle handle = in->utils->host_new_handle(1);
        std::memcpy(slot, &handle, sizeof handle);
    }
    if (mischief == kRubbishForCallbacks) {
        const PF_UtilCallbacks* const rubbish = in->utils;
        std::memcpy(slot, &rubbish, sizeof rubbish);
    }
    if (mischief == kFailWithMessage) {
        out->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
        in->utils->ansi.strcpy(out->return_msg, "no can do");
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    return kConforming ? err : PF_Err{PF_Err_NONE};
}

/// The plain way: alpha full, red from the first slider, through the host's own fill.
PF_Err plain_render(PF_InData* in, PF_ParamDef** params, PF_EffectWorld* output) {
    PF_Pixel16* deep = nullptr;
    // Premiere has no such access.
    const bool asks = !kConforming || in->appl_id != kAppID_Premiere;
    const PF_Err err = asks ? in->utils->get_pixel_data16(output, nullptr, &deep) : PF_Err_NONE;
    if (kConforming && err != PF_Err_NONE) {
        return err;
    }
    if (deep != nullptr) {
        return PF_Err_NONE;
    }
    if (params[kParamCount] != nullptr || params[kInput]->u.ld.width != output->width) {
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    const PF_Pixel colour{255, static_cast<A_u_char>(params[kCountId]->u.sd.value), 60, 70};
    return in->utils->fill(in->effect_ref, &colour, nullptr, output);
}

PF_Err describe_dependencies(PF_InData* in, PF_ExtDependenciesExtra* extra) {
    if (extra->check_type == PF_DepCheckType_MISSING_DEPENDENCIES) {
        return PF_Err_NONE;
    }
    const char text[] = "one font";
    extra->dependencies_strH = in->utils->host_new_handle(sizeof text);
    if (extra->dependencies_strH == nullptr) {
        return PF_Err_OUT_OF_MEMORY;
    }
    std::memcpy(*extra->dependencies_strH, text, sizeof text);
    return PF_Err_NONE;
}

PF_Err global_setup(PF_InData* in, PF_OutData* out) {
    if (asked_mischief() == kLeakAtSetUp) {
        lost_block = std::malloc(1);
    }
    out->my_version = PF_VERSION(9, 3, 1, PF_Stage_RELEASE, 7);
    out->out_flags = PF_OutFlag_DEEP_COLOR_AWARE | PF_OutFlag_I_USE_SHUTTER_ANGLE |
                     PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES;
    out->out_flags2 = PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS | PF_OutFlag2_I_USE_3D_CAMERA |
                      PF_OutFlag2_SUPPORTS_SMART_RENDER | PF_OutFlag2_FLOAT_COLOR_AWARE;
    if (kConforming) {
        // The query may turn it on.
        out->out_flags2 |= PF_OutFlag2_I_USE_3D_LIGHTS;
    }
    if (in->appl_id == kAppID_Premiere) {
        const Suite<PF_PixelFormatSuite1> formats(in, kPFPixelFormatSuite, 1);
        if (!formats) {
            return PF_Err_NONE;
        }
        formats->ClearSupportedPixelFormats(in->effect_ref);
        formats->AddSupportedPixelFormat(in->effect_ref, PF_PixelFormat_BGRA32);
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
            if (asked_mischief() == kLeakInAbout) {
                lost_block = std::malloc(1);
            }
            in->utils->ansi.sprintf(out->return_msg, "%s v%d", "Test effect", 9);
            return PF_Err_NONE;
        case PF_Cmd_GLOBAL_SETUP:
            return global_setup(in, out);
        case PF_Cmd_PARAMS_SETUP:
            return add_params(in, out);
        case PF_Cmd_RENDER:
            return plain_render(in, params, output);
        case PF_Cmd_GET_EXTERNAL_DEPENDENCIES:
            return describe_dependencies(in, static_cast<PF_ExtDependenciesExtra*>(extra));
        case PF_Cmd_QUERY_DYNAMIC_FLAGS:
            out->out_flags2 |= PF_OutFlag2_I_USE_3D_LIGHTS;
            return PF_Err_NONE;
        case PF_Cmd_SMART_PRE_RENDER:
            return pre_render(in, static_cast<PF_PreRenderExtra*>(extra));
        case PF_Cmd_SMART_RENDER:
            return render(in, out, static_cast<PF_SmartRenderExtra*>(extra));
        default:
            return PF_Err_NONE;
    }
}
