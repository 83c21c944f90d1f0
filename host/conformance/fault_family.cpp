#include "fault_family.h"

#include <algorithm>

#include "counted.h"

namespace conformance {
namespace {

/// What was found, told with its faults.
std::vector<Finding> told_with_faults(const Heard& heard) {
    std::vector<Placed> found;
    for (const Finding& finding : own_findings(heard)) {
        found.push_back({finding, finding.during});
    }
    return counted(found, "with");
}

}  // namespace

void examine_family(Examination& run, const FaultFamily& family) {
    const std::string id = "faults." + family.name;
    if (!run.stands(family.stands_on)) {
        run.leave_out(id, "it fails without faults, see " + family.stands_on);
        return;
    }
    const std::string good_id = id + ".without-faults";
    const Heard heard = run.probe(good_id, [&](Notes& notes) {
        const GoodRun good = family.play_well(notes);
        notes.keep("calls", good.calls);
        notes.keep("violations", good.violations);
        notes.say("status 0; calls that can fail: " + std::to_string(good.calls.size()));
    });
    run.enter({good_id, family.sent + ", again; nothing fails", "it comes back each time"}, heard);
    if (!run.stands(good_id)) {
        run.leave_out(id, "it fails without faults, see " + good_id);
        return;
    }
    GoodRun good{heard.kept.at("calls"), heard.kept.at("violations"), true};
    for (const std::string& row : family.lossless_by) {
        if (good.lossless && !run.stands(row)) {
            good.lossless = false;
            run.leave_out(id + ", memory", "it may be lost without faults too, see " + row);
        }
    }
    for (const FailingCall& call : failing_calls(good.calls)) {
        const std::string row = id + "." + call.slug();
        const Heard answer = run.probe(
            row, [&](Notes& notes) { notes.keep("faults", family.play(call, good, notes)); });
        if (run.lacked(row, answer)) {
            continue;
        }
        const std::vector<Finding> found = told_with_faults(answer);
        if (found.empty() && answer.kept.at("faults") == 0) {
            run.leave_out(row, "the call was made in the run without faults alone");
        } else {
            run.enter({row, family.sent + "; " + call.sent(), family.promise(call)}, found,
                      answer.said);
        }
    }
}

}  // namespace conformance
