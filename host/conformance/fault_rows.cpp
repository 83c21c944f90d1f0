// Rows of frames in a host that fails: every call that a good frame makes fails in turn.
#include <host_api/effect_interface.h>

#include <algorithm>
#include <functional>

#include "examination.h"
#include "fault_family.h"
#include "frame_kinds.h"
#include "frames.h"
#include "growth.h"
#include "identities.h"
#include "played_scene.h"
#include "rules.h"
#include "set_up_faults.h"

namespace conformance {
namespace {

using host::CallFault;
using host::FaultPlan;
using host::Frame;
using host::Session;

/// What fails in it is a fault of the frame; what it does anyway is told elsewhere.
struct Good {
    std::vector<std::byte> picture;
    std::vector<std::string> violations;
    int open_param_checkouts = 0;
    bool handle_left = false;
};

/// A session whose host fails as planned.
class FaultySession {
public:
    FaultySession(const Examination& run, const FrameKind& kind)
        : kind_(kind), session_(run.open({kind.application, plan_.filter()})) {}

    Frame draw() {
        const host::Scene scene = pan_scene();
        return session_.render(scene, scene.composition.frame_time(kFrame), kind_.options());
    }
    /// A frame with faults; whether each of them was delivered is told.
    Frame draw(const std::vector<CallFault>& faults, bool& delivered) {
        plan_.arm(faults);
        Frame frame = draw();
        delivered = plan_.delivered_now().size() == faults.size();
        plan_.disarm();
        return frame;
    }
    /// What the end of the session broke.
    std::vector<std::string> close() {
        session_.forget();
        session_.close();
        return session_.violations();
    }
    Session& session() { return session_; }

private:
    const FrameKind& kind_;
    FaultPlan plan_;
    Session session_;
};

Good good_frame(FaultySession& host) {
    const Frame frame = host.draw();
    return {pixels(frame), frame.violations, frame.open_param_checkouts, frame.handle_left};
}

/// How frames with faults ended.
struct Ends {
    int faults = 0;
    int errors = 0;
    int whole = 0;
    int none = 0;

    std::string text() const {
        return std::to_string(faults) + (faults == 1 ? " fault: " : " faults: ") +
               std::to_string(errors) + " answered with an error, " + std::to_string(whole) +
               " with a picture, " + std::to_string(none) + " with none";
    }
};

/// What an effect owes under a fault in a kind of frame.
struct Owed {
    Debt debt;
    Drawing drawing;
    bool cancelled;  ///< by the user, which every caller has to learn
};

void judge(const Frame& frame, const Owed& owed, const Good& good, Ends& ends, Notes& notes) {
    const std::size_t all = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(frame.world.height());
    const bool whole = frame.rendered && frame.undrawn_pixels == 0;
    ++ends.faults;
    ends.errors += frame.status != PF_Err_NONE ? 1 : 0;
    ends.whole += frame.status == PF_Err_NONE && whole ? 1 : 0;
    ends.none += frame.status == PF_Err_NONE && !whole ? 1 : 0;

    const bool rests = owed.drawing == Drawing::WholeOrNone && frame.undrawn_pixels == all;
    if (frame.status == PF_Err_NONE && (owed.debt == Debt::Error || !(whole || rests))) {
        notes.find("", whole ? "status 0, a picture without what failed" : "status 0, no picture",
                   kStatusZero);
    }
    if (owed.cancelled && owed.debt == Debt::Error && frame.status != PF_Err_NONE &&
        frame.status != PF_Interrupt_CANCEL) {
        notes.find("", "status " + std::to_string(frame.status) + " instead of 517, the user's " +
                           "cancellation");
    }
    if (frame.rendered && frame.undrawn_pixels != 0 && frame.undrawn_pixels != all) {
        notes.find("", "half a picture: " + std::to_string(frame.undrawn_pixels) + " of " +
                           std::to_string(all) + " pixels are not drawn");
    }
    for (const std::string& violation : beyond(frame.violations, good.violations)) {
        notes.find("", violation, deviation_under_faults(violation));
    }
    if (frame.handle_left && !good.handle_left) {
        notes.find("", "a handle stands in the slot of the callbacks", kHandleInRecord);
    }
    if (frame.open_param_checkouts > good.open_param_checkouts) {
        notes.find("", std::to_string(frame.open_param_checkouts) +
                           " parameters checked out and not in again");
    }
}

/// Calls that only a frame with a fault makes.
std::map<std::string, int> calls_beyond(const Frame& frame,
                                        const std::map<std::string, int>& good) {
    std::map<std::string, int> calls = host::calls_that_can_fail(frame.calls);
    std::erase_if(calls, [&](const auto& call) { return good.count(call.first) != 0; });
    return calls;
}

/// Frames of one kind with one call failing.
class FaultyFrames {
public:
    FaultyFrames(const Examination& run, const FrameKind& kind, const FailingCall& call,
                 const GoodRun& good_run, Notes& notes)
        : run_(run), kind_(kind), call_(call), good_run_(good_run), notes_(notes) {}

