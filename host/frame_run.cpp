#include "frame_run.h"

#include <iterator>
#include <utility>

namespace host {
namespace {

const LayerSpec& checked(const LayerSpec& layer, Time time) {
    if (time.scale == 0) {
        throw FrameError("a time with a scale of 0 is no time");
    }
    return layer;
}

int first_given(int wish, int layer, int composition) {
    return wish != 0 ? wish : layer != 0 ? layer : composition;
}

}  // namespace

FrameRun::FrameRun(Session::Impl& owner, InstanceState& effect, const Project& project,
                   const LayerSpec& layer, Time composition_time, const RenderOptions& wishes)
    : session(owner),
      instance(effect),
      frame(project, checked(layer, composition_time),
            ControlValues(owner.controls, layer.controls), composition_time),
      options(wishes) {
    const Composition& composition = project.composition;
    frame.whole = {0, 0, first_given(wishes.width, layer.width, composition.width),
                   first_given(wishes.height, layer.height, composition.height)};
    frame.request = wishes.region.value_or(frame.whole);
    result.time = composition_time;
    result.layer_time = frame.time;
    result.request = frame.request;
}

FrameRun::~FrameRun() {
    try {
        session.delete_data(*this);
    } catch (const HostError& error) {
        session.state.violation(Rule::Calls, error.what());
    }
    session.report_balance(ledger);
}

bool FrameRun::renderable() const {
    return result.status == PF_Err_NONE && !result.rendered && !result.result_rect.empty() &&
           result.data_deletions == 0;
}

void FrameRun::note_violations(std::size_t first) {
    const std::vector<Violation>& all = session.state.violations;
    result.violations.insert(result.violations.end(),
                             all.begin() + static_cast<std::ptrdiff_t>(first), all.end());
}

FrameStep::FrameStep(FrameRun& run)
    : run_(run),
      state_(run.session.state),
      frame_(state_.frame, &run.frame),
      instance_(state_.instance, &run.instance),
      first_call_(state_.calls.size()),
      first_violation_(state_.violations.size()),
      suites_before_(state_.suites),
      handles_before_(state_.handles.live()) {}

FrameStep::~FrameStep() {
    Frame& result = run_.result;
    const auto calls = state_.calls.begin() + static_cast<std::ptrdiff_t>(first_call_);
    std::move(calls, state_.calls.end(), std::back_inserter(result.calls));
    state_.calls.erase(calls, state_.calls.end());
    run_.note_violations(first_violation_);
    result.camera_times = run_.frame.camera_times;
    result.open_param_checkouts = run_.frame.open_param_checkouts;

    for (const auto& [suite, references] : state_.suites) {
        run_.ledger.suites[suite] += references;
    }
    for (const auto& [suite, references] : suites_before_) {
        run_.ledger.suites[suite] -= references;
    }
    run_.ledger.handles += static_cast<std::ptrdiff_t>(state_.handles.live()) -
                           static_cast<std::ptrdiff_t>(handles_before_);
}

}  // namespace host
