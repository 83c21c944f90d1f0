// One frame: what a host may ask for, and what came of it.
#pragma once

#include <host/calls.h>
#include <host/scene.h>
#include <host/violation.h>
#include <host/world.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// A text that the plug-in left for the user.
struct Message {
    std::string text;
    bool is_error = false;
};

struct RenderOptions {
    /// In Premiere Pro it picks from the formats that the effect declared.
    Depth depth = Depth::Float;
    /// Size in which the layer is rendered; 0 is its own. Another size shows the same view, as a
    /// host's lower resolutions do.
    int width = 0;
    int height = 0;
    /// The part of the layer that is asked for, in pixels of the size above; nothing: all of it. An
    /// empty one asks for the rectangles alone.
    std::optional<Rect> region;
    /// Bytes behind each row of the output and of the input layer; multiples of 4.
    int output_padding = kDefaultRowPadding;
    int input_padding = kDefaultRowPadding + 16;
    /// What every byte of the output holds before the plug-in draws. A picture that changes with
    /// it has pixels that the plug-in left undrawn. With zeros, transparent black counts as
    /// undrawn, and what is not drawn yet takes no memory.
    std::byte mark = kDefaultMark;
    /// The input layer is blank and not looked at afterwards, for frames that are wanted for their
    /// picture: at large sizes the layer costs as much memory as the frame otherwise.
    bool blank_input = false;
    /// Pixel format to tell the plug-in in place of the depth's own, to see what it does with it.
    std::optional<std::int32_t> pixel_format;
    /// False: after the pre-render the host does not ask for pixels. Has no effect on the single
    /// steps of an `EffectInstance`.
    bool render_follows = true;
    /// The plain commands, as if host or effect knew no smart rendering; in After Effects 8 and 16
    /// bits only.
    bool plain = false;
};

struct Frame {
    /// The output; without pixels if the plug-in was not asked to render.
    World world;
    Time time;                ///< of the composition
    Time layer_time;          ///< as told to the plug-in
    bool rendered = false;    ///< the plug-in was asked for pixels
    std::int32_t status = 0;  ///< of the render command, or of the pre-render if that failed
    Message message;          ///< of that command
    Rect request;
    Rect result_rect;  ///< as the plug-in declared them at pre-render
    Rect max_result_rect;
    std::int32_t pixel_format = 0;  ///< as told to the plug-in
    std::size_t undrawn_pixels = 0;
    /// Whether any pixel was drawn. A failed frame may have status 0, so look here.
    bool drawn = false;

    std::vector<Call> calls;  ///< of this frame's commands
    /// Composition times at which the camera's matrix was asked for, in order.
    std::vector<Time> camera_times;
    int open_param_checkouts = 0;  ///< parameters checked out and not in again
    /// Layers whose pixels were fetched and not checked in; the host took them back when the render
    /// returned, which is no breach.
    int open_layer_checkouts = 0;
    /// The slot of the render record's callbacks held a handle of the host's after the render.
    bool handle_left = false;
    int data_deletions = 0;  ///< calls of the deleter of the pre-render data so far
    std::vector<Violation> violations;
};

}  // namespace host
