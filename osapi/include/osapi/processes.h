// Child processes: making them, signalling them, waiting for their end.
#pragma once

namespace OSAPI {

/// A copy of the process: 0 in the child, the child's id in the parent. Throws "fork: ...".
int fork();

/// Replaces the program by `file`, looked for along PATH. `argv` ends in a null and begins with the
/// program's name; null stands for the file's name and no further arguments. Returns only by
/// throwing "exec(FILE): ...".
[[noreturn]] void exec(const char* file, const char* const* argv);

/// Waits until the process `pid` has ended; like the system's own call, -1 means any child.
///
/// Returns its exit code or, if a signal ended it, that signal's number: the two cannot be told
/// apart. A child that merely stopped is waited for again. With `nohang` a child that has not ended
/// yet gives -1 at once. 15 stands for "no child of this process", a contract that makes it equal
/// to an end by SIGTERM. `out`, unless null, takes the id of the child that ended.
/// Throws "waitpid: ..." and "unexpected return value from waitpid()".
int _wait_until_dead(int pid, int* out, bool nohang);
/// Waits without `nohang`; a result other than 0 throws "child process returned non-zero exit
/// code".
void wait_until_dead(int pid);

/// Sends a signal. Throws "kill(PID,SIG): ...".
void kill(int pid, int sig);

/// Ends the process: with the clean-up of the C library, and without.
[[noreturn]] void exit(int code);
[[noreturn]] void exit_now(int code);

/// How many processors this process may run on, 1 at least: those that it was bound to (taskset, a
/// batch system), where the system tells, else those of the machine.
int usable_processors();

int getpid();
/// Lets another thread have the processor.
void yield();
/// Sleeps until a signal has been handled.
void pause();
/// Sleeps; returns the seconds that were left when a signal cut it short, else 0.
unsigned int sleep(unsigned int seconds);

/// A function that runs in a process of its own. Not copyable.
///
/// The child goes on when this object dies: call `stop` first.
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Runs `run` in a child, which exits (with clean-up) by its result. An exception of ours that
    /// it lets out is printed there and makes the exit code 1. Asserts that no other child is kept.
    /// Throws "fork: ...".
    void start(int (*run)());
    /// Waits for the child, if there is one; none is kept afterwards, failure or not. Throws as
    /// `wait_until_dead`.
    void stop();
    /// The child's id, or -1.
    int pid() const { return pid_; }

private:
    int pid_ = -1;
};

}  // namespace OSAPI
