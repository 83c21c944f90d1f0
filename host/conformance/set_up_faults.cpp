#include "set_up_faults.h"

#include <host/errors.h>
#include <host_api/effect_interface.h>

#include "faults.h"
#include "growth.h"
#include "rules.h"

namespace conformance {
namespace {

using host::Application;
using host::FaultPlan;
using host::Session;

struct SetUpStage {
    const char* name;
    const char* sent;
    Application application;
};

constexpr SetUpStage kStages[] = {
    {"set-up", "set-up and questions", Application::AfterEffects},
    {"set-up-premiere", "set-up and questions in Premiere Pro", Application::Premiere},
};

/// What a session without frames came to.
struct Course {
    bool refused = false;  ///< by an error at set-up
    int errors = 0;        ///< answers that are one
    std::vector<host::Call> calls;
    std::vector<std::string> violations;
};

Course play(const Examination& run, const SetUpStage& stage, const host::CallFilter& filter) {
    Course course;
    try {
        Session session = run.open({stage.application, filter});
        const auto ask = [&](const auto& question) {
            try {
                question();
            } catch (const host::EffectError&) {
                ++course.errors;
            }
        };
        ask([&] { session.about(); });
        if (run.declared->has(PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES)) {
            for (const int kind : {PF_DepCheckType_NONE, PF_DepCheckType_ALL_DEPENDENCIES,
                                   PF_DepCheckType_MISSING_DEPENDENCIES}) {
                ask([&] { session.dependencies(kind); });
            }
        }
        ask([&] { session.close(); });
        course.calls = session.calls();
        course.violations = session.violations();
    } catch (const host::EffectError& error) {
        course.refused = true;
        ++course.errors;
        course.violations = error.violations();
    }
    return course;
}

void play_faults(const Examination& run, const SetUpStage& stage, const FailingCall& call,
                 bool lossless, Notes& notes) {
    FaultPlan plan;
    const auto session = [&] { return play(run, stage, plan.filter()); };
    notes.doing("a session without faults");
    const std::vector<std::string> known = session().violations;
    int faults = 0;
    int errors = 0;
    for (const host::CallFault& fault : call.faults()) {
        notes.doing(text_of(fault));
        plan.arm({fault});
        const Course course = session();
        ++faults;
        errors += course.errors != 0 ? 1 : 0;
        // A control that is not there moves all that follow.
        if (call.name == "add_param" && !course.refused) {
            notes.find("", text_of(fault) + ": set-up goes on with status 0");
        }
        const std::vector<std::string> broken = beyond(course.violations, known);
        for (const std::string& violation : broken) {
            notes.find("", violation);
        }
        if (lossless && !loses_handles(broken)) {
            const Growth growth = least_growth([&] {
                plan.arm({fault});
                session();
            });
            if (!growth.none()) {
                notes.find("", text_of(growth));
            }
        }
    }
    plan.disarm();
    notes.doing("a session without faults, afterwards");
    const Course after = session();
    if (after.errors != 0 || after.violations != known) {
        notes.find("", "afterwards a session without faults is another");
    }
    notes.say(std::to_string(faults) + (faults == 1 ? " fault: " : " faults: ") +
              std::to_string(errors) + " answered with an error");
}

}  // namespace

void examine_set_up_faults(Examination& run) {
    for (const SetUpStage& stage : kStages) {
        const std::string family = "faults." + std::string(stage.name);
        const Heard heard = run.probe([&](Notes& notes) {
            const Course course = play(run, stage, nullptr);
            if (course.errors == 0) {
                notes.keep("calls", host::calls_that_can_fail(course.calls));
                notes.keep("lossless", least_growth([&] { play(run, stage, nullptr); }).none());
            }
        });
        if (!heard.kept.contains("lossless")) {
            run.leave_out(family, "set-up or a question fails without faults, see setup");
            continue;
        }
        const std::map<std::string, int> calls = heard.kept["calls"];
        const bool lossless = heard.kept["lossless"];
        if (!lossless) {
            run.leave_out(family + ", memory", "a session without faults loses some too");
        }
        for (const FailingCall& call : failing_calls(calls)) {
            const std::string id = family + "." + call.slug();
            const std::string sent = std::string(stage.sent) + "; " + call.sent();
            run.enter(
                {id, sent,
                 call.name == "add_param" ? "an error; all is given back"
                                          : "an error, or it goes on; all is given back"},
                run.probe([&](Notes& notes) { play_faults(run, stage, call, lossless, notes); }));
        }
    }
}

}  // namespace conformance
