// The PF suites.
#include <string>

#include "callbacks.h"
#include "host_state.h"
#include "suites.h"
#include "unprovided.h"

namespace host {
namespace {

PF_Err get_pixel_format(const PF_EffectWorld* world, PF_PixelFormat* format_out) {
    return answer_call("PF_GetPixelFormat", "", [&](HostState& state) -> PF_Err {
        const FrameState* const frame = state.frame;
        const bool known = frame != nullptr && frame->rendering && world != nullptr &&
                           (world == &frame->output_record || world == &frame->input_record);
        if (!known || format_out == nullptr) {
            state.violation("PF_GetPixelFormat: null, or a world that this host did not hand out");
            return PF_Err_BAD_CALLBACK_PARAM;
        }
        *format_out = frame->pixel_format;
        return PF_Err_NONE;
    });
}

/// Pixel formats are declared at global set-up and at no other time.
void expect_set_up(HostState& state, const char* name) {
    if (state.command != PF_Cmd_GLOBAL_SETUP) {
        state.violation(std::string(name) + ": outside global set-up");
    }
}

PF_Err add_supported_pixel_format(PF_ProgPtr effect_ref, PF_PixelFormat format) {
    return answer_effect_call("AddSupportedPixelFormat", effect_ref,
                              "format=" + std::to_string(format), [&](HostState& state) -> PF_Err {
                                  expect_set_up(state, "AddSupportedPixelFormat");
                                  state.pixel_formats.push_back(format);
                                  return PF_Err_NONE;
                              });
}

PF_Err clear_supported_pixel_formats(PF_ProgPtr effect_ref) {
    return answer_effect_call("ClearSupportedPixelFormats", effect_ref, "",
                              [&](HostState& state) -> PF_Err {
                                  expect_set_up(state, "ClearSupportedPixelFormats");
                                  state.pixel_formats.clear();
                                  return PF_Err_NONE;
                              });
}

const PF_HandleSuite1 handle_suite = {
    .host_new_handle = new_handle,
    .host_lock_handle = lock_handle,
    .host_unlock_handle = unlock_handle,
    .host_dispose_handle = dispose_handle,
    .host_get_handle_size = handle_size,
    .host_resize_handle = resize_handle,
};

const PF_ANSICallbacksSuite1 ansi_suite = {
    UNPROVIDED("PF ANSI Suite 1", atan),
    UNPROVIDED("PF ANSI Suite 1", atan2),
    UNPROVIDED("PF ANSI Suite 1", ceil),
    UNPROVIDED("PF ANSI Suite 1", cos),
    UNPROVIDED("PF ANSI Suite 1", exp),
    UNPROVIDED("PF ANSI Suite 1", fabs),
    UNPROVIDED("PF ANSI Suite 1", floor),
    UNPROVIDED("PF ANSI Suite 1", fmod),
    UNPROVIDED("PF ANSI Suite 1", hypot),
    UNPROVIDED("PF ANSI Suite 1", log),
    UNPROVIDED("PF ANSI Suite 1", log10),
    UNPROVIDED("PF ANSI Suite 1", pow),
    UNPROVIDED("PF ANSI Suite 1", sin),
    UNPROVIDED("PF ANSI Suite 1", sqrt),
    UNPROVIDED("PF ANSI Suite 1", tan),
    .sprintf = format_text,
    .strcpy = copy_text,
    UNPROVIDED("PF ANSI Suite 1", asin),
    UNPROVIDED("PF ANSI Suite 1", acos),
};

const PF_FillMatteSuite2 fill_matte_suite = {
    .fill = fill_world,
    UNPROVIDED("PF Fill Matte Suite 2", fill16),
    UNPROVIDED("PF Fill Matte Suite 2", fill_float),
    UNPROVIDED("PF Fill Matte Suite 2", premultiply),
    UNPROVIDED("PF Fill Matte Suite 2", premultiply_color),
    UNPROVIDED("PF Fill Matte Suite 2", premultiply_color16),
    UNPROVIDED("PF Fill Matte Suite 2", premultiply_color_float),
};

const PF_WorldSuite2 world_suite = {
    UNPROVIDED("PF World Suite 2", PF_NewWorld),
    UNPROVIDED("PF World Suite 2", PF_DisposeWorld),
    .PF_GetPixelFormat = get_pixel_format,
};

const PF_PixelFormatSuite1 pixel_format_suite = {
    .AddSupportedPixelFormat = add_supported_pixel_format,
    .ClearSupportedPixelFormats = clear_supported_pixel_formats,
    UNPROVIDED("PF Pixel Format Suite 1", NewWorldOfPixelFormat),
    UNPROVIDED("PF Pixel Format Suite 1", DisposeWorld),
    UNPROVIDED("PF Pixel Format Suite 1", GetPixelFormat),
    UNPROVIDED("PF Pixel Format Suite 1", GetBlackForPixelFormat),
    UNPROVIDED("PF Pixel Format Suite 1", GetWhiteForPixelFormat),
    UNPROVIDED("PF Pixel Format Suite 1", ConvertColorToPixelFormattedData),
};

}  // namespace

const void* find_pf_suite(std::string_view name, int version) {
    if (name == kPFHandleSuite && version == kPFHandleSuiteVersion1) {
        return &handle_suite;
    }
    if (name == kPFANSISuite && version == kPFANSISuiteVersion1) {
        return &ansi_suite;
    }
    if (name == kPFFillMatteSuite && version == kPFFillMatteSuiteVersion2) {
        return &fill_matte_suite;
    }
    if (name == kPFWorldSuite && version == kPFWorldSuiteVersion2) {
        return &world_suite;
    }
    if (name == kPFPixelFormatSuite && version == kPFPixelFormatSuiteVersion1) {
        return &pixel_format_suite;
    }
    return nullptr;
}

}  // namespace host
