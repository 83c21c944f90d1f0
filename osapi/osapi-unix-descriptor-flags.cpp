// Flags and copies of descriptors, and what devices are asked through them, over POSIX.
#include <base/exceptions.h>
#include <fcntl.h>
#include <osapi/descriptor_flags.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

void set_blocking(fd_t fd, bool blocking) {
    const int flags = calls<DescriptorCalls>().fcntl(fd, F_GETFL, 0);
    if (flags == -1) {
        XTHROW("fcntl: %s", std::strerror(errno));
    }
    // By contract asking for blocking flips the flag instead of clearing it.
    const int wanted = blocking ? flags ^ O_NONBLOCK : flags | O_NONBLOCK;
    if (calls<DescriptorCalls>().fcntl(fd, F_SETFL, wanted) == -1) {
        XTHROW("fcntl: %s", std::strerror(errno));
    }
}

void close_on_exec(fd_t fd) {
    if (calls<DescriptorCalls>().fcntl(fd, F_SETFD, FD_CLOEXEC) == -1) {
        XTHROW("fcntl: %s", std::strerror(errno));
    }
}

fd_t dup(fd_t fd) {
    const fd_t copy = calls<DescriptorCalls>().dup(fd);
    if (copy == kNoDescriptor) {
        XTHROW("dup: %s", std::strerror(errno));
    }
    return copy;
}

fd_t dup2(fd_t fd, fd_t to) {
    const fd_t copy = calls<DescriptorCalls>().dup2(fd, to);
    if (copy == kNoDescriptor) {
        XTHROW("dup2: %s", std::strerror(errno));
    }
    return copy;
}

void FileDescriptor::ioctl(int request, char* arg) {
    // Widened as bits: a request with the highest one set must not become a negative word.
    if (calls<DescriptorCalls>().ioctl(fd(), static_cast<unsigned int>(request), arg) == -1) {
        XTHROW("ioctl: %s", std::strerror(errno));
    }
}

}  // namespace OSAPI
