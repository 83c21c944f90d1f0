// Sockets: opening and connecting them, servers at work, and every way in which that fails.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <osapi/files.h>
#include <osapi/sockets.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "failures.h"
#include "support/interruptions.h"
#include "support/scratch.h"

namespace {

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
int open_on_free_port(OSAPI::TCPServerSocket& server) {
    const ReservedPort port;
    server.open(port.number());
    return port.number();
}

/// A socket connected to the server at `path`.
OSAPI::fd_t connect_local(const std::string& path) {
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
void expect_joined(OSAPI::fd_t from, OSAPI::fd_t to) {
    OSAPI::write(from, "!", 1);
    char byte = 0;
    OSAPI::read(to, &byte, 1);
    EXPECT_EQ(byte, '!');
}

namespace fs = std::filesystem;
using OSAPI::connect_tcp;
using OSAPI::DescriptorCalls;
using OSAPI::FileDescriptor;
using OSAPI::PathCalls;
using OSAPI::SocketCalls;
using OSAPI::TCPServerSocket;
using OSAPI::UNIXServerSocket;

const FailuresOf kSockets("osapi/osapi-unix-sockets.cpp");
const FailuresOf kSocketFlags("osapi/osapi-unix-descriptor-flags.cpp");

bool is_closed_on_exec(int fd) { return (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0; }

/// Makes each of the system calls of `operation` fail in turn, with each error, and then none: the
/// n-th failure must begin with `texts[n]` and leave no descriptor open. `operation` closes what it
/// opened.
template <auto... Calls, class Operation>
void expect_every_failure(const std::vector<std::string>& texts, Operation operation) {
    const int count = static_cast<int>(texts.size());
    for (const int error : kErrors) {
        for (int n = 0; n <= count; ++n) {
            SCOPED_TRACE("call " + std::to_string(n) + ": " + std::strerror(error));
            const int before = open_descriptors();
            const NthCallFault<Calls...> fault(error, n + 1);
            if (n == count) {
                operation();
            } else {
                const std::string expected = with_error(texts[n], error) + " in <";
                EXPECT_EQ(thrown_message(operation).substr(0, expected.size()), expected);
            }
            EXPECT_EQ(fault.calls(), std::min(n + 1, count));
            EXPECT_EQ(open_descriptors(), before);
        }
    }
}

TEST(TCPServer, ClosesAndOpensAgainOnTheSamePort) {
    const int before = open_descriptors();
    {
        const ReservedPort port;
        TCPServerSocket server(port.number());
        server.close();
        EXPECT_FALSE(server.is_open());
        kSockets.expect("accept", EBADF, "ServerSocket::accept", [&] { server.accept(true); });
        server.close();
        server.open(port.number());
        EXPECT_EQ(failed_assertion([&] { server.open(port.number()); }), "!is_open()");
        EXPECT_TRUE(server.is_open());
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Ports, ThatAreNoneAreRefusedBeforeAnyCall) {
    const Fault<&SocketCalls::socket> sockets(EIO, kAlways);
    const Fault<&SocketCalls::gethostbyname> lookups(EIO, kAlways);
    const std::string condition = "port > 0 && port <= 65535";
    TCPServerSocket server;
    for (const int port : {0, 65536, -1}) {
        EXPECT_EQ(failed_assertion([&] { server.open(port); }), condition);
        EXPECT_EQ(failed_assertion([&] { const TCPServerSocket made(port); }), condition);
        EXPECT_EQ(failed_assertion([&] { connect_tcp("127.0.0.1", port); }), condition);
    }
    EXPECT_EQ(sockets.calls() + lookups.calls(), 0);
    for (const int port : {1, 65535}) {
        kSockets.expect("socket", EIO, "TCPServerSocket::open", [&] { server.open(port); });
    }
}

TEST(TCPServer, AsksForAReusableAddressOnAllInterfacesAndABacklogOfFive) {
    std::string asked;
    const Intercept<&SocketCalls::socket> sockets([&](int family, int type, int protocol) {
        EXPECT_EQ(family, AF_INET);
        EXPECT_EQ(type, SOCK_STREAM);
        EXPECT_EQ(protocol, IPPROTO_TCP);
        asked += "socket ";
        return sockets.real(family, type, protocol);
    });
    const Intercept<&SocketCalls::setsockopt> options(
        [&](int, int level, int name, const void* value, socklen_t size) {
            EXPECT_EQ(level, SOL_SOCKET);
            EXPECT_EQ(name, SO_REUSEADDR);
            EXPECT_EQ(size, sizeof(int));
            EXPECT_EQ(*static_cast<const int*>(value), 1);
            asked += "setsockopt ";
            return 0;
        });
    const Intercept<&SocketCalls::bind> binds([&](int, const sockaddr* address, socklen_t size) {
        sockaddr_in wanted = {};
        EXPECT_EQ(size, sizeof wanted);
        std::memcpy(&wanted, address, sizeof wanted);
        EXPECT_EQ(wanted.sin_family, AF_INET);
        EXPECT_EQ(wanted.sin_addr.s_addr, 0U);
        unsigned char port[2];
        std::memcpy(port, &wanted.sin_port, 2);
        EXPECT_EQ(port[0], 0x12);
        EXPECT_EQ(port[1], 0x34);
        asked += "bind ";
        return 0;
    });
    const Intercept<&SocketCalls::listen> listens([&](int, int backlog) {
        EXPECT_EQ(backlog, 5);
        asked += "listen";
        return 0;
    });
    const TCPServerSocket server(0x1234);
    EXPECT_EQ(asked, "socket setsockopt bind listen");
}

TEST(TCPServer, EveryFailureOfOpeningHasItsTextAndLeavesNothingOpen) {
    const ReservedPort port;
    expect_every_failure<&SocketCalls::socket, &SocketCalls::setsockopt, &SocketCalls::bind,
                         &SocketCalls::listen, &DescriptorCalls::fcntl>(
        {"socket", "setsockopt(SO_REUSEADDR)", "bind", "listen", "fcntl"},
        [&] { const TCPServerSocket server(port.number()); });
}

TEST(ConnectTCP, UnknownHostIsReportedInTheResolversWordsAndAnotherFamilyRefused) {
    const Fault<&SocketCalls::socket> sockets(EIO, kAlways);
    for (const int error : {HOST_NOT_FOUND, TRY_AGAIN, NO_RECOVERY, NO_DATA}) {
        const Intercept<&SocketCalls::gethostbyname> lookups([error](const char*) -> hostent* {
            h_errno = error;
            return nullptr;
        });
        kSockets.expect_text(std::string("gethostbyname(\"no.host\"): ") + hstrerror(error),
                             "connect_tcp", [] { connect_tcp("no.host", 80); });
    }
    hostent host = {};
    host.h_addrtype = AF_INET6;
    const Intercept<&SocketCalls::gethostbyname> lookups([&](const char*) { return &host; });
    EXPECT_EQ(failed_assertion([] { connect_tcp("six", 80); }), "h->h_addrtype == AF_INET");
    EXPECT_EQ(sockets.calls(), 0);
}

TEST(ConnectTCP, TakesTheHostsFirstAddress) {
    char first[4] = {10, 1, 2, 3};
    char second[4] = {10, 9, 9, 9};
    char* addresses[] = {first, second, nullptr};
    hostent host = {};
    host.h_addrtype = AF_INET;
    host.h_length = 4;
    host.h_addr_list = addresses;
    const Intercept<&SocketCalls::gethostbyname> lookups([&](const char* name) {
        EXPECT_STREQ(name, "two");
        return &host;
    });
    const Intercept<&SocketCalls::connect> connects(
        [](int, const sockaddr* address, socklen_t size) {
            sockaddr_in wanted = {};
            EXPECT_EQ(size, sizeof wanted);
            std::memcpy(&wanted, address, sizeof wanted);
            EXPECT_EQ(wanted.sin_family, AF_INET);
            EXPECT_EQ(wanted.sin_addr.s_addr, htonl(0x0A010203));
            EXPECT_EQ(wanted.sin_port, htons(80));
            return 0;
        });
    const FileDescriptor client(connect_tcp("two", 80));
    EXPECT_EQ(connects.calls(), 1);
}

TEST(ConnectTCP, EveryFailureHasItsTextAndLeavesNothingOpen) {
    TCPServerSocket server;
    const int port = open_on_free_port(server);
    expect_every_failure<&SocketCalls::socket, &SocketCalls::connect>(
        {"socket", "connect(\"127.0.0.1:" + std::to_string(port) + "\")"},
        [&] { const FileDescriptor client(connect_tcp("127.0.0.1", port)); });
}

class LocalServer : public testing::Test {
protected:
    const ScratchFolder folder_;
    const std::string path_ = folder_ / "socket";
};

TEST_F(LocalServer, AsksForALocalStreamAndABacklogOfFive) {
    const Intercept<&SocketCalls::socket> sockets([&](int family, int type, int protocol) {
        EXPECT_EQ(family, AF_UNIX);
        EXPECT_EQ(type, SOCK_STREAM);
        return sockets.real(family, type, protocol);
    });
    const Intercept<&SocketCalls::listen> listens([&](int fd, int backlog) {
        EXPECT_EQ(backlog, 5);
        return listens.real(fd, backlog);
    });
    const UNIXServerSocket server(path_.c_str());
    EXPECT_EQ(sockets.calls(), 1);
    EXPECT_EQ(listens.calls(), 1);
    EXPECT_TRUE(fs::is_socket(path_));
}

TEST_F(LocalServer, RemovesItsPathWhenItCloses) {
    const int before = open_descriptors();
    {
        UNIXServerSocket server;
        server.close();
        server.open(path_.c_str());
        server.close();
        EXPECT_FALSE(server.is_open());
        EXPECT_FALSE(fs::exists(path_));
        server.open(path_.c_str());
        EXPECT_EQ(failed_assertion([&] { server.open(path_.c_str()); }), "!is_open()");
        EXPECT_TRUE(fs::remove(path_)) << "that it is gone already is no error";
    }
    EXPECT_FALSE(fs::exists(path_));
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(LocalServer, ClosesEvenWhenItsPathCannotBeRemoved) {
    const int before = open_descriptors();
    kPaths.expect_from_destructor("unlink(" + path_ + ")", EIO, "rm_ifexist", [&](auto end) {
        fs::remove(path_);
        const Fault<&PathCalls::unlink> fault(EIO);
        const UNIXServerSocket server(path_.c_str());
        end();
    });
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(LocalServer, TakesPathsOf1To102Characters) {
    {
        const Fault<&SocketCalls::socket> sockets(EIO, kAlways);
        EXPECT_EQ(failed_assertion([] { const UNIXServerSocket server(""); }), "mypath[0] != 0");
        EXPECT_EQ(sockets.calls(), 0);
    }
    // Paths of so many characters in the test's folder.
    const auto path_of = [this](std::size_t length) {
        const std::string folder = folder_ / "";
        return folder + std::string(length - folder.size(), 's');
    };
    const int before = open_descriptors();
    for (const std::size_t length : {103U, 104U, 107U, 200U}) {
        const std::string path = path_of(length);
        EXPECT_EQ(failed_assertion([&] { const UNIXServerSocket server(path.c_str()); }),
                  "strlen(mypath) < sizeof(addr.sun_path)-1");
        EXPECT_FALSE(fs::exists(path));
    }
    EXPECT_EQ(open_descriptors(), before);
    const std::string longest = path_of(102);
    UNIXServerSocket server(longest.c_str());
    const FileDescriptor client(connect_local(longest));
    const FileDescriptor accepted(server.accept(false));
    expect_joined(client.fd(), accepted.fd());
}

TEST_F(LocalServer, LeavesAloneWhatStandsAtItsPath) {
    write_file(path_, "precious");
    kSockets.expect("bind", EADDRINUSE, "UNIXServerSocket::open",
                    [&] { const UNIXServerSocket server(path_.c_str()); });
    EXPECT_EQ(read_file(path_), "precious");
}

TEST_F(LocalServer, EveryFailureOfOpeningHasItsTextAndLeavesNothing) {
    expect_every_failure<&SocketCalls::socket, &SocketCalls::bind, &SocketCalls::listen,
                         &DescriptorCalls::fcntl>({"socket", "bind", "listen", "fcntl"}, [&] {
        try {
            const UNIXServerSocket server(path_.c_str());
            EXPECT_TRUE(fs::is_socket(path_));
        } catch (...) {
            EXPECT_FALSE(fs::exists(path_));
            throw;
        }
    });
}

using OSAPI::ServerSocket;

/// A server of either kind, and how to become its client.
class Servers : public testing::TestWithParam<bool> {
protected:
    Servers() {
        if (GetParam()) {
            local_->open(path_.c_str());
        } else {
            port_ = open_on_free_port(*tcp_);
        }
    }

    ServerSocket& server() {
        if (GetParam()) {
            return *local_;
        }
        return *tcp_;
    }
    int connected() const {
        return GetParam() ? connect_local(path_) : OSAPI::connect_tcp("127.0.0.1", port_);
    }

private:
    const ScratchFolder folder_;
    const std::string path_ = folder_ / "socket";
    const std::unique_ptr<UNIXServerSocket> local_ = std::make_unique<UNIXServerSocket>();
    const std::unique_ptr<TCPServerSocket> tcp_ = std::make_unique<TCPServerSocket>();
    int port_ = 0;
};

TEST_P(Servers, TakeSeveralClientsInTurn) {
    EXPECT_TRUE(server().is_open());
    EXPECT_TRUE(is_closed_on_exec(server().fd()));
    const FileDescriptor first(connected());
    const FileDescriptor second(connected());
    const FileDescriptor for_first(server().accept(false));
    const FileDescriptor for_second(server().accept(true));
    EXPECT_TRUE(is_closed_on_exec(for_first.fd()));
    EXPECT_FALSE(is_closed_on_exec(first.fd()));
    expect_joined(first.fd(), for_first.fd());
    expect_joined(for_first.fd(), first.fd());
    expect_joined(for_second.fd(), second.fd());
}

TEST_P(Servers, ReturnOnASignalWhenAskedTo) {
    const int before = open_descriptors();
    const Interruptions interruptions;
    EXPECT_EQ(server().accept(true), -1);
    EXPECT_GT(interruptions.seen(), 0);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_P(Servers, WaitOnWhenSignalsArrive) {
    FileDescriptor client;
    const ThreeInterruptions<&SocketCalls::accept> accepts([&] { client.init(connected()); });
    const FileDescriptor accepted(server().accept(false));
    EXPECT_EQ(accepts.calls(), 4);
    expect_joined(client.fd(), accepted.fd());
}

TEST_P(Servers, ReportEveryFailureAndLoseNeitherDescriptorNorClient) {
    for (const bool return_on_interrupt : {false, true}) {
        const auto accept = [&] { server().accept(return_on_interrupt); };
        for (const int error : kErrors) {
            const FileDescriptor client(connected());
            const int before = open_descriptors();
            if (error != EINTR) {
                const Fault<&SocketCalls::accept> fault(error);
                kSockets.expect("accept", error, "ServerSocket::accept", accept);
                EXPECT_EQ(fault.calls(), 1);
            }
            // The client is still waiting, and lost to what fails after it is accepted.
            const Fault<&DescriptorCalls::fcntl> fault(error);
            kSocketFlags.expect("fcntl", error, "close_on_exec", accept);
            EXPECT_EQ(open_descriptors(), before);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Servers, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Local" : "TCP"; });

}  // namespace
