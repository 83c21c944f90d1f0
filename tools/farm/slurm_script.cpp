#include "slurm_script.h"

#include "failure.h"
#include "shell_words.h"

namespace lumivar {

std::vector<std::string> slurm_options(const SlurmNeeds& needs) {
    std::vector<std::string> options;
    const auto add = [&options](const std::string& name, const std::string& value) {
        if (value.empty()) {
            return;
        }
        // Slurm parts the lines of its options at blanks.
        if (value.find_first_of(" \t\n\"'\\#") != std::string::npos) {
            throw UsageError("--" + name + " \"" + value + "\" is no word that Slurm takes");
        }
        options.push_back("--" + name + "=" + value);
    };
    add("partition", needs.partition);
    add("cpus-per-task", needs.cpus ? std::to_string(*needs.cpus) : "");
    add("mem", needs.memory);
    add("time", needs.time);
    return options;
}

std::string result_file(std::size_t chunk) { return "result." + std::to_string(chunk) + ".txt"; }
std::string log_file(std::size_t chunk) { return "log." + std::to_string(chunk) + ".txt"; }

std::string slurm_script(const ChunkJob& job) {
    std::string script =
        "#!/bin/sh\n"
        "# Renders a chunk of a shot: the frames in the line of chunks.txt that belongs to the "
        "task.\n"
        "#SBATCH --job-name=lumivar\n"
        "#SBATCH --output=/dev/null\n";
    script +=
        "#SBATCH --array=0" + (job.chunks > 1 ? "-" + std::to_string(job.chunks - 1) : "") + "\n";
    for (const std::string& option : slurm_options(job.needs)) {
        script.append("#SBATCH ").append(option).append("\n");
    }
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
