// An effect whose set-up goes wrong in the way that SET_UP_FAULT in the environment names.
#include <host_api/effect_interface.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

PF_Err add(PF_InData* in, PF_ParamIndex index, PF_ParamType type, const char* name,
           bool null_text) {
    PF_ParamDef def;
    std::memset(&def, 0, sizeof def);
    def.param_type = type;
    std::memcpy(def.name, name, std::min(std::strlen(name) + 1, sizeof def.name));
    if (type == PF_Param_CHECKBOX) {
        def.u.bd.u.nameptr = null_text ? nullptr : "";
    }
    return in->inter.add_param(in->effect_ref, index, &def);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) PF_Err EntryPointFunc(PF_Cmd cmd, PF_InData* in,
                                                                        PF_OutData* out,
                                                                        PF_ParamDef*[],
                                                                        PF_LayerDef*, void*) {
    const char* const variable = std::getenv("SET_UP_FAULT");
    const std::string fault = variable != nullptr ? variable : "";
    if (cmd == PF_Cmd_GLOBAL_SETUP) {
        if (fault == "throw") {
            throw std::logic_error("no globals");
        }
        if (fault == "refuse holding a suite") {
            const void* table = nullptr;
            in->pica_basicP->AcquireSuite(kPFHandleSuite, kPFHandleSuiteVersion1, &table);
            return PF_Err_OUT_OF_MEMORY;
        }
        if (fault == "refuse") {
            out->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
            std::strcpy(out->return_msg, "not today");
            return PF_Err_INTERNAL_STRUCT_DAMAGED;
        }
        if (fault == "refuse silently") {
            return PF_Err_OUT_OF_MEMORY;
        }
        if (fault == "warn") {
            out->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
            std::strcpy(out->return_msg, "something is missing");
        }
        if (fault == "overrun") {
            char* const record = reinterpret_cast<char*>(out);
            record[sizeof *out + 3] = 1;
        }
        if (fault == "parameter too early") {
            add(in, -1, PF_Param_CHECKBOX, "Early", false);
        }
    }
    if (cmd == PF_Cmd_PARAMS_SETUP) {
        out->num_params = 2;
        if (fault == "parameters refused") {
            return PF_Err_INTERNAL_STRUCT_DAMAGED;
        }
        if (fault == "inserted") {
            return add(in, 0, PF_Param_CHECKBOX, "Box", false);
        }
        const char long_name[] = "A name of more than thirty-one letters";
        add(in, -1, PF_Param_CHECKBOX, fault == "long name" ? long_name : "Box",
            fault == "null label");
        if (fault == "wrong count") {
            out->num_params = 5;
        }
    }
    if (cmd == PF_Cmd_GLOBAL_SETDOWN && fault == "throw at the end") {
        throw std::runtime_error("late trouble");
    }
    if (cmd == PF_Cmd_SEQUENCE_SETUP && fault == "sequence suite") {
        const void* table = nullptr;
        in->pica_basicP->AcquireSuite(kPFHandleSuite, kPFHandleSuiteVersion1, &table);
    }
    return PF_Err_NONE;
}
