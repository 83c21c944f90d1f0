// The system's own calls: sockets, and names of hosts.
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include "syscalls.h"

namespace OSAPI {

template <>
SocketCalls& calls() {
    static SocketCalls table = {
        .socket = ::socket,
        .setsockopt = ::setsockopt,
        .bind = ::bind,
        .listen = ::listen,
        .accept = ::accept,
        .connect = ::connect,
        .gethostbyname = ::gethostbyname,
        .gethostname = ::gethostname,
    };
    return table;
}

}  // namespace OSAPI
