#include "frame_rules.h"

#include <string>
#include <string_view>
#include <vector>

#include "counted.h"
#include "examination.h"
#include "rules.h"

namespace conformance {
namespace {

/// Only smart frames have a part in it.
bool smart_alone(std::string_view rule) {
    return rule == "layers" || rule == "deleter" || rule == "rectangles";
}

}  // namespace

void enter_rule(Examination& run, const Rule& rule, const std::vector<Played>& frames) {
    const std::string id = "frames." + std::string(rule.name);
    std::vector<Placed> broken;
    int all = 0;
    int ended = 0;
    int layers_left = 0;
    for (const Played& frame : frames) {
        for (const Finding& finding : Examination::under(frame.heard, rule.name)) {
            broken.push_back({finding, frame.row.id});
        }
        if (frame.row.kind.smart || !smart_alone(rule.name)) {
            ++all;
            ended += frame.heard.kept.contains(kCameToItsEnd) ? 1 : 0;
        }
        layers_left += frame.heard.kept.value(kLayersLeft, 0);
    }
    if (broken.empty() && ended == 0) {
        run.leave_out(id, all == 0 ? "smart rendering is not declared"
                                   : "no frame that it is for came to its end");
        return;
    }
    std::string answer = "nothing found";
    if (ended < all) {
        answer += " in the " + std::to_string(ended) + " of " + std::to_string(all) +
                  " rows that came to their end";
    }
    // Layers need not be checked in: a host takes them back when the render returns.
    if (rule.name == "layers" && layers_left != 0) {
        answer += "; " + std::to_string(layers_left) + " left for the host to take back";
    }
    run.enter({id, "all of these frames", rule.promise}, counted(broken, "in"), answer);
}

}  // namespace conformance
