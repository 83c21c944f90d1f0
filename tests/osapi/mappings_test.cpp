#include <gtest/gtest.h>
#include <osapi/mappings.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"
#include "support/unwinding.h"

namespace {

using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-mappings.cpp";

class FileMapping : public testing::Test {
protected:
    FileMapping() { write_file(path_, "0123456789"); }
    ~FileMapping() override { EXPECT_EQ(open_descriptors(), before_); }

    const ScratchFolder folder_;
    const std::string path_ = folder_ / "a.stars";
    const int before_ = open_descriptors();
};

TEST_F(FileMapping, ShowsTheWholeFileAfterItsDescriptorIsClosed) {
    const OSAPI::FileMapping mapping(path_.c_str(), OSAPI::kRead);
    EXPECT_EQ(open_descriptors(), before_);
    EXPECT_EQ(std::string(mapping.addr(), mapping.size()), "0123456789");
}

TEST_F(FileMapping, OfAMissingFileNamesTheFile) {
    const std::string missing = folder_ / "none";
    expect_message(thrown_message([&] { OSAPI::FileMapping(missing.c_str(), OSAPI::kRead); }),
                   with_error("opening file \"" + missing + "\"", ENOENT), "OSAPI::open",
                   "osapi/osapi-unix.cpp");
}

TEST_F(FileMapping, OfAnEmptyFileFailsInTheMappingCall) {
    write_file(path_, "");
    expect_message(thrown_message([&] { OSAPI::FileMapping(path_.c_str(), OSAPI::kRead); }),
                   with_error("mmap(file)", EINVAL), "OSAPI::FileMapping::map", kSource);
}

TEST_F(FileMapping, ThatFailsStaysEmpty) {
    OSAPI::FileMapping mapping;
    expect_message(thrown_message([&] { mapping.map(OSAPI::kNoDescriptor, 10, OSAPI::kRead); }),
                   with_error("mmap(file)", EBADF), "OSAPI::FileMapping::map", kSource);
    EXPECT_EQ(mapping.addr(), nullptr);
    EXPECT_EQ(mapping.size(), 0U);
}

TEST_F(FileMapping, MapsOnce) {
    const OSAPI::DiskFile file(path_.c_str(), OSAPI::kRead);
    OSAPI::FileMapping mapping(file.fd(), 4, OSAPI::kRead);
    EXPECT_EQ(failed_assertion([&] { mapping.map(file.fd(), 4, OSAPI::kRead); }),
              "addr() == nullptr");
    EXPECT_EQ(std::string(mapping.addr(), mapping.size()), "0123");
}

TEST_F(FileMapping, WritesReachTheFile) {
    const OSAPI::DiskFile file(path_.c_str(), OSAPI::kReadWrite);
    OSAPI::truncate(file.fd(), 4);
    std::memcpy(OSAPI::FileMapping(file.fd(), 4, OSAPI::kReadWrite).addr(), "wxyz", 4);
    EXPECT_EQ(read_file(path_), "wxyz");
}

TEST_F(FileMapping, ProtectionFollowsTheMode) {
    std::string asked;
    const Intercept<&Syscalls::mmap> maps(
        [&](void*, size_t size, int protection, int flags, int fd, off_t offset) -> void* {
            asked += std::to_string(protection) + ' ';
            EXPECT_EQ(size, 10U);
            EXPECT_EQ(flags, MAP_SHARED);
            EXPECT_EQ(fd, 77);
            EXPECT_EQ(offset, 0);
            errno = EIO;
            return MAP_FAILED;
        });
    for (int mode = 0; mode < 4; ++mode) {
        thrown_message([&] { OSAPI::FileMapping(77, 10, mode); });
    }
    std::string expected;
    for (const int protection : {PROT_NONE, PROT_READ, PROT_WRITE, PROT_READ | PROT_WRITE}) {
        expected += std::to_string(protection) + ' ';
    }
    EXPECT_EQ(asked, expected);
}

TEST_F(FileMapping, ReportsAFailedSizeCallAndLeaksNothing) {
    const Fault<&Syscalls::fstat> fault(EIO);
    expect_message(thrown_message([&] { OSAPI::FileMapping(path_.c_str(), OSAPI::kRead); }),
                   with_error("fstat", EIO), "OSAPI::getsize", "osapi/osapi-unix.cpp");
}

TEST_F(FileMapping, UnmapsWhenClosingItsFileFails) {
    const Intercept<&Syscalls::munmap> unmaps(
        [&](void* addr, size_t size) { return unmaps.real(addr, size); });
    const CloseFault closes(EIO);
    expect_message(thrown_message([&] { OSAPI::FileMapping(path_.c_str(), OSAPI::kRead); }),
                   with_error("close", EIO), "OSAPI::close", "osapi/osapi-unix.cpp");
    EXPECT_EQ(unmaps.calls(), 1);
    EXPECT_EQ(closes.calls(), 1);
}

TEST(AnonMapping, IsZeroedWritableAndSharedOrPrivateAsAsked) {
    for (const bool shared : {false, true}) {
        int flags = 0;
        const Intercept<&Syscalls::mmap> maps(
            [&](void* where, size_t size, int protection, int f, int fd, off_t offset) {
                flags = f;
                return maps.real(where, size, protection, f, fd, offset);
            });
        const OSAPI::AnonMapping mapping(10000, shared);
        EXPECT_EQ(flags & (MAP_SHARED | MAP_PRIVATE), shared ? MAP_SHARED : MAP_PRIVATE);
        EXPECT_EQ(std::string(mapping.addr(), mapping.size()), std::string(10000, '\0'));
        mapping.addr()[9999] = 'x';
        EXPECT_EQ(mapping.addr()[9999], 'x');
    }
}

TEST(AnonMapping, FailureNamesTheCall) {
    const Fault<&Syscalls::mmap> fault(ENOMEM);
    expect_message(thrown_message([] { OSAPI::AnonMapping(100, false); }),
                   with_error("mmap(anonymous)", ENOMEM), "OSAPI::AnonMapping::AnonMapping",
                   kSource);
}

TEST(MemoryMapping, EmptyUnmapsNothing) {
    const Fault<&Syscalls::munmap> fault(EINVAL, kAlways);
    { const OSAPI::MemoryMapping mapping; }
    EXPECT_EQ(fault.calls(), 0);
}

TEST(MemoryMapping, DestructorReportsThatUnmappingFails) {
    const Fault<&Syscalls::munmap> fault(EINVAL, kAlways);
    expect_failing_destructor(with_error("munmap", EINVAL), "OSAPI::MemoryMapping::~MemoryMapping",
                              kSource, [](auto end) {
                                  const OSAPI::AnonMapping mapping(100, false);
                                  end();
                              });
}

TEST(LockMemory, PinsAndUnpinsTheRange) {
    char page[64];
    std::string log;
    const Intercept<&Syscalls::mlock> locks([&](const void* addr, size_t size) {
        EXPECT_EQ(addr, page);
        log += "lock " + std::to_string(size);
        return 0;
    });
    const Intercept<&Syscalls::munlock> unlocks([&](const void* addr, size_t size) {
        EXPECT_EQ(addr, page);
        log += " unlock " + std::to_string(size);
        errno = ENOMEM;
        return -1;  // ignored
    });
    { const OSAPI::LockMemory lock(page, sizeof page); }
    EXPECT_EQ(log, "lock 64 unlock 64");
}

TEST(LockMemory, FailureNamesTheCallAndUnlocksNothing) {
    const Fault<&Syscalls::mlock> fault(EPERM);
    const Fault<&Syscalls::munlock> unlocks(ENOMEM);
    char page[64];
    expect_message(thrown_message([&] { OSAPI::LockMemory(page, sizeof page); }),
                   with_error("mlock", EPERM), "OSAPI::LockMemory::LockMemory", kSource);
    EXPECT_EQ(unlocks.calls(), 0);
}

}  // namespace
