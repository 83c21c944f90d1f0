#include "fake_host.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

int bytes_per_pixel(PF_PixelFormat format) {
    switch (format) {
        case PF_PixelFormat_ARGB64:
            return 8;
        case PF_PixelFormat_ARGB128:
            return 16;
        default:
            return 4;
    }
}

std::string bytes_of(const PF_ParamDef& def) {
    return {reinterpret_cast<const char*>(&def), sizeof def};
}

std::string suite_key(const char* name, int version) {
    return std::string(name) + " " + std::to_string(version);
}

// The host's objects are addresses and nothing more.
char effect_tag, effect_layer_tag, camera_layer_tag, comp_tag, item_tag;

template <class Handle>
Handle handle_of(char& tag) {
    return reinterpret_cast<Handle>(&tag);
}

template <class Handle>
std::string detail_of(Handle handle) {
    if (handle == nullptr) {
        return " null";
    }
    const char* tag = reinterpret_cast<const char*>(handle);
    return tag == &effect_layer_tag   ? " effect layer"
           : tag == &camera_layer_tag ? " camera layer"
           : tag == &comp_tag         ? " comp"
           : tag == &item_tag         ? " item"
                                      : " stranger";
}

}  // namespace

FakeHost* FakeHost::current_ = nullptr;

FakeWorld::FakeWorld(int width, int height, PF_PixelFormat world_format, int row_padding)
    : format(world_format), pixel_bytes_(bytes_per_pixel(world_format)) {
    world.width = width;
    world.height = height;
    world.rowbytes = width * pixel_bytes_ + row_padding;
    world.world_flags = world_format == PF_PixelFormat_ARGB64 ? PF_WorldFlag_DEEP : 0;
    bytes_.assign(static_cast<size_t>(world.rowbytes) * height + 16, kMark);
    world.data = reinterpret_cast<PF_Pixel*>(bytes_.data());
}

template <class Pixel>
Pixel FakeWorld::at(int x, int y) const {
    EXPECT_EQ(sizeof(Pixel), static_cast<size_t>(pixel_bytes_));
    Pixel pixel;
    std::memcpy(&pixel, bytes_.data() + static_cast<size_t>(y) * world.rowbytes + x * sizeof pixel,
                sizeof pixel);
    return pixel;
}
template PF_Pixel FakeWorld::at(int, int) const;
template PF_Pixel16 FakeWorld::at(int, int) const;
template PF_PixelFloat FakeWorld::at(int, int) const;

bool FakeWorld::untouched() const {
    for (const unsigned char byte : bytes_) {
        if (byte != kMark) {
            return false;
        }
    }
    return true;
}

bool FakeWorld::margins_intact() const {
    const size_t stride = world.rowbytes;
    const size_t used = static_cast<size_t>(world.width) * pixel_bytes_;
    for (size_t i = 0; i < bytes_.size(); ++i) {
        const bool in_a_row = i < stride * world.height && i % stride < used;
        if (!in_a_row && bytes_[i] != kMark) {
            return false;
        }
    }
    return true;
}

/// The functions behind the tables: C functions that find the host by its static pointer.
struct FakeCallbacks {
    static FakeHost& host() { return FakeHost::current(); }
    static FakeHost::Time copy(const A_Time& time) { return {time.value, time.scale}; }
    /// Writes the answer to a question unless it fails.
    template <class Value>
    static PF_Err answer(PF_Err err, Value* out, const Value& value) {
        if (err == PF_Err_NONE) {
            *out = value;
        }
        return err;
    }
    static void check_effect(PF_ProgPtr effect_ref) {
        EXPECT_EQ(effect_ref, handle_of<PF_ProgPtr>(effect_tag)) << "not the effect's reference";
    }

