// Rows of what is lost when things are done again and again.
#include <host/module.h>
#include <host_api/effect_interface.h>
#include <osapi/growth.h>

#include "frames.h"
#include "run.h"

namespace check {
namespace {

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

void lose_frames(const Run& run, const FrameKind& kind, Notes& notes) {
    Session session = run.open(kind.application);
    const host::Scene scene = pan_scene();
    const Violations& known = run.violations_of_set_up.at(kind.application);
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
        // What the frames' own rows cannot tell, since it is another frame.
        for (const host::Violation& one : beyond(session.violations(), known)) {
            if (run.stands("frames." + std::string(row_of(one.rule)))) {
                notes.find(where + one.text);
            }
        }
        // The host's own record grows with what passes.
        session.forget();
    });
}

void lose_questions(const Run& run, const Identity& identity, Notes& notes) {
    Session session = run.open(identity.application);
    const std::vector<Question> all = standing_questions(run, identity);
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

void lose_sessions(const Run& run, const Identity& identity, Notes& notes) {
    look_for_losses(notes, [&] {
        notes.doing("loading and set-up");
        Session session = run.open(identity.application);
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

/// Why nothing is to be learnt from frames of a kind; empty when there is.
std::string why_no_frames(const Run& run, const FrameKind& kind) {
    return run.stands(kind.row()) ? "" : "a frame fails, see " + kind.row();
}

/// Enters a row of what is done again and again, or `why_not`.
void check_again(Run& run, const RowText& text, const std::string& why_not, const Body& lose) {
    if (!run.needs(text.id)) {
        return;
    }
    if (!why_not.empty()) {
        run.leave_out(text.id, why_not);
        return;
    }
    const Heard heard = run.probe(text.id, lose);
    if (run.missed(text.id, heard)) {
        return;
    }
    // Of the rules those that the frames' rows found nothing against, not even what is kept.
    std::vector<Finding> found = heard.own();
    for (const Finding& one : heard.findings) {
        if (one.rule &&
            run.verdict_of("frames." + std::string(row_of(*one.rule))) == Verdict::Pass) {
            found.push_back(one);
        }
    }
    run.enter(text, found, heard.text("said"));
}

/// Of the module, after a frame.
void check_unload(Run& run, const Identity& identity, const std::vector<FrameKind>& kinds) {
    const auto kind = std::ranges::find(kinds, identity.application, &FrameKind::application);
    const std::string id = "leaks.unload" + identity.suffix;
    if (!run.needs(id)) {
        return;
    }
    if (kind == kinds.end()) {
        run.note_limit(id, "this host draws in none of the formats that the effect declares");
        return;
    }
    if (const std::string why_not = why_no_frames(run, *kind); !why_not.empty()) {
        run.leave_out(id, why_not);
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
    const std::string nothing_lost = "no memory or descriptor is lost every time";
    const std::string again = ", again and again";
    const std::vector<FrameKind> kinds = frame_kinds(*run.declared);
    for (const FrameKind& kind : kinds) {
        std::string why_not = why_no_frames(run, kind);
        if (why_not.empty() && !run.stands("frames.handles")) {
            why_not = "the handles lost would count as memory, see frames.handles";
        }
        check_again(
            run,
            {"leaks." + kind.name,
             kind.sent + again + (kind.smart ? ", with and without a render" : ""), nothing_lost},
            why_not, [&](Notes& notes) { lose_frames(run, kind, notes); });
    }
    for (const Identity& identity : kIdentities) {
        const char* const why_not =
            run.stands(identity.set_up_row) ? "" : "the effect cannot be set up";
        const std::string sent = again + identity.words;
        check_again(
            run,
            {"leaks.questions" + identity.suffix, "questions and sequences" + sent, nothing_lost},
            why_not, [&](Notes& notes) { lose_questions(run, identity, notes); });
        check_again(run,
                    {"leaks.sessions" + identity.suffix, "load, set-up, set-down, unload" + sent,
                     nothing_lost},
                    why_not, [&](Notes& notes) { lose_sessions(run, identity, notes); });
        check_unload(run, identity, kinds);
    }
}

}  // namespace check
