// Slurm's commands.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "farm_tasks.h"
#include "slurm_script.h"

namespace lumivar {

/// Submits tasks of a script's job array, by their numbers; the job's name for what is below. The
/// needs are said here too, since variables of Slurm's (SBATCH_PARTITION) have more weight than
/// what stands in a script. Throws `Failure` with what Slurm says, and with the remedy where there
/// is no Slurm.
std::string submit_to_slurm(const std::string& script, const SlurmNeeds& needs,
                            const std::vector<std::size_t>& tasks);

/// What the user types to end the job: "scancel 12".
std::string slurm_cancel_command(const std::string& job);

/// A job that Slurm has forgotten has no tasks. Throws `Failure` when Slurm does not answer.
FarmTasks tasks_in_slurm(const std::string& job);

/// The same from what `squeue --noheader --array --states=all --format "%K %t %r"` prints: a line
/// for each task, its number, its state and why it is in it.
FarmTasks parse_slurm_tasks(const std::string& lines);

}  // namespace lumivar
