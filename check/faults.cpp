// Rows of a host that fails: every call that an effect makes when all is well fails in turn, in all
// that makes it.
#include <host/errors.h>
#include <host/faults.h>
#include <host_api/effect_interface.h>
#include <osapi/growth.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frames.h"
#include "questions.h"
#include "run.h"

namespace check {
namespace {

using host::CallFault;
using host::FaultPlan;
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
        suite = call.rfind(acquiring, 0) == 0 ? call.substr(acquiring.size()) : "";
    }
    Debt debt() const {
        if (!suite.empty() || name == "AcquireSuite") {
            return Debt::ErrorOrFallback;
        }
        const auto* const end = std::end(kSilent);
        return std::find(std::begin(kSilent), end, name) != end ? Debt::Anything : Debt::Error;
    }
    /// Whether the user's cancellation comes this way: the suites for whole projects know none.
    bool asks_user() const { return name.rfind("AEGP_", 0) != 0; }
    /// For a row's id: without spaces.
    std::string slug() const {
        std::string text = suite.empty() ? name : "missing-" + suite;
        std::replace(text.begin(), text.end(), ' ', '-');
        return text;
    }
    std::string sent() const { return suite.empty() ? name + " fails" : suite + " is missing"; }
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

void add(const Ends& more, Ends& ends) {
    std::transform(ends.begin(), ends.end(), more.begin(), ends.begin(), std::plus<>());
}

/// What came of playing something once.
struct Outcome {
    bool delivered = true;            ///< all faults were
    std::vector<std::string> errors;  ///< answers that are one
    Calls calls;
    Violations violations;       ///< and what is wrong in answers
    bool refused = false;        ///< at set-up, by an error
    std::optional<Frame> frame;  ///< of frames
};

/// Something that the host plays again and again, in one session or in one for each time.
struct Play {
    /// Once, with these faults and no others; `what` tells about them.
    std::function<Outcome(const std::vector<CallFault>& faults, const std::string& what)> once;
    /// What the end broke, with all before that `once` did not tell.
    std::function<Violations()> close;
};

/// What is played under faults, and what it is like when nothing fails.
struct Kind {
    std::string name;                      ///< "float", "After Effects"
    std::string sent;                      ///< "a float frame"
    std::string stands_on;                 ///< the row of the same without faults
    std::vector<std::string> lossless_by;  ///< the rows that tell whether it loses memory
    std::function<Play(Notes&)> begin;
    Drawing drawing = Drawing::Whole;  ///< of frames
    bool steady = true;                ///< two pictures without faults are the same

