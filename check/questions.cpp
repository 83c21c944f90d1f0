// What a host asks of an effect that is set up, outside frames.
#include <base/string.h>
#include <host/errors.h>
#include <host_api/effect_interface.h>

#include <cstddef>
#include <iterator>
#include <utility>

#include "frames.h"
#include "run.h"

namespace check {
namespace {

using host::Session;

constexpr char kQuiet[] = "status 0, records untouched";

/// What an effect declares so that a host sends it a command.
struct Wish {
    std::int32_t command;
    bool (*declared)(const Declared& effect);
    /// Why this host cannot send it to effects that declare it; null: it can.
    const char* why_not;
};

bool undeclared(const Declared& /*effect*/) { return false; }
template <PF_OutFlags flag>
bool wishes(const Declared& effect) {
    return effect.has(flag);
}
template <PF_OutFlags2 flag>
bool wishes2(const Declared& effect) {
    return effect.has2(flag);
}

constexpr char kNoSound[] = "the effect declares sound, and this host has none";
constexpr char kNoGpu[] =
    "the effect declares that it draws by the graphics processor, and this host has none";

constexpr Wish kWishes[] = {
    {PF_Cmd_DO_DIALOG, wishes<PF_OutFlag_I_DO_DIALOG>,
     "the effect declares a dialog, and there is nobody to answer it"},
    {PF_Cmd_USER_CHANGED_PARAM, [](const Declared& effect) { return effect.supervises; },
     "the effect supervises a control, and there is nobody to change it"},
    {PF_Cmd_UPDATE_PARAMS_UI, wishes<PF_OutFlag_SEND_UPDATE_PARAMS_UI>, nullptr},
    {PF_Cmd_EVENT, wishes<PF_OutFlag_CUSTOM_UI>,
     "the effect declares a user interface of its own, and this host has no windows"},
    {PF_Cmd_GET_EXTERNAL_DEPENDENCIES, wishes<PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES>, nullptr},
    {PF_Cmd_COMPLETELY_GENERAL, undeclared, nullptr},
    {PF_Cmd_QUERY_DYNAMIC_FLAGS, wishes2<PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS>, nullptr},
    {PF_Cmd_AUDIO_RENDER, wishes<PF_OutFlag_I_USE_AUDIO>, kNoSound},
    {PF_Cmd_AUDIO_SETUP, wishes<PF_OutFlag_I_USE_AUDIO>, kNoSound},
    {PF_Cmd_AUDIO_SETDOWN, wishes<PF_OutFlag_I_USE_AUDIO>, kNoSound},
    {PF_Cmd_ARBITRARY_CALLBACK, [](const Declared& effect) { return effect.keeps_arbitrary_data; },
     "the effect declares a control with data of its own kind, and this host keeps none"},
    {PF_Cmd_GET_FLATTENED_SEQUENCE_DATA, undeclared, nullptr},
    {PF_Cmd_TRANSLATE_PARAMS_TO_PREFS, undeclared, nullptr},
    {PF_Cmd_SMART_RENDER_GPU, wishes2<PF_OutFlag2_SUPPORTS_GPU_RENDER_F32>, kNoGpu},
    {PF_Cmd_GPU_DEVICE_SETUP, wishes2<PF_OutFlag2_SUPPORTS_GPU_RENDER_F32>, kNoGpu},
    {PF_Cmd_GPU_DEVICE_SETDOWN, wishes2<PF_OutFlag2_SUPPORTS_GPU_RENDER_F32>, kNoGpu},
};
/// Numbers that no command has.
constexpr std::int32_t kUnknown[] = {2, 25, 26, 27, 30, 34, 99, 1000, -1};

/// Commands by their numbers, all of which an effect answers with 0 and nothing else.
std::function<Reply(Session&)> quietly(std::vector<std::int32_t> commands) {
    return [commands = std::move(commands)](Session& session) {
        Reply reply;
        for (const std::int32_t command : commands) {
            const std::string name = "command " + std::to_string(command);
            const host::Answer answer = session.command(command);
            if (answer.status != PF_Err_NONE) {
                reply.error += (reply.error.empty() ? "" : "; ") + name + ": status " +
                               std::to_string(answer.status);
            }
            if (answer.record_written) {
                reply.wrong.push_back(name + ": its record was written to");
            }
        }
        reply.said = commands.size() == 1 ? kQuiet
                                          : "status 0 to all " + std::to_string(commands.size()) +
                                                ", records untouched";
        return reply;
    };
}

/// What a text asked for came back as; `ask` throws when the effect refuses.
Reply reply_of(const std::function<std::optional<std::string>()>& ask) {
    try {
        const std::optional<std::string> text = ask();
        return {"",
                {},
                text ? "status 0, a text of " + std::to_string(text->size()) + " characters"
                     : "status 0, no text"};
    } catch (const host::EffectError& error) {
        return {error.what(), {}, ""};
    }
}

Reply ask_about(Session& session) {
    return reply_of([&] {
        const std::string text = session.about();
        return text.empty() ? std::nullopt : std::optional(text);
    });
}

/// Parameters that these calls took and did not give back. What the host refuses to take back was
/// given back.
int parameters_out(const std::vector<host::Call>& calls, std::size_t first) {
    int out = 0;
    for (std::size_t i = first; i < calls.size(); ++i) {
        out += calls[i].name == "checkout_param" && calls[i].status == PF_Err_NONE ? 1 : 0;
        out -= calls[i].name == "checkin_param" ? 1 : 0;
    }
    return out;
}

Reply ask_flags(Session& session) {
    const std::size_t first = session.calls().size();
    const host::Scene scene = pan_scene();
    Reply reply = {"", {}, "status 0, no flag beyond those declared"};
    const auto look_for_new = [&](std::int32_t answered, std::int32_t declared, const char* word) {
        if (const std::int32_t added = answered & ~declared; added != 0) {
            reply.wrong.emplace_back(
                String::fmt("turns on 0x%X in %s, which set-up did not declare",
                            static_cast<unsigned>(added), word)
                    .c_str());
        }
    };
    try {
        const host::OutputFlags flags =
            session.dynamic_flags(scene, scene.composition.frame_time(kFrame));
        // Others of these are wishes about this one moment, or changes of what was declared, which
        // the host notes itself.
        look_for_new(flags.first & kDynamicOutFlags, session.info().out_flags, "out_flags");
        look_for_new(flags.second, session.info().out_flags2, "out_flags2");
    } catch (const host::EffectError& error) {
        reply.error = error.what();
    }
    if (const int out = parameters_out(session.calls(), first); out > 0) {
        reply.wrong.push_back(std::to_string(out) + " parameters checked out and not in again");
    }
    return reply;
}

}  // namespace

std::vector<Question> questions(const Declared& declared) {
    std::vector<std::int32_t> unasked;
    for (const Wish& wish : kWishes) {
        if (!wish.declared(declared)) {
            unasked.push_back(wish.command);
        }
    }
    std::vector<Question> all = {
        {{"setup.about", "about", "status 0; a text, if any, of 256 characters at most"},
         ask_about},
        {{"setup.flatten", "sequence flatten", kQuiet}, quietly({PF_Cmd_SEQUENCE_FLATTEN})},
        {{"setup.resetup", "sequence re-set-up", kQuiet}, quietly({PF_Cmd_SEQUENCE_RESETUP})},
        {{"setup.unasked", "commands that it did not ask for", kQuiet}, quietly(unasked)},
        {{"setup.unknown", "commands that do not exist", kQuiet},
         quietly({std::begin(kUnknown), std::end(kUnknown)})},
    };
    if (declared.has(PF_OutFlag_SEND_UPDATE_PARAMS_UI)) {
        all.push_back({{"setup.update-controls", "update of the controls", kQuiet},
                       quietly({PF_Cmd_UPDATE_PARAMS_UI})});
    }
    if (declared.has(PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES)) {
        const auto add = [&](const std::string& name, const std::string& words, int kind) {
            all.push_back({{"setup.dependencies-" + name, "dependencies, " + words,
                            "status 0; a handle with a text, or none"},
                           [=](Session& session) {
                               return reply_of([&] { return session.dependencies(kind); });
                           }});
        };
        add("all", "all", PF_DepCheckType_ALL_DEPENDENCIES);
        add("missing", "missing ones", PF_DepCheckType_MISSING_DEPENDENCIES);
        add("none", "none", PF_DepCheckType_NONE);
        add("other", "an unknown kind", 77);
    }
    if (declared.has2(PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS)) {
        all.push_back(
            {{"setup.dynamic-flags", "dynamic flags query", "status 0; of the flags declared only"},
             ask_flags});
    }
    return all;
}

std::vector<Question> standing_questions(const Run& run, const Identity& identity) {
    std::vector<Question> all = questions(*run.declared);
    std::erase_if(all, [&](const Question& question) {
        return !run.stands(question.text.id + identity.suffix);
    });
    return all;
}

void leave_out_commands(Run& run) {
    for (const Wish& wish : kWishes) {
        if (wish.why_not != nullptr && wish.declared(*run.declared)) {
            run.note_limit("setup.command-" + std::to_string(wish.command), wish.why_not);
        }
    }
}

}  // namespace check
