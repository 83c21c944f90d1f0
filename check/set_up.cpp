// Rows of everything but frames: set-up, its flags, questions, commands without a meaning,
// set-down.
#include <host/errors.h>
#include <host_api/effect_interface.h>

#include "run.h"

namespace check {

// Between processes.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Declared, version, out_flags, out_flags2, controls, supervises,
                                   keeps_arbitrary_data)

namespace {

using host::Application;
using host::Session;

// What probes keep for later rows.
constexpr char kEffect[] = "effect";
constexpr char kViolations[] = "violations";
constexpr char kPixelFormats[] = "pixel formats";

/// What the probe of set-up does last: what goes wrong then has a row of its own.
constexpr char kSetDown[] = "set-down";

std::string refusal(const host::EffectError& error) {
    return error.what() + (" (status " + std::to_string(error.status())) + ")";
}

/// The command that the effect refused, then what it broke until then.
void tell_refusal(Notes& notes, const host::EffectError& error) {
    notes.find(refusal(error));
    notes.find_own(error.violations());
}

Declared declared_by(const Session& session) {
    const host::EffectInfo& info = session.info();
    Declared declared = {info.version, static_cast<std::uint32_t>(info.out_flags),
                         static_cast<std::uint32_t>(info.out_flags2), session.controls().size()};
    for (const host::DeclaredControl& control : session.controls()) {
        declared.supervises |= (control.flags & PF_ParamFlag_SUPERVISE) != 0;
        declared.keeps_arbitrary_data |= control.type == PF_Param_ARBITRARY_DATA;
    }
    return declared;
}

void play_set_up(const Run& run, Notes& notes) {
    notes.doing("set-up");
    try {
        Session session = run.open(Application::AfterEffects);
        notes.keep(kEffect, declared_by(session));
        notes.say("status 0 each; version " + session.info().version_text());
        inspect_controls(session, notes);
        const Violations told = session.violations();
        notes.find(told);
        notes.doing(kSetDown);
        const Violations& all = session.violations();
        try {
            session.close();
            notes.keep(kViolations, all);
        } catch (const host::EffectError& error) {
            notes.find(refusal(error));
        }
        notes.find_own({all.begin() + static_cast<std::ptrdiff_t>(told.size()), all.end()});
    } catch (const host::EffectError& error) {
        tell_refusal(notes, error);
    }
}

bool died_in_set_down(const Heard& heard) {
    return !heard.died.empty() && heard.text("doing") == kSetDown;
}

/// What was found of the probe itself in set-down, or until then.
std::vector<Finding> own_in(const Heard& heard, bool set_down) {
    const bool died_there = died_in_set_down(heard);
    std::vector<Finding> found = heard.own();
    std::erase_if(found, [&](const Finding& one) {
        return set_down != (one.during == kSetDown || (one.during.empty() && died_there));
    });
    return found;
}

/// Whether the flags that the effect declares may stand there, and together.
void check_flags(Run& run) {
    std::vector<Finding> findings;
    const Declared& effect = *run.declared;
    if (effect.has2(PF_OutFlag2_FLOAT_COLOR_AWARE) &&
        !effect.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER)) {
        findings.push_back(
            {"PF_OutFlag2_FLOAT_COLOR_AWARE needs "
             "PF_OutFlag2_SUPPORTS_SMART_RENDER; declare both or neither"});
    }
    if (effect.has(PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS)) {
        findings.push_back(
            {"PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS is for the registration "
             "alone; leave it out of out_flags"});
    }
    run.enter({"setup.flags", "global set-up", "flags have what they need, none is out of place"},
              findings, "nothing found");
}

void ask_nothing(Session& session, Notes& notes) {
    for (const host::Message& message : session.messages()) {
        if (message.is_error) {
            notes.find("an error message with status 0: " + message.text);
        }
    }
    notes.keep(kPixelFormats, session.declared_pixel_formats());
    notes.say("status 0 each; " + std::to_string(session.declared_pixel_formats().size()) +
              " pixel formats declared");
}

