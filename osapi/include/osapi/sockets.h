// Stream sockets: servers on a port or on a path, and clients.
#pragma once

#include <base/string.h>
#include <osapi/files.h>

namespace OSAPI {

/// A socket connected to a port (1 to 65535, asserted) of a host, owned by the caller; it stays
/// open when another program is executed. Throws "gethostbyname("HOST"): ...", "socket: ..." and
/// "connect("HOST:PORT"): ...", the last also when a signal interrupts it.
fd_t connect_tcp(const char* host, int port);

/// What the servers have in common. Not copyable. Destroying a server closes it, which may throw;
/// while another exception is under way the failure is printed instead.
class ServerSocket {
public:
    ServerSocket(const ServerSocket&) = delete;
    ServerSocket& operator=(const ServerSocket&) = delete;

    fd_t fd() const { return socket_.fd(); }
    bool is_open() const { return socket_.is_open(); }

    /// Waits for the next client. Returns a socket connected to it, closed when another program is
    /// executed and owned by the caller. When a signal interrupts it, the wait goes on, or -1 is
    /// returned if `return_on_interrupt` is set. Throws "accept: ..." and "fcntl: ...".
    fd_t accept(bool return_on_interrupt);

protected:
    ServerSocket() = default;
    ~ServerSocket() noexcept(false) = default;

    /// Has a bound socket listen and takes it over.
    void listen_on(FileDescriptor& bound);
    void close_socket() { socket_.close(); }

private:
    FileDescriptor socket_;
};

/// A server on a port of all IPv4 interfaces.
class TCPServerSocket : public ServerSocket {
public:
    TCPServerSocket() = default;
    explicit TCPServerSocket(int port) { open(port); }

    /// `port` 1 to 65535, asserted, as is that the server is not open yet. Throws "socket: ...",
    /// "setsockopt(SO_REUSEADDR): ...", "bind: ...", "listen: ..." and "fcntl: ...".
    void open(int port);
    /// Closes the socket if it is open. Throws "close: ...".
    void close() { close_socket(); }
};

/// A server on a path of this machine.
class UNIXServerSocket : public ServerSocket {
public:
    UNIXServerSocket() = default;
    explicit UNIXServerSocket(const char* path) { open(path); }
    ~UNIXServerSocket() noexcept(false);

    /// Makes a socket at `path`, 1 to 102 characters, asserted, as is that the server is not open
    /// yet. Throws "socket: ...", "bind: ..." (also when something stands there), "listen: ..." and
    /// "fcntl: ..."; then nothing is left at the path.
    void open(const char* path);
    /// Closes the socket if it is open and removes its path. Throws "close: ..." and
    /// "unlink(PATH): ...".
    void close();

private:
    String path_;
};

}  // namespace OSAPI
