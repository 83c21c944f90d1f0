// The batch script with which Slurm runs one chunk of a shot.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace lumivar {

/// What a task may use; what is empty is left to the cluster.
struct SlurmNeeds {
    std::string partition;
    std::optional<int> cpus;  ///< for each task
    std::string memory;       ///< for each task, as Slurm writes it: "4G"
    std::string time;         ///< for each task, as Slurm writes it: "1:30:00"
};

struct ChunkJob {
    std::string program;               ///< the command line of this project
    std::string folder;                ///< in which relative paths count
    std::string state;                 ///< the folder of chunks, results and logs
    std::string scene;                 ///< its file
    std::string output;                ///< the pictures' name
    std::vector<std::string> options;  ///< further ones of `lumivar render`
    std::size_t chunks = 0;
    SlurmNeeds needs;
};

/// Options of `sbatch`, "--mem=4G". Throws `UsageError` for what is no word.
std::vector<std::string> slurm_options(const SlurmNeeds& needs);

/// The script for a job array with a task for each chunk. Throws `UsageError` for texts that do not
/// go into a script.
std::string slurm_script(const ChunkJob& job);

// Files in the state folder.
/// A line for each chunk, its range of frames.
inline constexpr char kChunksFile[] = "chunks.txt";
/// What a task has to say: what `lumivar render --json` printed, and its exit status in the last
/// line. It appears whole.
std::string result_file(std::size_t chunk);
/// What it said on standard error.
std::string log_file(std::size_t chunk);

}  // namespace lumivar
