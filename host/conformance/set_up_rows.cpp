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

/// One thing that is asked of an effect that is set up.
struct Question {
    RowText text;
    Application application;
    std::function<void(Session&, Notes&)> ask;
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

std::function<void(Session&, Notes&)> dependencies(int check_type) {
    return [check_type](Session& session, Notes& notes) {
        const auto text = session.dependencies(check_type);
        notes.say(text ? "status 0, a text of " + std::to_string(text->size()) + " characters"
                       : "status 0, no text");
    };
}

std::function<void(Session&, Notes&)> command(std::int32_t number) {
    return [number](Session& session, Notes& notes) {
        expect_quiet(notes, status_text(number), session.command(number));
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
    const auto ae = Application::AfterEffects;
    const auto premiere = Application::Premiere;
    std::vector<Question> all = {
        {{"setup.premiere", "set-up in Premiere Pro", "status 0 each"}, premiere, ask_nothing},
        {{"setup.about", "about", "status 0; a text, if any, of 256 characters at most"},
         ae,
         ask_about},
        {{"setup.about-premiere", "about, in Premiere Pro", "status 0"}, premiere, ask_about},
        {{"setup.resetup", "sequence re-set-up", "status 0, records untouched"},
         ae,
         command(PF_Cmd_SEQUENCE_RESETUP)},
        {{"setup.flatten", "sequence flatten", "status 0, records untouched"},
         ae,
         command(PF_Cmd_SEQUENCE_FLATTEN)},
        {{"setup.unasked", "commands that it did not ask for", "status 0, records untouched"},
         ae,
         ask_unasked},
        {{"setup.unknown", "commands that do not exist", "status 0, records untouched"},
         ae,
         ask_unknown},
    };
    if (declared.has(PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES)) {
        const char* const promise = "status 0; a handle with a text, or none";
        all.push_back({{"setup.dependencies-all", "dependencies, all", promise},
                       ae,
                       dependencies(PF_DepCheckType_ALL_DEPENDENCIES)});
        all.push_back({{"setup.dependencies-missing", "dependencies, missing ones", promise},
                       ae,
                       dependencies(PF_DepCheckType_MISSING_DEPENDENCIES)});
        all.push_back({{"setup.dependencies-none", "dependencies, none", promise},
                       ae,
                       dependencies(PF_DepCheckType_NONE)});
        all.push_back({{"setup.dependencies-other", "dependencies, an unknown kind", promise},
                       ae,
                       dependencies(77)});
    }
    if (declared.has2(PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS)) {
        all.push_back(
            {{"setup.dynamic-flags", "dynamic flags query", "status 0; of the flags declared only"},
             ae,
             ask_flags});
    }
    return all;
}

void put(Examination& run, const Question& question, const std::vector<std::string>& known) {
    const Heard heard = run.probe([&](Notes& notes) {
        notes.doing("set-up");
        try {
            host::SessionOptions options;
            options.application = question.application;
            Session session = run.open(options);
            notes.doing(question.text.sent);
            question.ask(session, notes);
            notes.doing("set-down");
            session.close();
            for (const std::string& violation : beyond(session.violations(), known)) {
                notes.find("", violation);
            }
        } catch (const host::EffectError& error) {
            tell_refusal(notes, error);
        }
    });
    run.enter(question.text, heard);
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
    for (const Question& question : questions(*run.declared)) {
        put(run, question, known);
    }
}

}  // namespace conformance
