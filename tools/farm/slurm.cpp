#include "slurm.h"

#include <set>
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

/// A job as `sbatch --parsable` names it: "NUMBER" or "NUMBER;CLUSTER".
struct JobName {
    std::string number;
    std::string cluster;  ///< empty: the only one, or the usual one

    explicit JobName(const std::string& text) {
        const std::size_t end = text.find(';');
        number = text.substr(0, end);
        cluster = end == std::string::npos ? "" : text.substr(end + 1);
    }
};

/// Whatever the user has set for looking at queues.
constexpr const char* kFilters[] = {"SQUEUE_ACCOUNT",   "SQUEUE_LICENSES", "SQUEUE_NAMES",
                                    "SQUEUE_PARTITION", "SQUEUE_QOS",      "SQUEUE_USERS"};

}  // namespace

std::string submit_to_slurm(const std::string& script, const SlurmNeeds& needs,
                            const std::vector<std::size_t>& tasks) {
    std::vector<std::string> words = {"sbatch", "--parsable", "--array=" + list_of(tasks)};
    for (const std::string& option : slurm_options(needs)) {
        words.push_back(option);
    }
    words.push_back(script);
    const ProgramRun run = run_program(words, kMostAnswer);
    if (run.how_ended == kNotStarted) {
        throw Failure(
            "there is no sbatch here; run this where Slurm's commands are installed (on Debian "
            "the package slurm-client), or see --dry-run");
    }
    if (!run.succeeded) {
        const bool too_many = run.last_words.find("array specification") != std::string::npos;
        throw Failure("Slurm did not take the job: " + run.last_words +
                      (too_many ? "; more frames in a --chunk make fewer tasks" : ""));
    }
    return run.out.substr(0, run.out.find_first_of(" \n"));
}

std::string slurm_cancel_command(const std::string& job) {
    const JobName name(job);
    return "scancel " + (name.cluster.empty() ? "" : "-M " + name.cluster + " ") + name.number;
}

FarmTasks parse_slurm_tasks(const std::string& lines) {
    // Of those that are there no more, all but the cancelled ones. Every other state, as that of
    // one that was handed to another machine, has a process somewhere or will have one.
    static const std::set<std::string> kEnded = {"BF",  "CD", "DL", "F",  "NF",
                                                 "OOM", "PR", "RV", "SE", "TO"};
    static const std::set<std::string> kInTurn = {"None", "Resources", "Priority", "BeginTime"};
    FarmTasks tasks;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::size_t task = 0;
        std::string state;
        // Else a line of another kind: of a cluster's name, say.
        if (words >> task >> state && kEnded.count(state) == 0) {
            if (state == "CA") {
                tasks.cancelled.insert(task);
            } else if (state == "PD" || state == "CF") {
                tasks.waiting.insert(task);
                std::string reason;
                std::getline(words >> std::ws, reason);
                if (kInTurn.count(reason) == 0) {
                    tasks.held_by = reason;
                }
            } else {
                tasks.running.insert(task);
            }
        }
    }
    return tasks;
}

FarmTasks tasks_in_slurm(const std::string& job) {
    const JobName name(job);
    std::vector<std::string> words = {"env"};
    for (const char* const filter : kFilters) {
        words.insert(words.end(), {"-u", filter});
    }
    words.insert(words.end(), {"squeue", "--noheader", "--array", "--states=all", "--format",
                               "%K %t %r", "--job", name.number});
    if (!name.cluster.empty()) {
        words.insert(words.end(), {"-M", name.cluster});
    }
    const ProgramRun run = run_program(words, kMostAnswer);
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
