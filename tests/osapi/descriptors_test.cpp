#include <gtest/gtest.h>
#include <osapi/files.h>
#include <osapi/pipes.h>
#include <sys/ioctl.h>
#include <utime.h>

#include <cerrno>
#include <string>
#include <type_traits>

#include "support/captured_output.h"
#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"
#include "support/unwinding.h"

namespace {

using OSAPI::DiskFile;
using OSAPI::FileDescriptor;
using OSAPI::Syscalls;

static_assert(!std::is_nothrow_destructible_v<FileDescriptor>);
static_assert(!std::is_nothrow_destructible_v<DiskFile>);
static_assert(!std::is_copy_constructible_v<DiskFile>);

TEST(FileDescriptor, StartsWithNone) {
    const Fault<&Syscalls::close> closes(EIO, kAlways);
    {
        FileDescriptor none;
        EXPECT_EQ(none.fd(), -1);
        EXPECT_FALSE(none.is_open());
        none.close();
    }
    EXPECT_EQ(closes.calls(), 0);
}

TEST(FileDescriptor, ClosesOnceHoweverItEnds) {
    std::string closed;
    const Intercept<&Syscalls::close> closes([&](int fd) {
        closed += std::to_string(fd) + ' ';
        return 0;
    });
    { const FileDescriptor destroyed(901); }
    {
        FileDescriptor closed_early(902);
        closed_early.close();
        EXPECT_FALSE(closed_early.is_open());
    }
    {
        FileDescriptor released(903);
        EXPECT_EQ(released.release(), 903);
        EXPECT_EQ(released.fd(), -1);
    }
    EXPECT_EQ(closed, "901 902 ");
}

TEST(FileDescriptor, AdoptsOneDescriptorAtATime) {
    const Intercept<&Syscalls::close> closes([](int) { return 0; });
    FileDescriptor descriptor;
    descriptor.init(901);
    EXPECT_EQ(failed_assertion([&] { descriptor.init(902); }), "!is_open()");
    EXPECT_EQ(descriptor.fd(), 901);
}

TEST(FileDescriptor, FailedCloseThrowsAndIsNotRepeated) {
    const Fault<&Syscalls::close> closes(EIO, kAlways);
    {
        FileDescriptor descriptor(901);
        expect_message(thrown_message([&] { descriptor.close(); }), with_error("close", EIO),
                       "OSAPI::close", "osapi/osapi-unix.cpp");
        EXPECT_FALSE(descriptor.is_open());
    }
    EXPECT_EQ(closes.calls(), 1);
}

TEST(FileDescriptor, DestructorReportsThatClosingFails) {
    const Fault<&Syscalls::close> closes(EIO, kAlways);
    expect_failing_destructor(with_error("close", EIO), "OSAPI::close", "osapi/osapi-unix.cpp",
                              [](auto end) {
                                  const FileDescriptor descriptor(901);
                                  end();
                              });
}

TEST(FileDescriptor, AsksTheDevice) {
    OSAPI::Pipe pipe;
    pipe.open();
    OSAPI::write(pipe.write_end().fd(), "12345", 5);
    int waiting = 0;
    pipe.read_end().ioctl(FIONREAD, reinterpret_cast<char*>(&waiting));
    EXPECT_EQ(waiting, 5);
}

TEST(FileDescriptor, PassesTheBitsOfARequestOn) {
    unsigned long asked = 0;
    const Intercept<&Syscalls::ioctl> asks([&](int, unsigned long request, char*) {
        asked = request;
        return 3;
    });
    FileDescriptor none;
    none.ioctl(static_cast<int>(0x80045430U), nullptr);
    EXPECT_EQ(asked, 0x80045430UL);
}

TEST(FileDescriptor, ReportsWhatTheDeviceRefuses) {
    const ScratchFolder folder;
    DiskFile file((folder / "a").c_str(), OSAPI::kWrite);
    char nothing[64];
    expect_message(thrown_message([&] { file.ioctl(TIOCGWINSZ, nothing); }),
                   with_error("ioctl", ENOTTY), "OSAPI::FileDescriptor::ioctl",
                   "osapi/osapi-unix-descriptors.cpp");
    expect_every_error<&Syscalls::ioctl>([&] { file.ioctl(FIONREAD, nothing); }, "ioctl",
                                         "OSAPI::FileDescriptor::ioctl",
                                         "osapi/osapi-unix-descriptors.cpp");
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
}

TEST(DiskFile, ReportsAFailedRecord) {
    const ScratchFolder folder;
    const DiskFile file((folder / "a").c_str(), OSAPI::kWrite);
    const Fault<&Syscalls::fstat> fault(EIO, kAlways);
    struct stat info;
    const char* const source = "osapi/osapi-unix-descriptors.cpp";
    expect_message(thrown_message([&] { file.stat(&info); }), with_error("fstat", EIO),
                   "OSAPI::DiskFile::stat", source);
    expect_message(thrown_message([&] { file.get_mtime(); }), with_error("fstat", EIO),
                   "OSAPI::DiskFile::stat", source);
    expect_message(thrown_message([&] { file.getsize(); }), with_error("fstat", EIO),
                   "OSAPI::getsize", "osapi/osapi-unix.cpp");
}

}  // namespace
