// Frames: the commands of one frame in a host's order, and what is looked at afterwards.
#include <host/diagnosis.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

#include "callbacks.h"
#include "declared_control.h"
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

PF_PixelFormat format_of(Depth depth) {
    switch (depth) {
        case Depth::Bits8:
            return PF_PixelFormat_ARGB32;
        case Depth::Bits16:
            return PF_PixelFormat_ARGB64;
        case Depth::Float:
            break;
    }
    return PF_PixelFormat_ARGB128;
}

PF_EffectWorld record_of(World& world, const Rect& area, bool writeable) {
    PF_EffectWorld record{};
    record.world_flags = (world.depth() == Depth::Bits16 ? PF_WorldFlag_DEEP : 0) |
                         (writeable ? PF_WorldFlag_WRITEABLE : 0);
    record.data = reinterpret_cast<PF_Pixel*>(world.row(0));
    record.rowbytes = world.row_bytes();
    record.width = world.width();
    record.height = world.height();
    record.extent_hint = {0, 0, world.width(), world.height()};
    record.pix_aspect_ratio = {1, 1};
    record.origin_x = area.left;
    record.origin_y = area.top;
    return record;
}

/// Makes a frame the one that callbacks work on.
class InFrame {
public:
    InFrame(HostState& state, FrameState& frame) : state_(state) { state_.frame = &frame; }
    ~InFrame() { state_.frame = nullptr; }
    InFrame(const InFrame&) = delete;
    InFrame& operator=(const InFrame&) = delete;

private:
    HostState& state_;
};

/// The pre-render data, which is the host's from the pre-render's return on: deleted once, whether
/// or not a render follows.
class PreRenderData {
public:
    PreRenderData(HostState& state, const PF_PreRenderOutput& output, int& deletions)
        : state_(state), output_(output), deletions_(deletions) {
        if (output_.pre_render_data != nullptr && output_.delete_pre_render_data_func == nullptr) {
            state_.violation("PF_Cmd_SMART_PRE_RENDER: pre-render data without a deleter is lost");
            deleted_ = true;
        }
    }
    ~PreRenderData() {
        try {
            dispose();
        } catch (const HostError& error) {
            state_.violation(error.what());
        }
    }
    PreRenderData(const PreRenderData&) = delete;
    PreRenderData& operator=(const PreRenderData&) = delete;

    void dispose() {
        if (deleted_ || output_.pre_render_data == nullptr) {
            return;
        }
        deleted_ = true;
        ++deletions_;
        state_.run("the deletion of its pre-render data",
                   [this] { output_.delete_pre_render_data_func(output_.pre_render_data); });
    }

private:
    HostState& state_;
    PF_PreRenderOutput output_;
    int& deletions_;
    bool deleted_ = false;
};

void refuse_depth(const EffectInfo& info, bool smart, Depth depth) {
    const bool deep = (info.out_flags & PF_OutFlag_DEEP_COLOR_AWARE) != 0;
    const bool floating = (info.out_flags2 & PF_OutFlag2_FLOAT_COLOR_AWARE) != 0;
    if (depth == Depth::Bits16 && !deep) {
        throw FrameError("the effect does not declare that it draws 16-bit pixels");
    }
    if (depth == Depth::Float && !(smart && floating)) {
        throw FrameError("the effect does not declare that it draws float pixels");
    }
}

}  // namespace

bool Session::Impl::smart() const {
    return !state.premiere() && (info.out_flags2 & PF_OutFlag2_SUPPORTS_SMART_RENDER) != 0;
}

FrameState Session::Impl::new_frame(const Scene& scene, Time time) const {
    if (time.scale == 0) {
        throw FrameError("a time with a scale of 0 is no time");
    }
    return FrameState(scene, ControlValues(controls, scene.controls), time);
}

void Session::Impl::tell_time(const FrameState& frame, const RenderOptions& options) {
    const Composition& composition = frame.scene.composition;
    const double scale = frame.time.scale;
    const double seconds = frame.time.seconds();
    PF_InData& in = state.in;
    in.current_time = frame.time.value;
    in.time_scale = frame.time.scale;
    in.time_step = in.local_time_step = to_long(scale / composition.frame_rate.per_second());
    in.total_time = to_long(scale * composition.duration);
    const bool blurred =
        composition.motion_blur && (info.out_flags & PF_OutFlag_I_USE_SHUTTER_ANGLE) != 0;
    in.shutter_angle = blurred ? to_fixed(composition.shutter_angle.at(seconds)) : 0;
    in.shutter_phase = blurred ? to_fixed(composition.shutter_phase.at(seconds)) : 0;
    in.width = composition.width;
    in.height = composition.height;
    const int width = options.width != 0 ? options.width : composition.width;
    const int height = options.height != 0 ? options.height : composition.height;
    in.downsample_x = ratio(width, composition.width);
    in.downsample_y = ratio(height, composition.height);
    in.extent_hint = {0, 0, width, height};
}

PF_Err Session::Impl::ask_dynamic_flags() {
    if ((info.out_flags2 & PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS) == 0) {
        return PF_Err_NONE;
    }
    return send(PF_Cmd_QUERY_DYNAMIC_FLAGS);
}

std::int32_t Session::Impl::dynamic_flags(const Scene& scene, Time time,
                                          std::optional<std::int32_t> before) {
    FrameState frame = new_frame(scene, time);
    const InFrame in_frame(state, frame);
    tell_time(frame, {});
    const std::int32_t declared = std::exchange(info.out_flags2, before.value_or(info.out_flags2));
    try {
        demand(PF_Cmd_QUERY_DYNAMIC_FLAGS);
    } catch (...) {
        info.out_flags2 = declared;
        throw;
    }
    info.out_flags2 = declared;
    return state.out().out_flags2;
}

void Session::Impl::prepare_worlds(FrameState& frame, const RenderOptions& options,
                                   const Rect& area) {
    frame.output = World(area.width(), area.height(), options.depth, options.output_padding);
    frame.output.mark();
    frame.input =
        World(frame.request.width(), frame.request.height(), options.depth, options.input_padding);
    frame.output_record = record_of(frame.output, area, true);
    frame.input_record = record_of(frame.input, frame.request, false);
    frame.rendering = true;
}

void Session::Impl::note_status(PF_Err status, Frame& result) {
    result.status = status;
    result.message = state.message;
}

void Session::Impl::render_smart(FrameState& frame, const RenderOptions& options, Frame& result) {
    PF_PreRenderInput input{};
    input.output_request.rect = record_of(frame.request);
    input.output_request.channel_mask = PF_ChannelMask_ARGB;
    input.bitdepth = static_cast<short>(options.depth);
    PF_PreRenderOutput output{};
    PF_PreRenderExtra extra{&input, &output, pre_render_callbacks()};
    note_status(send(PF_Cmd_SMART_PRE_RENDER, nullptr, nullptr, &extra), result);

    PreRenderData data(state, output, result.data_deletions);
    result.result_rect = rect_of(output.result_rect);
    result.max_result_rect = rect_of(output.max_result_rect);
    const bool extra_pixels = (output.flags & PF_RenderOutputFlag_RETURNS_EXTRA_PIXELS) != 0;
    if (!extra_pixels && !inside(result.result_rect, frame.request)) {
        state.violation("PF_Cmd_SMART_PRE_RENDER: the result rectangle reaches beyond the request");
    }
    if (result.status == PF_Err_NONE && options.render_follows && !result.result_rect.empty()) {
        prepare_worlds(frame, options, result.result_rect);
        smart_render(frame, input.output_request, input.bitdepth, output.pre_render_data, result);
    }
    data.dispose();
}

void Session::Impl::smart_render(FrameState& frame, const PF_RenderRequest& request, short depth,
                                 void* data, Frame& result) {
    PF_SmartRenderInput input{};
    input.output_request = request;
    input.bitdepth = depth;
    input.pre_render_data = data;
    PF_SmartRenderCallbacks* const callbacks = smart_render_callbacks();
    PF_SmartRenderExtra extra{&input, callbacks};
    result.rendered = true;
    note_status(send(PF_Cmd_SMART_RENDER, nullptr, nullptr, &extra), result);
    inspect_worlds(frame);

    // An effect may answer as if it had been asked for its dependencies: the slot of the callbacks
    // then holds a handle, which is the host's to dispose of.
    PF_Handle left = nullptr;
    std::memcpy(&left, &extra.cb, sizeof left);
    if (extra.cb != callbacks && left != nullptr && !state.handles.dispose(left)) {
        state.violation("PF_Cmd_SMART_RENDER: the callbacks' slot holds neither them nor a handle");
    }
}

void Session::Impl::render_plain(FrameState& frame, const RenderOptions& options, Frame& result) {
    prepare_worlds(frame, options, frame.request);
    std::vector<PF_ParamDef> records;
    records.reserve(state.parameters.size());
    for (const Parameter& parameter : state.parameters) {
        records.push_back(parameter.declared.index == 0
                              ? initial_record(parameter)
                              : valued_record(parameter, frame.values, frame.time.seconds()));
    }
    records.front().u.ld = frame.input_record;
    std::vector<PF_ParamDef*> params;
    params.reserve(records.size() + 1);
    for (PF_ParamDef& record : records) {
        params.push_back(&record);
    }
    params.push_back(nullptr);
    note_status(send(PF_Cmd_FRAME_SETUP, params.data(), &frame.output_record), result);
    if (result.status != PF_Err_NONE) {
        return;
    }
    result.rendered = true;
    result.result_rect = result.max_result_rect = frame.request;
    note_status(send(PF_Cmd_RENDER, params.data(), &frame.output_record), result);
    const PF_Err set_down = send(PF_Cmd_FRAME_SETDOWN, params.data(), &frame.output_record);
    if (result.status == PF_Err_NONE && set_down != PF_Err_NONE) {
        note_status(set_down, result);
    }
    inspect_worlds(frame);
}

void Session::Impl::inspect_worlds(const FrameState& frame) {
    if (const auto breach = frame.output.breach()) {
        state.violation("the plug-in wrote outside the output's pixels: " + *breach);
    }
    if (const auto breach = frame.input.breach()) {
        state.violation("the plug-in wrote outside the input layer's pixels: " + *breach);
    }
    const bool may_write = (info.out_flags & PF_OutFlag_I_WRITE_INPUT_BUFFER) != 0;
    if (!may_write && !frame.input.blank()) {
        state.violation("the plug-in wrote to the input layer's pixels");
    }
}

void Session::Impl::inspect_balance(const SuiteReferences& suites_before,
                                    std::size_t handles_before) {
    for (const auto& [suite, references] : state.suites) {
        const auto before = suites_before.find(suite);
        const int held = references - (before == suites_before.end() ? 0 : before->second);
        if (held > 0) {
            state.violation("suite \"" + suite.first + "\" version " +
                            std::to_string(suite.second) + " was acquired " + std::to_string(held) +
                            " times more than it was released");
        }
    }
    if (state.handles.live() > handles_before) {
        state.violation(std::to_string(state.handles.live() - handles_before) +
                        " host handles were not disposed of");
    }
}

Frame Session::Impl::render(const Scene& scene, Time time, const RenderOptions& options) {
    FrameState frame = new_frame(scene, time);
    const int width = options.width != 0 ? options.width : scene.composition.width;
    const int height = options.height != 0 ? options.height : scene.composition.height;
    if (const auto refusal = refuse_size(width, height)) {
        throw FrameError(*refusal);
    }
    if (!smart() && options.depth == Depth::Float) {
        throw FrameError("float pixels need smart rendering, which this host and effect lack");
    }
    if (state.premiere() && options.depth != Depth::Bits8) {
        throw FrameError("plain rendering is 8-bit only in this host");
    }
    refuse_depth(info, smart(), options.depth);

    frame.request = {0, 0, width, height};
    frame.pixel_format = options.pixel_format.value_or(format_of(options.depth));
    tell_time(frame, options);
    const std::size_t first_call = state.calls.size();
    const std::size_t first_violation = state.violations.size();
    const SuiteReferences suites_before = state.suites;
    const std::size_t handles_before = state.handles.live();

    Frame result;
    result.time = time;
    result.request = frame.request;
    result.pixel_format = frame.pixel_format;
    {
        const InFrame in_frame(state, frame);
        note_status(ask_dynamic_flags(), result);
        if (result.status == PF_Err_NONE) {
            smart() ? render_smart(frame, options, result) : render_plain(frame, options, result);
        }
    }
    state.rethrow_failure();
    inspect_balance(suites_before, handles_before);

    result.undrawn_pixels = frame.output.marked_pixels();
    const std::size_t pixels = static_cast<std::size_t>(frame.output.width()) *
                               static_cast<std::size_t>(frame.output.height());
    result.drawn = result.rendered && result.undrawn_pixels < pixels;
    result.world = std::move(frame.output);
    result.camera_times = std::move(frame.camera_times);
    result.open_param_checkouts = frame.open_param_checkouts;
    const auto calls = state.calls.begin() + static_cast<std::ptrdiff_t>(first_call);
    result.calls.assign(std::make_move_iterator(calls), std::make_move_iterator(state.calls.end()));
    state.calls.erase(calls, state.calls.end());
    result.violations.assign(
        state.violations.begin() + static_cast<std::ptrdiff_t>(first_violation),
        state.violations.end());
    return result;
}

}  // namespace host
