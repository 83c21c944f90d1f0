// Rows of everything but frames: set-up, questions, commands without a meaning, set-down.
#include <host/errors.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <functional>
#include <iterator>

#include "controls.h"
#include "examination.h"
#include "identities.h"
#include "questions.h"
#include "rules.h"

namespace conformance {
namespace {

using host::Application;
using host::Session;

/// Kept by the probe of Premiere Pro's set-up.
constexpr char kPixelFormats[] = "pixel formats";

/// What the probe of set-up does last: what goes wrong then has a row of its own.
constexpr char kSetDown[] = "set-down";

/// The command that the effect refused, then what it broke until then.
void tell_refusal(Notes& notes, const host::EffectError& error) {
    notes.find("", error.what() + (" (status " + std::to_string(error.status())) + ")");
    for (const std::string& violation : error.violations()) {
        notes.find("", violation);
    }
}

template <class Is>
bool any_control(const Session& session, Is is) {
    return std::any_of(session.controls().begin(), session.controls().end(), is);
}

void play_set_up(const Examination& run, Notes& notes) {
    notes.doing("set-up");
    try {
        Session session = run.open();
        const host::EffectInfo& info = session.info();
        notes.keep("version", info.version);
        notes.keep("out_flags", static_cast<std::uint32_t>(info.out_flags));
        notes.keep("out_flags2", static_cast<std::uint32_t>(info.out_flags2));
        notes.keep("supervises", any_control(session, [](const host::DeclaredControl& control) {
                       return (control.flags & PF_ParamFlag_SUPERVISE) != 0;
                   }));
        notes.keep("arbitrary data", any_control(session, [](const host::DeclaredControl& control) {
                       return control.type == PF_Param_ARBITRARY_DATA;
                   }));
        notes.say("status 0 each; version " + info.version_text());
        inspect_controls(session, notes);
        notes.doing(kSetDown);
        const std::size_t before = session.violations().size();
        try {
            session.close();
        } catch (const host::EffectError& error) {
            notes.find("down", error.what() + (" (status " + std::to_string(error.status())) + ")");
            notes.keep("refused set-down", true);
        }
        const std::vector<std::string>& all = session.violations();
        notes.keep("violations", all);
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (!told_by_controls(all[i])) {
                notes.find(i < before ? rule_of(all[i]) : "down", all[i]);
            }
        }
    } catch (const host::EffectError& error) {
        tell_refusal(notes, error);
    }
}

bool died_in_set_down(const Heard& heard) { return !heard.died.empty() && heard.doing == kSetDown; }

/// What was found until set-down, and the rest.
std::vector<Finding> in_set_up(const Heard& heard) {
    std::vector<Finding> found = own_findings(heard);
    std::erase_if(found, [&](const Finding& one) {
        return one.during == kSetDown || (one.during.empty() && died_in_set_down(heard));
    });
    return found;
}
std::vector<Finding> in_set_down(const Heard& heard) {
    std::vector<Finding> found = Examination::under(heard, "down");
    std::vector<Finding> own = own_findings(heard);
    std::copy_if(own.begin(), own.end(), std::back_inserter(found), [&](const Finding& one) {
        return one.during == kSetDown || (one.during.empty() && died_in_set_down(heard));
    });
    return found;
}

/// By an error, an exception or a crash: each session to come would end so.
bool set_down_failed(const Heard& heard) {
    return died_in_set_down(heard) || !heard.kept.contains("violations") ||
           heard.kept.value("refused set-down", false);
}

using Ask = std::function<void(Session&, Notes&)>;

/// Puts a question and finds what is wrong with its answer.
Ask asking(const Question& question) {
    return [&question](Session& session, Notes& notes) {
        const Reply reply = question.ask(session);
        if (!reply.error.empty()) {
            notes.find("", reply.error);
        }
        for (const std::string& wrong : reply.wrong) {
            notes.find("", wrong);
        }
        notes.say(reply.said);
    };
}

void ask_nothing(Session& session, Notes& notes) {
    for (const host::Message& message : session.messages()) {
        if (message.is_error) {
            notes.find("", "an error message with status 0: " + message.text);
        }
    }
    notes.keep(kPixelFormats, session.declared_pixel_formats());
    notes.say("status 0 each; " + std::to_string(session.declared_pixel_formats().size()) +
              " pixel formats declared");
}

/// Asks in a session of its own. The row tells nothing that is known.
Heard put(Examination& run, const RowText& text, Application application,
          const std::vector<std::string>& known, const Ask& ask) {
    Heard heard = run.probe(text.id, [&](Notes& notes) {
        notes.doing("set-up");
        try {
            Session session = run.open({application, nullptr});
            notes.doing(text.sent);
            ask(session, notes);
            notes.doing("set-down");
            session.close();
            notes.keep("violations", session.violations());
            for (const std::string& violation : beyond(session.violations(), known)) {
                notes.find("", violation);
            }
        } catch (const host::EffectError& error) {
            tell_refusal(notes, error);
        }
    });
    run.enter(text, heard);
    return heard;
}

/// All questions, as both applications put them.
void put_questions(Examination& run) {
    for (const Identity& identity : kIdentities) {
        if (!run.stands(identity.set_up_row)) {
            run.leave_out("questions" + std::string(identity.words), "the effect cannot be set up");
            continue;
        }
        for (const Question& question : questions(*run.declared)) {
            const std::string id = std::string(question.text.id) + std::string(identity.suffix);
            const std::string sent = std::string(question.text.sent) + std::string(identity.words);
            put(run, {id, sent, question.text.promise}, identity.application,
                run.known_violations(identity.application), asking(question));
            if (!run.stands(id)) {
                run.leave_out(id + ", again and again and in a host that fails", "it fails once");
            }
        }
    }
}

}  // namespace

