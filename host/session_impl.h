// One session's insides: life of the plug-in in session.cpp, frames in session_render.cpp.
#pragma once

#include <host/session.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host_state.h"

namespace host {

class Session::Impl {
public:
    Impl(const std::filesystem::path& plugin, SessionOptions options);

    void close();
    std::string about();
    std::optional<std::string> dependencies(int check_type);
    std::int32_t dynamic_flags(const Scene& scene, Time time, std::optional<std::int32_t> before);
    Frame render(const Scene& scene, Time time, const RenderOptions& options);

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
    /// The same; throws `EffectError` for any status but 0.
    void demand(PF_Cmd command, void* extra = nullptr);
    void set_up();
    void keep_message();

    // Frames.
    bool smart() const;
    FrameState new_frame(const Scene& scene, Time time) const;
    void tell_time(const FrameState& frame, const RenderOptions& options);
    void prepare_worlds(FrameState& frame, const RenderOptions& options, const Rect& area);
    PF_Err ask_dynamic_flags();
    void render_smart(FrameState& frame, const RenderOptions& options, Frame& result);
    void render_plain(FrameState& frame, const RenderOptions& options, Frame& result);
    void smart_render(FrameState& frame, const PF_RenderRequest& request, short depth, void* data,
                      Frame& result);
    void note_status(PF_Err status, Frame& result);
    void inspect_worlds(const FrameState& frame);
    void inspect_balance(const SuiteReferences& suites_before, std::size_t handles_before);
    std::optional<std::string> take_text(PF_Handle handle);
};

}  // namespace host
