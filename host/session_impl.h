// The implementation of a session: set-up and set-down are in session.cpp, frames in
// session_render.cpp.
#pragma once

#include <host/session.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host_state.h"
#include "kept_record.h"

namespace host {

struct FrameRun;

class Session::Impl {
public:
    Impl(const std::filesystem::path& plugin, SessionOptions options);

    /// Sends a command over the output record as the host knows it.
    PF_Err send(PF_Cmd command, PF_ParamDef** params = nullptr, PF_EffectWorld* output = nullptr,
                void* extra = nullptr);
    /// Sends it too; throws `EffectError` for any status but 0.
    void demand(PF_Cmd command, void* extra = nullptr);
    /// The same for one instance.
    void demand_of(InstanceState& instance, PF_Cmd command) {
        const Exchanged<InstanceState*> running(state.instance, &instance);
        demand(command);
    }
    OutputFlags dynamic_flags(const Scene& scene, Time time, std::optional<std::int32_t> before);

    // The steps of a frame, each of which may fail with `ModuleDefect`.
    /// Throws `FrameError` for what cannot be asked for.
    std::unique_ptr<FrameRun> begin(InstanceState& instance, const Project& project,
                                    const LayerSpec& layer, Time composition_time,
                                    const RenderOptions& options);
    void pre_render(FrameRun& run);
    void smart_render(FrameRun& run);
    void delete_data(FrameRun& run);
    /// All steps.
    Frame render(InstanceState& instance, const Project& project, const LayerSpec& layer,
                 Time composition_time, const RenderOptions& options);
    /// The finished frame, with its undrawn pixels counted.
    static Frame finish(FrameRun& run);

    /// Whether a frame with these options is made by smart rendering.
    bool smart(const RenderOptions& options = {}) const;
    /// A violation for each suite, and one for the handles, that were not given back.
    void report_balance(const Ledger& ledger);
    /// The same for all that the plug-in holds now.
    void report_balance() {
        report_balance({state.suites, static_cast<std::ptrdiff_t>(state.handles.live())});
    }

    // First, so that it is unloaded last: the state may hold objects whose code is the module's.
    std::optional<Module> module;
    HostState state;
    /// Kept from one frame to the next, for those with a blank input layer.
    World blank_input;
    EffectInfo info;
    std::vector<DeclaredControl> controls;
    std::vector<Message> messages;
    std::filesystem::path folder;

private:
    /// A violation for each field that no longer holds what the effect declared at global set-up.
    void check_declarations(PF_Cmd command);
    void set_up();
    /// Throws the error again, with the violations until then.
    [[noreturn]] void refuse(const EffectError& error);

    // Frames.
    void tell_time(const FrameRun& run);
    /// A violation if the record, named in words, was written to.
    template <class Record>
    void check_kept(const std::string& name, KeptRecord<Record>& record) {
        if (record.restore()) {
            state.violation(Rule::Records, name + "'s record was written to");
        }
    }
    void prepare_worlds(FrameRun& run, const Rect& area);
    PF_Err ask_dynamic_flags();
    void plain_render(FrameRun& run);
    void note_status(PF_Err status, Frame& result);
    void inspect_worlds(const FrameRun& run);
};

}  // namespace host
