// Rows of frames in a host in which nothing fails.
#include <string>
#include <string_view>
#include <vector>

#include "examination.h"
#include "frame_plays.h"
#include "frame_rules.h"
#include "identities.h"
#include "premiere_formats.h"
#include "rules.h"

namespace conformance {
namespace {

using host::Session;

/// All that the session broke: with its frames, between them and in the end.
void play(const Examination& run, const FrameRow& row, Notes& notes) {
    const std::vector<std::string>& known = run.known_violations(row.kind.application);
    const auto tell = [&](const std::vector<std::string>& violations) {
        for (const std::string& violation : violations) {
            notes.find(rule_of(violation), violation);
        }
    };
    notes.doing("set-up");
    Session session = run.open({row.kind.application, nullptr});
    Stage stage(row, session, notes);
    row.play(stage);
    const std::vector<std::string> told = session.violations();
    tell(beyond(told, known));
    notes.doing("set-down");
    session.forget();
    session.close();
    tell(beyond_at_set_down(beyond(session.violations(), known), told));
    notes.keep(kCameToItsEnd, true);
}

}  // namespace

void examine_frames(Examination& run) {
    if (!run.declared) {
        run.leave_out("frames", run.why_not_declared);
        return;
    }
    std::vector<Played> frames;
    for (const FrameRow& row : frame_rows(*run.declared)) {
        const std::string_view set_up_row = identity_of(row.kind.application).set_up_row;
        if (!run.stands(set_up_row)) {
            run.leave_out(row.id, "the effect cannot be set up, see " + std::string(set_up_row));
            continue;
        }
        frames.push_back({row, run.probe(row.id, [&](Notes& notes) { play(run, row, notes); })});
        run.enter({row.id, row.sent, row.promise}, frames.back().heard);
    }
    for (const Rule& rule : kRules) {
        enter_rule(run, rule, frames);
    }
    const std::string formats = formats_not_drawn(run.declared->premiere_formats);
    if (!formats.empty()) {
        run.note_limit("frames.premiere-formats",
                       "this host draws one format of a depth, BGRA or 8-bit ARGB, and the effect "
                       "also declares " +
                           formats);
    }
}

}  // namespace conformance
