// Pipes, waiting for them, and signals that arrive meanwhile.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/pipe_readers.h>
#include <osapi/pipes.h>
#include <osapi/polling.h>
#include <poll.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "failures.h"
#include "support/interruptions.h"
#include "support/scratch.h"

namespace {

using OSAPI::DescriptorCalls;
using OSAPI::FileCalls;
using OSAPI::FileDescriptor;
using OSAPI::Pipe;

const FailuresOf kPipes("osapi/osapi-unix-pipes.cpp");

TEST(Pipe, CarriesBytesClosesBothEndsAndMayBeOpenedAgain) {
    const int before = open_descriptors();
    {
        Pipe pipe;
        EXPECT_FALSE(pipe.read_end().is_open());
        pipe.open();
        EXPECT_EQ(open_descriptors(), before + 2);
        EXPECT_EQ(fcntl(pipe.read_end().fd(), F_GETFD) & FD_CLOEXEC, 0);
        EXPECT_EQ(fcntl(pipe.write_end().fd(), F_GETFD) & FD_CLOEXEC, 0);
        OSAPI::write(pipe.write_end().fd(), "abc", 3);
        pipe.write_end().close();
        char text[8] = {};
        OSAPI::read(pipe.read_end().fd(), text, 3);
        EXPECT_STREQ(text, "abc");
        EXPECT_EQ(OSAPI::read_short(pipe.read_end().fd(), text, 8), 0) << "no writer: the end";
        pipe.read_end().close();
        pipe.open();
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Pipe, RefusesToOpenWhileAnEndIsOpenAndKeepsWhatItHas) {
    for (const auto closed : {&Pipe::read_end, &Pipe::write_end}) {
        Pipe pipe;
        pipe.open();
        const int reader = pipe.read_end().fd();
        int before = open_descriptors();
        EXPECT_EQ(failed_assertion([&] { pipe.open(); }), "!is_open()");
        EXPECT_EQ(pipe.read_end().fd(), reader);
        EXPECT_EQ(open_descriptors(), before--);
        (pipe.*closed)().close();
        EXPECT_EQ(failed_assertion([&] { pipe.open(); }), "!is_open()");
        EXPECT_FALSE((pipe.*closed)().is_open());
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST(Pipe, ReportsEveryFailure) {
    const int before = open_descriptors();
    Pipe pipe;
    kPipes.expect_every<&DescriptorCalls::pipe>("pipe", "Pipe::open", [&] { pipe.open(); });
    EXPECT_FALSE(pipe.read_end().is_open());
    EXPECT_FALSE(pipe.write_end().is_open());
    EXPECT_EQ(open_descriptors(), before);
}

TEST(NamedPipe, IsAPipeWithPermissions0664LessTheUmask) {
    const ScratchFolder folder;
    const std::string path = folder / "pipe";
    for (const mode_t mask : {0, 0027}) {
        const mode_t before = umask(mask);
        OSAPI::make_named_pipe(path.c_str());
        umask(before);
        struct stat info = {};
        ASSERT_EQ(stat(path.c_str(), &info), 0);
        EXPECT_TRUE(S_ISFIFO(info.st_mode));
        EXPECT_EQ(info.st_mode & 07777, 0664U & ~mask);
        // Opened for both, neither end waits for the other.
        const FileDescriptor both(::open(path.c_str(), O_RDWR | O_CLOEXEC));
        OSAPI::write(both.fd(), "x", 1);
        char byte = 0;
        OSAPI::read(both.fd(), &byte, 1);
        EXPECT_EQ(byte, 'x');
        OSAPI::rm(path.c_str());
    }
}

TEST(NamedPipe, ReportsPathAndError) {
    const ScratchFolder folder;
    const std::string path = folder / "there";
    write_file(path, "");
    kPipes.expect("mknod(" + path + ")", EEXIST, "make_named_pipe",
                  [&] { OSAPI::make_named_pipe(path.c_str()); });
    kPipes.expect_every<&DescriptorCalls::mknod>("mknod(p)", "make_named_pipe",
                                                 [&] { OSAPI::make_named_pipe("p"); });
}

const FailuresOf kPolling("osapi/osapi-unix-polling.cpp");

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
        const ThreeInterruptions<&DescriptorCalls::poll> polls([&] { make_readable(); }, restart);
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
    for (const int error : {EAGAIN, ENOSPC, EIO, EMFILE}) {
        for (const bool return_on_interrupt : {false, true}) {
            const Fault<&DescriptorCalls::poll> fault(error);
            kPolling.expect("poll", error, "poll",
                            [&] { OSAPI::poll(&one, 1, -1, return_on_interrupt); });
            EXPECT_EQ(fault.calls(), 1);
        }
    }
}

TEST_F(Polling, ReadingWaitsOnTheSameWay) {
    for (const auto read : {OSAPI::read, OSAPI::read_short}) {
        const ThreeInterruptions<&FileCalls::read> reads([&] { make_readable(); });
        char byte = 0;
        EXPECT_EQ(read(reader(), &byte, 1), 1);
        EXPECT_EQ(byte, 'x');
        EXPECT_EQ(reads.calls(), 4);
    }
}

void write_text(Pipe& pipe, std::string_view text) {
    OSAPI::write(pipe.write_end().fd(), text.data(), text.size());
}

TEST(LineReader, PassesOnWholeLinesAndClosesItsEndAtTheEnd) {
    Pipe pipe;
    pipe.open();
    std::vector<std::string> lines;
    const auto take = [&](const std::string& line) { lines.push_back(line); };
    OSAPI::LineReader reader(pipe.read_end());
    write_text(pipe, "one\n\ntw");
    EXPECT_TRUE(reader.read(take));
    EXPECT_EQ(lines, (std::vector<std::string>{"one", ""}));
    write_text(pipe, "o\nlost");
    EXPECT_TRUE(reader.read(take));
    EXPECT_EQ(lines.back(), "two");
    pipe.write_end().close();
    EXPECT_FALSE(reader.read(take));
    EXPECT_EQ(lines.size(), 3U);
    EXPECT_FALSE(pipe.read_end().is_open());
}

TEST(TailReader, KeepsTheEndAlone) {
    Pipe pipe;
    pipe.open();
    OSAPI::TailReader reader(pipe.read_end());
    EXPECT_EQ(reader.last_line(), "");
    const std::string longer(4000, 'x');
    for (int i = 0; i < 10; ++i) {
        write_text(pipe, longer);
        reader.read();
    }
    const std::string kept = reader.last_line();
    EXPECT_GE(kept.size(), 4000U);
    EXPECT_LT(kept.size(), 40000U);
    EXPECT_EQ(kept, std::string(kept.size(), 'x'));
    write_text(pipe, "\nbefore\nlast words\r\n\n");
    reader.read();
    EXPECT_EQ(reader.last_line(), "last words");
    pipe.write_end().close();
    reader.read();
    EXPECT_FALSE(pipe.read_end().is_open());
    EXPECT_EQ(reader.last_line(), "last words");
}

}  // namespace
