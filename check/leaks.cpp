// Rows of what is lost when things are done again and again.
#include <host/module.h>
#include <host_api/effect_interface.h>
#include <osapi/growth.h>

#include <algorithm>
#include <functional>
#include <iterator>

#include "frames.h"
#include "questions.h"
#include "run.h"

namespace check {
namespace {

using host::Application;
using host::Session;

/// Kept by the probe of an unloaded module.
constexpr char kStays[] = "stays";

void look_for_losses(Notes& notes, const std::function<void()>& round) {
    const OSAPI::Growth growth = OSAPI::growth_of(round);
    if (!growth.none()) {
        notes.find(text_of(growth));
    }
    notes.say("nothing lost");
}

/// What the frames' own rows cannot tell, since it is another frame.
void tell_broken(const Run& run, const FrameKind& kind, Session& session, const std::string& where,
                 Notes& notes) {
    for (const host::Violation& violation :
         beyond(session.violations(), run.violations_of_set_up.at(kind.application))) {
        if (run.stands("frames." + std::string(row_of(violation.rule)))) {
            notes.find(where + violation.text);
        }
    }
    // The host's own record grows with what passes.
    session.forget();
}

void lose_frames(const Run& run, const FrameKind& kind, Notes& notes) {
    Session session = run.open(kind.application);
    const host::Scene scene = pan_scene();
    int frame = 0;
    look_for_losses(notes, [&] {
        const std::string where = "frame " + std::to_string(frame) + ": ";
        const host::Time time = scene.composition.frame_time(frame++);
        host::RenderOptions options = kind.options();
        notes.doing(kind.sent);
        judge(session.render(scene, time, options), {kind.drawing}, notes, where);
        if (kind.smart) {
            options.render_follows = false;
            notes.doing(kind.sent + " without its render");
            judge(session.render(scene, time, options), {Drawing::NotAsked}, notes, where);
        }
        tell_broken(run, kind, session, where, notes);
    });
}

void lose_questions(const Run& run, Application application, Notes& notes) {
    Session session = run.open(application);
    const std::vector<Question> all = standing_questions(run, identity_of(application));
    look_for_losses(notes, [&] {
        for (const Question& question : all) {
            notes.doing(question.text.sent);
            const Reply reply = question.ask(session);
            if (!reply.error.empty()) {
                notes.find(reply.error);
            }
        }
        for (const std::int32_t sequence : {PF_Cmd_SEQUENCE_SETDOWN, PF_Cmd_SEQUENCE_SETUP}) {
            notes.doing("a sequence");
            session.command(sequence);
        }
        session.forget();
    });
}

void lose_sessions(const Run& run, Application application, Notes& notes) {
    look_for_losses(notes, [&] {
        notes.doing("loading and set-up");
        Session session = run.open(application);
        notes.doing("set-down and unloading");
        session.close();
    });
}

void stay(const Run& run, const FrameKind& kind, Notes& notes) {
    notes.doing("loading and set-up");
    Session session = run.open(kind.application);
    const host::Scene scene = pan_scene();
    notes.doing(kind.sent);
    session.render(scene, scene.composition.frame_time(kFrame), kind.options());
    notes.doing("set-down and unloading");
    session.close();
    notes.keep(kStays, host::is_resident(run.file()));
    notes.say("nothing of it is there");
}

/// The probe's own findings, and those of rules that the frames' rows found nothing against.
std::vector<Finding> with_rules_kept_else(const Run& run, const Heard& heard) {
    std::vector<Finding> found = heard.own();
    std::copy_if(heard.findings.begin(), heard.findings.end(), std::back_inserter(found),
                 [&](const Finding& finding) {
                     return finding.rule &&
                            run.stands_clean("frames." + std::string(row_of(*finding.rule)));
                 });
    return found;
}

constexpr char kNothingLost[] = "no memory or descriptor is lost every time";
constexpr char kAgain[] = ", again and again";

void check_frame_leaks(Run& run, const FrameKind& kind) {
    const std::string id = "leaks." + kind.name;
    if (!run.needs(id)) {
        return;
    }
    if (!run.stands(kind.row())) {
        run.leave_out(id, "a frame fails, see " + kind.row());
    } else if (!run.stands("frames.handles")) {
        run.leave_out(id, "the handles lost would count as memory, see frames.handles");
    } else {
        const Heard heard = run.probe(id, [&](Notes& notes) { lose_frames(run, kind, notes); });
        if (!run.missed(id, heard)) {
            run.enter({id, kind.sent + kAgain + (kind.smart ? ", with and without a render" : ""),
                       kNothingLost},
                      with_rules_kept_else(run, heard), heard.text("said"));
        }
    }
}

using Lose = void (*)(const Run& run, Application application, Notes& notes);

void check_session_leaks(Run& run, const Identity& identity, const std::string& family,
                         const std::string& sent, Lose lose) {
    const RowText text = {family + identity.suffix, sent + kAgain + identity.words, kNothingLost};
    if (!run.needs(text.id)) {
        return;
    }
    if (run.stands(identity.set_up_row)) {
        run.enter(text, [&](Notes& notes) { lose(run, identity.application, notes); });
    } else {
        run.leave_out(text.id, "the effect cannot be set up");
    }
}

/// Of the module, after a frame.
void check_unload(Run& run, const Identity& identity, const std::vector<FrameKind>& kinds) {
    const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const FrameKind& one) {
        return one.application == identity.application;
    });
    const std::string id = "leaks.unload" + identity.suffix;
    if (!run.needs(id)) {
        return;
    }
    if (kind == kinds.end()) {
        run.note_limit(id, "this host draws in none of the formats that the effect declares");
        return;
    }
    if (!run.stands(kind->row())) {
        run.leave_out(id, "a frame fails, see " + kind->row());
        return;
    }
    const Heard heard = run.probe(id, [&](Notes& notes) { stay(run, *kind, notes); });
    if (heard.own().empty() && heard.kept.value(kStays, false)) {
        // Hosts keep modules loaded too; but what goes wrong at the very end does not show then.
        run.note_limit(id,
                       "the module stays after it was unloaded, so that its end was not seen; "
                       "with g++, -fno-gnu-unique lets it go");
        return;
    }
    run.enter(
        {id, "unload after a frame" + identity.words, "nothing of the module stays in the process"},
        heard);
}

}  // namespace

void check_leaks(Run& run) {
    if (!run.declared) {
        run.leave_out("leaks", run.why_not_declared);
        return;
    }
    const std::vector<FrameKind> kinds = frame_kinds(*run.declared);
    for (const FrameKind& kind : kinds) {
        check_frame_leaks(run, kind);
    }
    for (const Identity& identity : kIdentities) {
        check_session_leaks(run, identity, "leaks.questions", "questions and sequences",
                            lose_questions);
        check_session_leaks(run, identity, "leaks.sessions", "load, set-up, set-down, unload",
                            lose_sessions);
        check_unload(run, identity, kinds);
    }
}

}  // namespace check
