// The machine's name over POSIX.
#include <base/exceptions.h>
#include <osapi/host_name.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

String gethostname() {
    static char name[256];
    static bool known = false;
    if (!known) {
        if (calls<SocketCalls>().gethostname(name, sizeof name) != 0) {
            XTHROW("gethostname: %s", std::strerror(errno));
        }
        // A name that was cut to the buffer's size may lack the NUL at its end.
        name[sizeof name - 1] = '\0';
        known = true;
    }
    return {name};
}

}  // namespace OSAPI
