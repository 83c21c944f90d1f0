// A frame being made, from the pre-render to the deletion of its data.
#pragma once

#include <host/frame.h>
#include <host/project.h>

#include <cstddef>

#include "host_state.h"
#include "kept_record.h"
#include "session_impl.h"

namespace host {

struct FrameRun {
    FrameRun(Session::Impl& owner, InstanceState& effect, const Project& project,
             const LayerSpec& layer, Time composition_time, const RenderOptions& wishes);
    FrameRun(const FrameRun&) = delete;
    FrameRun& operator=(const FrameRun&) = delete;
    /// Deletes the data; what goes wrong then is a violation.
    ~FrameRun();

    bool renderable() const;
    /// Enters the session's violations from number `first` on in the frame.
    void note_violations(std::size_t first);

    Session::Impl& session;
    InstanceState& instance;
    FrameState frame;
    RenderOptions options;
    PF_PreRenderInput input{};
    PF_PreRenderOutput output{};
    bool owns_data = false;  ///< the pre-render left data that is not deleted yet
    Ledger ledger;
    Frame result;
};

/// One step of a frame: callbacks work on it, and what happens is entered in its result.
class FrameStep {
public:
    explicit FrameStep(FrameRun& run);
    ~FrameStep();
    FrameStep(const FrameStep&) = delete;
    FrameStep& operator=(const FrameStep&) = delete;

private:
    FrameRun& run_;
    HostState& state_;
    Exchanged<FrameState*> frame_;
    Exchanged<InstanceState*> instance_;
    std::size_t first_call_;
    std::size_t first_violation_;
    SuiteReferences suites_before_;
    std::size_t handles_before_;
};

}  // namespace host
