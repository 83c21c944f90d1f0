// Files by descriptor, what their failures tell users, and mappings.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/files.h>
#include <osapi/mappings.h>
#include <osapi/reason.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"
#include "support/unwinding.h"

namespace {

using OSAPI::DiskFile;
using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix.cpp";

TEST(Open, GivesTheSystemTheFlagsOfTheMode) {
    // The mode's bits by their values: saved calls depend on these numbers.
    const struct {
        int mode;
        int flags;
    } table[] = {
        {0, O_RDONLY},
        {1, O_RDONLY},
        {2, O_WRONLY | O_CREAT | O_TRUNC},
        {3, O_RDWR | O_CREAT | O_TRUNC},
        {8, O_RDONLY | O_EXCL},
        {9, O_RDONLY | O_EXCL},
        {10, O_WRONLY | O_CREAT | O_TRUNC | O_EXCL},
        {11, O_RDWR | O_CREAT | O_TRUNC | O_EXCL},
    };
    for (const auto& row : table) {
        int flags = 0;
        mode_t wanted = 0;
        const Intercept<&Syscalls::open> opens([&](const char*, int f, mode_t p) {
            flags = f;
            wanted = p;
            return -1;
        });
        EXPECT_EQ(OSAPI::open_can_fail("x", row.mode), -1);
        EXPECT_EQ(flags, row.flags | O_CLOEXEC) << "mode " << row.mode;
        EXPECT_EQ(wanted, 0664U);
    }
}

TEST(Open, CreatesTruncatesAndClosesOnExec) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    const mode_t before = umask(0027);
    { const DiskFile created(path.c_str(), OSAPI::kWrite); }
    umask(before);
    struct stat info = {};
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640U) << "0664 less the umask";
    for (const int mode : {0, 1, 2, 3}) {
        write_file(path, "text");
        const DiskFile file(path.c_str(), mode);
        EXPECT_EQ(file.getsize(), mode < 2 ? 4U : 0U) << "mode " << mode;
        EXPECT_EQ(fcntl(file.fd(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << "mode " << mode;
    }
}

TEST(Open, UnsupportedModeFailsWithoutACallAndLeavesTheErrorAlone) {
    const Fault<&Syscalls::open> opens(EIO, kAlways);
    for (const int mode : {4, 5, 6, 7, 12, 15}) {
        errno = ENOSPC;
        EXPECT_EQ(OSAPI::open_can_fail("/", mode), -1);
        EXPECT_EQ(errno, ENOSPC);
        expect_message(thrown_message([&] { OSAPI::open("/", mode); }),
                       with_error("opening file \"/\"", ENOSPC), "OSAPI::open", kSource);
    }
    EXPECT_EQ(opens.calls(), 0);
}

TEST(Open, ExclusiveRefusesAFileThatIsThere) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    const int mode = OSAPI::kWrite | OSAPI::kExclusive;
    { const DiskFile first(path.c_str(), mode); }
    const int before = open_descriptors();
    expect_message(thrown_message([&] { DiskFile(path.c_str(), mode); }),
                   with_error("opening file \"" + path + "\"", EEXIST), "OSAPI::open", kSource);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Open, MissingFile) {
    const ScratchFolder folder;
    const std::string path = folder / "none";
    EXPECT_EQ(OSAPI::open_can_fail(path.c_str(), OSAPI::kRead), -1);
    EXPECT_EQ(errno, ENOENT);
    expect_message(thrown_message([&] { OSAPI::open(path.c_str(), OSAPI::kRead); }),
                   with_error("opening file \"" + path + "\"", ENOENT), "OSAPI::open", kSource);
}

TEST(Close, ReportsAFailureAndIsNeverRetried) {
    expect_message(thrown_message([] { OSAPI::close(-1); }), with_error("close", EBADF),
                   "OSAPI::close", kSource);
    expect_every_error<&Syscalls::close>([] { OSAPI::close(1000); }, "close", "OSAPI::close",
                                         kSource);
}

// Ten bytes in a file that is open for reading and writing.
class TenBytes : public testing::Test {
protected:
    TenBytes() {
        file_->write("0123456789", 10);
        file_->seek_from_start(0);
    }

    int fd() const { return file_->fd(); }
    std::string content() const { return read_file(folder_ / "ten"); }

    ScratchFolder folder_;
    const std::unique_ptr<DiskFile> file_ =
        std::make_unique<DiskFile>((folder_ / "ten").c_str(), OSAPI::kReadWrite);
    char buffer_[16] = {};
};

TEST_F(TenBytes, ReadGivesExactlyWhatIsAskedFor) {
    EXPECT_EQ(OSAPI::read(fd(), buffer_, 4), 4);
    EXPECT_EQ(OSAPI::read(fd(), buffer_ + 4, 6), 6);
    EXPECT_STREQ(buffer_, "0123456789");
    EXPECT_EQ(OSAPI::read(fd(), buffer_, 0), 0);
}

TEST_F(TenBytes, ReadBeyondTheEndThrowsAfterTakingWhatThereIs) {
    expect_message(thrown_message([&] { OSAPI::read(fd(), buffer_, 11); }), "unexpected EOF",
                   "OSAPI::read", kSource);
    EXPECT_STREQ(buffer_, "0123456789");
    EXPECT_EQ(OSAPI::seek_from_curpos(fd(), 0), 10);
    expect_message(thrown_message([&] { OSAPI::pread(fd(), buffer_, 9, 2); }), "unexpected EOF",
                   "OSAPI::pread", kSource);
}

TEST_F(TenBytes, ReadGathersShortChunksAndRetriesWhatWasNotReady) {
    for (const int error : {EINTR, EAGAIN}) {
        file_->seek_from_start(0);
        const Intercept<&Syscalls::read> reads([&](int fd, void* buffer, size_t count) {
            if (reads.calls() <= 3) {
                errno = error;
                return ssize_t{-1};
            }
            return reads.real(fd, buffer, std::min<size_t>(count, 3));
        });
        EXPECT_EQ(OSAPI::read(fd(), buffer_, 10), 10);
        EXPECT_STREQ(buffer_, "0123456789");
        EXPECT_EQ(reads.calls(), 3 + 4);
    }
}

TEST_F(TenBytes, EveryTransferReportsAnyOtherFailureAtOnce) {
    const Fault<&Syscalls::read> reads(EIO, kAlways);
    const Fault<&Syscalls::pread> preads(EIO, kAlways);
    const Fault<&Syscalls::write> writes(ENOSPC, kAlways);
    const Fault<&Syscalls::pwrite> pwrites(ENOSPC, kAlways);
    const auto expect_failure = [](const std::string& text, const char* function, auto run) {
        expect_message(thrown_message(run), text, function, kSource);
    };
    const std::string read = with_error("read", EIO);
    expect_failure(read, "OSAPI::read", [&] { OSAPI::read(fd(), buffer_, 10); });
    expect_failure(read, "OSAPI::read_short", [&] { OSAPI::read_short(fd(), buffer_, 4); });
    expect_failure(read, "OSAPI::read_up_to", [&] { OSAPI::read_up_to(fd(), buffer_, 3); });
    expect_failure(read, "OSAPI::pread", [&] { OSAPI::pread(fd(), buffer_, 1, 0); });
    const std::string write = with_error("write", ENOSPC);
    expect_failure(write, "OSAPI::write", [&] { OSAPI::write(fd(), "x", 1); });
    expect_failure(write, "OSAPI::pwrite", [&] { OSAPI::pwrite(fd(), "x", 1, 0); });
    EXPECT_EQ(reads.calls(), 3);
    EXPECT_EQ(preads.calls() + writes.calls() + pwrites.calls(), 3);
}

TEST_F(TenBytes, ReadShortGivesWhatThereIsAndRetriesInterruptionsOnly) {
    {
        const Fault<&Syscalls::read> fault(EINTR, {.after = 0, .times = 2});
        EXPECT_EQ(OSAPI::read_short(fd(), buffer_, 16), 10);
        EXPECT_EQ(fault.calls(), 3);
    }
    EXPECT_STREQ(buffer_, "0123456789");
    EXPECT_EQ(OSAPI::read_short(fd(), buffer_, 16), 0);
    const Fault<&Syscalls::read> fault(EAGAIN, kAlways);
    EXPECT_EQ(OSAPI::read_short(fd(), buffer_, 4), 0);
    EXPECT_EQ(fault.calls(), 1);
}

TEST_F(TenBytes, PreadKeepsThePositionAndAdvancesItsOffset) {
    const Intercept<&Syscalls::pread> reads([&](int fd, void* buffer, size_t count, off_t offset) {
        if (reads.calls() % 2 == 0) {
            errno = reads.calls() % 4 == 0 ? EINTR : EAGAIN;
            return ssize_t{-1};
        }
        return reads.real(fd, buffer, std::min<size_t>(count, 3), offset);
    });
    EXPECT_EQ(OSAPI::pread(fd(), buffer_, 8, 2), 8);
    EXPECT_STREQ(buffer_, "23456789");
    EXPECT_EQ(reads.calls(), 5);
    EXPECT_EQ(OSAPI::seek_from_curpos(fd(), 0), 0);
}

TEST_F(TenBytes, WriteSendsAllInAsManyChunksAsItTakes) {
    const Intercept<&Syscalls::write> writes([&](int fd, const void* buffer, size_t count) {
        switch (writes.calls()) {
            case 1:
                errno = EINTR;
                return ssize_t{-1};
            case 2:
                errno = EAGAIN;
                return ssize_t{-1};
            case 3:
                return ssize_t{0};  // nothing written and no failure: tried again
            default:
                return writes.real(fd, buffer, std::min<size_t>(count, 4));
        }
    });
    EXPECT_EQ(OSAPI::write(fd(), "abcdefghij", 10), 10);
    EXPECT_EQ(writes.calls(), 6);
    EXPECT_EQ(content(), "abcdefghij");
}

TEST_F(TenBytes, ReadUpToStopsAtTheEndOnly) {
    const Intercept<&Syscalls::read> reads([&](int fd, void* buffer, size_t count) {
        if (reads.calls() == 2 || reads.calls() == 3) {
            errno = reads.calls() == 2 ? EINTR : EAGAIN;
            return ssize_t{-1};
        }
        return reads.real(fd, buffer, std::min<size_t>(count, 3));
    });
    char block[12] = {};
    EXPECT_EQ(OSAPI::read_up_to(fd(), block, 4), 4);
    EXPECT_STREQ(block, "0123");
    EXPECT_EQ(reads.calls(), 4);
    EXPECT_EQ(OSAPI::read_up_to(fd(), block, 11), 6);
    EXPECT_STREQ(block, "456789");
    EXPECT_EQ(OSAPI::read_up_to(fd(), block, 11), 0);
    EXPECT_EQ(OSAPI::read_up_to(fd(), block, 0), 0);
}

TEST_F(TenBytes, PwriteKeepsThePositionAndAdvancesItsOffset) {
    const Intercept<&Syscalls::pwrite> writes(
        [&](int fd, const void* buffer, size_t count, off_t offset) {
            if (writes.calls() == 2) {
                errno = EINTR;
                return ssize_t{-1};
            }
            return writes.real(fd, buffer, std::min<size_t>(count, 2), offset);
        });
    EXPECT_EQ(OSAPI::pwrite(fd(), "abcd", 4, 3), 4);
    EXPECT_EQ(writes.calls(), 3);
    EXPECT_EQ(content(), "012abcd789");
    EXPECT_EQ(OSAPI::seek_from_curpos(fd(), 0), 0);
}

TEST(Transfer, AsksForNoMoreThanAnIntCounts) {
    if constexpr (sizeof(uword) > sizeof(int)) {
        const uword count = static_cast<uword>(INT_MAX) + 5;
        std::vector<size_t> asked;
        // Counts only: the buffer's bytes are never touched.
        const Intercept<&Syscalls::write> writes([&](int, const void*, size_t size) {
            asked.push_back(size);
            return static_cast<ssize_t>(size);
        });
        char byte = 0;
        EXPECT_EQ(OSAPI::write(-1, &byte, count), static_cast<sword>(count));
        EXPECT_EQ(asked, (std::vector<size_t>{INT_MAX, 5}));
    }
}

TEST_F(TenBytes, Sizes) {
    const std::string path = folder_ / "ten";
    EXPECT_EQ(OSAPI::getsize(fd()), 10U);
    EXPECT_EQ(file_->getsize(), 10U);
    EXPECT_EQ(OSAPI::getsize(path.c_str()), 10U);
    expect_message(thrown_message([] { OSAPI::getsize(-1); }), with_error("fstat", EBADF),
                   "OSAPI::getsize", kSource);
    expect_message(thrown_message([&] { OSAPI::getsize((path + "x").c_str()); }),
                   with_error("stat", ENOENT), "OSAPI::getsize", kSource);
}

TEST_F(TenBytes, TruncateAndSizesBeyondFourGigabytes) {
    // A hole: no disk is needed for it.
    const s64 size = (s64{5} << 30) + 1;
    OSAPI::truncate(fd(), size);
    EXPECT_EQ(file_->getsize(), static_cast<u64>(size));
    EXPECT_EQ(OSAPI::lseek(fd(), -1, SEEK_END), size - 1);
    OSAPI::truncate(fd(), 3);
    EXPECT_EQ(content(), "012");
    expect_message(thrown_message([&] { OSAPI::truncate(fd(), -1); }),
                   with_error("ftruncate", EINVAL), "OSAPI::truncate", kSource);
}

TEST_F(TenBytes, Seeking) {
    EXPECT_EQ(OSAPI::seek_from_start(fd(), 4), 4);
    EXPECT_EQ(OSAPI::seek_from_curpos(fd(), 3), 7);
    EXPECT_EQ(file_->seek_from_curpos(-2), 5);
    EXPECT_EQ(file_->seek_from_start(1), 1);
    EXPECT_EQ(OSAPI::read(fd(), buffer_, 1), 1);
    EXPECT_STREQ(buffer_, "1");
    for (const auto seek : {OSAPI::seek_from_start, OSAPI::seek_from_curpos}) {
        expect_message(thrown_message([&] { seek(fd(), -100); }), with_error("lseek", EINVAL),
                       "OSAPI::lseek", kSource);
    }
}

TEST_F(TenBytes, SyncAndItsFailure) {
    OSAPI::sync(fd());
    OSAPI::datasync(fd());
    const Fault<&Syscalls::fsync> fault(EIO, kAlways);
    expect_message(thrown_message([&] { OSAPI::sync(fd()); }), with_error("fsync", EIO),
                   "OSAPI::sync", kSource);
    expect_message(thrown_message([&] { OSAPI::datasync(fd()); }), with_error("fsync", EIO),
                   "OSAPI::sync", kSource);
}

TEST(Sync, OfTheWholeSystemCallsTheSystemOnce) {
    const Intercept<&Syscalls::sync> syncs([] {});
    OSAPI::sync();
    EXPECT_EQ(syncs.calls(), 1);
}

TEST(Names, AreChangedAndRemovedOrNamedInTheFailure) {
    const ScratchFolder folder;
    const std::string from = folder / "from";
    const std::string to = folder / "to";
    write_file(from, "new");
    write_file(to, "old");
    OSAPI::rename(from.c_str(), to.c_str());
    EXPECT_EQ(read_file(to), "new");
    expect_message(thrown_message([&] { OSAPI::rename(from.c_str(), to.c_str()); }),
                   with_error("rename(" + from + "," + to + ")", ENOENT), "OSAPI::rename", kSource);
    for (const auto remove : {OSAPI::rm, OSAPI::rm_ifexist}) {
        write_file(to, "");
        remove(to.c_str());
        EXPECT_FALSE(std::filesystem::exists(to));
    }
    expect_message(thrown_message([&] { OSAPI::rm(to.c_str()); }),
                   with_error("unlink(" + to + ")", ENOENT), "OSAPI::rm", kSource);
    OSAPI::rm_ifexist(to.c_str());  // a missing file alone is no error
    const Fault<&Syscalls::unlink> fault(EROFS);
    expect_message(thrown_message([&] { OSAPI::rm_ifexist(to.c_str()); }),
                   with_error("unlink(" + to + ")", EROFS), "OSAPI::rm_ifexist", kSource);
}

TEST(FileExists, TellsWhetherAFileIsThere) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    EXPECT_FALSE(OSAPI::file_exists(path.c_str(), 0));
    write_file(path, "");
    EXPECT_TRUE(OSAPI::file_exists(path.c_str(), 0));
}

