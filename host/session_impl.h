// One session's insides: life of the plug-in in session.cpp, frames in session_render.cpp,
// a frame on its way in frame_run.h.
#pragma once

#include <host/session.h>

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

    void close();
    std::string about();
    std::optional<std::string> dependencies(int check_type);
    OutputFlags dynamic_flags(const Scene& scene, Time time, std::optional<std::int32_t> before);
    Answer command(std::int32_t number);
    Frame render(const Scene& scene, Time time, const RenderOptions& options);

    // The steps of a frame, each of which may fail with `ModuleDefect`.
    /// Throws `FrameError` for what cannot be asked for.
    std::unique_ptr<FrameRun> begin(InstanceState& instance, const Project& project,
                                    const LayerSpec& layer, Time composition_time,
                                    const RenderOptions& options);
    void pre_render(FrameRun& run);
    void smart_render(FrameRun& run);
    void delete_data(FrameRun& run);
    /// All of them.
    Frame render(InstanceState& instance, const Project& project, const LayerSpec& layer,
                 Time composition_time, const RenderOptions& options);
    /// The finished frame, its pixels looked at.
    static Frame finish(FrameRun& run);

    void start_sequence(InstanceState& instance);
    void end_sequence(InstanceState& instance);
    /// Whether a frame with these wishes goes by smart rendering.
    bool smart(const RenderOptions& options = {}) const;
    void report_balance(const Ledger& ledger);

    // First, so that it is unloaded last: the state may hold what the module made.
    std::optional<Module> module;
    HostState state;
    EffectInfo info;
    std::vector<DeclaredControl> controls;
    std::vector<Message> messages;
    std::filesystem::path file;
    std::filesystem::path folder;

private:
    /// Sends a command over the output record as the host knows it.
    PF_Err send(PF_Cmd command, PF_ParamDef** params = nullptr, PF_EffectWorld* output = nullptr,
                void* extra = nullptr);
    /// What the effect declared at global set-up holds until the end.
    void check_declarations(PF_Cmd command);
    /// Sends it too; throws `EffectError` for any status but 0.
    void demand(PF_Cmd command, void* extra = nullptr);
    void set_up();
    /// Throws the error on, with what was broken until then.
    [[noreturn]] void refuse(const EffectError& error);
    void keep_message();

    // Frames.
    void tell_time(const FrameRun& run);
    /// A violation if the record, named in words, was written to.
    template <class Record>
    void check_kept(const std::string& name, KeptRecord<Record>& record) {
        if (record.restore()) {
            state.violation(name + "'s record was written to");
        }
    }
    void prepare_worlds(FrameRun& run, const Rect& area);
    PF_Err ask_dynamic_flags();
    void plain_render(FrameRun& run);
    void note_status(PF_Err status, Frame& result);
    void inspect_worlds(const FrameState& frame);
    std::optional<std::string> take_text(PF_Handle handle);
};

}  // namespace host