    static SPErr AcquireSuite(const char* name, int32_t version, const void** table) {
        const std::string key = suite_key(name, version);
        host().enter("acquire", " " + key);
        if (host().suites_succeed_with_null) {
            *table = nullptr;
            return kSPNoError;
        }
        const auto found = host().suites_.find(key);
        if (found == host().suites_.end() || host().missing_suites.count(name) != 0) {
            return kSPSuiteNotFoundError;
        }
        *table = found->second;
        ++host().held_suites[key];
        return kSPNoError;
    }
    static SPErr ReleaseSuite(const char* name, int32_t version) {
        const std::string key = suite_key(name, version);
        host().enter("release", " " + key);
        --host().held_suites[key];
        return kSPNoError;
    }

    static PF_Err checkout_param(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long time,
                                 A_long time_step, A_u_long time_scale, PF_ParamDef* out) {
        check_effect(effect_ref);
        const PF_Err err = host().enter("checkout_param", " " + std::to_string(index));
        host().checkouts.push_back({index, time, time_step, time_scale});
        const std::string bytes = bytes_of(*out);
        host().cleared_records =
            host().cleared_records && bytes.find_first_not_of('\0') == std::string::npos;
        if (err == PF_Err_NONE) {
            *out = host().values[index];
        }
        return err;
    }
    static PF_Err checkin_param(PF_ProgPtr effect_ref, PF_ParamDef*) {
        check_effect(effect_ref);
        return host().enter("checkin_param");
    }
    static PF_Err add_param(PF_ProgPtr effect_ref, PF_ParamIndex index, PF_ParamDef* def) {
        check_effect(effect_ref);
        const PF_Err err = host().enter("add_param", " " + std::to_string(def->uu.id));
        if (err == PF_Err_NONE) {
            FakeHost::Declared declared = {index, *def, "", bytes_of(*def)};
            if (def->param_type == PF_Param_CHECKBOX) {
                declared.text = def->u.bd.u.nameptr;
            } else if (def->param_type == PF_Param_POPUP) {
                declared.text = def->u.pd.u.namesptr;
            }
            host().declared.push_back(declared);
        }
        return err;
    }

    static int sprintf(A_char* out, const A_char* format, ...) {
        host().enter("sprintf");
        va_list arguments;
        va_start(arguments, format);
        const int written = std::vsprintf(out, format, arguments);
        va_end(arguments);
        return written;
    }
    static A_char* strcpy(A_char* to, const A_char* from) {
        host().enter("strcpy");
        return std::strcpy(to, from);
    }

    static PF_Err fill(PF_ProgPtr effect_ref, const char* name, const PF_Pixel* colour,
                       const PF_Rect* area, PF_EffectWorld* world) {
        check_effect(effect_ref);
        EXPECT_EQ(area, nullptr);
        EXPECT_EQ(world, &host().output_world->world);
        host().fill_colour = *colour;
        return host().enter(name);
    }
    static PF_Err utils_fill(PF_ProgPtr effect_ref, const PF_Pixel* colour, const PF_Rect* area,
                             PF_EffectWorld* world) {
        return fill(effect_ref, "utils fill", colour, area, world);
    }
    static PF_Err suite_fill(PF_ProgPtr effect_ref, const PF_Pixel* colour, const PF_Rect* area,
                             PF_EffectWorld* world) {
        return fill(effect_ref, "suite fill", colour, area, world);
    }
    static PF_Err get_pixel_data16(PF_EffectWorld* world, PF_Pixel* pixels, PF_Pixel16** out) {
        EXPECT_EQ(pixels, nullptr);
        const PF_Err err = host().enter("get_pixel_data16");
        if (err == PF_Err_NONE) {
            const bool deep = (world->world_flags & PF_WorldFlag_DEEP) != 0;
            *out = deep ? reinterpret_cast<PF_Pixel16*>(world->data) : nullptr;
        }
        return err;
    }

