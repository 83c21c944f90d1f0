// The system's own calls: processes and signals.
#include <sched.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "syscalls.h"

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <cerrno>
#include <csignal>

namespace OSAPI {

namespace {

int become_reaper() {
#ifdef __linux__
    return ::prctl(PR_SET_CHILD_SUBREAPER, 1L, 0L, 0L, 0L);
#else
    errno = ENOSYS;
    return -1;
#endif
}
int die_with_parent() {
#ifdef __linux__
    return ::prctl(PR_SET_PDEATHSIG, static_cast<long>(SIGTERM), 0L, 0L, 0L);
#else
    errno = ENOSYS;
    return -1;
#endif
}

}  // namespace

template <>
ProcessCalls& calls() {
    static ProcessCalls table = {
        .fork = ::fork,
        .execvp = ::execvp,
        .waitpid = ::waitpid,
        .kill = ::kill,
        .sched_yield = ::sched_yield,
        .pause = ::pause,
        .sleep = ::sleep,
        .setpgid = ::setpgid,
        .die_with_parent = die_with_parent,
        .become_reaper = become_reaper,
        .sigaction = ::sigaction,
        .geteuid = ::geteuid,
    };
    return table;
}

}  // namespace OSAPI
