// The system's own calls: descriptors of all kinds.
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "syscalls.h"

namespace OSAPI {

template <>
DescriptorCalls& calls() {
    static DescriptorCalls table = {
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
    };
    return table;
}

}  // namespace OSAPI
