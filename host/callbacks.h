// The host's callback tables, and what they share.
#pragma once

#include <base/printf_format.h>
#include <host/world.h>
#include <host_api/effect_interface.h>

namespace host {

/// "PF_Cmd_GLOBAL_SETUP" and so on.
const char* command_name(PF_Cmd command);

/// Parameters and progress.
PF_InteractCallbacks interact_callbacks();
/// Fills, pixel access, handles, text.
PF_UtilCallbacks util_callbacks();
/// Layers at pre-render.
PF_PreRenderCallbacks* pre_render_callbacks();
/// Pixels at render.
PF_SmartRenderCallbacks* smart_render_callbacks();

// Functions that stand in several tables.
PF_Err fill_world(PF_ProgPtr effect_ref, const PF_Pixel* colour, const PF_Rect* area,
                  PF_EffectWorld* world);
PF_Handle new_handle(A_HandleSize bytes);
void* lock_handle(PF_Handle handle);
void unlock_handle(PF_Handle handle);
void dispose_handle(PF_Handle handle);
A_HandleSize handle_size(PF_Handle handle);
PF_Err resize_handle(A_HandleSize bytes, PF_Handle* handle);
int format_text(A_char* out, const A_char* format, ...) PRINTF_FORMAT(2, 3);
A_char* copy_text(A_char* to, const A_char* from);

}  // namespace host
