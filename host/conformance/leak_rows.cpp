// Rows of what is lost when things are done again and again.
#include <host/module.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <iterator>

#include "examination.h"
#include "frame_kinds.h"
#include "frames.h"
#include "growth.h"
#include "identities.h"
#include "played_scene.h"
#include "questions.h"
#include "rules.h"

namespace conformance {
namespace {

using host::Application;
using host::Session;

/// Kept by the probe of an unloaded module.
constexpr char kStays[] = "stays";

void tell(const Growth& growth, Notes& notes) {
    if (!growth.none()) {
        notes.find("", text_of(growth));
    }
    notes.say("nothing lost");
}

/// What the frames' own rows cannot tell, since it is another frame.
void judge(const Examination& run, const FrameKind& kind, Session& session,
           const std::string& where, Notes& notes) {
    for (const std::string& violation :
         beyond(session.violations(), run.known_violations(kind.application))) {
        if (run.stands("frames." + std::string(rule_of(violation)))) {
            notes.find("", where + violation);
        }
    }
    // The host's own record grows with what passes.
    session.forget();
}

void lose_frames(const Examination& run, const FrameKind& kind, Notes& notes) {
    Session session = run.open({kind.application, nullptr});
    const host::Scene scene = pan_scene();
    int frame = 0;
    const Growth growth = growth_of([&] {
        const std::string where = "frame " + std::to_string(frame) + ": ";
        const host::Time time = scene.composition.frame_time(frame++);
        host::RenderOptions options = kind.options();
        notes.doing(kind.sent);
        inspect(session.render(scene, time, options), due(kind, *run.declared), notes, where);
        if (kind.smart) {
            options.render_follows = false;
            notes.doing(kind.sent + " without its render");
            inspect(session.render(scene, time, options), Drawing::NotAsked, notes, where);
        }
        judge(run, kind, session, where, notes);
    });
    tell(growth, notes);
}

void lose_questions(const Examination& run, Application application, Notes& notes) {
    Session session = run.open({application, nullptr});
    const std::vector<Question> all = standing_questions(run, identity_of(application));
    const Growth growth = growth_of([&] {
        for (const Question& question : all) {
            notes.doing(question.text.sent);
            const Reply reply = question.ask(session);
            if (!reply.error.empty()) {
                notes.find("", reply.error);
            }
        }
        for (const std::int32_t sequence : {PF_Cmd_SEQUENCE_SETDOWN, PF_Cmd_SEQUENCE_SETUP}) {
            notes.doing("a sequence");
            session.command(sequence);
        }
        session.forget();
    });
    tell(growth, notes);
}

void lose_sessions(const Examination& run, Application application, Notes& notes) {
    const Growth growth = growth_of([&] {
        notes.doing("loading and set-up");
        Session session = run.open({application, nullptr});
        notes.doing("set-down and unloading");
        session.close();
    });
    tell(growth, notes);
}

void stay(const Examination& run, const FrameKind& kind, Notes& notes) {
    notes.doing("loading and set-up");
    Session session = run.open({kind.application, nullptr});
    const host::Scene scene = pan_scene();
    notes.doing(kind.sent);
    session.render(scene, scene.composition.frame_time(kFrame), kind.options());
    notes.doing("set-down and unloading");
    session.close();
    notes.keep(kStays, host::is_resident(run.file()));
    notes.say("nothing of it is there");
}

/// The probe's own findings, and those of rules that the frames' rows found nothing against.
std::vector<Finding> with_rules_kept_else(const Examination& run, const Heard& heard) {
    std::vector<Finding> found = own_findings(heard);
    std::copy_if(heard.findings.begin(), heard.findings.end(), std::back_inserter(found),
                 [&](const Finding& finding) {
                     return !finding.rule.empty() && run.passes("frames." + finding.rule);
                 });
    return found;
}

constexpr char kNothingLost[] = "no memory or descriptor is lost every time";

void examine_frame_leaks(Examination& run, const FrameKind& kind) {
    const std::string id = "leaks." + kind.name;
    if (!run.stands(kind.row())) {
        run.leave_out(id, "a frame fails, see " + kind.row());
    } else if (!run.stands("frames.handles")) {
        run.leave_out(id, "the handles lost would count as memory, see frames.handles");
    } else {
        const std::string sent =
            kind.sent +
            (kind.smart ? ", again and again, with and without a render" : ", again and again");
        const Heard heard = run.probe(id, [&](Notes& notes) { lose_frames(run, kind, notes); });
        if (!run.lacked(id, heard)) {
            run.enter({id, sent, kNothingLost}, with_rules_kept_else(run, heard), heard.said);
        }
    }
}

struct SessionProbe {
    RowText text;
    void (*play)(const Examination& run, Application application, Notes& notes);
};

constexpr SessionProbe kSessionProbes[] = {
    {{"leaks.questions", "questions and sequences, again and again", kNothingLost}, lose_questions},
    {{"leaks.sessions", "load, set-up, set-down, unload, again and again", kNothingLost},
     lose_sessions},
};

/// As one application: sessions, and the module after a frame.
void examine_session_leaks(Examination& run, const Identity& identity,
                           const std::vector<FrameKind>& kinds) {
    const std::string suffix(identity.suffix);
    const std::string words(identity.words);
    for (const SessionProbe& probe : kSessionProbes) {
        const std::string id = std::string(probe.text.id) + suffix;
        if (run.stands(identity.set_up_row)) {
            run.enter(
                {id, std::string(probe.text.sent) + words, probe.text.promise},
                run.probe(id, [&](Notes& notes) { probe.play(run, identity.application, notes); }));
        } else {
            run.leave_out(id, "the effect cannot be set up");
        }
    }
    const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const FrameKind& one) {
        return one.application == identity.application;
    });
    const std::string id = "leaks.unload" + suffix;
    if (kind == kinds.end()) {
        run.note_limit(id, "this host draws in none of the formats that the effect declares");
        return;
    }
    if (!run.stands(kind->row())) {
        run.leave_out(id, "a frame fails, see " + kind->row());
        return;
    }
    const Heard heard = run.probe(id, [&](Notes& notes) { stay(run, *kind, notes); });
    if (own_findings(heard).empty() && heard.kept.value(kStays, false)) {
        // Hosts keep modules loaded too; but what goes wrong at the very end does not show then.
        run.note_limit(id,
                       "the module stays after it was unloaded, so that its end was not seen; "
                       "with g++, -fno-gnu-unique lets it go");
        return;
    }
    run.enter({id, "unload after a frame" + words, "nothing of the module stays in the process"},
              heard);
}

}  // namespace

void examine_leaks(Examination& run) {
    if (!run.declared) {
        run.leave_out("leaks", run.why_not_declared);
        return;
    }
    const std::vector<FrameKind> kinds = frame_kinds(*run.declared);
    for (const FrameKind& kind : kinds) {
        examine_frame_leaks(run, kind);
    }
    for (const Identity& identity : kIdentities) {
        examine_session_leaks(run, identity, kinds);
    }
}

}  // namespace conformance
