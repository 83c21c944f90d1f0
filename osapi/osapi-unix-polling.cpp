// Waiting for descriptors over POSIX.
#include <base/exceptions.h>
#include <osapi/polling.h>
#include <poll.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

int poll(pollfd* descriptors, unsigned int n, int timeout, bool return_on_interrupt) {
    for (;;) {
        const int ready = calls<DescriptorCalls>().poll(descriptors, n, timeout);
        if (ready >= 0) {
            return ready;
        }
        if (errno != EINTR) {
            XTHROW("poll: %s", std::strerror(errno));
        }
        if (return_on_interrupt) {
            return ready;
        }
    }
}

}  // namespace OSAPI
