// Descriptors: their owners, flags and copies, buffered files on them, the three standard ones.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/descriptor_flags.h>
#include <osapi/files.h>
#include <osapi/pipes.h>
#include <osapi/scoped_file.h>
#include <osapi/standard_descriptors.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utime.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "failures.h"
#include "support/child.h"
#include "support/scratch.h"

namespace {

using OSAPI::DescriptorCalls;
using OSAPI::DiskFile;
using OSAPI::FileCalls;
using OSAPI::FileDescriptor;

const FailuresOf kDescriptors("osapi/osapi-unix-descriptors.cpp");
const FailuresOf kFlags("osapi/osapi-unix-descriptor-flags.cpp");
const FailuresOf kScopedFiles("osapi/osapi-unix-scoped-file.cpp");

static_assert(!std::is_nothrow_destructible_v<FileDescriptor>);
static_assert(!std::is_nothrow_destructible_v<DiskFile>);
static_assert(!std::is_copy_constructible_v<DiskFile>);

TEST(FileDescriptor, ClosesOnceHoweverItEnds) {
    std::string closed;
    const Intercept<&FileCalls::close> closes([&](int fd) {
        closed += std::to_string(fd) + ' ';
        return 0;
    });
    { const FileDescriptor destroyed(901); }
    {
        FileDescriptor none;
        EXPECT_EQ(none.fd(), -1);
        none.close();
        FileDescriptor closed_early(902);
        closed_early.close();
        EXPECT_FALSE(closed_early.is_open());
        FileDescriptor released(903);
        EXPECT_EQ(released.release(), 903);
        EXPECT_FALSE(released.is_open());
    }
    EXPECT_EQ(closed, "901 902 ");
}

TEST(FileDescriptor, AdoptsOneDescriptorAtATime) {
    const Intercept<&FileCalls::close> closes([](int) { return 0; });
    FileDescriptor descriptor;
    descriptor.init(901);
    EXPECT_EQ(failed_assertion([&] { descriptor.init(902); }), "!is_open()");
    EXPECT_EQ(descriptor.fd(), 901);
}

TEST(FileDescriptor, FailedCloseThrowsAndIsNotRepeated) {
    const Fault<&FileCalls::close> closes(EIO, kAlways);
    {
        FileDescriptor descriptor(901);
        kFiles.expect("close", EIO, "close", [&] { descriptor.close(); });
        EXPECT_FALSE(descriptor.is_open());
    }
    EXPECT_EQ(closes.calls(), 1);
    kFiles.expect_from_destructor("close", EIO, "close", [](auto end) {
        const FileDescriptor descriptor(901);
        end();
    });
}

TEST(FileDescriptor, AsksTheDeviceAndReportsWhatItRefuses) {
    OSAPI::Pipe pipe;
    pipe.open();
    OSAPI::write(pipe.write_end().fd(), "12345", 5);
    int waiting = 0;
    const auto ask = [&](int request) {
        pipe.read_end().ioctl(request, reinterpret_cast<char*>(&waiting));
    };
    ask(FIONREAD);
    EXPECT_EQ(waiting, 5);
    kFlags.expect("ioctl", ENOTTY, "FileDescriptor::ioctl", [&] { ask(TIOCGWINSZ); });
    kFlags.expect_every<&DescriptorCalls::ioctl>("ioctl", "FileDescriptor::ioctl",
                                                 [&] { ask(FIONREAD); });
    unsigned long asked = 0;
    const Intercept<&DescriptorCalls::ioctl> asks([&](int, unsigned long request, char*) {
        asked = request;
        return 3;
    });
    ask(static_cast<int>(0x80045430U));
    EXPECT_EQ(asked, 0x80045430UL) << "its bits, no sign";
}

TEST(DiskFile, ReadsAndWritesThroughItsDescriptorAndClosesIt) {
    const ScratchFolder folder;
    const int before = open_descriptors();
    {
        DiskFile file((folder / "a").c_str(), OSAPI::kReadWrite);
        EXPECT_EQ(open_descriptors(), before + 1);
        EXPECT_EQ(file.write("abc", 3), 3);
        file.seek_from_start(1);
        char buffer[8] = {};
        EXPECT_EQ(file.read_short(buffer, sizeof buffer), 2);
        EXPECT_STREQ(buffer, "bc");
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(DiskFile, TellsTheSystemsRecordAndTheTime) {
    const ScratchFolder folder;
    write_file(folder / "a", "12345");
    const utimbuf times = {1000, 1234567890};
    ASSERT_EQ(utime((folder / "a").c_str(), &times), 0);
    const DiskFile file((folder / "a").c_str(), OSAPI::kRead);
    struct stat info;
    file.stat(&info);
    EXPECT_EQ(info.st_size, 5);
    EXPECT_TRUE(S_ISREG(info.st_mode));
    EXPECT_EQ(file.get_mtime(), 1234567890);
    const Fault<&FileCalls::fstat> fault(EIO, kAlways);
    kDescriptors.expect("fstat", EIO, "DiskFile::stat", [&] { file.stat(&info); });
    kDescriptors.expect("fstat", EIO, "DiskFile::stat", [&] { file.get_mtime(); });
    kFiles.expect("fstat", EIO, "getsize", [&] { file.getsize(); });
}

class DescriptorFlags : public testing::Test {
protected:
    DescriptorFlags() { pipe_->open(); }

    int fd() { return pipe_->read_end().fd(); }
    bool blocks() { return (fcntl(fd(), F_GETFL) & O_NONBLOCK) == 0; }

    const std::unique_ptr<OSAPI::Pipe> pipe_ = std::make_unique<OSAPI::Pipe>();
};

// The toggle is a contract: what blocks already is made non-blocking.
TEST_F(DescriptorFlags, NonBlockingIsSetHoweverOftenAndBlockingToggles) {
    EXPECT_TRUE(blocks());
    for (int i = 0; i < 2; ++i) {
        OSAPI::set_blocking(fd(), false);
        EXPECT_FALSE(blocks());
    }
    char byte;
    EXPECT_EQ(OSAPI::read_short(fd(), &byte, 1), 0) << "nothing yet, and no waiting for it";
    for (const bool expected : {true, false, true}) {
        OSAPI::set_blocking(fd(), true);
        EXPECT_EQ(blocks(), expected);
    }
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
                const NthCallFault<&DescriptorCalls::fcntl> fault(error, n + 1);
                kFlags.expect("fcntl", error, "set_blocking",
                              [&] { OSAPI::set_blocking(fd(), blocking); });
                EXPECT_EQ(fault.calls(), n + 1);
                EXPECT_TRUE(blocks());
            }
        }
    }
    kFlags.expect("fcntl", EBADF, "set_blocking", [] { OSAPI::set_blocking(-1, false); });
}

