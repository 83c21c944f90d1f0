// Rows of a host that fails: every call that an effect makes when all is well fails in turn, in all
// that makes it.
#include <host/errors.h>
#include <host/faults.h>
#include <host_api/effect_interface.h>
#include <osapi/growth.h>

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>

#include "frames.h"
#include "run.h"

namespace check {
namespace {

using host::CallFault;
using host::Frame;
using host::Session;

using Calls = std::map<std::string, int>;  ///< that can fail, with their number

/// Functions whose result is no status, and the one whose status no effect can do anything about.
constexpr std::string_view kSilent[] = {
    "sprintf",     "strcpy", "host_new_handle", "host_lock_handle", "host_get_handle_size",
    "ReleaseSuite"};

/// One call that fails: each time it is made, one after the other, and all times.
struct FailingCall {
    std::string name;   ///< as in `host::Call::name` or `host::acquire_call`
    std::string suite;  ///< of an acquisition: which suite; else empty

    explicit FailingCall(const std::string& call) : name(call) {
        const std::string acquiring = host::acquire_call("");
        suite = call.starts_with(acquiring) ? call.substr(acquiring.size()) : "";
    }
    Debt debt() const {
        const bool silent = std::ranges::find(kSilent, name) != std::end(kSilent);
        return !suite.empty() || name == "AcquireSuite" ? Debt::ErrorOrFallback
               : silent                                 ? Debt::Anything
                                                        : Debt::Error;
    }
    /// Whether the user's cancellation comes this way: the suites for whole projects know none.
    bool asks_user() const { return !name.starts_with("AEGP_"); }
    /// For a row's id: without spaces.
    std::string slug() const {
        std::string text = suite.empty() ? name : "missing-" + suite;
        std::ranges::replace(text, ' ', '-');
        return text;
    }
    std::vector<CallFault> faults(int count) const {
        if (!suite.empty()) {
            return {{name, 0, kSPSuiteNotFoundError}};
        }
        std::vector<CallFault> all;
        for (int nth = 1; nth <= count; ++nth) {
            all.push_back({name, nth, PF_Err_OUT_OF_MEMORY});
        }
        all.push_back({name, 0, PF_Interrupt_CANCEL});
        return all;
    }
};

/// "call 3 of checkout_param failing with 4", "AcquireSuite PF World Suite finding no suite".
std::string text_of(const CallFault& fault) {
    if (fault.status == kSPSuiteNotFoundError) {
        return fault.call + " finding no suite";
    }
    const std::string which = fault.nth == 0 ? "every call" : "call " + std::to_string(fault.nth);
    return which + " of " + fault.call + " failing with " + std::to_string(fault.status);
}

/// How the effect took faults: their number, and how many were answered so.
using Ends = std::array<int, 4>;
enum End { kFaults, kErrors, kPictures, kNeither };

/// What came of playing something once.
struct Outcome {
    bool delivered = true;            ///< all faults were
    std::vector<std::string> errors;  ///< answers that are one
    Calls calls;
    Violations violations;       ///< and what is wrong in answers
    bool refused = false;        ///< at set-up, by an error
    std::optional<Frame> frame;  ///< of frames
};

/// What is played under faults, and what it is like when nothing fails.
struct Kind {
    const Identity* identity;
    const FrameKind* frame;                ///< null: set-up, all questions and set-down
    std::string name;                      ///< "float", "After Effects"
    std::string sent;                      ///< "a float frame"
    std::string stands_on;                 ///< the row of the same without faults
    std::vector<std::string> lossless_by;  ///< the rows that tell whether it loses memory
    bool steady = true;                    ///< two pictures without faults are the same

