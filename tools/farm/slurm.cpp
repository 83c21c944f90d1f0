#include "slurm.h"

#include <sstream>

#include "failure.h"
#include "program_run.h"

namespace lumivar {
namespace {

constexpr std::size_t kMostAnswer = std::size_t{1} << 24;
/// The status with which a program that cannot be started is told.
constexpr const char* kNotStarted = "ended with exit code 127";

std::string list_of(const std::vector<std::size_t>& numbers) {
    std::string text;
    for (const std::size_t number : numbers) {
        text.append(text.empty() ? "" : ",").append(std::to_string(number));
    }
    return text;
}

std::string first_word(const std::string& text) {
    return text.substr(0, text.find_first_of(" ;\n"));
}

}  // namespace

std::string submit_to_slurm(const std::string& script, const std::vector<std::size_t>& tasks) {
    const ProgramRun run =
        run_program({"sbatch", "--parsable", "--array=" + list_of(tasks), script}, kMostAnswer);
    if (run.how_ended == kNotStarted) {
        throw Failure(
            "there is no sbatch here; run this where Slurm's commands are installed (on Debian "
            "the package slurm-client), or see --dry-run");
    }
    if (!run.succeeded) {
        throw Failure("Slurm did not take the job: " + run.last_words);
    }
    return first_word(run.out);  // "NUMBER" or "NUMBER;CLUSTER"
}

SlurmTasks parse_slurm_tasks(const std::string& lines) {
    SlurmTasks tasks;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::size_t task = 0;
        std::string state;
        if (words >> task >> state) {
            // Pending and configuring ones wait; of the others each has a process somewhere.
            (state == "PD" || state == "CF" ? tasks.waiting : tasks.running).insert(task);
        }
    }
    return tasks;
}

SlurmTasks tasks_in_slurm(const std::string& job) {
    const ProgramRun run = run_program(
        {"squeue", "--noheader", "--array", "--format", "%K %t", "--job", job}, kMostAnswer);
    if (run.succeeded) {
        return parse_slurm_tasks(run.out);
    }
    // Some minutes after its end a job is forgotten.
    if (run.last_words.find("Invalid job id") != std::string::npos) {
        return {};
    }
    throw Failure("Slurm does not answer: " + run.last_words);
}

}  // namespace lumivar
