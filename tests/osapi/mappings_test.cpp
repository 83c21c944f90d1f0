#include <gtest/gtest.h>
#include <osapi/mappings.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "support/captured_output.h"
#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"

namespace {

using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-mappings.cpp";

TEST(FileMapping, ShowsTheWholeFileAfterItsDescriptorIsClosed) {
    const ScratchFolder folder;
    write_file(folder / "a.stars", "0123456789");
    const int before = open_descriptors();
    const OSAPI::FileMapping mapping((folder / "a.stars").c_str(), OSAPI::kRead);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(std::string(mapping.addr(), mapping.size()), "0123456789");
}

TEST(FileMapping, OfAMissingFileNamesTheFile) {
    const ScratchFolder folder;
    const std::string path = folder / "none";
    const int before = open_descriptors();
    expect_message(thrown_message([&] { OSAPI::FileMapping(path.c_str(), OSAPI::kRead); }),
                   "opening file \"" + path + "\": " + std::strerror(ENOENT), "OSAPI::open",
                   "osapi/osapi-unix.cpp");
    EXPECT_EQ(open_descriptors(), before);
}

TEST(FileMapping, OfAnEmptyFileFailsInTheMappingCall) {
    const ScratchFolder folder;
    write_file(folder / "empty", "");
    const int before = open_descriptors();
    expect_message(
        thrown_message([&] { OSAPI::FileMapping((folder / "empty").c_str(), OSAPI::kRead); }),
        with_error("mmap(file)", EINVAL), "OSAPI::FileMapping::map", kSource);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(FileMapping, ThatFailsStaysEmpty) {
    OSAPI::FileMapping mapping;
    expect_message(thrown_message([&] { mapping.map(OSAPI::kNoDescriptor, 10, OSAPI::kRead); }),
                   with_error("mmap(file)", EBADF), "OSAPI::FileMapping::map", kSource);
    EXPECT_EQ(mapping.addr(), nullptr);
    EXPECT_EQ(mapping.size(), 0U);
}

TEST(FileMapping, MapsOnce) {
    const ScratchFolder folder;
    write_file(folder / "a", "0123456789");
    const OSAPI::DiskFile file((folder / "a").c_str(), OSAPI::kRead);
    OSAPI::FileMapping mapping(file.fd(), 4, OSAPI::kRead);
    EXPECT_EQ(mapping.size(), 4U);
    EXPECT_EQ(failed_assertion([&] { mapping.map(file.fd(), 4, OSAPI::kRead); }),
              "addr() == nullptr");
    EXPECT_EQ(std::string(mapping.addr(), 4), "0123");
}

TEST(FileMapping, WritesReachTheFile) {
    const ScratchFolder folder;
    const OSAPI::DiskFile file((folder / "a").c_str(), OSAPI::kReadWrite);
    OSAPI::truncate(file.fd(), 4);
    {
        OSAPI::FileMapping mapping(file.fd(), 4, OSAPI::kReadWrite);
        std::memcpy(mapping.addr(), "wxyz", 4);
    }
    EXPECT_EQ(read_file(folder / "a"), "wxyz");
}

TEST(FileMapping, ProtectionFollowsTheMode) {
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

TEST(FileMapping, ReportsAFailedSizeCallAndLeaksNothing) {
    const ScratchFolder folder;
    write_file(folder / "a", "0123456789");
    const int before = open_descriptors();
    const Fault<&Syscalls::fstat> fault(EIO);
    expect_message(thrown_message([&] { OSAPI::FileMapping((folder / "a").c_str(), 1); }),
                   with_error("fstat", EIO), "OSAPI::getsize", "osapi/osapi-unix.cpp");
    EXPECT_EQ(open_descriptors(), before);
}

TEST(FileMapping, UnmapsWhenClosingItsFileFails) {
    const ScratchFolder folder;
    write_file(folder / "a", "0123456789");
    const Intercept<&Syscalls::munmap> unmaps(
        [&](void* addr, size_t size) { return unmaps.real(addr, size); });
    // The descriptor is closed for real, the failure comes after it.
    const Intercept<&Syscalls::close> closes([&](int fd) {
        closes.real(fd);
        errno = EIO;
        return -1;
    });
    expect_message(thrown_message([&] { OSAPI::FileMapping((folder / "a").c_str(), 1); }),
                   with_error("close", EIO), "OSAPI::close", "osapi/osapi-unix.cpp");
    EXPECT_EQ(unmaps.calls(), 1);
    EXPECT_EQ(closes.calls(), 1);
}

TEST(AnonMapping, IsZeroedAndWritable) {
    for (const bool shared : {false, true}) {
        const OSAPI::AnonMapping mapping(10000, shared);
        EXPECT_EQ(mapping.size(), 10000U);
        EXPECT_EQ(std::string(mapping.addr(), mapping.size()), std::string(10000, '\0'));
        mapping.addr()[9999] = 'x';
        EXPECT_EQ(mapping.addr()[9999], 'x');
    }
}

TEST(AnonMapping, IsSharedOrPrivateAsAsked) {
    for (const bool shared : {false, true}) {
        int flags = 0;
        const Intercept<&Syscalls::mmap> maps(
            [&](void* where, size_t size, int protection, int f, int fd, off_t offset) {
                flags = f;
                return maps.real(where, size, protection, f, fd, offset);
            });
        const OSAPI::AnonMapping mapping(100, shared);
        EXPECT_EQ(flags & MAP_SHARED, shared ? MAP_SHARED : 0);
        EXPECT_EQ(flags & MAP_PRIVATE, shared ? 0 : MAP_PRIVATE);
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

TEST(MemoryMapping, DestructorThrowsWhenUnmappingFails) {
    const Fault<&Syscalls::munmap> fault(EINVAL);
    expect_message(thrown_message([] { const OSAPI::AnonMapping mapping(100, false); }),
                   with_error("munmap", EINVAL), "OSAPI::MemoryMapping::~MemoryMapping", kSource);
}

TEST(MemoryMapping, FailureWhileUnwindingIsPrintedAndTheFirstExceptionGoesOn) {
    const Fault<&Syscalls::munmap> fault(EINVAL);
    const std::string printed = output_of(stderr, [&] {
        EXPECT_THROW(
            {
                const OSAPI::AnonMapping mapping(100, false);
                throw 5;
            },
            int);
    });
    EXPECT_EQ(printed.find("Error: " + with_error("munmap", EINVAL)), 0U) << printed;
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
