// Stream sockets over POSIX.
#include <base/exceptions.h>
#include <base/release.h>
#include <netdb.h>
#include <netinet/in.h>
#include <osapi/descriptor_flags.h>
#include <osapi/sockets.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "syscalls.h"

namespace OSAPI {

namespace {

using std::strlen;

constexpr int kBacklog = 5;

// The room that every system has for a local path; some have a little more, but a path must be good
// on all of them or on none.
struct LocalAddress {
    char sun_path[104];
};
static_assert(sizeof(LocalAddress::sun_path) <= sizeof(sockaddr_un::sun_path));

sockaddr_in address_of(in_addr host, int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr = host;
    address.sin_port = htons(static_cast<in_port_t>(port));
    return address;
}

template <class Address>
const sockaddr* generic(const Address& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

fd_t new_socket(int family, int protocol) {
    return calls<SocketCalls>().socket(family, SOCK_STREAM, protocol);
}

}  // namespace

fd_t connect_tcp(const char* host, int port) {
    XASSERT(port > 0 && port <= 65535);
    const hostent* h = calls<SocketCalls>().gethostbyname(host);
    if (h == nullptr) {
        XTHROW("gethostbyname(\"%s\"): %s", host, hstrerror(h_errno));
    }
    XASSERT(h->h_addrtype == AF_INET);
    in_addr first;
    std::memcpy(&first, h->h_addr_list[0], sizeof first);
    const sockaddr_in address = address_of(first, port);

    FileDescriptor connecting(new_socket(AF_INET, IPPROTO_TCP));
    if (!connecting.is_open()) {
        XTHROW("socket: %s", std::strerror(errno));
    }
    if (calls<SocketCalls>().connect(connecting.fd(), generic(address), sizeof address) != 0) {
        XTHROW("connect(\"%s:%d\"): %s", host, port, std::strerror(errno));
    }
    return connecting.release();
}

fd_t ServerSocket::accept(bool return_on_interrupt) {
    for (;;) {
        FileDescriptor client(calls<SocketCalls>().accept(fd(), nullptr, nullptr));
        if (client.is_open()) {
            close_on_exec(client.fd());
            return client.release();
        }
        if (errno != EINTR) {
            XTHROW("accept: %s", std::strerror(errno));
        }
        if (return_on_interrupt) {
            return kNoDescriptor;
        }
    }
}

void ServerSocket::listen_on(FileDescriptor& bound) {
    if (calls<SocketCalls>().listen(bound.fd(), kBacklog) != 0) {
        XTHROW("listen: %s", std::strerror(errno));
    }
    close_on_exec(bound.fd());
    socket_.init(bound.fd());
    bound.release();
}

void TCPServerSocket::open(int port) {
    XASSERT(port > 0 && port <= 65535);
    XASSERT(!is_open());
    FileDescriptor server(new_socket(AF_INET, IPPROTO_TCP));
    if (!server.is_open()) {
        XTHROW("socket: %s", std::strerror(errno));
    }
    const int reuse = 1;
    if (calls<SocketCalls>().setsockopt(server.fd(), SOL_SOCKET, SO_REUSEADDR, &reuse,
                                        sizeof reuse) != 0) {
        XTHROW("setsockopt(SO_REUSEADDR): %s", std::strerror(errno));
    }
    in_addr all = {};
    all.s_addr = htonl(INADDR_ANY);
    const sockaddr_in address = address_of(all, port);
    if (calls<SocketCalls>().bind(server.fd(), generic(address), sizeof address) != 0) {
        XTHROW("bind: %s", std::strerror(errno));
    }
    listen_on(server);
}

UNIXServerSocket::~UNIXServerSocket() noexcept(false) {
    release_in_destructor([this] { close(); });
}

void UNIXServerSocket::open(const char* mypath) {
    XASSERT(mypath[0] != 0);
    XASSERT(!is_open());
    FileDescriptor server(new_socket(AF_UNIX, 0));
    if (!server.is_open()) {
        XTHROW("socket: %s", std::strerror(errno));
    }
    const LocalAddress addr = {};
    // Unspaced: messages show the condition as it is written here.
    // clang-format off
    XASSERT(strlen(mypath) < sizeof(addr.sun_path)-1);
    // clang-format on
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, mypath, strlen(mypath));
    String path(mypath);
    if (calls<SocketCalls>().bind(server.fd(), generic(address), sizeof address) != 0) {
        XTHROW("bind: %s", std::strerror(errno));
    }
    try {
        listen_on(server);
    } catch (...) {
        // A path that is left behind would keep the next server out.
        calls<PathCalls>().unlink(mypath);
        throw;
    }
    path_ = std::move(path);
}

void UNIXServerSocket::close() {
    if (!is_open()) {
        return;
    }
    // The path goes first: once the socket is closed, another server may have taken the path.
    const String path(std::move(path_));
    try {
        rm_ifexist(path.c_str());
    } catch (...) {
        close_socket();
        throw;
    }
    close_socket();
}

}  // namespace OSAPI
