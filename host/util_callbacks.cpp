// The utility callbacks: fills and pixel access, handles, text.
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "callbacks.h"
#include "host_state.h"
#include "unprovided.h"

namespace host {
namespace {

/// The first pixel of a world if it has the depth asked for. `interpreted` stands in for the
/// world's own data when given.
template <class Pixel>
PF_Err pixel_data(const char* name, Depth depth, PF_EffectWorld* record, PF_Pixel* interpreted,
                  Pixel** pixels_out) {
    return answer_call(name, "", [&](HostState& state) -> PF_Err {
        const World* const world = state.world_of(record);
        if (world == nullptr || pixels_out == nullptr) {
            return state.refuse(name, kNotHandedOut);
        }
        void* const first = interpreted != nullptr ? interpreted : record->data;
        *pixels_out = world->depth() == depth ? static_cast<Pixel*>(first) : nullptr;
        return PF_Err_NONE;
    });
}

PF_Err get_pixel_data8(PF_EffectWorld* world, PF_Pixel* pixels, PF_Pixel** pixels_out) {
    return pixel_data("get_pixel_data8", Depth::Bits8, world, pixels, pixels_out);
}

PF_Err get_pixel_data16(PF_EffectWorld* world, PF_Pixel* pixels, PF_Pixel16** pixels_out) {
    const HostState* const state = HostState::current();
    if (state != nullptr && state->premiere()) {
        return answer_call("get_pixel_data16", "",
                           [](HostState&) { return PF_Err_INVALID_CALLBACK; });
    }
    return pixel_data("get_pixel_data16", Depth::Bits16, world, pixels, pixels_out);
}

/// Bytes from `to` to the end of the running command's message buffer; 0 when it lies elsewhere.
std::size_t message_room(const A_char* to) {
    HostState* const state = HostState::current();
    if (state == nullptr) {
        return 0;
    }
    const A_char* const begin = state->out().return_msg;
    const A_char* const end = begin + sizeof state->out().return_msg;
    const bool inside = std::less_equal<>()(begin, to) && std::less<>()(to, end);
    return inside ? static_cast<std::size_t>(end - to) : 0;
}

/// Records a text function; true when it is to fail.
bool note_text(const char* name, const A_char* to) {
    HostState* const state = HostState::called();
    return state != nullptr &&
           state->note(name, message_room(to) != 0 ? "to=return_msg" : "").has_value();
}

void note_cut(const char* name) {
    if (HostState* const state = HostState::current()) {
        state->violation(Rule::Messages,
                         std::string(name) + ": the text for return_msg is longer than it");
    }
}

/// The running session; null if the handle is not its own or the filter makes the call fail.
HostState* handle_owner(const char* name, PF_Handle handle, bool can_fail) {
    HostState* const state = HostState::called();
    if (state == nullptr) {
        return nullptr;
    }
    if (state->note(name, "") && can_fail) {
        return nullptr;
    }
    if (!state->handles.owns(handle)) {
        state->refuse(name, "not a handle of this host, or disposed of already");
        return nullptr;
    }
    return state;
}

}  // namespace

PF_Err fill_world(PF_ProgPtr effect_ref, const PF_Pixel* colour, const PF_Rect* area,
                  PF_EffectWorld* record) {
    return answer_effect_call("fill", effect_ref, "", [&](HostState& state) -> PF_Err {
        World* const world = state.world_of(record);
        // Premiere Pro fills worlds of any depth; After Effects has other functions for deeper
        // worlds.
        const bool any_depth = state.premiere();
        if (world == nullptr || (world->depth() != Depth::Bits8 && !any_depth)) {
            return state.refuse(
                "fill", any_depth ? "not a world of this host" : "not an 8-bit world of this host");
        }
        const PF_Pixel pixel = colour != nullptr ? *colour : PF_Pixel{};
        const Rect part = area != nullptr ? Rect{area->left, area->top, area->right, area->bottom}
                                          : Rect{0, 0, world->width(), world->height()};
        world->fill(part, {pixel.alpha, pixel.red, pixel.green, pixel.blue});
        return PF_Err_NONE;
    });
}

PF_Handle new_handle(A_HandleSize bytes) {
    PF_Handle handle = nullptr;
    answer_call("host_new_handle", "bytes=" + std::to_string(bytes),
                [&](HostState& state) -> std::int32_t {
                    handle = state.handles.create(bytes);
                    return PF_Err_NONE;
                });
    return handle;
}

void* lock_handle(PF_Handle handle) {
    return handle_owner("host_lock_handle", handle, true) != nullptr ? *handle : nullptr;
}

void unlock_handle(PF_Handle handle) { handle_owner("host_unlock_handle", handle, false); }

void dispose_handle(PF_Handle handle) {
    if (HostState* const state = handle_owner("host_dispose_handle", handle, false)) {
        state->handles.dispose(handle);
    }
}

A_HandleSize handle_size(PF_Handle handle) {
    HostState* const state = handle_owner("host_get_handle_size", handle, true);
    return state != nullptr ? state->handles.size_of(handle) : 0;
}

PF_Err resize_handle(A_HandleSize bytes, PF_Handle* handle) {
    return answer_call(
        "host_resize_handle", "bytes=" + std::to_string(bytes), [&](HostState& state) -> PF_Err {
            if (handle == nullptr || !state.handles.owns(*handle)) {
                return state.refuse("host_resize_handle", "not a handle of this host");
            }
            state.handles.resize(*handle, bytes);
            return PF_Err_NONE;
        });
}

int format_text(A_char* out, const A_char* format, ...) {
    if (note_text("sprintf", out)) {
        return -1;
    }
    const std::size_t room = message_room(out);
    std::va_list arguments;
    va_start(arguments, format);
    int length = 0;
    if (room != 0) {
        length = std::vsnprintf(out, room, format, arguments);
    } else {
        // The host does not know the size of other buffers.
        length = std::vsprintf(out, format, arguments);
    }
    va_end(arguments);
    if (room != 0 && length >= 0 && static_cast<std::size_t>(length) >= room) {
        note_cut("sprintf");
    }
    return length;
}

A_char* copy_text(A_char* to, const A_char* from) {
    if (note_text("strcpy", to)) {
        return nullptr;
    }
    const std::size_t room = message_room(to);
    const std::size_t length = std::strlen(from);
    const bool cut = room != 0 && length >= room;
    std::memmove(to, from, cut ? room - 1 : length);
    to[cut ? room - 1 : length] = '\0';
    if (cut) {
        note_cut("strcpy");
    }
    return to;
}

PF_UtilCallbacks util_callbacks() {
    return {
        UNPROVIDED("utils", begin_sampling, subpixel_sample, area_sample),
        .get_batch_func_is_deprecated = nullptr,
        UNPROVIDED("utils", end_sampling, composite_rect, blend, convolve, copy),
        .fill = fill_world,
        UNPROVIDED("utils", gaussian_kernel, iterate, premultiply, premultiply_color, new_world,
                   dispose_world, iterate_origin, iterate_lut, transfer_rect, transform_world),
        .host_new_handle = new_handle,
        .host_lock_handle = lock_handle,
        .host_unlock_handle = unlock_handle,
        .host_dispose_handle = dispose_handle,
        UNPROVIDED("utils", get_callback_addr, app),
        .ansi =
            {
                UNPROVIDED("utils ansi", atan, atan2, ceil, cos, exp, fabs, floor, fmod, hypot, log,
                           log10, pow, sin, sqrt, tan),
                .sprintf = format_text,
                .strcpy = copy_text,
                UNPROVIDED("utils ansi", asin, acos),
                .unused_longA = {},
            },
        .colorCB =
            {
                UNPROVIDED("utils colorCB", RGBtoHLS, HLStoRGB, RGBtoYIQ, YIQtoRGB, Luminance, Hue,
                           Lightness, Saturation),
            },
        UNPROVIDED("utils", get_platform_data),
        .host_get_handle_size = handle_size,
        UNPROVIDED("utils", iterate_origin_non_clip_src, iterate_generic),
        .host_resize_handle = resize_handle,
        UNPROVIDED("utils", subpixel_sample16, area_sample16, fill16, premultiply_color16,
                   iterate16, iterate_origin16, iterate_origin_non_clip_src16),
        .get_pixel_data8 = get_pixel_data8,
        .get_pixel_data16 = get_pixel_data16,
        .reserved = {},
    };
}

}  // namespace host
