// Rows of frames in a host that fails: every call that a good frame makes fails in turn.
#include <host/errors.h>
#include <host_api/effect_interface.h>

#include "examination.h"
#include "faults.h"
#include "frames.h"
#include "growth.h"
#include "rules.h"
#include "set_up_faults.h"
#include "stage.h"

namespace conformance {
namespace {

using host::Application;
using host::CallFault;
using host::Depth;
using host::FaultPlan;
using host::Frame;
using host::Session;

/// A kind of frame to which faults happen.
struct FaultStage {
    const char* name;
    const char* sent;
    const char* stands_on;  ///< the row of the same frame without faults
    Application application;
    Depth depth;
    bool plain;
};

constexpr FaultStage kStages[] = {
    {"frame", "a float frame", "frames.float", Application::AfterEffects, Depth::Float, false},
    {"plain-8-bit", "a plain 8-bit render", "frames.plain-8-bit", Application::AfterEffects,
     Depth::Bits8, true},
    {"plain-16-bit", "a plain 16-bit render", "frames.plain-16-bit", Application::AfterEffects,
     Depth::Bits16, true},
    {"premiere", "a render in Premiere Pro", "frames.premiere", Application::Premiere, Depth::Bits8,
     false},
};

/// What fails in it is a fault of the frame; what it does anyway is told elsewhere.
struct Good {
    std::vector<std::byte> picture;
    std::vector<std::string> violations;
    int open_param_checkouts;
};

/// Frames without faults, as the rows of a stage go by them.
struct GoodRun {
    std::map<std::string, int> calls;
    bool lossless;  ///< else what faults lose cannot be told from it
};

/// A session whose host fails as planned.
class FaultySession {
public:
    FaultySession(const Examination& run, const FaultStage& stage)
        : stage_(stage), session_(run.open({stage.application, plan_.filter()})) {}

    Frame draw() {
        const host::Scene scene = pan_scene();
        host::RenderOptions options;
        options.depth = stage_.depth;
        options.plain = stage_.plain;
        return session_.render(scene, scene.composition.frame_time(kFrame), options);
    }
    /// A frame with faults; whether any was delivered is told.
    Frame draw(const std::vector<CallFault>& faults, bool* delivered = nullptr) {
        plan_.arm(faults);
        Frame frame = draw();
        if (delivered != nullptr) {
            *delivered = !plan_.delivered_now().empty();
        }
        plan_.disarm();
        return frame;
    }
    Session& session() { return session_; }

private:
    const FaultStage& stage_;
    FaultPlan plan_;
    Session session_;
};

Good good_frame(FaultySession& host) {
    const Frame frame = host.draw();
    return {pixels(frame), frame.violations, frame.open_param_checkouts};
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

void judge(const Frame& frame, Debt debt, const Good& good, Ends& ends, Notes& notes) {
    const std::size_t all = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(frame.world.height());
    const bool whole = frame.rendered && frame.undrawn_pixels == 0;
    ++ends.faults;
    ends.errors += frame.status != PF_Err_NONE ? 1 : 0;
    ends.whole += frame.status == PF_Err_NONE && whole ? 1 : 0;
    ends.none += frame.status == PF_Err_NONE && !whole ? 1 : 0;

    const bool owed = debt == Debt::Error || (debt == Debt::ErrorOrFallback && !whole);
    if (frame.status == PF_Err_NONE && owed) {
        notes.find("", whole ? "status 0, a picture without what failed" : "status 0, no picture",
                   kStatusZero);
    }
    if (frame.rendered && frame.undrawn_pixels != 0 && frame.undrawn_pixels != all) {
        notes.find("", "half a picture: " + std::to_string(frame.undrawn_pixels) + " of " +
                           std::to_string(all) + " pixels are not drawn");
    }
    for (const std::string& violation : beyond(frame.violations, good.violations)) {
        notes.find("", violation, deviation_under_faults(violation));
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

void play(const Examination& run, const FaultStage& stage, const FailingCall& call,
          const GoodRun& good_run, Notes& notes) {
    notes.doing("set-up");
    FaultySession host(run, stage);
    notes.doing("the frame without faults");
    const Good good = good_frame(host);
    Ends ends;
    for (const CallFault& fault : call.faults()) {
        notes.doing(text_of(fault));
        bool delivered = false;
        const Frame frame = host.draw({fault}, &delivered);
        if (!delivered) {
            continue;
        }
        judge(frame, call.debt(), good, ends, notes);
        // What a fault leads to can fail too.
        for (const FailingCall& next : failing_calls(calls_beyond(frame, good_run.calls))) {
            const CallFault second = {next.name, 0, PF_Interrupt_CANCEL};
            notes.doing(text_of(fault) + " and " + text_of(second));
            judge(host.draw({fault, second}), call.debt(), good, ends, notes);
        }
        notes.doing(text_of(fault) + ", again and again");
        if (good_run.lossless && !loses_handles(beyond(frame.violations, good.violations))) {
            const Growth growth = least_growth([&] {
                host.draw({fault});
                host.session().forget();
            });
            if (!growth.none()) {
                notes.find("", text_of(growth));
            }
        }
    }
    notes.doing("the frame without faults, afterwards");
    const Frame after = host.draw();
    if (pixels(after) != good.picture || after.violations != good.violations) {
        notes.find("", "afterwards the frame without faults is another");
    }
    host.session().close();
    notes.say(ends.text());
}

const char* promise(Debt debt) {
    switch (debt) {
        case Debt::Error:
            return "an error; all is given back";
        case Debt::ErrorOrFallback:
            return "an error or a whole picture; all is given back";
        case Debt::Nothing:
            break;
    }
    return "it goes on; all is given back";
}

void examine_stage(Examination& run, const FaultStage& stage) {
    const std::string family = "faults." + std::string(stage.name);
    const Heard heard = run.probe([&](Notes& notes) {
        FaultySession host(run, stage);
        notes.keep("calls", host::calls_that_can_fail(host.draw().calls));
        const Growth growth = least_growth([&] {
            host.draw();
            host.session().forget();
        });
        notes.keep("lossless", growth.none());
    });
    if (!heard.kept.contains("lossless")) {
        run.leave_out(family, "the frame without faults does not come back");
        return;
    }
    const GoodRun good{heard.kept["calls"], heard.kept["lossless"]};
    if (!good.lossless) {
        run.leave_out(family + ", memory", "the frame without faults loses some too");
    }
    for (const FailingCall& call : failing_calls(good.calls)) {
        const std::string id = family + "." + call.slug();
        const std::string sent = std::string(stage.sent) + "; " + call.sent();
        run.enter({id, sent, promise(call.debt())},
                  run.probe([&](Notes& notes) { play(run, stage, call, good, notes); }));
    }
}

}  // namespace

void examine_faults(Examination& run) {
    if (!run.declared) {
        run.leave_out("faults", "the effect cannot be set up");
        return;
    }
    examine_set_up_faults(run);
    for (const FaultStage& stage : kStages) {
        if (run.stands(stage.stands_on)) {
            examine_stage(run, stage);
        } else {
            run.leave_out("faults." + std::string(stage.name),
                          "the frame without faults fails or is not drawn, see " +
                              std::string(stage.stands_on));
        }
    }
}

}  // namespace conformance
