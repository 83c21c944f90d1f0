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

namespace {

void check_effect(PF_ProgPtr effect_ref) {
    EXPECT_EQ(effect_ref, handle_of<PF_ProgPtr>(effect_tag)) << "not the effect's reference";
}

// No lambda below: g++ 12 makes no function pointer of one with arguments of any number.
int print(A_char* out, const A_char* format, ...) {
    FakeHost::current().enter("sprintf");
    va_list arguments;
    va_start(arguments, format);
    const int written = std::vsprintf(out, format, arguments);
    va_end(arguments);
    return written;
}

/// Notes a question and answers it unless it is refused.
template <class Value>
PF_Err answer(const std::string& name, const std::string& detail, Value* out, const Value& value) {
    const PF_Err err = FakeHost::current().enter(name, detail);
    if (err == PF_Err_NONE) {
        *out = value;
    }
    return err;
}

}  // namespace

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

bool FakeHost::suites_balanced() const {
    for (const auto& [name, count] : held_suites) {
        if (count != 0) {
            return false;
        }
    }
    return true;
}

PF_Err FakeHost::fill(const char* name, PF_ProgPtr effect_ref, const PF_Pixel* colour,
                      const PF_Rect* area, PF_EffectWorld* world) {
    check_effect(effect_ref);
    EXPECT_EQ(area, nullptr);
    EXPECT_EQ(world, &output_world->world);
    fill_colour = *colour;
    return enter(name);
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

// C functions that find the host by its static pointer.
void FakeHost::fill_tables() {
    basic.AcquireSuite = [](const char* name, int32_t version, const void** table) {
        const std::string key = suite_key(name, version);
        current_->enter("acquire", " " + key);
        if (current_->suites_succeed_with_null) {
            *table = nullptr;
            return SPErr{kSPNoError};
        }
        const auto found = current_->suites_.find(key);
        if (found == current_->suites_.end() || current_->missing_suites.count(name) != 0) {
            return SPErr{kSPSuiteNotFoundError};
        }
        *table = found->second;
        ++current_->held_suites[key];
        return SPErr{kSPNoError};
    };
    basic.ReleaseSuite = [](const char* name, int32_t version) {
        const std::string key = suite_key(name, version);
        current_->enter("release", " " + key);
        --current_->held_suites[key];
        return SPErr{kSPNoError};
    };

    in_data.inter.checkout_param = [](PF_ProgPtr effect_ref, PF_ParamIndex index, A_long time,
                                      A_long time_step, A_u_long time_scale, PF_ParamDef* out) {
        check_effect(effect_ref);
        current_->checkouts.push_back({index, time, time_step, time_scale});
        if (bytes_of(*out).find_first_not_of('\0') != std::string::npos) {
            current_->cleared_records = false;
        }
        return answer("checkout_param", " " + std::to_string(index), out, current_->values[index]);
    };
    in_data.inter.checkin_param = [](PF_ProgPtr effect_ref, PF_ParamDef*) {
        check_effect(effect_ref);
        return current_->enter("checkin_param");
    };
    in_data.inter.add_param = [](PF_ProgPtr effect_ref, PF_ParamIndex index, PF_ParamDef* def) {
        check_effect(effect_ref);
        const PF_Err err = current_->enter("add_param", " " + std::to_string(def->uu.id));
        if (err == PF_Err_NONE) {
            const char* const text = def->param_type == PF_Param_CHECKBOX ? def->u.bd.u.nameptr
                                     : def->param_type == PF_Param_POPUP  ? def->u.pd.u.namesptr
                                                                          : "";
            current_->declared.push_back({index, *def, text, bytes_of(*def)});
        }
        return err;
    };

    utils.ansi.sprintf = ansi_suite_.sprintf = print;
    utils.ansi.strcpy = ansi_suite_.strcpy = [](A_char* to, const A_char* from) {
        current_->enter("strcpy");
        return std::strcpy(to, from);
    };
    utils.fill = [](PF_ProgPtr effect_ref, const PF_Pixel* colour, const PF_Rect* area,
                    PF_EffectWorld* world) {
        return current_->fill("utils fill", effect_ref, colour, area, world);
    };
    fill_suite_.fill = [](PF_ProgPtr effect_ref, const PF_Pixel* colour, const PF_Rect* area,
                          PF_EffectWorld* world) {
        return current_->fill("suite fill", effect_ref, colour, area, world);
    };
    utils.get_pixel_data16 = [](PF_EffectWorld* world, PF_Pixel* pixels, PF_Pixel16** out) {
        EXPECT_EQ(pixels, nullptr);
        const bool deep = (world->world_flags & PF_WorldFlag_DEEP) != 0;
        return answer("get_pixel_data16", "", out,
                      deep ? reinterpret_cast<PF_Pixel16*>(world->data) : nullptr);
    };
    handle_suite_.host_new_handle = [](A_HandleSize bytes) -> PF_Handle {
        if (current_->enter("host_new_handle", " " + std::to_string(bytes)) != PF_Err_NONE) {
            return nullptr;
        }
        // The block's own vector stands behind it, so that a write too many is seen.
        auto* block = new std::vector<char>(bytes, '?');
        current_->blocks_.push_back(block);
        auto* handle = new char*(block->data());
        current_->handles_[handle] = bytes;
        return handle;
    };

    interface_suite_.AEGP_ConvertEffectToCompTime = [](PF_ProgPtr effect_ref, A_long time,
                                                       A_u_long scale, A_Time* out) {
        check_effect(effect_ref);
        return answer("AEGP_ConvertEffectToCompTime",
                      " " + std::to_string(time) + "/" + std::to_string(scale), out,
                      current_->comp_time);
    };
    interface_suite_.AEGP_GetEffectCamera = [](PF_ProgPtr effect_ref, const A_Time* time,
                                               AEGP_LayerH* out) {
        check_effect(effect_ref);
        current_->camera_times.push_back({time->value, time->scale});
        const auto camera = handle_of<AEGP_LayerH>(camera_layer_tag);
        return answer("AEGP_GetEffectCamera", "", out, current_->has_camera ? camera : nullptr);
    };
    interface_suite_.AEGP_GetEffectLayer = [](PF_ProgPtr effect_ref, AEGP_LayerH* out) {
        check_effect(effect_ref);
        return answer("AEGP_GetEffectLayer", "", out, handle_of<AEGP_LayerH>(effect_layer_tag));
    };
    layer_suite_.AEGP_GetLayerParentComp = [](AEGP_LayerH layer, AEGP_CompH* out) {
        return answer("AEGP_GetLayerParentComp", detail_of(layer), out,
                      handle_of<AEGP_CompH>(comp_tag));
    };
    comp_suite_.AEGP_GetItemFromComp = [](AEGP_CompH comp, AEGP_ItemH* out) {
        return answer("AEGP_GetItemFromComp", detail_of(comp), out,
                      handle_of<AEGP_ItemH>(item_tag));
    };
    item_suite_.AEGP_GetItemDimensions = [](AEGP_ItemH item, A_long* width, A_long* height) {
        const A_Err err =
            answer("AEGP_GetItemDimensions", detail_of(item), width, current_->comp_width);
        *height = err == A_Err_NONE ? current_->comp_height : *height;
        return err;
    };
    comp_suite_.AEGP_GetCompShutterFrameRange = [](AEGP_CompH comp, const A_Time* time,
                                                   A_Time* start, A_Time* duration) {
        current_->shutter_times.push_back({time->value, time->scale});
        const A_Err err = answer("AEGP_GetCompShutterFrameRange", detail_of(comp), start,
                                 current_->shutter_start);
        *duration = err == A_Err_NONE ? current_->shutter_duration : *duration;
        return err;
    };
    layer_suite_.AEGP_GetLayerToWorldXform = [](AEGP_LayerH layer, const A_Time* time,
                                                A_Matrix4* out) {
        current_->matrix_times.push_back({time->value, time->scale});
        current_->move_camera(current_->matrix_times.back());
        return answer("AEGP_GetLayerToWorldXform", detail_of(layer), out, current_->camera_matrix);
    };
    stream_suite_.AEGP_GetLayerStreamValue = [](AEGP_LayerH layer, AEGP_LayerStream stream,
                                                AEGP_LTimeMode mode, const A_Time* time,
                                                A_Boolean pre_expression, AEGP_StreamVal* value,
                                                AEGP_StreamType*) {
        EXPECT_EQ(stream, 11) << "the zoom";
        EXPECT_EQ(mode, 1) << "composition time";
        EXPECT_EQ(pre_expression, 0);
        current_->zoom_times.push_back({time->value, time->scale});
        current_->move_camera(current_->zoom_times.back());
        return answer("AEGP_GetLayerStreamValue", detail_of(layer), &value->one_d, current_->zoom);
    };

    world_suite_.PF_GetPixelFormat = [](const PF_EffectWorld* world, PF_PixelFormat* out) {
        const PF_Err err = current_->enter("PF_GetPixelFormat");
        if (err == PF_Err_NONE) {
            EXPECT_EQ(world, &current_->input_world->world) << "the input's depth is asked for";
            *out = current_->input_world->format;
        }
        return err;
    };
    format_suite_.AddSupportedPixelFormat = [](PF_ProgPtr effect_ref, PF_PixelFormat format) {
        check_effect(effect_ref);
        char code[5] = {};
        for (int i = 0; i < 4; ++i) {
            code[i] = static_cast<char>(format >> (8 * i) & 0xFF);
        }
        return current_->enter("AddSupportedPixelFormat", std::string(" ") + code);
    };
    format_suite_.ClearSupportedPixelFormats = [](PF_ProgPtr effect_ref) {
        check_effect(effect_ref);
        return current_->enter("ClearSupportedPixelFormats");
    };

    pre_callbacks.checkout_layer = [](PF_ProgPtr effect_ref, PF_ParamIndex index,
                                      A_long checkout_id, const PF_RenderRequest* request,
                                      A_long time, A_long time_step, A_u_long time_scale,
                                      PF_CheckoutResult* out) {
        check_effect(effect_ref);
        current_->layer_request = *request;
        const std::string detail = " " + std::to_string(index) + " " + std::to_string(checkout_id) +
                                   " at " + std::to_string(time) + " step " +
                                   std::to_string(time_step) + " scale " +
                                   std::to_string(time_scale);
        return answer("checkout_layer", detail, out, current_->checkout_result);
    };
    render_callbacks.checkout_layer_pixels = [](PF_ProgPtr effect_ref, A_long id,
                                                PF_EffectWorld** out) {
        check_effect(effect_ref);
        return answer("checkout_layer_pixels", " " + std::to_string(id), out,
                      &current_->input_world->world);
    };
    render_callbacks.checkin_layer_pixels = [](PF_ProgPtr effect_ref, A_long id) {
        check_effect(effect_ref);
        return current_->enter("checkin_layer_pixels", " " + std::to_string(id));
    };
    render_callbacks.checkout_output = [](PF_ProgPtr effect_ref, PF_EffectWorld** out) {
        check_effect(effect_ref);
        const PF_Err err = current_->enter("checkout_output");
        PF_EffectWorld* const given =
            current_->output_world == nullptr ? nullptr : &current_->output_world->world;
        *out = err == PF_Err_NONE ? given : current_->leftover_output;
        return err;
    };

    // Names and versions as hosts publish them, written out here a second time on purpose.
    suites_ = {
        {"PF Handle Suite 2", &handle_suite_},   {"PF ANSI Suite 1", &ansi_suite_},
        {"PF Fill Matte Suite 2", &fill_suite_}, {"AEGP PF Interface Suite 1", &interface_suite_},
        {"AEGP Layer Suite 11", &layer_suite_},  {"AEGP Item Suite 10", &item_suite_},
        {"AEGP Comp Suite 9", &comp_suite_},     {"AEGP Stream Suite 7", &stream_suite_},
        {"PF World Suite 2", &world_suite_},     {"PF Pixel Format Suite 1", &format_suite_}};
}
