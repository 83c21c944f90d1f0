// One process for a whole check, in which the probes are made.
//
// It outlives the one that asked for it: when that is gone, even by SIGKILL, which no handler sees,
// it ends the probe that runs with all that the module left, and itself.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "probe.h"

namespace check {

/// Sends a value to the process that asked.
using Tell = std::function<void(const nlohmann::json&)>;

/// Runs `work` in a process of its own, which leads a group of its own and takes over the orphans
/// of its children where the system lets it; `hear` gets in this process what it tells. `ends` are
/// for its `Probes`.
///
/// Throws `Defect` with what `work` threw, or how its process ended before it was done; throws
/// `StrXception` when there can be no process, and what `hear` throws. The process is gone then.
void run_reaped(const std::function<void(const Tell& tell, const ReaperEnds& ends)>& work,
                const Tell& hear);

}  // namespace check
