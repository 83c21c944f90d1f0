// A piece of a test in a process of its own.
#pragma once

#include <osapi/processes.h>

/// Runs `run` in a child, which ends at once, without clean-up, by its result; 99 when it throws.
/// Returns the child's id; the caller waits for it.
template <class Run>
int fork_child(Run run) {
    const int pid = OSAPI::fork();
    if (pid == 0) {
        try {
            OSAPI::exit_now(run());
        } catch (...) {
            OSAPI::exit_now(99);
        }
    }
    return pid;
}

/// Runs `run` in a child and returns how that ended.
template <class Run>
int result_in_child(Run run) {
    return OSAPI::_wait_until_dead(fork_child(run), nullptr, false);
}
