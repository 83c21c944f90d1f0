// What the callbacks work on: the host's side of one session.
//
// The effect interface hands its callbacks no context, or only the effect's reference. The state of
// the session whose command is running on this thread is therefore kept as `HostState::current`.
#pragma once

#include <host/calls.h>
#include <host/controls.h>
#include <host/project.h>
#include <host/scene.h>
#include <host/session.h>
#include <host/world.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "handle_pool.h"

namespace host {

/// A parameter as declared, with the texts that its record points to.
struct Parameter {
    PF_ParamDef record{};
    DeclaredControl declared;
};

inline constexpr char kNotHandedOut[] = "null, or a world that this host did not hand out";

/// References held by the plug-in, by suite name and version.
using SuiteReferences = std::map<std::pair<std::string, int>, int>;

/// What the plug-in took and did not give back.
struct Ledger {
    SuiteReferences suites;
    std::ptrdiff_t handles = 0;
};

/// One effect on one layer; its address is the effect's reference.
struct InstanceState {
    PF_Handle sequence_data = nullptr;
};

/// What belongs to the frame being made.
struct FrameState {
    struct Checkout {
        PF_ParamIndex index = 0;
        bool fetched = false;
        bool held = false;  ///< fetched and not checked in
    };

    FrameState(const Project& shown, const LayerSpec& shown_layer, ControlValues control_values,
               Time composition_time)
        : project(shown),
          layer(shown_layer),
          values(std::move(control_values)),
          time(shown_layer.layer_time(composition_time)),
          composition_time_(composition_time) {}

    const Composition& composition() const { return project.composition; }
    Time composition_time() const { return composition_time_; }

    const Project& project;
    const LayerSpec& layer;
    ControlValues values;
    Time time;  ///< of the layer

    Rect whole;       ///< the layer at the size in which it is rendered
    Rect request;     ///< the part of it that was asked for
    Rect input_area;  ///< the part of it that the plug-in has checked out
    PF_PixelFormat pixel_format = PF_PixelFormat_INVALID;  ///< as told
    ChannelOrder order = ChannelOrder::Argb;
    World output;
    World input;
    PF_EffectWorld output_record{};
    PF_EffectWorld input_record{};
    bool rendering = false;  ///< the worlds are made
    bool output_out = false;
    std::map<A_long, Checkout> layers;
    int open_param_checkouts = 0;
    std::vector<Time> camera_times;

    // The project's objects as the plug-in is handed them: their addresses.
    AEGP_LayerH layer_handle() const { return handle<AEGP_LayerH>(&layer); }
    AEGP_CompH composition_handle() const { return handle<AEGP_CompH>(&project.composition); }
    AEGP_ItemH item_handle() const { return handle<AEGP_ItemH>(&project); }
    AEGP_LayerH camera_handle(const CameraLayer* camera) const {
        return handle<AEGP_LayerH>(camera);
    }
    /// Null when the handle is no camera's.
    const CameraLayer* camera_of(AEGP_LayerH handle) const {
        const auto found = std::find_if(
            project.cameras.begin(), project.cameras.end(),
            [&](const CameraLayer& camera) { return camera_handle(&camera) == handle; });
        return found == project.cameras.end() ? nullptr : &*found;
    }

private:
    template <class Handle, class Object>
    static Handle handle(const Object* object) {
        return reinterpret_cast<Handle>(const_cast<Object*>(object));
    }

    Time composition_time_;
};

class HostState {
public:
    explicit HostState(SessionOptions session_options);
    HostState(const HostState&) = delete;
    HostState& operator=(const HostState&) = delete;

    /// The session whose command runs on this thread; null outside commands.
    static HostState* current();
    /// The same, at the beginning of a callback. A call from outside commands is counted and
    /// becomes a violation when the next command ends.
    static HostState* called();

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
    /// Counts a call and asks the filter whether it is to fail.
    std::optional<std::int32_t> consult(std::string_view name);
    /// Records a callback that answers for itself; a status when it is to fail.
    std::optional<std::int32_t> note(const char* name, std::string arguments);

    /// Throws the last failure of the host itself in a callback, if any. The plug-in was given a
    /// status for it, but may not have passed that on.
    void rethrow_failure();

    void violation(Rule rule, std::string text, std::string subject = {}) {
        violations.push_back({rule, std::move(text), std::move(subject)});
    }

    /// Notes that a callback was used as it may not be; `status` is what the callback answers.
    std::int32_t refuse(const std::string& call, const std::string& why,
                        std::int32_t status = PF_Err_BAD_CALLBACK_PARAM) {
        violation(Rule::Calls, call + ": " + why);
        return status;
    }

    /// The running frame's world whose record this is; null for any other record, and before the
    /// worlds are made.
    World* world_of(const PF_EffectWorld* record);

    /// Of the instance whose command runs.
    PF_ProgPtr effect_ref() const { return reinterpret_cast<PF_ProgPtr>(instance); }

    bool premiere() const { return options.application == Application::Premiere; }

    SessionOptions options;
    PF_EffectMain entry_point = nullptr;
    std::vector<Call> calls;
    std::vector<Violation> violations;
    HandlePool handles;
    SuiteReferences suites;
    std::vector<Parameter> parameters;  ///< the input layer first
    std::vector<std::int32_t> pixel_formats;
    FrameState* frame = nullptr;  ///< null outside frame commands
    InstanceState session_instance;
    InstanceState* instance = &session_instance;  ///< never null

    PF_InData in{};
    PF_UtilCallbacks utils{};
    PF_Cmd command = -1;  ///< the running one
    Message message;

    PF_OutData& out() { return guarded_out_.data; }

private:
    void check_out_record();
    void tell_stray_calls();

    /// The record handed to the plug-in, with bytes behind it that nobody may touch.
    struct GuardedOut {
        PF_OutData data{};
        unsigned char guard[64];
    };
    GuardedOut guarded_out_;
    std::exception_ptr failure_;
    std::map<std::string, int, std::less<>> counts_;
};

/// A callback's body with the current session; a call from outside a command fails and is counted.
template <class Body>
std::int32_t answer_call(const char* name, const std::string& arguments, Body&& body) {
    HostState* const state = HostState::called();
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
            return state.refuse(name, "the effect reference is not the one handed out");
        }
        return body(state);
    });
}

/// "value/scale", as the call record shows times.
std::string shown_time(A_long value, A_u_long scale);

}  // namespace host
