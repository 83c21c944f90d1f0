// Rows of everything but frames: set-up, questions, commands without a meaning, set-down.
#include <host/errors.h>
#include <host_api/effect_interface.h>

#include <functional>

#include "controls.h"
#include "examination.h"
#include "rules.h"
#include "stage.h"

namespace conformance {
namespace {

using host::Application;
using host::Session;

/// The command that the effect refused, then what it broke until then.
void tell_refusal(Notes& notes, const host::EffectError& error) {
    notes.find("", error.what() + (" (status " + std::to_string(error.status())) + ")");
    for (const std::string& violation : error.violations()) {
        notes.find("", violation);
    }
}

void play_set_up(const Examination& run, Notes& notes) {
    notes.doing("set-up");
    try {
        Session session = run.open();
        const host::EffectInfo& info = session.info();
        notes.keep("version", info.version);
        notes.keep("out_flags", static_cast<std::uint32_t>(info.out_flags));
        notes.keep("out_flags2", static_cast<std::uint32_t>(info.out_flags2));
        notes.say("status 0 each; version " + info.version_text());
        inspect_controls(session, notes);
        notes.doing("set-down");
        const std::size_t before = session.violations().size();
        session.close();
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

using Ask = std::function<void(Session&, Notes&)>;

/// One thing that is asked of an effect that is set up.
struct Question {
    RowText text;
    Ask ask;
};

std::string status_text(std::int32_t status) { return "status " + std::to_string(status); }

void expect_quiet(Notes& notes, const std::string& name, const host::Answer& answer) {
    if (answer.status != PF_Err_NONE) {
        notes.find("", name + ": " + status_text(answer.status));
    }
    if (answer.record_changed) {
        notes.find("", name + ": version, flags or count of parameters changed");
    }
}

void ask_about(Session& session, Notes& notes) {
    const std::string text = session.about();
    notes.say(text.empty() ? "status 0, no text"
                           : "status 0, a text of " + std::to_string(text.size()) + " characters");
}

Ask dependencies(int check_type) {
    return [check_type](Session& session, Notes& notes) {
        const auto text = session.dependencies(check_type);
        notes.say(text ? "status 0, a text of " + std::to_string(text->size()) + " characters"
                       : "status 0, no text");
    };
}

Ask command(std::int32_t number) {
    return [number](Session& session, Notes& notes) {
        expect_quiet(notes, "command " + std::to_string(number), session.command(number));
        notes.say("status 0, records untouched");
    };
}

/// Commands that a host sends to effects that declared a wish for them, and what declares it; 0:
/// nothing does.
struct Wish {
    std::int32_t command;
    std::int32_t out_flag;
};
constexpr Wish kWishes[] = {
    {PF_Cmd_DO_DIALOG, PF_OutFlag_I_DO_DIALOG},
    {PF_Cmd_UPDATE_PARAMS_UI, PF_OutFlag_SEND_UPDATE_PARAMS_UI},
    {PF_Cmd_EVENT, PF_OutFlag_CUSTOM_UI},
    {PF_Cmd_COMPLETELY_GENERAL, 0},
    {PF_Cmd_AUDIO_RENDER, PF_OutFlag_I_USE_AUDIO},
    {PF_Cmd_AUDIO_SETUP, PF_OutFlag_I_USE_AUDIO},
    {PF_Cmd_AUDIO_SETDOWN, PF_OutFlag_I_USE_AUDIO},
};
/// Numbers that no command has.
constexpr std::int32_t kUnknown[] = {2, 25, 99, 1000, -1};

void ask_unasked(Session& session, Notes& notes) {
    int sent = 0;
    for (const Wish& wish : kWishes) {
        if ((session.info().out_flags & wish.out_flag) == 0) {
            notes.doing("command " + std::to_string(wish.command));
            expect_quiet(notes, "command " + std::to_string(wish.command),
                         session.command(wish.command));
            ++sent;
        }
    }
    notes.say("status 0 to all " + std::to_string(sent) + ", records untouched");
}

void ask_unknown(Session& session, Notes& notes) {
    for (const std::int32_t number : kUnknown) {
        notes.doing("command " + std::to_string(number));
        expect_quiet(notes, "command " + std::to_string(number), session.command(number));
    }
    notes.say("status 0 to all, records untouched");
}

void ask_flags(Session& session, Notes& notes) {
    const std::size_t before = session.calls().size();
    const auto declared = static_cast<std::uint32_t>(session.info().out_flags2);
    const auto flags = static_cast<std::uint32_t>(
        session.dynamic_flags(pan_scene(), pan_scene().composition.frame_time(kFrame)));
    if ((flags & ~declared) != 0) {
        notes.find("", "turns on flags that set-up did not declare");
    }
    int out = 0;
    for (std::size_t i = before; i < session.calls().size(); ++i) {
        const host::Call& call = session.calls()[i];
        out += call.status != 0 ? 0 : call.name == "checkout_param" ? 1 : 0;
        out -= call.status != 0 ? 0 : call.name == "checkin_param" ? 1 : 0;
    }
    if (out != 0) {
        notes.find("", std::to_string(out) + " parameters checked out and not in again");
    }
    notes.say("status 0, no flag beyond those declared");
}

void ask_nothing(Session& session, Notes& notes) {
    for (const host::Message& message : session.messages()) {
        if (message.is_error) {
            notes.find("", "an error message with status 0: " + message.text);
        }
    }
    notes.say("status 0 each; " + std::to_string(session.declared_pixel_formats().size()) +
              " pixel formats declared");
}

std::vector<Question> questions(const Declared& declared) {
    std::vector<Question> all = {
        {{"setup.about", "about", "status 0; a text, if any, of 256 characters at most"},
         ask_about},
        {{"setup.resetup", "sequence re-set-up", "status 0, records untouched"},
         command(PF_Cmd_SEQUENCE_RESETUP)},
        {{"setup.flatten", "sequence flatten", "status 0, records untouched"},
         command(PF_Cmd_SEQUENCE_FLATTEN)},
        {{"setup.unasked", "commands that it did not ask for", "status 0, records untouched"},
         ask_unasked},
        {{"setup.unknown", "commands that do not exist", "status 0, records untouched"},
         ask_unknown},
    };
    if (declared.has(PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES)) {
        const char* const promise = "status 0; a handle with a text, or none";
        all.push_back({{"setup.dependencies-all", "dependencies, all", promise},
                       dependencies(PF_DepCheckType_ALL_DEPENDENCIES)});
        all.push_back({{"setup.dependencies-missing", "dependencies, missing ones", promise},
                       dependencies(PF_DepCheckType_MISSING_DEPENDENCIES)});
        all.push_back({{"setup.dependencies-none", "dependencies, none", promise},
                       dependencies(PF_DepCheckType_NONE)});
        all.push_back({{"setup.dependencies-other", "dependencies, an unknown kind", promise},
                       dependencies(77)});
    }
    if (declared.has2(PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS)) {
        all.push_back(
            {{"setup.dynamic-flags", "dynamic flags query", "status 0; of the flags declared only"},
             ask_flags});
    }
    return all;
}

/// Asks in a session of its own. The row tells nothing that is known.
Heard put(Examination& run, const RowText& text, Application application,
          const std::vector<std::string>& known, const Ask& ask) {
    Heard heard = run.probe([&](Notes& notes) {
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
                run.known_violations(identity.application), question.ask);
        }
    }
}

}  // namespace

void examine_set_up(Examination& run) {
    if (!run.stands("bundle.module")) {
        run.leave_out("set-up", "the module cannot be loaded");
        return;
    }
    run.set_up = run.probe([&](Notes& notes) { play_set_up(run, notes); });
    const Heard& heard = run.set_up;
    run.enter({"setup.session", "global, parameter and sequence set-up", "status 0 each"}, heard);
    if (heard.kept.contains("out_flags2")) {
        run.declared =
            Declared{heard.kept["version"], heard.kept["out_flags"], heard.kept["out_flags2"]};
        if (run.registration) {
            compare_with_registration(run);
        }
    }
    if (!run.stands("setup.session")) {
        run.declared.reset();
        run.leave_out("questions", "the effect cannot be set up");
        return;
    }
    for (const Rule& rule : kRules) {
        const std::vector<Finding> broken = Examination::under(heard, rule.name);
        if (!broken.empty() || rule.name == "calls") {
            const std::string id = "setup." + std::string(rule.name);
            run.enter({id, "all of set-up", rule.promise}, broken, "kept");
        }
    }
    run.enter({"setup.down", "sequence and global set-down", "status 0; all is given back"},
              Examination::under(heard, "down"), "status 0; all is given back");
    const std::vector<std::string> known = heard.kept["violations"];
    run.violations_of_set_up[Application::AfterEffects] = known;
    const Heard premiere = put(run, {"setup.premiere", "set-up in Premiere Pro", "status 0 each"},
                               Application::Premiere, known, ask_nothing);
    run.violations_of_set_up[Application::Premiere] = premiere.kept.value("violations", known);
    put_questions(run);
}

}  // namespace conformance
