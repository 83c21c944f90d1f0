// Standard descriptors over POSIX.
#include <fcntl.h>
#include <osapi/files.h>
#include <osapi/standard_descriptors.h>
#include <unistd.h>

#include <initializer_list>

#include "syscalls.h"

namespace OSAPI {

void hold_standard_descriptors() {
    for (const fd_t fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (calls<DescriptorCalls>().fcntl(fd, F_GETFD, 0) != -1) {
            continue;
        }
        // The system gives the lowest free number, which is the missing one. It is opened for the
        // wrong direction, so that using it still fails.
        const fd_t held = open_can_fail("/dev/null", fd == STDIN_FILENO ? kWrite : kRead);
        if (held == kNoDescriptor) {
            return;
        }
    }
}

}  // namespace OSAPI
