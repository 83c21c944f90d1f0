#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "syscalls.h"

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <cerrno>
#include <csignal>
#include <cstdio>

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

}  // namespace

Syscalls& syscalls() {
    static Syscalls table = {
        // The system's open takes its permissions as a variable argument.
        .open = [](const char* path, int flags,
                   mode_t permissions) { return ::open(path, flags, permissions); },
        .close = ::close,
        .read = ::read,
        .pread = ::pread,
        .write = ::write,
        .pwrite = ::pwrite,
        .fstat = ::fstat,
        .stat = ::stat,
        .lseek = ::lseek,
        .ftruncate = ::ftruncate,
        .fsync = ::fsync,
        .sync = ::sync,
        .rename = ::rename,
        .unlink = ::unlink,
        .access = ::access,
        .mmap = ::mmap,
        .munmap = ::munmap,
        .mlock = ::mlock,
        .munlock = ::munlock,
        .opendir = ::opendir,
        .readdir = ::readdir,
        .closedir = ::closedir,
        .getcwd = ::getcwd,
        .chdir = ::chdir,
        .utime = ::utime,
        .glob = ::glob,
        .fork = ::fork,
        .execvp = ::execvp,
        .waitpid = ::waitpid,
        .kill = ::kill,
        .sched_yield = ::sched_yield,
        .pause = ::pause,
        .sleep = ::sleep,
        .setpgid = ::setpgid,
        .become_reaper = become_reaper,
        .sigaction = ::sigaction,
        .geteuid = ::geteuid,
        .fcntl = [](int fd, int command, int argument) { return ::fcntl(fd, command, argument); },
        .ioctl = [](int fd, unsigned long request,
                    char* argument) { return ::ioctl(fd, request, argument); },
        .isatty = ::isatty,
        .dup = ::dup,
        .dup2 = ::dup2,
        .pipe = ::pipe,
        .mknod = [](const char* path, mode_t mode,
                    dev_t device) { return ::mknod(path, mode, device); },
        .poll = ::poll,
        .fdopen = ::fdopen,
        .fclose = ::fclose,
        .socket = ::socket,
        .setsockopt = ::setsockopt,
        .bind = ::bind,
        .listen = ::listen,
        .accept = ::accept,
        .connect = ::connect,
        .gethostbyname = ::gethostbyname,
        .gethostname = ::gethostname,
        // The second argument, long unused, has different types on different systems.
        .gettimeofday = [](timeval* now) { return ::gettimeofday(now, nullptr); },
        .time = ::time,
    };
    return table;
}

}  // namespace OSAPI
