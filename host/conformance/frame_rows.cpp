// Rows of frames in a host in which nothing fails.
#include <host/errors.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "examination.h"
#include "frame_kinds.h"
#include "frame_plays.h"
#include "frame_rules.h"
#include "frames.h"
#include "premiere_formats.h"
#include "rules.h"

namespace conformance {
namespace {

using host::Frame;
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

std::string status_text(const Frame& frame) {
    return "status " + std::to_string(frame.status) +
           (frame.message.text.empty() ? "" : ": " + frame.message.text);
}

Drawing due(const FrameKind& kind, const Declared& declared) {
    // With smart rendering at hand the plain commands need not draw, outside Premiere Pro.
    const bool may_rest = kind.plain && declared.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER);
    return may_rest ? Drawing::WholeOrNone : Drawing::Whole;
}

void inspect(const Frame& frame, Drawing drawing, Notes& notes, const std::string& where) {
    const std::size_t all = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(frame.world.height());
    if (frame.status != PF_Err_NONE) {
        notes.find("", where + status_text(frame));
    } else if (drawing != Drawing::NotAsked && !frame.rendered) {
        notes.find("", where + "nothing to render: the result is empty");
    } else if (frame.rendered && frame.undrawn_pixels != 0 &&
               (drawing == Drawing::Whole || frame.undrawn_pixels != all)) {
        notes.find("", where + std::to_string(frame.undrawn_pixels) + " of " + std::to_string(all) +
                           " pixels are not drawn");
    }
    if (frame.status == PF_Err_NONE && frame.message.is_error) {
        notes.find("messages", where + "an error message with status 0: " + frame.message.text);
    }
    if (frame.open_param_checkouts != 0) {
        notes.find("parameters",
                   where + std::to_string(frame.open_param_checkouts) +
                       " parameters checked out and not in again",
                   kParametersStayOut);
    }
    if (frame.handle_left) {
        notes.find("record", where + "a handle stands in the slot of the callbacks",
                   kHandleInRecord);
    }
    const bool none = frame.rendered && frame.undrawn_pixels == all;
    notes.say("status 0" + (!frame.rendered ? ""
                            : none          ? ", no pixel drawn"
                                   : ", all of " + std::to_string(frame.world.width()) + " x " +
                                         std::to_string(frame.world.height()) + " pixels drawn"));
}

void examine_frames(Examination& run) {
    if (!run.declared) {
        run.leave_out("frames", "the effect cannot be set up");
        return;
    }
    std::vector<Played> frames;
    for (const FrameRow& row : frame_rows(*run.declared)) {
        frames.push_back({row, run.probe(row.id, [&](Notes& notes) { play(run, row, notes); })});
        run.enter({row.id, row.sent, row.promise}, frames.back().heard);
    }
    for (const Rule& rule : kRules) {
        enter_rule(run, rule, frames);
    }
    const std::string formats = formats_not_drawn(run.premiere_formats);
    if (!formats.empty()) {
        run.note_limit("frames.premiere-formats",
                       "this host draws 8-bit BGRA only, and the effect declares " + formats);
    }
}

}  // namespace conformance
