// A process between this one and the one that a module runs in.
//
// It is the one that outlives the others: whatever the module's process left is ended when that
// ends, and all of it when this process is gone, even by SIGKILL, which no handler sees.
#pragma once

#include <osapi/pipes.h>

#include <functional>

namespace conformance {

/// How the process ended, and what it left.
struct Account {
    int status = 0;  ///< as the system tells it
    int left = 0;    ///< processes that were still running
    bool counted = true;
};

/// Runs something in a process that leads a group of its own, with a keeper as its parent.
///
/// The processes that it makes are found by that group, and where the system has orphans adopted
/// (Linux) wherever they went; elsewhere one that leaves the group stays.
class Keeper {
public:
    /// `life` never comes back. Throws `StrXception` when there can be no keeper.
    explicit Keeper(const std::function<void()>& life);
    /// Ends what was not waited for.
    ~Keeper();
    Keeper(const Keeper&) = delete;
    Keeper& operator=(const Keeper&) = delete;

    bool has_ended();
    /// Has everything ended at once.
    void end();
    /// Waits for the end. Throws `StrXception` when the process could not be made.
    Account wait();

private:
    void look(int options);

    OSAPI::Pipe leash_;    ///< its end tells the keeper that this process is gone, or wants no more
    OSAPI::Pipe account_;  ///< back from the keeper
    int id_ = -1;
    int status_ = 0;
    bool reaped_ = false;
};

}  // namespace conformance
