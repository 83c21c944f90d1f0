// One run of a host with one plug-in, from loading to the last set-down.
//
//     host::Session session("Lumivar.plugin");
//     const host::Frame frame = session.render(scene, scene.composition.frame_time(0));
//
// That is one layer with the effect, its frames made one by one; host/instance.h has several at
// once and every step of a frame. The host keeps to the order of commands of a real one, owns what
// a host owns, and notes what the plug-in does against the rules.
#pragma once

#include <host/calls.h>
#include <host/controls.h>
#include <host/errors.h>
#include <host/frame.h>
#include <host/module.h>
#include <host/scene.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// Whom the host pretends to be.
enum class Application {
    AfterEffects,  ///< smart rendering at three depths, all suites but Premiere's pixel formats
    Premiere,      ///< plain rendering in the pixel formats that the effect declares; no AEGP
                   ///< suites, no fill matte or world suite, no 16-bit pixel access
};

struct SessionOptions {
    Application application = Application::AfterEffects;
    CallFilter filter;  ///< null: every call succeeds
};

/// What the plug-in declared of itself at global set-up.
struct EffectInfo {
    std::uint32_t version = 0;  ///< packed, as the interface has it
    std::int32_t out_flags = 0;
    std::int32_t out_flags2 = 0;
    int num_params = 0;  ///< as the plug-in counts them, the input layer included

    /// "2.0.0": major, minor, bug fix.
    std::string version_text() const;
};

/// Both words of an effect's output flags.
struct OutputFlags {
    std::int32_t first = 0;
    std::int32_t second = 0;
};

/// How a command that has no function of its own here was answered.
struct Answer {
    std::int32_t status = 0;
    Message message;
    /// Something was written to the command's own record.
    bool record_written = false;
};

class Session {
public:
    /// Loads the plug-in and sends global set-up, parameter set-up and sequence set-up. Throws
    /// `ModuleError`, `ModuleDefect`, and `EffectError` with the plug-in's own message and what it
    /// broke on the way.
    explicit Session(const std::filesystem::path& plugin, SessionOptions options = {});
    /// Closes; errors are dropped. Call `close` to get them.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Sends sequence set-down and global set-down and unloads the plug-in. Throws `ModuleDefect`
    /// and `EffectError`. Nothing but `violations`, `calls` and `messages` may be asked for
    /// afterwards.
    void close();

    const EffectInfo& info() const;
    /// The folder where the bundle stands.
    const std::filesystem::path& folder() const;
    /// The controls in the order of declaration, the input layer (index 0) left out.
    const std::vector<DeclaredControl>& controls() const;

    /// The text of the about box.
    std::string about();
    /// The plug-in's dependencies: 0 none, 1 all, 2 the missing ones. Nothing when it gives no
    /// text.
    std::optional<std::string> dependencies(int check_type);
    /// The output flags for a scene at a time, as the plug-in leaves them when it finds those that
    /// it declared, or `before` as the second word. Throws `SceneError`, `ModuleDefect` and
    /// `EffectError`.
    OutputFlags dynamic_flags(const Scene& scene, Time time,
                              std::optional<std::int32_t> before = std::nullopt);

    /// Sends a command by its number, with the controls' initial values and without a world. Where
    /// a record of its own is due it is blank: for commands that mean nothing to the plug-in, or
    /// that come without one. Throws `ModuleDefect`.
    Answer command(std::int32_t number);

    /// Renders the scene at a time: dynamic flags, pre-render, render, deletion of the pre-render
    /// data; or the plain commands for a plug-in or an application without smart rendering.
    ///
    /// Throws `SceneError` for controls that do not fit, `FrameError` for a request that cannot be
    /// served, `ModuleDefect`. A status of the plug-in is no exception but stands in the frame.
    Frame render(const Scene& scene, Time time, const RenderOptions& options = {});

    /// Rules that the plug-in broke since the session began.
    const std::vector<Violation>& violations() const;
    /// What passed outside frames since the session began; a frame carries its own.
    const std::vector<Call>& calls() const;
    /// Texts that the plug-in left for the user with successful commands.
    const std::vector<Message>& messages() const;
    /// Pixel formats that the plug-in declared at global set-up (Premiere).
    const std::vector<std::int32_t>& declared_pixel_formats() const;
    /// Host handles not yet disposed of.
    std::size_t live_handles() const;
    /// Forgets violations, calls and messages so far, so that a long session does not grow.
    void forget();

    class Impl;

private:
    friend class EffectInstance;
    std::unique_ptr<Impl> impl_;
};

}  // namespace host