    Calls calls = {};            ///< of the play without faults
    Violations violations = {};  ///< of its end
    bool lossless = true;        ///< else what faults lose cannot be told from what is lost anyway
};

/// A kind that the host plays again and again: frames in one session, set-up in one for each time.
class Play {
public:
    Play(const Run& run, const Kind& kind, Notes& notes) : run_(run), kind_(kind), notes_(notes) {
        if (kind.frame != nullptr) {
            notes.doing("set-up");
            // A session cannot be moved: it is made in its place.
            session_.reset(new Session(run.open(kind.identity->application, plan_.filter())));
        }
    }
    /// Once, with these faults and no others; `what` tells about them.
    Outcome once(const std::vector<CallFault>& faults, const std::string& what) {
        plan_.arm(faults);
        Outcome outcome = session_ ? frame(what) : set_up(what);
        outcome.delivered = plan_.delivered_now().size() == faults.size();
        plan_.disarm();
        return outcome;
    }
    /// What the end broke, with all before that `once` did not tell.
    Violations close() {
        if (!session_) {
            return {};
        }
        notes_.doing("set-down");
        session_->close();
        return session_->violations();
    }

private:
    Outcome set_up(const std::string& what) {
        Outcome outcome;
        Violations wrong;
        const auto step = [&](const std::string& name) { notes_.doing(name + "; " + what); };
        try {
            step("set-up");
            Session session = run_.open(kind_.identity->application, plan_.filter());
            for (const Question& question : standing_questions(run_, *kind_.identity)) {
                step(question.text.sent);
                const Reply reply = question.ask(session);
                if (!reply.error.empty()) {
                    outcome.errors.push_back(reply.error);
                }
                for (const std::string& text : reply.wrong) {
                    wrong.push_back({host::Rule::Calls, text});
                }
            }
            step("set-down");
            try {
                session.close();
            } catch (const host::EffectError& error) {
                outcome.errors.emplace_back(error.what());
            }
            outcome.calls = host::calls_that_can_fail(session.calls());
            outcome.violations = session.violations();
            outcome.violations.insert(outcome.violations.end(), wrong.begin(), wrong.end());
        } catch (const host::EffectError& error) {
            outcome.refused = true;
            outcome.errors.emplace_back(error.what());
            outcome.violations = error.violations();
        }
        return outcome;
    }

    Outcome frame(const std::string& what) {
        notes_.doing(what);
        const host::Scene scene = pan_scene();
        Frame frame =
            session_->render(scene, scene.composition.frame_time(kFrame), kind_.frame->options());
        // The host's own record grows with what passes.
        session_->forget();
        Outcome outcome;
        if (frame.status != PF_Err_NONE) {
            outcome.errors.push_back(status_text(frame));
        }
        outcome.calls = host::calls_that_can_fail(frame.calls);
        outcome.violations = frame.violations;
        outcome.frame = std::move(frame);
        return outcome;
    }

    const Run& run_;
    const Kind& kind_;
    Notes& notes_;
    host::FaultPlan plan_;
    std::unique_ptr<Session> session_;  ///< of frames
};

/// The faults of one call in one kind.
class FaultyPlay {
public:
    /// Counts in `ends`.
    FaultyPlay(const Run& run, const Kind& kind, const FailingCall& call, Notes& notes, Ends& ends)
        : run_(run), kind_(kind), call_(call), notes_(notes), ends_(ends) {}

    void play() {
        Play play(run_, kind_, notes_);
        const Outcome good = play.once({}, "nothing fails");
        std::vector<CallFault> played;
        std::vector<CallFault> late;
        // The host's memory grows by handles that are lost.
        bool lossless = kind_.lossless;
        for (const CallFault& fault : call_.faults(kind_.calls.at(call_.name))) {
            const std::optional<Outcome> outcome = play_fault(play, good, fault);
            (outcome ? played : late).push_back(fault);
            lossless = lossless && !(outcome && breaks(beyond(outcome->violations, good.violations),
                                                       host::Rule::Handles));
        }
        if (lossless) {
            look_for_losses(play, played);
        }
        const Outcome after = play.once({}, "nothing fails any more");
        const bool same =
            (!good.frame || after.frame->world.packed() == good.frame->world.packed()) &&
            after.errors == good.errors && after.violations == good.violations;
        if (kind_.steady && !same) {
            notes_.find("afterwards it is another without faults");
        }
        tell(beyond_at_set_down(play.close(), kind_.violations));
        // What an effect does but once in a session only fails at the first time in one.
        for (const CallFault& fault : late) {
            Play fresh(run_, kind_, notes_);
            if (play_fault(fresh, good, fault)) {
                tell(beyond_at_set_down(fresh.close(), kind_.violations));
            }
        }
    }

private:
    /// Nothing when the fault could not be delivered.
    std::optional<Outcome> play_fault(Play& play, const Outcome& good, const CallFault& fault) {
        Outcome outcome = play.once({fault}, text_of(fault));
        if (!outcome.delivered) {
            return std::nullopt;
        }
        note(outcome, good, fault, text_of(fault));
        // What a fault leads to can fail too.
        for (const auto& [name, count] : outcome.calls) {
            if (kind_.calls.count(name) == 0) {
                const CallFault second = {name, 0, PF_Interrupt_CANCEL};
                const std::string both = text_of(fault) + " and " + text_of(second);
                if (const Outcome other = play.once({fault, second}, both); other.delivered) {
                    note(other, good, fault, both);
                }
            }
        }
        return outcome;
    }