/// Asks in a session of its own. The row tells nothing that is known.
Heard put(Run& run, const RowText& text, Application application,
          const std::function<void(Session&, Notes&)>& ask) {
    const Violations& known = run.violations_of_set_up.at(application);
    return run.enter(text, [&](Notes& notes) {
        notes.doing("set-up");
        try {
            Session session = run.open(application);
            notes.doing(text.sent);
            ask(session, notes);
            notes.doing(kSetDown);
            session.close();
            notes.keep(kViolations, session.violations());
            notes.find_own(beyond(session.violations(), known));
        } catch (const host::EffectError& error) {
            tell_refusal(notes, error);
        }
    });
}

/// All questions, as both applications put them.
void put_questions(Run& run) {
    for (const Identity& identity : kIdentities) {
        if (!run.stands(identity.set_up_row)) {
            run.leave_out("setup.questions" + identity.words, "the effect cannot be set up");
            continue;
        }
        for (const Question& question : questions(*run.declared)) {
            const std::string id = question.text.id + identity.suffix;
            const std::string sent = question.text.sent + identity.words;
            if (!run.needs(id)) {
                continue;
            }
            put(run, {id, sent, question.text.promise}, identity.application,
                [&](Session& session, Notes& notes) {
                    const Reply reply = question.ask(session);
                    if (!reply.error.empty()) {
                        notes.find(reply.error);
                    }
                    notes.find(reply.wrong);
                    notes.say(reply.said);
                });
            if (!run.stands(id)) {
                run.leave_out(id + ", again and again and in a host that fails", "it fails once");
            }
        }
    }
}

}  // namespace

void check_set_up(Run& run) {
    if (!run.stands("bundle.module")) {
        run.leave_out("setup", "the module cannot be loaded");
        return;
    }
    run.set_up = run.probe("setup.session", [&](Notes& notes) { play_set_up(run, notes); });
    const Heard& heard = run.set_up;
    if (!run.missed("setup.session", heard)) {
        run.enter({"setup.session", "global, parameter and sequence set-up", "status 0 each"},
                  own_in(heard, false), heard.text("said"));
    }
    if (heard.kept.contains(kEffect)) {
        run.declared = heard.kept.at(kEffect).get<Declared>();
        check_flags(run);
        if (run.registration) {
            compare_with_registration(run);
        }
    }
    if (!run.stands("setup.session")) {
        run.declared.reset();
        run.leave_out("setup.questions", run.why_not_declared);
        return;
    }
    for (const RuleRow& rule : kRuleRows) {
        std::vector<Finding> broken = heard.findings;
        std::erase_if(broken, [&](const Finding& one) {
            return !one.rule || of_controls(*one.rule) || row_of(*one.rule) != rule.name;
        });
        if (!broken.empty() || rule.name == "calls") {
            const std::string id = "setup." + std::string(rule.name);
            run.enter({id, "all of set-up", std::string(rule.promise)}, broken, "nothing found");
        }
    }
    run.enter({"setup.down", "sequence and global set-down", "status 0; all is given back"},
              own_in(heard, true), "status 0; all is given back");
    // By an error, an exception or a crash: each session to come would end so.
    if (!heard.kept.contains(kViolations) || died_in_set_down(heard)) {
        run.declared.reset();
        run.why_not_declared = "the effect cannot be set down, see setup.down";
        run.leave_out("setup.questions", run.why_not_declared);
        return;
    }
    const Violations known = heard.kept.at(kViolations);
    run.violations_of_set_up = {{Application::AfterEffects, known}, {Application::Premiere, known}};
    const Heard premiere = put(run, {"setup.premiere", "set-up in Premiere Pro", "status 0 each"},
                               Application::Premiere, ask_nothing);
    run.violations_of_set_up[Application::Premiere] = premiere.kept.value(kViolations, known);
    run.declared->premiere_formats =
        premiere.kept.value(kPixelFormats, run.declared->premiere_formats);
    put_questions(run);
    leave_out_commands(run);
}

}  // namespace check