void examine_set_up(Examination& run) {
    if (!run.stands("bundle.module")) {
        run.leave_out("set-up", "the module cannot be loaded");
        return;
    }
    run.set_up = run.probe("setup.session", [&](Notes& notes) { play_set_up(run, notes); });
    const Heard& heard = run.set_up;
    if (!run.lacked("setup.session", heard)) {
        run.enter({"setup.session", "global, parameter and sequence set-up", "status 0 each"},
                  in_set_up(heard), heard.said);
    }
    if (heard.kept.contains("out_flags2")) {
        run.declared = Declared{heard.kept.at("version"), heard.kept.at("out_flags"),
                                heard.kept.at("out_flags2"), heard.kept.at("supervises"),
                                heard.kept.at("arbitrary data")};
        examine_flags(run);
        if (run.registration) {
            compare_with_registration(run);
        }
    }
    if (!run.stands("setup.session")) {
        run.declared.reset();
        run.leave_out("questions", run.why_not_declared);
        return;
    }
    for (const Rule& rule : kRules) {
        const std::vector<Finding> broken = Examination::under(heard, rule.name);
        if (!broken.empty() || rule.name == "calls") {
            const std::string id = "setup." + std::string(rule.name);
            run.enter({id, "all of set-up", rule.promise}, broken, "nothing found");
        }
    }
    run.enter({"setup.down", "sequence and global set-down", "status 0; all is given back"},
              in_set_down(heard), "status 0; all is given back");
    if (set_down_failed(heard)) {
        run.declared.reset();
        run.why_not_declared = "the effect cannot be set down, see setup.down";
        run.leave_out("questions", run.why_not_declared);
        return;
    }
    const std::vector<std::string> known = heard.kept.at("violations");
    run.violations_of_set_up[Application::AfterEffects] = known;
    const Heard premiere = put(run, {"setup.premiere", "set-up in Premiere Pro", "status 0 each"},
                               Application::Premiere, known, ask_nothing);
    run.violations_of_set_up[Application::Premiere] = premiere.kept.value("violations", known);
    run.declared->premiere_formats =
        premiere.kept.value(kPixelFormats, run.declared->premiere_formats);
    put_questions(run);
    leave_out_commands(run);
}

}  // namespace conformance