    void note(const Outcome& outcome, const Outcome& good, const CallFault& fault,
              const std::string& what) {
        const bool picture =
            outcome.frame && outcome.frame->rendered && outcome.frame->undrawn_pixels == 0;
        ++ends_[kFaults];
        ++ends_[!outcome.errors.empty() ? kErrors : picture ? kPictures : kNeither];
        notes_.doing(what);
        if (outcome.frame) {
            const bool cancelled = fault.status == PF_Interrupt_CANCEL && call_.asks_user();
            judge(*outcome.frame,
                  {kind_.frame->drawing, call_.debt(), cancelled, good.frame->open_param_checkouts,
                   good.frame->handle_left},
                  notes_);
        } else if (call_.name == "add_param" && !outcome.refused) {
            // A control that is not there moves all that follow.
            notes_.find("set-up goes on with status 0");
        }
        tell(beyond(outcome.violations, good.violations));
    }

    /// All together first, since most effects lose nothing; then each, to name the one that does.
    void look_for_losses(Play& play, const std::vector<CallFault>& faults) {
        const auto again = [&](const CallFault& fault) {
            play.once({fault}, text_of(fault) + ", again and again");
        };
        // Two failures at the least are measured, of one round or of two.
        const OSAPI::Growth all = OSAPI::growth_of(
            [&] { std::for_each(faults.begin(), faults.end(), again); }, faults.size() > 1 ? 1 : 2);
        bool named = all.none();
        for (const CallFault& fault : named ? std::vector<CallFault>() : faults) {
            if (const OSAPI::Growth growth = OSAPI::growth_of([&] { again(fault); });
                !growth.none()) {
                notes_.find(text_of(growth));
                named = true;
            }
        }
        if (!named) {
            notes_.doing("all of these faults, again and again");
            notes_.find(text_of(all));
        }
    }

    void tell(const Violations& violations) {
        for (const host::Violation& violation : violations) {
            notes_.find(violation.text, deviation_under_faults(violation));
        }
    }