    static PF_Handle host_new_handle(A_HandleSize bytes) {
        if (host().enter("host_new_handle", " " + std::to_string(bytes)) != PF_Err_NONE) {
            return nullptr;
        }
        // The block's own vector stands behind it, so that a write too many is seen.
        auto* block = new std::vector<char>(bytes, '?');
        host().blocks_.push_back(block);
        auto* handle = new char*(block->data());
        host().handles_[handle] = bytes;
        return handle;
    }

    static A_Err AEGP_ConvertEffectToCompTime(PF_ProgPtr effect_ref, A_long time, A_u_long scale,
                                              A_Time* out) {
        check_effect(effect_ref);
        return answer(host().enter("AEGP_ConvertEffectToCompTime",
                                   " " + std::to_string(time) + "/" + std::to_string(scale)),
                      out, host().comp_time);
    }
    static A_Err AEGP_GetEffectCamera(PF_ProgPtr effect_ref, const A_Time* time, AEGP_LayerH* out) {
        check_effect(effect_ref);
        const A_Err err = host().enter("AEGP_GetEffectCamera");
        host().camera_times.push_back(copy(*time));
        if (err == A_Err_NONE) {
            *out = host().has_camera ? handle_of<AEGP_LayerH>(camera_layer_tag) : nullptr;
        }
        return err;
    }
    static A_Err AEGP_GetEffectLayer(PF_ProgPtr effect_ref, AEGP_LayerH* out) {
        check_effect(effect_ref);
        return answer(host().enter("AEGP_GetEffectLayer"), out,
                      handle_of<AEGP_LayerH>(effect_layer_tag));
    }
    static A_Err AEGP_GetLayerParentComp(AEGP_LayerH layer, AEGP_CompH* out) {
        return answer(host().enter("AEGP_GetLayerParentComp", detail_of(layer)), out,
                      handle_of<AEGP_CompH>(comp_tag));
    }
    static A_Err AEGP_GetItemFromComp(AEGP_CompH comp, AEGP_ItemH* out) {
        return answer(host().enter("AEGP_GetItemFromComp", detail_of(comp)), out,
                      handle_of<AEGP_ItemH>(item_tag));
    }
    static A_Err AEGP_GetItemDimensions(AEGP_ItemH item, A_long* width, A_long* height) {
        const A_Err err = host().enter("AEGP_GetItemDimensions", detail_of(item));
        if (err == A_Err_NONE) {
            *width = host().comp_width;
            *height = host().comp_height;
        }
        return err;
    }
    static A_Err AEGP_GetCompShutterFrameRange(AEGP_CompH comp, const A_Time* time, A_Time* start,
                                               A_Time* duration) {
        const A_Err err = host().enter("AEGP_GetCompShutterFrameRange", detail_of(comp));
        host().shutter_times.push_back(copy(*time));
        if (err == A_Err_NONE) {
            *start = host().shutter_start;
            *duration = host().shutter_duration;
        }
        return err;
    }
    static A_Err AEGP_GetLayerToWorldXform(AEGP_LayerH layer, const A_Time* time, A_Matrix4* out) {
        const A_Err err = host().enter("AEGP_GetLayerToWorldXform", detail_of(layer));
        host().matrix_times.push_back(copy(*time));
        if (err == A_Err_NONE) {
            host().place_camera(copy(*time));
            *out = host().camera_matrix;
        }
        return err;
    }
    static A_Err AEGP_GetLayerStreamValue(AEGP_LayerH layer, AEGP_LayerStream stream,
                                          AEGP_LTimeMode mode, const A_Time* time,
                                          A_Boolean pre_expression, AEGP_StreamVal* value,
                                          AEGP_StreamType*) {
        EXPECT_EQ(stream, 11) << "the zoom";
        EXPECT_EQ(mode, 1) << "composition time";
        EXPECT_EQ(pre_expression, 0);
        const A_Err err = host().enter("AEGP_GetLayerStreamValue", detail_of(layer));
        host().zoom_times.push_back(copy(*time));
        if (err == A_Err_NONE) {
            host().place_camera(copy(*time));
            value->one_d = host().zoom;
        }
        return err;
    }

