// Slurm's commands.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace lumivar {

/// Submits tasks of a script's job array, by their numbers; the job's number. Throws `Failure` with
/// what Slurm says, and with the remedy where there is no Slurm.
std::string submit_to_slurm(const std::string& script, const std::vector<std::size_t>& tasks);

/// The tasks of a job that wait or run.
struct SlurmTasks {
    std::set<std::size_t> waiting;
    std::set<std::size_t> running;
};

/// A job that Slurm has forgotten has none. Throws `Failure` when Slurm does not answer.
SlurmTasks tasks_in_slurm(const std::string& job);

/// The same from what `squeue --noheader --array --format "%K %t"` prints: a line for each task,
/// its number and its state.
SlurmTasks parse_slurm_tasks(const std::string& lines);

}  // namespace lumivar
