// A child process with all that comes of it, of which nothing stays.
#pragma once

#include <osapi/files.h>

#include <string>

namespace OSAPI {

/// "killed by SIGSEGV", "ended with exit code 3": of an end as the system's own wait tells it.
std::string how_ended(int status);

/// Waits until the child `id` has ended; how, as the system tells it.
int wait_for(int id);

/// For a child that is to run what its parent does not trust, to be called first: leads a group of
/// its own, takes signals as the system does by default, with none blocked, and leaves no core
/// dump. Standard input is empty, standard output goes nowhere, standard error to `errors`.
/// Throws as `lead_group`, `open` and `dup2`.
void start_apart(fd_t errors);

/// Owns a child that leads a group of its own (`lead_group`), and the processes that it makes.
///
/// Meant for a process without other children: with `adopts`, the answer of `adopt_orphans`, what
/// left the group is found as this process's child. Without it, only the group is.
class Offspring {
public:
    Offspring(int child, bool adopts) : child_(child), adopts_(adopts) {}
    /// Kills what `wait` did not wait for, at once.
    ~Offspring();
    Offspring(const Offspring&) = delete;
    Offspring& operator=(const Offspring&) = delete;

    /// Whether the child has ended; does not wait.
    bool has_ended();
    void kill();
    /// Waits for the child's end, then ends what it left: processes that are about to end by
    /// themselves have a fifth of a second for it.
    void wait();

    // After `wait`.
    /// How the child ended, as the system tells it.
    int status() const { return status_; }
    /// "2 processes were left running"; empty when none was.
    std::string left_text() const;

private:
    void await_end();
    bool anything_left();
    void clear_up(int grace_ms);
    void kill_the_rest();

    int child_;
    bool adopts_;
    bool ended_ = false;
    int status_ = 0;
    int taken_off_ = 0;
    int left_ = 0;
};

}  // namespace OSAPI