TEST_F(DescriptorFlags, CloseOnExec) {
    EXPECT_EQ(fcntl(fd(), F_GETFD) & FD_CLOEXEC, 0);
    OSAPI::close_on_exec(fd());
    EXPECT_EQ(fcntl(fd(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_TRUE(blocks());
    kFlags.expect_every<&DescriptorCalls::fcntl>("fcntl", "close_on_exec",
                                                 [&] { OSAPI::close_on_exec(fd()); });
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
    kFlags.expect("dup2", EBADF, "dup2", [&] { OSAPI::dup2(-1, fd()); });
    kFlags.expect_every<&DescriptorCalls::dup>("dup", "dup", [&] { OSAPI::dup(fd()); });
    kFlags.expect_every<&DescriptorCalls::dup2>("dup2", "dup2", [&] { OSAPI::dup2(fd(), 900); });
    EXPECT_EQ(open_descriptors(), before);
}

using OSAPI::ScopedFILE;

TEST(ScopedFile, WritesWhatIsBufferedAndClosesTheDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    const int before = open_descriptors();
    {
        const ScopedFILE file(OSAPI::open(path.c_str(), OSAPI::kWrite), path.c_str(), "w");
        std::fputs("text", file.file());
        EXPECT_EQ(read_file(path), "");
    }
    EXPECT_EQ(read_file(path), "text");
    EXPECT_EQ(open_descriptors(), before);
}

TEST(ScopedFile, FailureNamesPathAndModeAndClosesTheDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    write_file(path, "");
    const int before = open_descriptors();
    const auto open_as = [&](const char* mode) {
        const ScopedFILE file(OSAPI::open(path.c_str(), OSAPI::kRead), path.c_str(), mode);
    };
    kScopedFiles.expect_text("fdopen(\"" + path + "\", \"no mode\")", "ScopedFILE::ScopedFILE",
                             [&] { open_as("no mode"); });
    for (const int error : kErrors) {
        const Fault<&DescriptorCalls::fdopen> fault(error);
        kScopedFiles.expect_text("fdopen(\"" + path + "\", \"r\")", "ScopedFILE::ScopedFILE",
                                 [&] { open_as("r"); });
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(ScopedFile, DestructorReportsThatTheLastBytesAreNotTaken) {
    const int before = open_descriptors();
    kScopedFiles.expect_from_destructor("fclose", ENOSPC, "ScopedFILE::~ScopedFILE", [](auto end) {
        const ScopedFILE file(OSAPI::open("/dev/full", OSAPI::kWrite), "/dev/full", "w");
        std::fputs("text", file.file());
        end();
    });
    EXPECT_EQ(open_descriptors(), before);
}

/// Whether something holds in a process of its own in which these descriptors are closed.
bool holds_without(const std::vector<int>& closed, const std::function<bool()>& something) {
    return result_in_child([&] {
               for (const int descriptor : closed) {
                   close(descriptor);
               }
               return something() ? 0 : 1;
           }) == 0;
}

bool is_open(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

}  // namespace

TEST(StandardDescriptors, AreHeldWhicheverAreMissing) {
    for (const std::vector<int>& closed :
         {std::vector<int>{0}, {1}, {2}, {0, 1}, {0, 2}, {1, 2}, {0, 1, 2}}) {
        EXPECT_TRUE(holds_without(closed,
                                  [&] {
                                      OSAPI::hold_standard_descriptors();
                                      const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
                                      return is_open(0) && is_open(1) && is_open(2) && next > 2;
                                  }))
            << closed.size() << " closed, from " << closed.front();
    }
}

TEST(StandardDescriptors, FailAsIfTheyWereClosed) {
    EXPECT_TRUE(holds_without({0, 1, 2}, [] {
        OSAPI::hold_standard_descriptors();
        char byte = 0;
        return read(STDIN_FILENO, &byte, 1) == -1 && errno == EBADF &&
               write(STDOUT_FILENO, "x", 1) == -1 && errno == EBADF &&
               write(STDERR_FILENO, "x", 1) == -1 && errno == EBADF;
    }));
}

TEST(StandardDescriptors, StayAsTheyAreIfTheyAreOpen) {
    EXPECT_TRUE(holds_without({0}, [] {
        // One that can be read, as a program finds it.
        const int in = open("/dev/zero", O_RDONLY | O_CLOEXEC);
        OSAPI::hold_standard_descriptors();
        char byte = 1;
        return in == 0 && read(in, &byte, 1) == 1 && byte == 0;
    }));
}

TEST(StandardDescriptors, StayClosedWhereNothingCanBeOpened) {
    EXPECT_TRUE(holds_without({0, 2}, [] {
        const Fault<&OSAPI::FileCalls::open> fault(ENOENT);
        OSAPI::hold_standard_descriptors();
        return !is_open(0) && !is_open(2) && fault.calls() == 1;
    }));
}
