// One effect on one layer, and its frames step by step.
//
//     host::Project project(scene);
//     host::EffectInstance effect(session, project);
//     host::PreRender later = effect.pre_render(project.composition.frame_time(7));
//     host::PreRender never = effect.pre_render(project.composition.frame_time(8));
//     const host::Frame frame = effect.render(later);
//
// Pre-renders may be rendered in any order, those of other instances in between, or not at all:
// each holds the plug-in's data, which is deleted once, with the `PreRender` at the latest.
#pragma once

#include <host/frame.h>
#include <host/project.h>
#include <host/session.h>

#include <cstddef>
#include <memory>

namespace host {

struct FrameRun;

/// What a pre-render left behind. It must not outlive its instance.
class PreRender {
public:
    PreRender(PreRender&& other) noexcept;
    PreRender& operator=(PreRender&& other) noexcept;
    /// Discards; what goes wrong then is a violation in the session.
    ~PreRender();

    /// The frame so far. A render moves its calls, violations and pixels into the frame that it
    /// returns; what happens later is entered here again.
    const Frame& frame() const;
    /// Whether a render may follow: the pre-render succeeded, its result is not empty and has not
    /// been rendered.
    bool renderable() const;
    /// Has the plug-in's data deleted, unless it was already. Throws `ModuleDefect`.
    void discard();

private:
    friend class EffectInstance;
    explicit PreRender(std::unique_ptr<FrameRun> run);
    std::unique_ptr<FrameRun> run_;
};

class EffectInstance {
public:
    /// Puts the effect on a layer and sends sequence set-up. Session and project must outlive it;
    /// the project may change between frames. Throws `std::out_of_range` for a layer that the
    /// project does not have, `ModuleDefect` and `EffectError`.
    EffectInstance(Session& session, const Project& project, std::size_t layer = 0);
    /// Sends sequence set-down; what goes wrong then is a violation in the session.
    ~EffectInstance();
    EffectInstance(const EffectInstance&) = delete;
    EffectInstance& operator=(const EffectInstance&) = delete;

    /// Dynamic flags and pre-render at a composition time. Throws as `Session::render`, and
    /// `FrameError` where there is no smart rendering.
    PreRender pre_render(Time composition_time, const RenderOptions& options = {});
    /// The pixels of a pre-render of this instance. The data is not deleted yet. Throws
    /// `std::logic_error` unless it is renderable, `ModuleDefect`.
    Frame render(PreRender& pre_render);
    /// A frame in one go, as `Session::render` makes it.
    Frame render(Time composition_time, const RenderOptions& options = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace host