    static PF_Err PF_GetPixelFormat(const PF_EffectWorld* world, PF_PixelFormat* out) {
        const PF_Err err = host().enter("PF_GetPixelFormat");
        if (err == PF_Err_NONE) {
            EXPECT_EQ(world, &host().input_world->world) << "the input's depth is asked for";
            *out = host().input_world->format;
        }
        return err;
    }
    static PF_Err AddSupportedPixelFormat(PF_ProgPtr effect_ref, PF_PixelFormat format) {
        check_effect(effect_ref);
        char code[5] = {};
        for (int i = 0; i < 4; ++i) {
            code[i] = static_cast<char>(format >> (8 * i) & 0xFF);
        }
        return host().enter("AddSupportedPixelFormat", std::string(" ") + code);
    }
    static PF_Err ClearSupportedPixelFormats(PF_ProgPtr effect_ref) {
        check_effect(effect_ref);
        return host().enter("ClearSupportedPixelFormats");
    }

    static PF_Err checkout_layer(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long checkout_id,
                                 const PF_RenderRequest* request, A_long time, A_long time_step,
                                 A_u_long time_scale, PF_CheckoutResult* out) {
        check_effect(effect_ref);
        const PF_Err err =
            host().enter("checkout_layer",
                         " " + std::to_string(index) + " " + std::to_string(checkout_id) + " at " +
                             std::to_string(time) + " step " + std::to_string(time_step) +
                             " scale " + std::to_string(time_scale));
        host().layer_request = *request;
        if (err == PF_Err_NONE) {
            *out = host().checkout_result;
        }
        return err;
    }
    static PF_Err checkout_layer_pixels(PF_ProgPtr effect_ref, A_long id, PF_EffectWorld** out) {
        check_effect(effect_ref);
        const PF_Err err = host().enter("checkout_layer_pixels", " " + std::to_string(id));
        if (err == PF_Err_NONE) {
            *out = &host().input_world->world;
        }
        return err;
    }
    static PF_Err checkin_layer_pixels(PF_ProgPtr effect_ref, A_long id) {
        check_effect(effect_ref);
        return host().enter("checkin_layer_pixels", " " + std::to_string(id));
    }
    static PF_Err checkout_output(PF_ProgPtr effect_ref, PF_EffectWorld** out) {
        check_effect(effect_ref);
        const PF_Err err = host().enter("checkout_output");
        if (err != PF_Err_NONE) {
            *out = host().leftover_output;
        } else {
            *out = host().output_world == nullptr ? nullptr : &host().output_world->world;
        }
        return err;
    }
};

FakeHost::FakeHost() {
    EXPECT_EQ(current_, nullptr) << "one host at a time";
    current_ = this;
    fill_tables();
    in_data.utils = &utils;
    in_data.pica_basicP = &basic;
    in_data.effect_ref = handle_of<PF_ProgPtr>(effect_tag);
    in_data.appl_id = kAppID_AfterEffects;
    in_data.current_time = 100;
    in_data.time_step = 50;
    in_data.time_scale = 1200;
    in_data.num_params = 17;
}

FakeHost::~FakeHost() {
    for (const auto& [handle, size] : handles_) {
        delete handle;
    }
    for (std::vector<char>* block : blocks_) {
        delete block;
    }
    current_ = nullptr;
}

PF_Err FakeHost::enter(const std::string& name, const std::string& detail) {
    log.push_back(name + detail);
    const int call = ++calls_[name];
    const auto failure = failures.find(name);
    return failure != failures.end() && call >= failure->second.from_call ? failure->second.status
                                                                          : PF_Err_NONE;
}

void FakeHost::place_camera(const Time& time) {
    if (move_camera) {
        move_camera(time);
    }
}

