#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/descriptor_flags.h>
#include <osapi/pipes.h>

#include <cerrno>
#include <memory>

#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"

namespace {

using OSAPI::FileDescriptor;
using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-descriptor-flags.cpp";

class DescriptorFlags : public testing::Test {
protected:
    DescriptorFlags() { pipe_->open(); }

    int fd() { return pipe_->read_end().fd(); }
    bool blocks() { return (fcntl(fd(), F_GETFL) & O_NONBLOCK) == 0; }

    const std::unique_ptr<OSAPI::Pipe> pipe_ = std::make_unique<OSAPI::Pipe>();
};

TEST_F(DescriptorFlags, NonBlockingIsSetHoweverOften) {
    EXPECT_TRUE(blocks());
    for (int i = 0; i < 2; ++i) {
        OSAPI::set_blocking(fd(), false);
        EXPECT_FALSE(blocks());
    }
    char byte;
    EXPECT_EQ(OSAPI::read_short(fd(), &byte, 1), 0) << "nothing yet, and no waiting for it";
}

// The toggle is a contract: what blocks already is made non-blocking.
TEST_F(DescriptorFlags, BlockingToggles) {
    OSAPI::set_blocking(fd(), false);
    OSAPI::set_blocking(fd(), true);
    EXPECT_TRUE(blocks());
    OSAPI::set_blocking(fd(), true);
    EXPECT_FALSE(blocks());
    OSAPI::set_blocking(fd(), true);
    EXPECT_TRUE(blocks());
}

TEST_F(DescriptorFlags, OtherFlagsStay) {
    const ScratchFolder folder;
    const FileDescriptor file(open((folder / "a").c_str(), O_CREAT | O_RDWR | O_APPEND, 0600));
    OSAPI::set_blocking(file.fd(), false);
    EXPECT_EQ(fcntl(file.fd(), F_GETFL) & (O_APPEND | O_NONBLOCK | O_ACCMODE),
              O_APPEND | O_NONBLOCK | O_RDWR);
    OSAPI::set_blocking(file.fd(), true);
    EXPECT_EQ(fcntl(file.fd(), F_GETFL) & (O_APPEND | O_NONBLOCK | O_ACCMODE), O_APPEND | O_RDWR);
}

TEST_F(DescriptorFlags, FailureOfEitherCallIsReportedAndChangesNothing) {
    for (const bool blocking : {false, true}) {
        for (const int error : kErrors) {
            for (int n = 0; n < 2; ++n) {
                const NthCallFault<&Syscalls::fcntl> fault(error, n + 1);
                expect_message(thrown_message([&] { OSAPI::set_blocking(fd(), blocking); }),
                               with_error("fcntl", error), "OSAPI::set_blocking", kSource);
                EXPECT_EQ(fault.calls(), n + 1);
                EXPECT_TRUE(blocks());
            }
        }
    }
    expect_message(thrown_message([] { OSAPI::set_blocking(-1, false); }),
                   with_error("fcntl", EBADF), "OSAPI::set_blocking", kSource);
}

TEST_F(DescriptorFlags, CloseOnExec) {
    EXPECT_EQ(fcntl(fd(), F_GETFD) & FD_CLOEXEC, 0);
    OSAPI::close_on_exec(fd());
    EXPECT_EQ(fcntl(fd(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_TRUE(blocks());
    expect_every_error<&Syscalls::fcntl>([&] { OSAPI::close_on_exec(fd()); }, "fcntl",
                                         "OSAPI::close_on_exec", kSource);
}

TEST_F(DescriptorFlags, CopiesReachTheSameFile) {
    const int before = open_descriptors();
    {
        const FileDescriptor copy(OSAPI::dup(pipe_->write_end().fd()));
        EXPECT_EQ(open_descriptors(), before + 1);
        // A second copy takes the place of the first.
        EXPECT_EQ(OSAPI::dup2(pipe_->write_end().fd(), copy.fd()), copy.fd());
        EXPECT_EQ(open_descriptors(), before + 1);
        pipe_->write_end().close();
        OSAPI::write(copy.fd(), "ab", 2);
        EXPECT_EQ(fcntl(copy.fd(), F_GETFD) & FD_CLOEXEC, 0);
    }
    char text[3] = {};
    OSAPI::read(fd(), text, 2);
    EXPECT_STREQ(text, "ab");
}

TEST_F(DescriptorFlags, FailedCopyIsReportedAndLeavesNone) {
    const int before = open_descriptors();
    expect_message(thrown_message([&] { OSAPI::dup2(-1, fd()); }), with_error("dup2", EBADF),
                   "OSAPI::dup2", kSource);
    expect_every_error<&Syscalls::dup>([&] { OSAPI::dup(fd()); }, "dup", "OSAPI::dup", kSource);
    expect_every_error<&Syscalls::dup2>([&] { OSAPI::dup2(fd(), 900); }, "dup2", "OSAPI::dup2",
                                        kSource);
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace
