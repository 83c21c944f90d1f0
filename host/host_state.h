// What the callbacks work on: the host's side of one session.
//
// The effect interface hands its callbacks no context, or only the effect's reference. The state of
// the session whose command is running on this thread is therefore kept as `HostState::current`.
#pragma once

#include <host/calls.h>
#include <host/controls.h>
#include <host/scene.h>
#include <host/session.h>
#include <host/world.h>
#include <host_api/effect_interface.h>

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "handle_pool.h"

namespace host {

/// A parameter as declared, with the texts that its record points to.
struct Parameter {
    PF_ParamDef record{};
    DeclaredControl declared;
};

/// References held by the plug-in, by suite name and version.
using SuiteReferences = std::map<std::pair<std::string, int>, int>;

/// What belongs to the frame being made.
struct FrameState {
    struct Checkout {
        PF_ParamIndex index = 0;
        bool fetched = false;
        bool held = false;  ///< fetched and not checked in
    };

    FrameState(const Scene& shown, ControlValues control_values, Time shown_time)
        : scene(shown), values(std::move(control_values)), time(shown_time) {}

    const Scene& scene;
    ControlValues values;
    Time time;

    Rect request;
    PF_PixelFormat pixel_format = PF_PixelFormat_INVALID;
    World output;
    World input;
    PF_EffectWorld output_record{};
    PF_EffectWorld input_record{};
    bool rendering = false;  ///< the worlds stand ready
    bool output_out = false;
    std::map<A_long, Checkout> layers;
    int open_param_checkouts = 0;
    std::vector<Time> camera_times;
};

class HostState {
public:
    explicit HostState(SessionOptions session_options);
    HostState(const HostState&) = delete;
    HostState& operator=(const HostState&) = delete;

    /// The session whose command runs on this thread; null outside commands.
    static HostState* current();

    /// Sends a command. What the plug-in leaves in `out.return_msg` is in `message` afterwards, and
    /// the output flags are as it left them. Throws `ModuleDefect` when an exception leaves the
    /// entry point.
    PF_Err send(PF_Cmd command, PF_ParamDef** params, PF_EffectWorld* output, void* extra);

    /// Runs a function of the plug-in's (its deleter) as part of the running frame. Throws
    /// `ModuleDefect` like `send`.
    void run(const char* name, const std::function<void()>& function);

    /// Answers a callback: records it, consults the filter, keeps exceptions from the plug-in. A
    /// failure of the host's own is kept for `rethrow_failure`.
    std::int32_t answer(const char* name, std::string arguments,
                        const std::function<std::int32_t()>& body);
    /// Records a callback that cannot fail.
    void note(const char* name, std::string arguments);

    /// Throws what went wrong in a callback on the host's side since the last time, if anything:
    /// the plug-in was told a status, but may not pass it on.
    void rethrow_failure();

    void violation(std::string text) { violations.push_back(std::move(text)); }

    // The objects of the host's project.
    PF_ProgPtr effect_ref();
    AEGP_LayerH effect_layer();
    AEGP_LayerH camera_layer();
    AEGP_CompH composition();
    AEGP_ItemH composition_item();

    bool premiere() const { return options.application == Application::Premiere; }

    SessionOptions options;
    PF_EffectMain entry_point = nullptr;
    std::vector<Call> calls;
    std::vector<std::string> violations;
    HandlePool handles;
    SuiteReferences suites;
    std::vector<Parameter> parameters;  ///< the input layer first
    std::vector<std::int32_t> pixel_formats;
    FrameState* frame = nullptr;  ///< null outside frame commands

    PF_InData in{};
    PF_UtilCallbacks utils{};
    PF_Cmd command = -1;  ///< the running one
    Message message;

    PF_OutData& out() { return guarded_out_.data; }

private:
    void check_out_record();

    /// The record handed to the plug-in, with bytes behind it that nobody may touch.
    struct GuardedOut {
        PF_OutData data{};
        unsigned char guard[64];
    };
    GuardedOut guarded_out_;
    std::exception_ptr failure_;
    std::map<std::string, int, std::less<>> counts_;
    // Their addresses are the handles.
    void* layer_object_ = nullptr;
    void* camera_object_ = nullptr;
    void* composition_object_ = nullptr;
    void* item_object_ = nullptr;
};

/// A callback's body with the current session; a call from outside a command fails.
template <class Body>
std::int32_t answer_call(const char* name, const std::string& arguments, Body&& body) {
    HostState* const state = HostState::current();
    if (state == nullptr) {
        return A_Err_WRONG_THREAD;
    }
    return state->answer(name, arguments, [&] { return body(*state); });
}

/// The same for callbacks that are handed the effect's reference, which must be the session's.
template <class Body>
std::int32_t answer_effect_call(const char* name, PF_ProgPtr effect_ref,
                                const std::string& arguments, Body&& body) {
    return answer_call(name, arguments, [&](HostState& state) -> std::int32_t {
        if (effect_ref != state.effect_ref()) {
            state.violation(std::string(name) + ": the effect reference is not the one handed out");
            return PF_Err_BAD_CALLBACK_PARAM;
        }
        return body(state);
    });
}

/// "value/scale", as the call record shows times.
std::string shown_time(A_long value, A_u_long scale);

}  // namespace host
