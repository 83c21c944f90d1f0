// Rows of something that the host plays while one call after the other fails.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "apart.h"
#include "examination.h"
#include "faults.h"

namespace conformance {

/// What is played when nothing fails.
struct GoodRun {
    std::map<std::string, int> calls;     ///< that can fail, with their number
    std::vector<std::string> violations;  ///< told elsewhere
    bool lossless = false;                ///< else what faults lose cannot be told from it
};

struct FaultFamily {
    std::string name;                      ///< the rows are faults.NAME.CALL
    std::string sent;                      ///< "a float frame"
    std::string stands_on;                 ///< the row of the same without faults
    std::vector<std::string> lossless_by;  ///< the rows that tell whether it loses memory
    const char* (*promise)(const FailingCall& call);
    /// Plays it without faults and finds what fails all the same.
    std::function<GoodRun(Notes&)> play_well;
    /// Plays it with each fault of a call; returns how many could be delivered.
    std::function<int(const FailingCall&, const GoodRun&, Notes&)> play;
};

/// A row without faults, then one for each call that such a run makes.
void examine_family(Examination& run, const FaultFamily& family);

}  // namespace conformance