TEST(FileExists, AsksForThePermissionsOfTheMode) {
    const int expected[] = {F_OK, R_OK, W_OK, R_OK | W_OK};
    for (int mode = 0; mode < 4; ++mode) {
        int asked = -1;
        const Intercept<&Syscalls::access> checks([&](const char*, int what) {
            asked = what;
            return 0;
        });
        EXPECT_TRUE(OSAPI::file_exists("x", mode));
        EXPECT_EQ(asked, expected[mode]);
    }
}

TEST(PageSize, IsTheSystems) { EXPECT_EQ(OSAPI::get_page_size(), sysconf(_SC_PAGESIZE)); }

template <class Run>
std::string reason_of(Run run) {
    try {
        run();
    } catch (const StrXception& failure) {
        return OSAPI::reason(failure).c_str();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

TEST(Reason, IsTheSystemsTextForEveryError) {
    for (int error = 1; error < 140; ++error) {
        const Fault<&Syscalls::open> opens(error);
        const Fault<&Syscalls::close> closes(error);
        const std::string text = std::strerror(error);
        EXPECT_EQ(reason_of([] { OSAPI::open("a", OSAPI::kRead); }), text);
        EXPECT_EQ(reason_of([] { OSAPI::close(-1); }), text);
    }
}

TEST(Reason, IsNotMisledByThePath) {
    const std::string text = std::strerror(ENOENT);
    const Fault<&Syscalls::open> opens(ENOENT);
    const Fault<&Syscalls::rename> renames(ENOENT);
    for (const char* path : {"a: b in <c> (d:1)", "a\": b", "a): b", ": ", "", "\": "}) {
        EXPECT_EQ(reason_of([path] { OSAPI::open(path, OSAPI::kRead); }), text);
        EXPECT_EQ(reason_of([path] { OSAPI::rename(path, path); }), text);
    }
}

TEST(Reason, OfAMessageWithoutACallIsAllButThePlace) {
    EXPECT_EQ(reason_of([] { XTHROW("unexpected EOF"); }), "unexpected EOF");
    EXPECT_EQ(reason_of([] { throw StrXception(String("no place")); }), "no place");
    EXPECT_EQ(reason_of([] { throw StrXception(String()); }), "");
}

const char* const kMappingsSource = "osapi/osapi-unix-mappings.cpp";

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

TEST_F(FileMapping, OfAnEmptyFileFailsInTheMappingCall) {
    write_file(path_, "");
    expect_message(thrown_message([&] { OSAPI::FileMapping(path_.c_str(), OSAPI::kRead); }),
                   with_error("mmap(file)", EINVAL), "OSAPI::FileMapping::map", kMappingsSource);
}

TEST_F(FileMapping, ThatFailsStaysEmpty) {
    OSAPI::FileMapping mapping;
    expect_message(thrown_message([&] { mapping.map(OSAPI::kNoDescriptor, 10, OSAPI::kRead); }),
                   with_error("mmap(file)", EBADF), "OSAPI::FileMapping::map", kMappingsSource);
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
                   kMappingsSource);
}

TEST(MemoryMapping, EmptyUnmapsNothing) {
    const Fault<&Syscalls::munmap> fault(EINVAL, kAlways);
    { const OSAPI::MemoryMapping mapping; }
    EXPECT_EQ(fault.calls(), 0);
}

TEST(MemoryMapping, DestructorReportsThatUnmappingFails) {
    const Fault<&Syscalls::munmap> fault(EINVAL, kAlways);
    expect_failing_destructor(with_error("munmap", EINVAL), "OSAPI::MemoryMapping::~MemoryMapping",
                              kMappingsSource, [](auto end) {
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
                   with_error("mlock", EPERM), "OSAPI::LockMemory::LockMemory", kMappingsSource);
    EXPECT_EQ(unlocks.calls(), 0);
}

}  // namespace
