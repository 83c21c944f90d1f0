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
        if (state.world_of(world) == nullptr || format_out == nullptr) {
            return state.refuse("PF_GetPixelFormat", kNotHandedOut);
        }
        *format_out = state.frame->pixel_format;
        return PF_Err_NONE;
    });
}

/// Pixel formats are declared at global set-up and at no other time.
void expect_set_up(HostState& state, const char* name) {
    if (state.command != PF_Cmd_GLOBAL_SETUP) {
        state.violation(Rule::Calls, std::string(name) + ": outside global set-up");
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
    UNPROVIDED("PF ANSI Suite 1", atan, atan2, ceil, cos, exp, fabs, floor, fmod, hypot, log, log10,
               pow, sin, sqrt, tan),
    .sprintf = format_text,
    .strcpy = copy_text,
    UNPROVIDED("PF ANSI Suite 1", asin, acos),
};

const PF_FillMatteSuite2 fill_matte_suite = {
    .fill = fill_world,
    UNPROVIDED("PF Fill Matte Suite 2", fill16, fill_float, premultiply, premultiply_color,
               premultiply_color16, premultiply_color_float),
};

const PF_WorldSuite2 world_suite = {
    UNPROVIDED("PF World Suite 2", PF_NewWorld, PF_DisposeWorld),
    .PF_GetPixelFormat = get_pixel_format,
};

const PF_PixelFormatSuite1 pixel_format_suite = {
    .AddSupportedPixelFormat = add_supported_pixel_format,
    .ClearSupportedPixelFormats = clear_supported_pixel_formats,
    UNPROVIDED("PF Pixel Format Suite 1", NewWorldOfPixelFormat, DisposeWorld, GetPixelFormat,
               GetBlackForPixelFormat, GetWhiteForPixelFormat, ConvertColorToPixelFormattedData),
};

}  // namespace

std::span<const OfferedSuite> pf_suites() {
    static constexpr OfferedSuite kSuites[] = {
        {kPFHandleSuite, &handle_suite, kPFHandleSuiteVersion1, true, true},
        {kPFANSISuite, &ansi_suite, kPFANSISuiteVersion1, true, true},
        {kPFFillMatteSuite, &fill_matte_suite, kPFFillMatteSuiteVersion2, true, false},
        {kPFWorldSuite, &world_suite, kPFWorldSuiteVersion2, true, false},
        // After Effects has another version of this suite.
        {kPFPixelFormatSuite, &pixel_format_suite, kPFPixelFormatSuiteVersion1, false, true},
    };
    return kSuites;
}

}  // namespace host
