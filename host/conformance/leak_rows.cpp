// Rows of what is lost when things are done again and again.
#include <host/module.h>
#include <host_api/effect_interface.h>

#include "examination.h"
#include "growth.h"
#include "stage.h"

namespace conformance {
namespace {

using host::Depth;
using host::Session;

void tell(const Growth& growth, Notes& notes) {
    if (!growth.none()) {
        notes.find("", text_of(growth));
    }
    notes.say("nothing lost");
}

void lose_frames(const Examination& run, Notes& notes) {
    const bool smart = run.declared->has2(PF_OutFlag2_SUPPORTS_SMART_RENDER);
    Session session = run.open();
    const host::Scene scene = pan_scene();
    int frame = 0;
    const Growth growth = least_growth([&] {
        notes.doing("a frame");
        host::RenderOptions options;
        options.depth = Depth::Bits8;
        const host::Time time = scene.composition.frame_time(frame++);
        session.render(scene, time, options);
        if (smart) {
            options.render_follows = false;
            session.render(scene, time, options);
        }
        // The host's own record grows with what passes.
        session.forget();
    });
    tell(growth, notes);
}

void lose_questions(const Examination& run, Notes& notes) {
    Session session = run.open();
    const bool asked = run.declared->has(PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES);
    const Growth growth = least_growth([&] {
        notes.doing("about and dependencies");
        session.about();
        for (int kind = 0; asked && kind <= PF_DepCheckType_MISSING_DEPENDENCIES; ++kind) {
            session.dependencies(kind);
        }
        session.command(PF_Cmd_SEQUENCE_SETDOWN);
        session.command(PF_Cmd_SEQUENCE_SETUP);
        session.forget();
    });
    tell(growth, notes);
}

void lose_sessions(const Examination& run, Notes& notes) {
    const Growth growth = least_growth([&] {
        notes.doing("loading, set-up, set-down, unloading");
        Session session = run.open();
        session.close();
    });
    tell(growth, notes);
}

void stay(const Examination& run, Notes& notes) {
    notes.doing("loading, a frame, unloading");
    Session session = run.open();
    host::RenderOptions options;
    options.depth = Depth::Bits8;
    const host::Scene scene = pan_scene();
    session.render(scene, scene.composition.frame_time(kFrame), options);
    session.close();
    if (host::is_resident(run.file())) {
        notes.find("", "the module is still there after it was unloaded");
    }
    notes.say("nothing of it is there");
}

struct LeakProbe {
    RowText text;
    void (*play)(const Examination& run, Notes& notes);
    bool needs_frames;
};

constexpr char kNothingLost[] = "no memory or descriptor is lost every time";

constexpr LeakProbe kProbes[] = {
    {{"leaks.frames", "frame after frame, with and without a render", kNothingLost},
     lose_frames,
     true},
    {{"leaks.questions", "questions and sequences, again and again", kNothingLost},
     lose_questions,
     false},
    {{"leaks.sessions", "load, set-up, set-down, unload, again and again", kNothingLost},
     lose_sessions,
     false},
    {{"leaks.unload", "unload after a frame", "nothing of the module stays in the process"},
     stay,
     true},
};

}  // namespace

void examine_leaks(Examination& run) {
    if (!run.declared) {
        run.leave_out("leaks", "the effect cannot be set up");
        return;
    }
    const bool smart = run.declared->has2(PF_OutFlag2_SUPPORTS_SMART_RENDER);
    const std::string frame = smart ? "frames.8-bit" : "frames.plain-8-bit";
    for (const LeakProbe& probe : kProbes) {
        const std::string id(probe.text.id);
        if (probe.needs_frames && !run.stands(frame)) {
            run.leave_out(id, "a frame fails, see " + frame);
        } else if (id == "leaks.frames" && !run.stands("frames.handles")) {
            run.leave_out(id, "the handles lost would count as memory, see frames.handles");
        } else {
            run.enter(probe.text, run.probe([&](Notes& notes) { probe.play(run, notes); }));
        }
    }
}

}  // namespace conformance
