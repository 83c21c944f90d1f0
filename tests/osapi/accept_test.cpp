// Servers at work: clients, failures and signals that arrive meanwhile.
#include <gtest/gtest.h>
#include <osapi/polling.h>
#include <osapi/sockets.h>
#include <poll.h>

#include <cerrno>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "stream_sockets.h"
#include "support/child.h"
#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/interruptions.h"
#include "support/scratch.h"

namespace {

using OSAPI::FileDescriptor;
using OSAPI::ServerSocket;
using OSAPI::Syscalls;
using OSAPI::TCPServerSocket;
using OSAPI::UNIXServerSocket;

const char* const kSource = "osapi/osapi-unix-sockets.cpp";

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
    const FileDescriptor first(connected());
    const FileDescriptor second(connected());
    const FileDescriptor for_first(server().accept(false));
    const FileDescriptor for_second(server().accept(true));
    expect_joined(first.fd(), for_first.fd());
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
    Interruptions interruptions;
    int interrupted = 0;
    const Intercept<&Syscalls::accept> accepts([&](int fd, sockaddr* address, socklen_t* size) {
        const int result = accepts.real(fd, address, size);
        if (result == -1 && errno == EINTR && ++interrupted == 3) {
            interruptions.stop();
            client.init(connected());
            errno = EINTR;
        }
        return result;
    });
    const FileDescriptor accepted(server().accept(false));
    EXPECT_EQ(accepts.calls(), 4);
    expect_joined(client.fd(), accepted.fd());
}

TEST_P(Servers, ReportEveryFailureAndLoseNoDescriptor) {
    const char* const texts[] = {"accept", "fcntl"};
    for (const bool return_on_interrupt : {false, true}) {
        for (const int error : kErrors) {
            for (int n = 0; n < 2; ++n) {
                SCOPED_TRACE(std::string(texts[n]) + ' ' + std::strerror(error));
                const FileDescriptor client(connected());
                const int before = open_descriptors();
                const NthCallFault<&Syscalls::accept, &Syscalls::fcntl> fault(error, n + 1);
                if (n == 0 && error == EINTR) {
                    if (return_on_interrupt) {
                        EXPECT_EQ(server().accept(true), -1);
                        EXPECT_EQ(fault.calls(), 1);
                    }
                } else {
                    expect_message(thrown_message([&] { server().accept(return_on_interrupt); }),
                                   with_error(texts[n], error),
                                   n == 0 ? "OSAPI::ServerSocket::accept" : "OSAPI::close_on_exec",
                                   n == 0 ? kSource : "osapi/osapi-unix-descriptor-flags.cpp");
                    EXPECT_EQ(fault.calls(), n + 1);
                }
                EXPECT_EQ(open_descriptors(), before);
                if (n == 0) {  // the client is still waiting
                    const FileDescriptor accepted(server().accept(return_on_interrupt));
                    expect_joined(client.fd(), accepted.fd());
                }
            }
        }
    }
}

TEST_P(Servers, NotOpenOnesAcceptNobody) {
    TCPServerSocket closed;
    expect_message(thrown_message([&] { closed.accept(true); }), with_error("accept", EBADF),
                   "OSAPI::ServerSocket::accept", kSource);
}

/// Sends all that comes back to where it came from, until that ends; never at peace.
int echo(ServerSocket& server) {
    const Interruptions interruptions;
    const FileDescriptor client(server.accept(false));
    char buffer[4096];
    for (;;) {
        pollfd readable = {client.fd(), POLLIN, 0};
        if (OSAPI::poll(&readable, 1, -1, false) != 1) {
            return 1;
        }
        const sword count = OSAPI::read_short(client.fd(), buffer, sizeof buffer);
        if (count == 0) {
            return 0;
        }
        OSAPI::write(client.fd(), buffer, static_cast<uword>(count));
    }
}

TEST_P(Servers, EchoEveryByteUnderAHailOfSignals) {
    const int child = fork_child([this] { return echo(server()); });
    const FileDescriptor client(connected());
    {
        const Interruptions interruptions;
        std::mt19937 random(4);
        std::uniform_int_distribution<unsigned int> sizes(1, 20000);
        // At least until signals have come, however fast the machine.
        for (int i = 0; i < 25 || interruptions.seen() < 5; ++i) {
            std::string sent(sizes(random), '\0');
            for (char& byte : sent) {
                byte = static_cast<char>(random());
            }
            std::string received(sent.size(), '\0');
            OSAPI::write(client.fd(), sent.data(), sent.size());
            OSAPI::read(client.fd(), received.data(), received.size());
            ASSERT_TRUE(sent == received) << "block " << i;
        }
    }
    ASSERT_EQ(shutdown(client.fd(), SHUT_WR), 0);
    EXPECT_EQ(OSAPI::_wait_until_dead(child, nullptr, false), 0);
}

INSTANTIATE_TEST_SUITE_P(All, Servers, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Local" : "TCP"; });

}  // namespace
