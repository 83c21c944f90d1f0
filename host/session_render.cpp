// Frames: sends the commands of one frame in order and checks the worlds afterwards.
#include <host/errors.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

#include "asked_format.h"
#include "callbacks.h"
#include "declared_control.h"
#include "frame_run.h"
#include "kept_record.h"
#include "parameter_array.h"
#include "session_impl.h"

namespace host {
namespace {

PF_LRect record_of(const Rect& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }
Rect rect_of(const PF_LRect& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

bool inside(const Rect& inner, const Rect& outer) {
    return inner.empty() || (inner.left >= outer.left && inner.top >= outer.top &&
                             inner.right <= outer.right && inner.bottom <= outer.bottom);
}

PF_RationalScale ratio(int part, int whole) {
    const int divisor = std::gcd(part, whole);
    return {part / divisor, static_cast<A_u_long>(whole / divisor)};
}

A_long to_long(double number) {
    return static_cast<A_long>(std::clamp(std::round(number),
                                          double{std::numeric_limits<A_long>::min()},
                                          double{std::numeric_limits<A_long>::max()}));
}

PF_Fixed to_fixed(double number) { return to_long(number * 65536.0); }

PF_EffectWorld record_of(World& world, const Rect& area, const LayerSpec& layer, bool writeable) {
    PF_EffectWorld record{};
    // Premiere Pro never sets the flag: there the pixel format alone tells the depth.
    const bool deep = world.depth() == Depth::Bits16 && world.order() == ChannelOrder::Argb;
    record.world_flags = (deep ? PF_WorldFlag_DEEP : 0) | (writeable ? PF_WorldFlag_WRITEABLE : 0);
    record.data = reinterpret_cast<PF_Pixel*>(world.row(0));
    record.rowbytes = world.row_bytes();
    record.width = world.width();
    record.height = world.height();
    record.extent_hint = {0, 0, world.width(), world.height()};
    record.pix_aspect_ratio = {layer.pixel_aspect.num, layer.pixel_aspect.den};
    record.origin_x = area.left;
    record.origin_y = area.top;
    return record;
}

struct Size {
    int width;
    int height;
};

Size full_size(const FrameState& frame) {
    return {frame.layer.width != 0 ? frame.layer.width : frame.composition().width,
            frame.layer.height != 0 ? frame.layer.height : frame.composition().height};
}

}  // namespace

bool Session::Impl::smart(const RenderOptions& options) const {
    return !options.plain && !state.premiere() &&
           (info.out_flags2 & PF_OutFlag2_SUPPORTS_SMART_RENDER) != 0;
}

void Session::Impl::tell_time(const FrameRun& run) {
    const FrameState& frame = run.frame;
    const Composition& composition = frame.composition();
    const Ratio& stretch = frame.layer.stretch;
    const double rate = static_cast<double>(stretch.den) / stretch.num;
    const double scale = frame.time.scale;
    const double seconds = frame.composition_time().seconds();
    PF_InData& in = state.in;
    in.current_time = frame.time.value;
    in.time_scale = frame.time.scale;
    // Below 0 for a layer that plays backwards.
    in.time_step = in.local_time_step = to_long(scale * rate / composition.frame_rate.per_second());
    in.total_time = to_long(scale * composition.duration * std::fabs(rate));
    const bool blurred = composition.motion_blur && frame.layer.motion_blur &&
                         (info.out_flags & PF_OutFlag_I_USE_SHUTTER_ANGLE) != 0;
    in.shutter_angle = blurred ? to_fixed(composition.shutter_angle.at(seconds)) : 0;
    in.shutter_phase = blurred ? to_fixed(composition.shutter_phase.at(seconds)) : 0;
    const Size full = full_size(frame);
    in.width = full.width;
    in.height = full.height;
    in.downsample_x = ratio(frame.whole.width(), full.width);
    in.downsample_y = ratio(frame.whole.height(), full.height);
    in.pixel_aspect_ratio = {frame.layer.pixel_aspect.num, frame.layer.pixel_aspect.den};
    in.extent_hint = record_of(frame.request);
}

PF_Err Session::Impl::ask_dynamic_flags() {
    if ((info.out_flags2 & PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS) == 0) {
        return PF_Err_NONE;
    }
    return send(PF_Cmd_QUERY_DYNAMIC_FLAGS);
}

OutputFlags Session::Impl::dynamic_flags(const Scene& scene, Time time,
                                         std::optional<std::int32_t> before) {
    const Project project(scene);
    FrameRun run(*this, state.session_instance, project, project.layers.front(), time, {});
    const Exchanged found(info.out_flags2, before.value_or(info.out_flags2));
    // Not a `FrameStep`: the calls stay with the session's.
    const Exchanged<FrameState*> shown(state.frame, &run.frame);
    tell_time(run);
    demand(PF_Cmd_QUERY_DYNAMIC_FLAGS);
    return {state.out().out_flags, state.out().out_flags2};
}

void Session::Impl::prepare_worlds(FrameRun& run, const Rect& area) {
    FrameState& frame = run.frame;
    const RenderOptions& options = run.options;
    const Rect& input = frame.input_area.empty() ? frame.request : frame.input_area;
    frame.output =
        World(area.width(), area.height(), options.depth, options.output_padding, frame.order);
    if (options.mark != std::byte{}) {
        frame.output.mark(options.mark);
    }
    if (options.blank_input && blank_input.width() == input.width() &&
        blank_input.height() == input.height() && blank_input.depth() == options.depth &&
        blank_input.order() == frame.order) {
        frame.input = std::move(blank_input);
    } else {
        frame.input =
            World(input.width(), input.height(), options.depth, options.input_padding, frame.order);
    }
    if (!options.blank_input) {
        // With a blank input an effect that clears or scales it would not be noticed.
        frame.input.fill_with_pattern();
    }
    frame.output_record = record_of(frame.output, area, frame.layer, true);
    frame.input_record = record_of(frame.input, input, frame.layer, false);
    frame.rendering = true;
}

void Session::Impl::note_status(PF_Err status, Frame& result) {
    result.status = status;
    result.message = state.message;
}

std::unique_ptr<FrameRun> Session::Impl::begin(InstanceState& instance, const Project& project,
                                               const LayerSpec& layer, Time composition_time,
                                               const RenderOptions& options) {
    auto run =
        std::make_unique<FrameRun>(*this, instance, project, layer, composition_time, options);
    const Rect& whole = run->frame.whole;
    if (whole.width() < 1 || whole.height() < 1) {
        throw FrameError("a frame of " + std::to_string(whole.width()) + " x " +
                         std::to_string(whole.height()) +
                         " pixels has nothing to draw on; both sides must be at least 1");
    }
    const PixelFormat format = asked_format(state, info, smart(options), options.depth);
    run->frame.order = format.order;
    run->frame.pixel_format = options.pixel_format.value_or(format.number);
    run->result.pixel_format = run->frame.pixel_format;
    if (!smart(options) && run->frame.request.empty()) {
        throw FrameError("plain rendering draws at least one pixel");
    }
    return run;
}

void Session::Impl::pre_render(FrameRun& run) {
    const FrameStep step(run);
    tell_time(run);
    Frame& result = run.result;
    note_status(ask_dynamic_flags(), result);
    if (result.status != PF_Err_NONE) {
        return;
    }
    run.input.output_request.rect = record_of(run.frame.request);
    run.input.output_request.channel_mask = PF_ChannelMask_ARGB;
    run.input.bitdepth = static_cast<short>(run.options.depth);
    PF_PreRenderExtra extra{&run.input, &run.output, pre_render_callbacks()};
    KeptRecord kept(run.input);
    note_status(send(PF_Cmd_SMART_PRE_RENDER, nullptr, nullptr, &extra), result);
    check_kept("PF_Cmd_SMART_PRE_RENDER: the pre-render input", kept);

    if (run.output.pre_render_data != nullptr) {
        run.owns_data = run.output.delete_pre_render_data_func != nullptr;
        if (!run.owns_data) {
            state.violation(Rule::Deleter,
                            "PF_Cmd_SMART_PRE_RENDER: pre-render data without a deleter is lost");
        }
    }
    result.result_rect = rect_of(run.output.result_rect);
    result.max_result_rect = rect_of(run.output.max_result_rect);
    const bool extra_pixels = (run.output.flags & PF_RenderOutputFlag_RETURNS_EXTRA_PIXELS) != 0;
    if (!extra_pixels && !inside(result.result_rect, run.frame.request)) {
        state.violation(Rule::Rectangles,
                        "PF_Cmd_SMART_PRE_RENDER: the result rectangle reaches beyond the request");
    }
}

void Session::Impl::smart_render(FrameRun& run) {
    const FrameStep step(run);
    tell_time(run);
    Frame& result = run.result;
    prepare_worlds(run, result.result_rect);
    PF_SmartRenderInput input{};
    input.output_request = run.input.output_request;
    input.bitdepth = run.input.bitdepth;
    input.pre_render_data = run.output.pre_render_data;
    PF_SmartRenderCallbacks* const callbacks = smart_render_callbacks();
    PF_SmartRenderExtra extra{&input, callbacks};
    result.rendered = true;
    KeptRecord kept(input);
    KeptRecord kept_output(run.frame.output_record);
    KeptRecord kept_input(run.frame.input_record);
    note_status(send(PF_Cmd_SMART_RENDER, nullptr, nullptr, &extra), result);
    check_kept("PF_Cmd_SMART_RENDER: the render input", kept);
    check_kept("PF_Cmd_SMART_RENDER: the output world", kept_output);
    check_kept("PF_Cmd_SMART_RENDER: the input world", kept_input);
    inspect_worlds(run);
    for (auto& [id, layer] : run.frame.layers) {
        result.open_layer_checkouts += std::exchange(layer.held, false) ? 1 : 0;
    }

    // An effect may answer as if it had been asked for its dependencies: the slot of the callbacks
    // then holds a handle, which is the host's to dispose of.
    PF_Handle left = nullptr;
    std::memcpy(&left, &extra.cb, sizeof left);
    if (extra.cb == callbacks || left == nullptr) {
        return;
    }
    result.handle_left = state.handles.dispose(left);
    if (!result.handle_left) {
        state.violation(Rule::Records,
                        "PF_Cmd_SMART_RENDER: the callbacks' slot holds neither them nor a handle");
    }
}

void Session::Impl::delete_data(FrameRun& run) {
    if (!run.owns_data) {
        return;
    }
    const FrameStep step(run);
    run.owns_data = false;
    ++run.result.data_deletions;
    state.run("the deletion of its pre-render data",
              [&run] { run.output.delete_pre_render_data_func(run.output.pre_render_data); });
}

void Session::Impl::plain_render(FrameRun& run) {
    const FrameStep step(run);
    tell_time(run);
    FrameState& frame = run.frame;
    Frame& result = run.result;
    note_status(ask_dynamic_flags(), result);
    if (result.status != PF_Err_NONE) {
        return;
    }
    prepare_worlds(run, frame.request);
    ParameterArray params(state.parameters, [&](const Parameter& parameter) {
        PF_ParamDef record = valued_record(parameter, frame.values, frame.time.seconds());
        if (parameter.declared.index == 0) {
            record.u.ld = frame.input_record;
        }
        return record;
    });
    KeptRecord kept(frame.output_record);
    const auto send_kept = [&](PF_Cmd command) {
        const PF_Err status = send(command, params.data(), &frame.output_record);
        const std::string name = command_name(command);
        check_kept(name + ": the output world", kept);
        if (params.restore()) {
            state.violation(Rule::Records, name + ": a parameter's record was written to");
        }
        return status;
    };
    note_status(send_kept(PF_Cmd_FRAME_SETUP), result);
    if (result.status != PF_Err_NONE) {
        return;
    }
    result.rendered = true;
    result.result_rect = result.max_result_rect = frame.request;
    note_status(send_kept(PF_Cmd_RENDER), result);
    const PF_Err set_down = send_kept(PF_Cmd_FRAME_SETDOWN);
    if (result.status == PF_Err_NONE && set_down != PF_Err_NONE) {
        note_status(set_down, result);
    }
    inspect_worlds(run);
}

void Session::Impl::inspect_worlds(const FrameRun& run) {
    const FrameState& frame = run.frame;
    if (const auto breach = frame.output.breach()) {
        state.violation(Rule::Bounds, "the plug-in wrote outside the output's pixels: " + *breach);
    }
    if (const auto breach = frame.input.breach()) {
        state.violation(Rule::Bounds,
                        "the plug-in wrote outside the input layer's pixels: " + *breach);
    }
    const bool may_write = (info.out_flags & PF_OutFlag_I_WRITE_INPUT_BUFFER) != 0;
    if (!may_write && !run.options.blank_input && !frame.input.shows_pattern()) {
        state.violation(Rule::InputPixels, "the plug-in wrote to the input layer's pixels");
    }
}

void Session::Impl::report_balance(const Ledger& ledger) {
    for (const auto& [suite, held] : ledger.suites) {
        if (held > 0) {
            state.violation(Rule::Suites, "suite \"" + suite.first + "\" version " +
                                              std::to_string(suite.second) + " was acquired " +
                                              std::to_string(held) +
                                              " times more than it was released");
        }
    }
    if (ledger.handles > 0) {
        state.violation(Rule::Handles,
                        std::to_string(ledger.handles) + " host handles were not disposed of");
    }
}

Frame Session::Impl::finish(FrameRun& run) {
    Frame& result = run.result;
    const World& output = run.frame.output;
    result.undrawn_pixels = output.marked_pixels();
    const std::size_t pixels =
        static_cast<std::size_t>(output.width()) * static_cast<std::size_t>(output.height());
    result.drawn = result.rendered && result.undrawn_pixels < pixels;
    result.world = std::move(run.frame.output);
    // The move leaves the numbers and rectangles, which `renderable` still reads.
    return std::move(result);
}

Frame Session::Impl::render(InstanceState& instance, const Project& project, const LayerSpec& layer,
                            Time composition_time, const RenderOptions& options) {
    const std::unique_ptr<FrameRun> run =
        begin(instance, project, layer, composition_time, options);
    if (smart(options)) {
        pre_render(*run);
        if (run->renderable() && options.render_follows) {
            smart_render(*run);
        }
        delete_data(*run);
    } else {
        plain_render(*run);
    }
    state.rethrow_failure();
    const std::size_t first_violation = state.violations.size();
    report_balance(run->ledger);
    run->ledger = {};
    run->note_violations(first_violation);
    Frame made = finish(*run);
    const bool may_write = (info.out_flags & PF_OutFlag_I_WRITE_INPUT_BUFFER) != 0;
    if (options.blank_input && !may_write) {
        // The next frame's layer: made anew, it would be cleared byte by byte.
        blank_input = std::move(run->frame.input);
    }
    return made;
}

}  // namespace host
