// Waiting for descriptors, and signals that arrive meanwhile.
#include <gtest/gtest.h>
#include <osapi/pipes.h>
#include <osapi/polling.h>
#include <poll.h>

#include <cerrno>
#include <memory>

#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/interruptions.h"

namespace {

using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-polling.cpp";

class Polling : public testing::Test {
protected:
    Polling() { pipe_->open(); }

    int reader() { return pipe_->read_end().fd(); }
    int writer() { return pipe_->write_end().fd(); }
    void make_readable() { OSAPI::write(writer(), "x", 1); }

    const std::unique_ptr<OSAPI::Pipe> pipe_ = std::make_unique<OSAPI::Pipe>();
};

TEST_F(Polling, CountsTheReadyOnes) {
    pollfd all[] = {{reader(), POLLIN, 0}, {writer(), POLLOUT, 0}};
    EXPECT_EQ(OSAPI::poll(all, 2, -1, false), 1);
    EXPECT_EQ(all[0].revents, 0);
    EXPECT_EQ(all[1].revents, POLLOUT);
    make_readable();
    EXPECT_EQ(OSAPI::poll(all, 2, -1, false), 2);
    EXPECT_EQ(all[0].revents, POLLIN);
}

TEST_F(Polling, GivesZeroWhenTheTimeIsUp) {
    pollfd one = {reader(), POLLIN, 0};
    EXPECT_EQ(OSAPI::poll(&one, 1, 0, false), 0);
    EXPECT_EQ(OSAPI::poll(&one, 1, 1, true), 0);
    EXPECT_EQ(OSAPI::poll(nullptr, 0, 0, false), 0);
}

TEST_F(Polling, WaitsOnWhenSignalsArrive) {
    for (const bool restart : {false, true}) {  // this call is never restarted by the system
        Interruptions interruptions(restart);
        int interrupted = 0;
        const Intercept<&Syscalls::poll> polls([&](pollfd* descriptors, nfds_t n, int timeout) {
            EXPECT_EQ(timeout, -1);
            const int result = polls.real(descriptors, n, timeout);
            if (result == -1 && errno == EINTR && ++interrupted == 3) {
                interruptions.stop();
                make_readable();
                errno = EINTR;
            }
            return result;
        });
        pollfd one = {reader(), POLLIN, 0};
        EXPECT_EQ(OSAPI::poll(&one, 1, -1, false), 1);
        EXPECT_EQ(polls.calls(), 4);
        char byte;
        OSAPI::read(reader(), &byte, 1);
    }
}

TEST_F(Polling, ReturnsOnASignalWhenAskedTo) {
    const Interruptions interruptions;
    pollfd one = {reader(), POLLIN, 0};
    EXPECT_EQ(OSAPI::poll(&one, 1, -1, true), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_GT(interruptions.seen(), 0);
}

TEST_F(Polling, ReportsAnyOtherFailure) {
    pollfd one = {writer(), POLLOUT, 0};
    for (const int error : kErrors) {
        for (const bool return_on_interrupt : {false, true}) {
            const Fault<&Syscalls::poll> fault(error);
            if (error == EINTR) {
                EXPECT_EQ(OSAPI::poll(&one, 1, -1, return_on_interrupt),
                          return_on_interrupt ? -1 : 1);
                continue;
            }
            expect_message(thrown_message([&] { OSAPI::poll(&one, 1, -1, return_on_interrupt); }),
                           with_error("poll", error), "OSAPI::poll", kSource);
            EXPECT_EQ(fault.calls(), 1);
        }
    }
}

// Reading meets the same signals.
class InterruptedReading : public Polling {
protected:
    /// Reads one byte that is there only after the third interruption.
    template <class Read>
    void expect_third_time_read(Read read) {
        Interruptions interruptions;
        int interrupted = 0;
        const Intercept<&Syscalls::read> reads([&](int fd, void* buffer, std::size_t count) {
            const ssize_t result = reads.real(fd, buffer, count);
            if (result == -1 && errno == EINTR && ++interrupted == 3) {
                interruptions.stop();
                make_readable();
                errno = EINTR;
            }
            return result;
        });
        char byte = 0;
        EXPECT_EQ(read(&byte), 1);
        EXPECT_EQ(byte, 'x');
        EXPECT_EQ(reads.calls(), 4);
    }
};

TEST_F(InterruptedReading, GoesOnUntilAllIsThere) {
    expect_third_time_read([&](char* byte) { return OSAPI::read(reader(), byte, 1); });
}

TEST_F(InterruptedReading, OfWhatThereIsGoesOnToo) {
    expect_third_time_read([&](char* byte) { return OSAPI::read_short(reader(), byte, 1); });
}

TEST_F(InterruptedReading, IsNotNoticedWithARestartingHandler) {
    static int wake;
    wake = writer();
    const OSAPI::SignalHandler guard(
        SIGALRM, [](int) { static_cast<void>(::write(wake, "x", 1) == 1); }, true);
    const Fault<&Syscalls::read> reads(EIO, {.after = 1});
    const itimerval once = {{0, 0}, {0, 2000}};
    setitimer(ITIMER_REAL, &once, nullptr);
    char byte = 0;
    EXPECT_EQ(OSAPI::read(reader(), &byte, 1), 1);
    EXPECT_EQ(reads.calls(), 1);
}

}  // namespace