bool FakeHost::suites_balanced() const {
    for (const auto& [name, count] : held_suites) {
        if (count != 0) {
            return false;
        }
    }
    return true;
}

void FakeHost::set_default_values() {
    const auto number = [this](PF_ParamIndex id, double value) { values[id].u.fs_d.value = value; };
    number(1, 5.0);
    number(2, 1.0);
    number(3, 0.4000000059604645);
    number(4, 0.0);
    values[5].u.cd.value = {255, 128, 128, 128};
    number(6, 0.5);
    number(7, 9.999999747378752e-05);
    number(8, 2.5);
    number(9, 1.0);
    values[10].u.sd.value = 1;
    values[11].u.pd.value = 0;
    values[12].u.bd.value = 1;
    number(13, 100.0);
    values[14].u.pd.value = 1;
    values[15].u.bd.value = 0;
    values[16].u.pd.value = 0;
}

void FakeHost::fill_tables() {
    using C = FakeCallbacks;
    basic.AcquireSuite = C::AcquireSuite;
    basic.ReleaseSuite = C::ReleaseSuite;
    in_data.inter.checkout_param = C::checkout_param;
    in_data.inter.checkin_param = C::checkin_param;
    in_data.inter.add_param = C::add_param;
    utils.ansi.sprintf = C::sprintf;
    utils.ansi.strcpy = C::strcpy;
    utils.fill = C::utils_fill;
    utils.get_pixel_data16 = C::get_pixel_data16;
    pre_callbacks.checkout_layer = C::checkout_layer;
    render_callbacks.checkout_layer_pixels = C::checkout_layer_pixels;
    render_callbacks.checkin_layer_pixels = C::checkin_layer_pixels;
    render_callbacks.checkout_output = C::checkout_output;

    handle_suite_.host_new_handle = C::host_new_handle;
    ansi_suite_.sprintf = C::sprintf;
    ansi_suite_.strcpy = C::strcpy;
    fill_suite_.fill = C::suite_fill;
    interface_suite_.AEGP_ConvertEffectToCompTime = C::AEGP_ConvertEffectToCompTime;
    interface_suite_.AEGP_GetEffectCamera = C::AEGP_GetEffectCamera;
    interface_suite_.AEGP_GetEffectLayer = C::AEGP_GetEffectLayer;
    layer_suite_.AEGP_GetLayerParentComp = C::AEGP_GetLayerParentComp;
    layer_suite_.AEGP_GetLayerToWorldXform = C::AEGP_GetLayerToWorldXform;
    item_suite_.AEGP_GetItemDimensions = C::AEGP_GetItemDimensions;
    comp_suite_.AEGP_GetItemFromComp = C::AEGP_GetItemFromComp;
    comp_suite_.AEGP_GetCompShutterFrameRange = C::AEGP_GetCompShutterFrameRange;
    stream_suite_.AEGP_GetLayerStreamValue = C::AEGP_GetLayerStreamValue;
    world_suite_.PF_GetPixelFormat = C::PF_GetPixelFormat;
    format_suite_.AddSupportedPixelFormat = C::AddSupportedPixelFormat;
    format_suite_.ClearSupportedPixelFormats = C::ClearSupportedPixelFormats;

    // Names and versions as hosts publish them, written out here a second time on purpose.
    suites_ = {
        {"PF Handle Suite 2", &handle_suite_},   {"PF ANSI Suite 1", &ansi_suite_},
        {"PF Fill Matte Suite 2", &fill_suite_}, {"AEGP PF Interface Suite 1", &interface_suite_},
        {"AEGP Layer Suite 11", &layer_suite_},  {"AEGP Item Suite 10", &item_suite_},
        {"AEGP Comp Suite 9", &comp_suite_},     {"AEGP Stream Suite 7", &stream_suite_},
        {"PF World Suite 2", &world_suite_},     {"PF Pixel Format Suite 1", &format_suite_}};
}