    const Run& run_;
    const Kind& kind_;
    const FailingCall& call_;
    Notes& notes_;
    Ends& ends_;
};

struct Family {
    std::string id;
    std::string what;  ///< "set-up and questions", "frames"
    bool frames;
    std::vector<Kind> kinds;
};

// What the probes keep.
constexpr char kCalls[] = "calls";
constexpr char kViolationsAtEnd[] = "violations";
constexpr char kEnds[] = "ends";

/// Twice: an effect may do things but once, or from the second time on.
void play_well(const Run& run, const Kind& kind, Notes& notes) {
    Play play(run, kind, notes);
    Calls calls;
    for (int i = 0; i < 2; ++i) {
        const Outcome outcome = play.once({}, kind.sent);
        notes.find(outcome.errors);
        for (const auto& [call, count] : outcome.calls) {
            calls[call] = std::max(calls[call], count);
        }
    }
    notes.keep(kCalls, calls);
    notes.keep(kViolationsAtEnd, play.close());
}

/// The kinds and the first fault: " (3 times in 8-bit and float, first with call 1 of abort failing
/// with 4)".
std::string with_places(const Counted& one) {
    const bool once = one.times == 1;
    const std::string& fault = one.finding.during;
    return (once ? " (once in " : " (" + std::to_string(one.times) + " times in ") +
           joined(one.plays) + (fault.empty() ? "" : (once ? ", with " : ", first with ") + fault) +
           ")";
}

/// Without faults; kinds that do not come back so are taken from the family. All calls of the rest.
Calls check_without_faults(Run& run, Family& family) {
    std::vector<Finding> found;
    std::vector<Kind> good;
    Calls all_calls;
    const std::string id = family.id + ".without-faults";
    for (Kind& kind : family.kinds) {
        const std::string here = family.id + ", " + kind.name;
        if (!run.stands(kind.stands_on)) {
            run.leave_out(here, "it fails without faults, see " + kind.stands_on);
            continue;
        }
        const Heard heard = run.probe(id, [&](Notes& notes) {
            notes.at(kind.name);
            play_well(run, kind, notes);
        });
        if (run.missed(here, heard)) {
            continue;
        }
        const std::vector<Finding> own = heard.own();
        found.insert(found.end(), own.begin(), own.end());
        if (!own.empty()) {
            run.leave_out(here, "it fails without faults, see " + id);
            continue;
        }
        heard.kept.at(kCalls).get_to(kind.calls);
        heard.kept.at(kViolationsAtEnd).get_to(kind.violations);
        for (const std::string& row : kind.lossless_by) {
            if (kind.lossless && !run.stands(row)) {
                kind.lossless = false;
                run.leave_out(here + ", memory", "it may be lost without faults too, see " + row);
            }
        }
        all_calls.insert(kind.calls.begin(), kind.calls.end());
        good.push_back(kind);
    }
    if (!good.empty() || !found.empty()) {
        run.enter({id, family.what + ", again; nothing fails", "it comes back each time"},
                  told_once(found, with_places),
                  "status 0; calls that can fail: " + std::to_string(all_calls.size()));
    }
    family.kinds = good;
    return all_calls;
}

const char* promise(const Family& family, const FailingCall& call) {
    const bool owes_error = family.frames ? call.debt() == Debt::Error : call.name == "add_param";
    return owes_error      ? "an error; all is given back"
           : family.frames ? "an error or a whole picture; all is given back"
                           : "an error, or it goes on; all is given back";
}

/// One call in all kinds that make it. A kind in which the process dies costs that kind alone.
void check_call(Run& run, const Family& family, const FailingCall& call) {
    const std::string id = family.id + "." + call.slug();
    std::vector<const Kind*> kinds;
    std::vector<std::string> names;
    for (const Kind& kind : family.kinds) {
        if (kind.calls.count(call.name) != 0) {
            kinds.push_back(&kind);
            names.push_back(kind.name);
        }
    }
    std::vector<Finding> found;
    Ends ends = {};
    bool missed = false;
    for (auto next = kinds.begin(); next != kinds.end();) {
        const Heard heard = run.probe(id, [&](Notes& notes) {
            Ends here = {};
            for (auto kind = next; kind != kinds.end(); ++kind) {
                notes.at((*kind)->name);
                try {
                    FaultyPlay(run, **kind, call, notes, here).play();
                } catch (const host::HostError& error) {
                    notes.find(error.what());
                }
                notes.keep(kEnds, here);
            }
        });
        // The kind that it came to; the first, if a module wrote something else to the pipe.
        const auto came_to = std::ranges::find(next, kinds.end(), heard.text("at"), &Kind::name);
        next = came_to == kinds.end() ? next : came_to;
        missed = run.missed(id + ", " + (*next)->name, heard) || missed;
        ++next;
        const std::vector<Finding> all = heard.all();
        found.insert(found.end(), all.begin(), all.end());
        std::ranges::transform(ends, heard.kept.value(kEnds, Ends{}), ends.begin(), std::plus<>());
    }
    if (found.empty() && ends[kFaults] == 0) {
        if (!missed) {
            run.leave_out(id, "the call was made in the run without faults alone");
        }
        return;
    }
    std::string answer = std::to_string(ends[kFaults]) +
                         (ends[kFaults] == 1 ? " fault: " : " faults: ") +
                         std::to_string(ends[kErrors]) + " answered with an error";
    if (family.frames) {
        answer += ", " + std::to_string(ends[kPictures]) + " with a picture, " +
                  std::to_string(ends[kNeither]) + " with none";
    }
    const std::string fails =
        call.suite.empty() ? call.name + " fails" : call.suite + " is missing";
    run.enter({id, family.what + " (" + joined(names) + "); " + fails, promise(family, call)},
              told_once(found, with_places), answer);
}

void check_family(Run& run, Family family) {
    if (!run.needs(family.id)) {
        return;
    }
    for (const auto& [name, count] : check_without_faults(run, family)) {
        const FailingCall call(name);
        if (run.needs(family.id + "." + call.slug())) {
            check_call(run, family, call);
        }
    }
}

}  // namespace

void check_faults(Run& run) {
    Family set_up = {"faults.set-up", "set-up and questions", false, {}};
    for (const Identity& identity : kIdentities) {
        const std::vector<std::string> lossless_by = {"leaks.sessions" + identity.suffix,
                                                      "leaks.questions" + identity.suffix};
        set_up.kinds.push_back(
            {&identity, nullptr, identity.name, set_up.what, identity.set_up_row, lossless_by});
    }
    check_family(run, set_up);

    Family frames = {"faults", "frames", true, {}};
    const std::vector<FrameKind> kinds = frame_kinds(*run.declared);
    for (const FrameKind& kind : kinds) {
        const Identity& identity = identity_of(kind.application);
        const std::vector<std::string> lossless_by = {"leaks." + kind.name,
                                                      "leaks.sessions" + identity.suffix};
        // What differs anyway, or writes where others' memory lies, is told so elsewhere.
        const bool steady =
            (!kind.smart || run.stands("frames.again")) && run.stands("frames.bounds");
        frames.kinds.push_back(
            {&identity, &kind, kind.name, kind.sent, kind.row(), lossless_by, steady});
    }
    check_family(run, frames);
}

}  // namespace check
