// What the tests of sockets share.
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <osapi/files.h>
#include <osapi/sockets.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <stdexcept>
#include <string>

template <class Address>
sockaddr* generic(Address& address) {
    return reinterpret_cast<sockaddr*>(&address);
}

/// A free port that the system gives to nobody else while the object lives, but to a server that
/// asks for it by number.
class ReservedPort {
public:
    ReservedPort() : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
        const int reuse = 1;
        setsockopt(socket_.fd(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (bind(socket_.fd(), generic(address), size) != 0 ||
            getsockname(socket_.fd(), generic(address), &size) != 0) {
            throw std::runtime_error("no free port");
        }
        number_ = ntohs(address.sin_port);
    }

    int number() const { return number_; }

private:
    OSAPI::FileDescriptor socket_;
    int number_ = 0;
};

/// Opens `server` on a free port, which is returned.
inline int open_on_free_port(OSAPI::TCPServerSocket& server) {
    const ReservedPort port;
    server.open(port.number());
    return port.number();
}

/// A socket connected to the server at `path`.
inline OSAPI::fd_t connect_local(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    OSAPI::FileDescriptor client(socket(AF_UNIX, SOCK_STREAM, 0));
    if (connect(client.fd(), generic(address), sizeof address) != 0) {
        throw std::runtime_error("cannot connect to " + path);
    }
    return client.release();
}

/// One byte sent at `from` arrives at `to`.
inline void expect_joined(OSAPI::fd_t from, OSAPI::fd_t to) {
    OSAPI::write(from, "!", 1);
    char byte = 0;
    OSAPI::read(to, &byte, 1);
    EXPECT_EQ(byte, '!');
}
