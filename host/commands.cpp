#include "callbacks.h"

namespace host {

const char* command_name(PF_Cmd command) {
    switch (command) {
        case PF_Cmd_ABOUT:
            return "PF_Cmd_ABOUT";
        case PF_Cmd_GLOBAL_SETUP:
            return "PF_Cmd_GLOBAL_SETUP";
        case PF_Cmd_GLOBAL_SETDOWN:
            return "PF_Cmd_GLOBAL_SETDOWN";
        case PF_Cmd_PARAMS_SETUP:
            return "PF_Cmd_PARAMS_SETUP";
        case PF_Cmd_SEQUENCE_SETUP:
            return "PF_Cmd_SEQUENCE_SETUP";
        case PF_Cmd_SEQUENCE_SETDOWN:
            return "PF_Cmd_SEQUENCE_SETDOWN";
        case PF_Cmd_FRAME_SETUP:
            return "PF_Cmd_FRAME_SETUP";
        case PF_Cmd_RENDER:
            return "PF_Cmd_RENDER";
        case PF_Cmd_FRAME_SETDOWN:
            return "PF_Cmd_FRAME_SETDOWN";
        case PF_Cmd_GET_EXTERNAL_DEPENDENCIES:
            return "PF_Cmd_GET_EXTERNAL_DEPENDENCIES";
        case PF_Cmd_QUERY_DYNAMIC_FLAGS:
            return "PF_Cmd_QUERY_DYNAMIC_FLAGS";
        case PF_Cmd_SMART_PRE_RENDER:
            return "PF_Cmd_SMART_PRE_RENDER";
        case PF_Cmd_SMART_RENDER:
            return "PF_Cmd_SMART_RENDER";
        default:
            return "a command of another number";
    }
}

}  // namespace host
