// Descriptor flags over POSIX.
#include <base/exceptions.h>
#include <fcntl.h>
#include <osapi/descriptor_flags.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

void set_blocking(fd_t fd, bool blocking) {
    const int flags = syscalls().fcntl(fd, F_GETFL, 0);
    if (flags == -1) {
        XTHROW("fcntl: %s", std::strerror(errno));
    }
    // By contract asking for blocking flips the flag instead of clearing it.
    const int wanted = blocking ? flags ^ O_NONBLOCK : flags | O_NONBLOCK;
    if (syscalls().fcntl(fd, F_SETFL, wanted) == -1) {
        XTHROW("fcntl: %s", std::strerror(errno));
    }
}

void close_on_exec(fd_t fd) {
    if (syscalls().fcntl(fd, F_SETFD, FD_CLOEXEC) == -1) {
        XTHROW("fcntl: %s", std::strerror(errno));
    }
}

fd_t dup(fd_t fd) {
    const fd_t copy = syscalls().dup(fd);
    if (copy == kNoDescriptor) {
        XTHROW("dup: %s", std::strerror(errno));
    }
    return copy;
}

fd_t dup2(fd_t fd, fd_t to) {
    const fd_t copy = syscalls().dup2(fd, to);
    if (copy == kNoDescriptor) {
        XTHROW("dup2: %s", std::strerror(errno));
    }
    return copy;
}

}  // namespace OSAPI