    Calls calls = {};            ///< of the play without faults
    Violations violations = {};  ///< of its end
    bool lossless = true;        ///< else what faults lose cannot be told from what is lost anyway
};

/// Set-up, all questions and set-down, in a session for each time.
Outcome set_up_once(const Run& run, const Identity& identity, const host::CallFilter& filter,
                    const std::string& what, Notes& notes) {
    Outcome outcome;
    Violations wrong;
    const auto step = [&](std::string_view name) { notes.doing(std::string(name) + "; " + what); };
    try {
        step("set-up");
        Session session = run.open(identity.application, filter);
        for (const Question& question : standing_questions(run, identity)) {
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

Play set_up_play(const Run& run, const Identity& identity, Notes& notes) {
    const auto plan = std::make_shared<FaultPlan>();
    return {[&run, &identity, &notes, plan](const std::vector<CallFault>& faults,
                                            const std::string& what) {
                plan->arm(faults);
                Outcome outcome = set_up_once(run, identity, plan->filter(), what, notes);
                outcome.delivered = plan->delivered_now().size() == faults.size();
                return outcome;
            },
            [] { return Violations(); }};
}

/// Frames of one kind, in one session.
Play frame_play(const Run& run, const FrameKind& kind, Notes& notes) {
    struct Host {
        FaultPlan plan;
        Session session;
        Host(const Run& of, const FrameKind& shown)
            : session(of.open(shown.application, plan.filter())) {}
    };
    notes.doing("set-up");
    const auto host = std::make_shared<Host>(run, kind);
    return {[&kind, &notes, host](const std::vector<CallFault>& faults, const std::string& what) {
                notes.doing(what);
                host->plan.arm(faults);
                const host::Scene scene = pan_scene();
                Outcome outcome;
                outcome.frame = host->session.render(scene, scene.composition.frame_time(kFrame),
                                                     kind.options());
                outcome.delivered = host->plan.delivered_now().size() == faults.size();
                host->plan.disarm();
                // The host's own record grows with what passes.
                host->session.forget();
                if (outcome.frame->status != PF_Err_NONE) {
                    outcome.errors.push_back(status_text(*outcome.frame));
                }
                outcome.calls = host::calls_that_can_fail(outcome.frame->calls);
                outcome.violations = outcome.frame->violations;
                return outcome;
            },
            [&notes, host] {
                notes.doing("set-down");
                host->session.close();
                return host->session.violations();
            }};
}

/// The faults of one call in one kind.
class FaultyPlay {
public:
    FaultyPlay(const Kind& kind, const FailingCall& call, Notes& notes)
        : kind_(kind), call_(call), notes_(notes) {}

    Ends play() {
        const Play play = kind_.begin(notes_);
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
        const bool same = (!good.frame || pixels(*after.frame) == pixels(*good.frame)) &&
                          after.errors == good.errors && after.violations == good.violations;
        if (kind_.steady && !same) {
            notes_.find("afterwards it is another without faults");
        }
        tell(beyond_at_set_down(play.close(), kind_.violations));
        // What an effect does but once in a session only fails at the first time in one.
        for (const CallFault& fault : late) {
            const Play fresh = kind_.begin(notes_);
            if (play_fault(fresh, good, fault)) {
                tell(beyond_at_set_down(fresh.close(), kind_.violations));
            }
        }
        return ends_;
    }

private:
    /// Nothing when the fault could not be delivered.
    std::optional<Outcome> play_fault(const Play& play, const Outcome& good,
                                      const CallFault& fault) {
        Outcome outcome = play.once({fault}, text_of(fault));
        if (!outcome.delivered) {
            return std::nullopt;
        }
        judge(outcome, good, fault, text_of(fault));
        // What a fault leads to can fail too.
        for (const auto& [name, count] : outcome.calls) {
            if (kind_.calls.count(name) == 0) {
                const CallFault second = {name, 0, PF_Interrupt_CANCEL};
                const std::string both = text_of(fault) + " and " + text_of(second);
                if (const Outcome other = play.once({fault, second}, both); other.delivered) {
                    judge(other, good, fault, both);
                }
            }
        }
        return outcome;
    }

    void judge(const Outcome& outcome, const Outcome& good, const CallFault& fault,
               const std::string& what) {
        const bool picture =
            outcome.frame && outcome.frame->rendered && outcome.frame->undrawn_pixels == 0;
        ++ends_[kFaults];
        ++ends_[!outcome.errors.empty() ? kErrors : picture ? kPictures : kNeither];
        notes_.doing(what);
        if (outcome.frame) {
            const bool cancelled = fault.status == PF_Interrupt_CANCEL && call_.asks_user();
            check::judge(*outcome.frame,
                         {kind_.drawing, call_.debt(), cancelled, good.frame->open_param_checkouts,
                          good.frame->handle_left},
                         notes_);
        } else if (call_.name == "add_param" && !outcome.refused) {
            // A control that is not there moves all that follow.
            notes_.find("set-up goes on with status 0");
        }
        tell(beyond(outcome.violations, good.violations));
    }

    /// All together first, since most effects lose nothing; then each, to name the one that does.
    void look_for_losses(const Play& play, const std::vector<CallFault>& faults) {
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

    const Kind& kind_;
    const FailingCall& call_;
    Notes& notes_;
    Ends ends_ = {};
};

struct Family {
    std::string id;
    std::string what;  ///< "set-up and questions", "frames"
    bool frames;
    std::vector<Kind> kinds = {};
};

// What the probes keep.
constexpr char kCalls[] = "calls";
constexpr char kViolations[] = "violations";
constexpr char kEnds[] = "ends";
constexpr char kKind[] = "kind";

/// Twice: an effect may do things but once, or from the second time on.
void play_well(const Kind& kind, Notes& notes) {
    const Play play = kind.begin(notes);
    Calls calls;
    for (int i = 0; i < 2; ++i) {
        const Outcome outcome = play.once({}, kind.sent);
        notes.find(outcome.errors);
        for (const auto& [call, count] : outcome.calls) {
            calls[call] = std::max(calls[call], count);
        }
    }
    notes.keep(kCalls, calls);
    notes.keep(kViolations, play.close());
}

/// What was found, told with the kinds and the first fault: "text (3 times in 8-bit and float,
/// first with call 1 of abort failing with 4)".
std::vector<Finding> told_with_places(const std::vector<Finding>& found) {
    return told_once(found, &Finding::at, [](const Counted& one) {
        const bool once = one.times == 1;
        const std::string& fault = one.finding.during;
        return (once ? " (once in " : " (" + std::to_string(one.times) + " times in ") +
               joined(one.places) +
               (fault.empty() ? "" : (once ? ", with " : ", first with ") + fault) + ")";
    });
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
            play_well(kind, notes);
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
        heard.kept.at(kViolations).get_to(kind.violations);
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
                  told_with_places(found),
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
    for (std::size_t next = 0; next < kinds.size();) {
        const Heard heard = run.probe(id, [&](Notes& notes) {
            Ends here = {};
            for (std::size_t i = next; i < kinds.size(); ++i) {
                notes.keep(kKind, i);
                notes.at(kinds[i]->name);
                try {
                    add(FaultyPlay(*kinds[i], call, notes).play(), here);
                } catch (const host::HostError& error) {
                    notes.find(error.what());
                }
                notes.keep(kEnds, here);
            }
        });
        // Within bounds whatever a module wrote to the pipe.
        const std::size_t at = std::clamp(heard.number(kKind), next, kinds.size() - 1);
        missed = run.missed(id + ", " + names[at], heard) || missed;
        const std::vector<Finding> all = heard.all();
        found.insert(found.end(), all.begin(), all.end());
        add(heard.kept.value(kEnds, Ends{}), ends);
        next = at + 1;
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
    run.enter({id, family.what + " (" + joined(names) + "); " + call.sent(), promise(family, call)},
              told_with_places(found), answer);
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
    if (!run.declared) {
        run.leave_out("faults", run.why_not_declared);
        return;
    }
    Family set_up = {"faults.set-up", "set-up and questions", false};
    for (const Identity& identity : kIdentities) {
        set_up.kinds.push_back(
            {identity.name,
             set_up.what,
             identity.set_up_row,
             {"leaks.sessions" + identity.suffix, "leaks.questions" + identity.suffix},
             [&](Notes& notes) { return set_up_play(run, identity, notes); }});
    }
    check_family(run, set_up);

    const std::vector<FrameKind> kinds = frame_kinds(*run.declared);
    Family frames = {"faults", "frames", true};
    for (const FrameKind& kind : kinds) {
        const std::string& suffix = identity_of(kind.application).suffix;
        // What differs anyway, or writes where others' memory lies, is told so elsewhere.
        const bool steady =
            (!kind.smart || run.stands("frames.again")) && run.stands("frames.bounds");
        frames.kinds.push_back({kind.name,
                                kind.sent,
                                kind.row(),
                                {"leaks." + kind.name, "leaks.sessions" + suffix},
                                [&](Notes& notes) { return frame_play(run, kind, notes); },
                                kind.drawing,
                                steady});
    }
    check_family(run, frames);
}

}  // namespace check