    /// Returns how many faults were delivered.
    int play() {
        Good good;
        const std::vector<CallFault> late = play_in_one_session(good);
        // What an effect does but once in a session only fails in the first frame of one.
        for (const CallFault& fault : late) {
            play(fault, good, [&](const auto& faults, bool& delivered) {
                FaultySession host(run_, kind_);
                Frame frame = host.draw(faults, delivered);
                tell(host.close());
                return frame;
            });
        }
        notes_.say(ends_.text());
        return ends_.faults;
    }

private:
    using Draw = std::function<Frame(const std::vector<CallFault>&, bool& delivered)>;

    /// Between good frames, which must stay the same. Returns the faults that came too late for the
    /// calls that they are for.
    std::vector<CallFault> play_in_one_session(Good& good) {
        notes_.doing("set-up");
        FaultySession host(run_, kind_);
        notes_.doing("the frame without faults");
        good = good_frame(host);
        std::vector<CallFault> late;
        for (const CallFault& fault : call_.faults()) {
            const bool played = play(fault, good, [&](const auto& faults, bool& delivered) {
                Frame frame = host.draw(faults, delivered);
                // The host's own record grows with what passes.
                host.session().forget();
                return frame;
            });
            if (!played) {
                late.push_back(fault);
            }
        }
        notes_.doing("the frame without faults, afterwards");
        const Frame after = host.draw();
        // An effect whose frames differ anyway, or that writes where others' memory lies, is told
        // so elsewhere.
        const bool steady =
            (!kind_.smart || run_.stands("frames.again")) && run_.stands("frames.bounds");
        if (steady && (pixels(after) != good.picture || after.violations != good.violations)) {
            notes_.find("", "afterwards the frame without faults is another");
        }
        notes_.doing("set-down");
        tell(host.close());
        return late;
    }

    /// False when the fault could not be delivered.
    bool play(const CallFault& fault, const Good& good, const Draw& draw) {
        notes_.doing(text_of(fault));
        bool delivered = false;
        const Frame frame = draw({fault}, delivered);
        if (!delivered) {
            return false;
        }
        const Owed owed = {call_.debt(), due(kind_, *run_.declared),
                           fault.status == PF_Interrupt_CANCEL && call_.asks_user()};
        judge(frame, owed, good, ends_, notes_);
        // What a fault leads to can fail too.
        for (const FailingCall& next : failing_calls(calls_beyond(frame, good_run_.calls))) {
            const CallFault second = {next.name, 0, PF_Interrupt_CANCEL};
            notes_.doing(text_of(fault) + " and " + text_of(second));
            const Frame other = draw({fault, second}, delivered);
            if (delivered) {
                judge(other, owed, good, ends_, notes_);
            }
        }
        if (good_run_.lossless && !loses_handles(beyond(frame.violations, good.violations))) {
            const Growth growth = growth_of([&] {
                notes_.doing(text_of(fault) + ", again and again");
                draw({fault}, delivered);
            });
            if (!growth.none()) {
                notes_.find("", text_of(growth));
            }
        }
        return true;
    }

    void tell(const std::vector<std::string>& at_set_down) {
        for (const std::string& violation : beyond_at_set_down(at_set_down, good_run_.violations)) {
            notes_.find("", violation, deviation_under_faults(violation));
        }
    }

    const Examination& run_;
    const FrameKind& kind_;
    const FailingCall& call_;
    const GoodRun& good_run_;
    Notes& notes_;
    Ends ends_;
};

/// Two frames of a session: an effect may do things but once, or from the second frame on.
GoodRun play_well(const Examination& run, const FrameKind& kind, Notes& notes) {
    notes.doing("set-up");
    Session session = run.open({kind.application, nullptr});
    const host::Scene scene = pan_scene();
    GoodRun good;
    for (int i = 0; i < 2; ++i) {
        notes.doing(kind.sent);
        const Frame frame =
            session.render(scene, scene.composition.frame_time(kFrame), kind.options());
        if (frame.status != PF_Err_NONE) {
            notes.find("", status_text(frame));
        }
        for (const auto& [call, count] : host::calls_that_can_fail(frame.calls)) {
            good.calls[call] = std::max(good.calls[call], count);
        }
    }
    notes.doing("set-down");
    session.close();
    good.violations = session.violations();
    return good;
}

const char* promise(const FailingCall& call) {
    switch (call.debt()) {
        case Debt::Error:
            return "an error; all is given back";
        case Debt::ErrorOrFallback:
        case Debt::Nothing:
            break;
    }
    return "an error or a whole picture; all is given back";
}

}  // namespace

void examine_faults(Examination& run) {
    if (!run.declared) {
        run.leave_out("faults", run.why_not_declared);
        return;
    }
    examine_set_up_faults(run);
    for (const FrameKind& kind : frame_kinds(*run.declared)) {
        examine_family(run, {kind.name,
                             kind.sent,
                             kind.row(),
                             {"leaks." + kind.name,
                              "leaks.sessions" + std::string(identity_of(kind.application).suffix)},
                             promise,
                             [&](Notes& notes) { return play_well(run, kind, notes); },
                             [&](const FailingCall& call, const GoodRun& good, Notes& notes) {
                                 return FaultyFrames(run, kind, call, good, notes).play();
                             }});
    }
}

}  // namespace conformance
