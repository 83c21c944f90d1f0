// One run of a host with one plug-in, from loading to the last set-down.
//
//     host::Session session("Lumivar.plugin");
//     const host::Frame frame = session.render(scene, scene.composition.frame_time(0));
//
// The host keeps to the order of commands of a real one, owns what a host owns, and notes what the
// plug-in does against the rules.
#pragma once

#include <host/calls.h>
#include <host/controls.h>
#include <host/errors.h>
#include <host/module.h>
#include <host/scene.h>
#include <host/world.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// Whom the host pretends to be.
enum class Application {
    AfterEffects,  ///< smart rendering at three depths, all suites
    Premiere,      ///< plain rendering in 8 bits; no AEGP suites, no fill matte or world suite
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

/// A text that the plug-in left for the user.
struct Message {
    std::string text;
    bool is_error = false;
};

struct RenderOptions {
    Depth depth = Depth::Float;
    /// Size of the frame; 0 is the composition's. Another size shows the same view, as a host's
    /// lower resolutions do.
    int width = 0;
    int height = 0;
    /// Bytes behind each row of the output and of the input layer; multiples of 4.
    int output_padding = kDefaultRowPadding;
    int input_padding = kDefaultRowPadding + 16;
    /// Pixel format to tell the plug-in in place of the depth's own, to see what it does with it.
    std::optional<std::int32_t> pixel_format;
    /// Whether the render follows the pre-render; a host may change its mind.
    bool render_follows = true;
};

struct Frame {
    /// The output; without pixels if the plug-in was not asked to render.
    World world;
    Time time;
    bool rendered = false;    ///< the plug-in was asked for pixels
    std::int32_t status = 0;  ///< of the render command, or of the pre-render if that failed
    Message message;          ///< of that command
    Rect request;
    Rect result_rect;  ///< as the plug-in declared them at pre-render
    Rect max_result_rect;
    std::int32_t pixel_format = 0;  ///< as told to the plug-in
    std::size_t undrawn_pixels = 0;
    /// Whether any pixel was drawn. A failed frame may come with status 0: this tells.
    bool drawn = false;

    std::vector<Call> calls;  ///< of this frame's commands
    /// Composition times at which the camera's matrix was asked for, in order.
    std::vector<Time> camera_times;
    int open_param_checkouts = 0;         ///< parameters checked out and not in again
    int data_deletions = 0;               ///< calls of the deleter of the pre-render data
    std::vector<std::string> violations;  ///< rules that the plug-in broke, in words
};

class Session {
public:
    /// Loads the plug-in and sends global set-up, parameter set-up and sequence set-up. Throws
    /// `ModuleError`, `ModuleDefect`, and `EffectError` with the plug-in's own message.
    explicit Session(const std::filesystem::path& plugin, SessionOptions options = {});
    /// Closes; what goes wrong then is lost.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Sends sequence set-down and global set-down and unloads the plug-in. Throws `ModuleDefect`
    /// and `EffectError`. Nothing but `violations`, `calls` and `messages` may be asked for
    /// afterwards.
    void close();

    const EffectInfo& info() const;
    /// The module file.
    const std::filesystem::path& file() const;
    /// The folder where the bundle stands.
    const std::filesystem::path& folder() const;
    /// The controls in the order of declaration, the input layer (index 0) left out.
    const std::vector<DeclaredControl>& controls() const;

    /// The text of the about box.
    std::string about();
    /// The plug-in's dependencies: 0 none, 1 all, 2 the missing ones. Nothing when it gives no
    /// text.
    std::optional<std::string> dependencies(int check_type);
    /// The second word of output flags for a scene at a time, as the plug-in leaves it when it
    /// finds `before` there (null: what it declared). Throws `SceneError`, `ModuleDefect` and
    /// `EffectError`.
    std::int32_t dynamic_flags(const Scene& scene, Time time,
                               std::optional<std::int32_t> before = std::nullopt);

    /// Renders the scene at a time: dynamic flags, pre-render, render, deletion of the pre-render
    /// data; or the plain commands for a plug-in or an application without smart rendering.
    ///
    /// Throws `SceneError` for controls that do not fit, `FrameError` for a request that cannot be
    /// served, `ModuleDefect`. A status of the plug-in is no exception but stands in the frame.
    Frame render(const Scene& scene, Time time, const RenderOptions& options = {});

    /// Rules that the plug-in broke since the session began, in words.
    const std::vector<std::string>& violations() const;
    /// What passed outside frames since the session began; a frame carries its own.
    const std::vector<Call>& calls() const;
    /// Texts that the plug-in left for the user with successful commands.
    const std::vector<Message>& messages() const;
    /// Pixel formats that the plug-in declared at global set-up (Premiere).
    const std::vector<std::int32_t>& declared_pixel_formats() const;
    /// Host handles not yet disposed of.
    std::size_t live_handles() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace host
