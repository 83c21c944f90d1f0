#include <host/instance.h>

#include <stdexcept>
#include <utility>

#include "frame_run.h"

namespace host {

PreRender::PreRender(std::unique_ptr<FrameRun> run) : run_(std::move(run)) {}
PreRender::PreRender(PreRender&& other) noexcept = default;
PreRender& PreRender::operator=(PreRender&& other) noexcept = default;
PreRender::~PreRender() = default;

const Frame& PreRender::frame() const { return run_->result; }
bool PreRender::renderable() const { return run_->renderable(); }
void PreRender::discard() { run_->session.delete_data(*run_); }

struct EffectInstance::State {
    Session::Impl& session;
    const Project& project;
    std::size_t layer;
    InstanceState instance{};

    const LayerSpec& spec() const { return project.layers.at(layer); }
};

EffectInstance::EffectInstance(Session& session, const Project& project, std::size_t layer)
    : state_(std::make_unique<State>(State{*session.impl_, project, layer})) {
    state_->spec();
    state_->session.demand_of(state_->instance, PF_Cmd_SEQUENCE_SETUP);
}

EffectInstance::~EffectInstance() {
    try {
        state_->session.demand_of(state_->instance, PF_Cmd_SEQUENCE_SETDOWN);
    } catch (const std::exception& error) {
        state_->session.state.violation(Rule::Calls, error.what());
    }
}

PreRender EffectInstance::pre_render(Time composition_time, const RenderOptions& options) {
    Session::Impl& session = state_->session;
    auto run =
        session.begin(state_->instance, state_->project, state_->spec(), composition_time, options);
    if (!session.smart(options)) {
        throw FrameError("this host or effect lacks smart rendering, and with it pre-renders");
    }
    session.pre_render(*run);
    session.state.rethrow_failure();
    return PreRender(std::move(run));
}

Frame EffectInstance::render(PreRender& pre_render) {
    FrameRun& run = *pre_render.run_;
    if (&run.instance != &state_->instance || !run.renderable()) {
        throw std::logic_error("this pre-render cannot be rendered here, or not again");
    }
    state_->session.smart_render(run);
    state_->session.state.rethrow_failure();
    return Session::Impl::finish(run);
}

Frame EffectInstance::render(Time composition_time, const RenderOptions& options) {
    return state_->session.render(state_->instance, state_->project, state_->spec(),
                                  composition_time, options);
}

}  // namespace host
