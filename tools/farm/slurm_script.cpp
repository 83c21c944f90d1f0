#include "slurm_script.h"

#include "failure.h"
#include "shell_words.h"

namespace lumivar {
namespace {

/// Slurm parts the lines of its options at blanks.
std::string option_line(const std::string& name, const std::string& value) {
    if (value.empty()) {
        return "";
    }
    if (value.find_first_of(" \t\n\"'\\#") != std::string::npos) {
        throw UsageError("--" + name + " \"" + value + "\" is no word that Slurm takes");
    }
    return "#SBATCH --" + name + "=" + value + "\n";
}

}  // namespace

std::string result_file(std::size_t chunk) { return "result." + std::to_string(chunk) + ".txt"; }
std::string log_file(std::size_t chunk) { return "log." + std::to_string(chunk) + ".txt"; }

std::string slurm_script(const ChunkJob& job) {
    std::string script =
        "#!/bin/sh\n"
        "# Renders a chunk of a shot: the frames in the line of chunks.txt that belongs to the "
        "task.\n"
        "#SBATCH --job-name=lumivar\n"
        "#SBATCH --output=/dev/null\n";
    script += option_line("array", job.chunks > 1 ? "0-" + std::to_string(job.chunks - 1) : "0");
    script += option_line("partition", job.needs.partition);
    script += option_line("cpus-per-task", job.needs.cpus ? std::to_string(*job.needs.cpus) : "");
    script += option_line("mem", job.needs.memory);
    script += option_line("time", job.needs.time);
    script += "\nstate=" + quoted(job.state) +
              "\n"
              "task=${SLURM_ARRAY_TASK_ID:?is set by Slurm}\n"
              "exec 2>\"$state/log.$task.txt\"\n"
              "cd " +
              quoted(job.folder) +
              " || exit 1\n"
              "frames=$(sed -n \"$((task + 1))p\" \"$state/" +
              std::string(kChunksFile) +
              "\")\n"
              "result=$state/result.$task\n" +
              quoted(job.program) + " render " + quoted(job.scene) + " -o " + quoted(job.output) +
              " --frames \"$frames\" --resume --json --progress none \\\n"
              "  --jobs \"${SLURM_CPUS_PER_TASK:-1}\"";
    if (!job.options.empty()) {
        script += " " + quoted_words(job.options);
    }
    return script +
           " >\"$result.part\"\n"
           "status=$?\n"
           "# Whole or not at all: who watches takes a missing result for a task that was lost.\n"
           "echo \"$status\" >>\"$result.part\"\n"
           "mv -f \"$result.part\" \"$result.txt\"\n"
           "exit \"$status\"\n";
}

}  // namespace lumivar
