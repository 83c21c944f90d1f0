#include "set_up_faults.h"

#include <host/errors.h>
#include <host_api/effect_interface.h>

#include "fault_family.h"
#include "growth.h"
#include "identities.h"
#include "questions.h"
#include "rules.h"

namespace conformance {
namespace {

using host::FaultPlan;
using host::Session;

/// What a session without frames came to.
struct Course {
    bool refused = false;             ///< by an error at set-up
    std::vector<std::string> errors;  ///< answers that are one
    std::vector<host::Call> calls;
    std::vector<std::string> violations;  ///< and what is wrong in answers
};

/// Tells its steps under what happens to it.
Course play(const Examination& run, const Identity& identity, const host::CallFilter& filter,
            const std::string& what, Notes& notes) {
    Course course;
    std::vector<std::string> wrong;
    const auto step = [&](std::string_view name) { notes.doing(std::string(name) + "; " + what); };
    try {
        step("set-up");
        Session session = run.open({identity.application, filter});
        for (const Question& question : standing_questions(run, identity)) {
            step(question.text.sent);
            const Reply reply = question.ask(session);
            if (!reply.error.empty()) {
                course.errors.push_back(reply.error);
            }
            wrong.insert(wrong.end(), reply.wrong.begin(), reply.wrong.end());
        }
        step("set-down");
        try {
            session.close();
        } catch (const host::EffectError& error) {
            course.errors.emplace_back(error.what());
        }
        course.calls = session.calls();
        course.violations = session.violations();
        course.violations.insert(course.violations.end(), wrong.begin(), wrong.end());
    } catch (const host::EffectError& error) {
        course.refused = true;
        course.errors.emplace_back(error.what());
        course.violations = error.violations();
    }
    return course;
}

GoodRun play_well(const Examination& run, const Identity& identity, Notes& notes) {
    const Course course = play(run, identity, nullptr, "nothing fails", notes);
    for (const std::string& error : course.errors) {
        notes.find("", error);
    }
    return {host::calls_that_can_fail(course.calls), course.violations};
}

int play_faults(const Examination& run, const Identity& identity, const FailingCall& call,
                const GoodRun& good, Notes& notes) {
    FaultPlan plan;
    const auto session = [&](const std::string& what) {
        return play(run, identity, plan.filter(), what, notes);
    };
    int faults = 0;
    int errors = 0;
    for (const host::CallFault& fault : call.faults()) {
        plan.arm({fault});
        const Course course = session(text_of(fault));
        notes.doing(text_of(fault));
        if (plan.delivered_now().empty()) {
            continue;
        }
        ++faults;
        errors += course.errors.empty() ? 0 : 1;
        // A control that is not there moves all that follow.
        if (call.name == "add_param" && !course.refused) {
            notes.find("", "set-up goes on with status 0");
        }
        const std::vector<std::string> broken = beyond(course.violations, good.violations);
        for (const std::string& violation : broken) {
            notes.find("", violation, deviation_under_faults(violation));
        }
        if (good.lossless && !loses_handles(broken)) {
            const Growth growth = growth_of([&] {
                plan.arm({fault});
                session(text_of(fault) + ", again and again");
            });
            if (!growth.none()) {
                notes.find("", text_of(growth));
            }
        }
    }
    plan.disarm();
    const Course after = session("nothing fails any more");
    if (!after.errors.empty() || after.violations != good.violations) {
        notes.find("", "afterwards a session without faults is another");
    }
    notes.say(std::to_string(faults) + (faults == 1 ? " fault: " : " faults: ") +
              std::to_string(errors) + " answered with an error");
    return faults;
}

const char* promise(const FailingCall& call) {
    return call.name == "add_param" ? "an error; all is given back"
                                    : "an error, or it goes on; all is given back";
}

}  // namespace

void examine_set_up_faults(Examination& run) {
    for (const Identity& identity : kIdentities) {
        const std::string suffix(identity.suffix);
        examine_family(run, {"set-up" + suffix,
                             "set-up and questions" + std::string(identity.words),
                             std::string(identity.set_up_row),
                             {"leaks.sessions" + suffix, "leaks.questions" + suffix},
                             promise,
                             [&](Notes& notes) { return play_well(run, identity, notes); },
                             [&](const FailingCall& call, const GoodRun& good, Notes& notes) {
                                 return play_faults(run, identity, call, good, notes);
                             }});
    }
}

}  // namespace conformance
