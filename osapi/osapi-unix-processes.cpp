// Processes over POSIX.
#include <base/exceptions.h>
#include <osapi/processes.h>
#include <sched.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "syscalls.h"

namespace OSAPI {

namespace {

constexpr int kNoChild = -1;
// By contract, although it is the number of a signal too.
constexpr int kNotAChild = 15;
constexpr int kNotYet = -1;
constexpr int kExitAfterException = 1;

// Stopped or continued: the low seven bits all ones.
bool is_alive(int status) { return (status & 0x7F) == 0x7F; }

// An exception must not get out: it would go on in the child's copy of the parent's callers.
int result_of(int (*run)()) noexcept {
    try {
        return run();
    } catch (const Xception& failure) {
        failure.print();
        return kExitAfterException;
    }
}

}  // namespace

int fork() {
    const pid_t pid = calls<ProcessCalls>().fork();
    if (pid < 0) {
        XTHROW("fork: %s", std::strerror(errno));
    }
    return pid;
}

void exec(const char* file, const char* const* argv) {
    const char* const alone[] = {file, nullptr};
    // The system's call promises to leave the texts alone but cannot say so in its type.
    calls<ProcessCalls>().execvp(file, const_cast<char* const*>(argv == nullptr ? alone : argv));
    XTHROW("exec(%s): %s", file, std::strerror(errno));
}

int _wait_until_dead(int pid, int* out, bool nohang) {
    for (;;) {
        int status = 0;
        const pid_t ended = calls<ProcessCalls>().waitpid(pid, &status, nohang ? WNOHANG : 0);
        if (ended < 0) {
            if (errno == EINTR) {
                continue;
            }
            if (errno == ECHILD) {
                return kNotAChild;
            }
            XTHROW("waitpid: %s", std::strerror(errno));
        }
        if (ended == 0 && nohang) {
            return kNotYet;
        }
        if (ended == 0) {
            XTHROW("unexpected return value from waitpid()");
        }
        if (is_alive(status)) {
            continue;
        }
        if (out != nullptr) {
            *out = ended;
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
    }
}

void wait_until_dead(int pid) {
    if (_wait_until_dead(pid, nullptr, false) != 0) {
        XTHROW("child process returned non-zero exit code");
    }
}

void kill(int pid, int sig) {
    if (calls<ProcessCalls>().kill(pid, sig) != 0) {
        XTHROW("kill(%d,%d): %s", pid, sig, std::strerror(errno));
    }
}

void exit(int code) { std::exit(code); }

void exit_now(int code) { ::_exit(code); }

int getpid() { return ::getpid(); }

void yield() { calls<ProcessCalls>().sched_yield(); }

void pause() { calls<ProcessCalls>().pause(); }

unsigned int sleep(unsigned int seconds) { return calls<ProcessCalls>().sleep(seconds); }

int usable_processors() {
#ifdef CPU_COUNT
    cpu_set_t bound;
    if (sched_getaffinity(0, sizeof bound, &bound) == 0) {
        return std::max(1, CPU_COUNT(&bound));
    }
    // More processors than the set has room for.
#endif
    return std::max(1, static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
}

void ChildProcess::start(int (*run)()) {
    XASSERT(pid_ == kNoChild);
    // Else the child's exit would write what the parent has buffered a second time.
    std::fflush(nullptr);
    const int pid = fork();
    if (pid == 0) {
        exit(result_of(run));
    }
    pid_ = pid;
}

void ChildProcess::stop() {
    if (pid_ > 0) {
        // The id is forgotten before the wait: after it, another process may have that id.
        wait_until_dead(std::exchange(pid_, kNoChild));
    }
}

}  // namespace OSAPI
