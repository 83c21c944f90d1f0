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

#include "failures.h"
#include "support/scratch.h"

namespace {

using OSAPI::DiskFile;
using OSAPI::FileCalls;
using OSAPI::MappingCalls;
using OSAPI::PathCalls;

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
        const Intercept<&FileCalls::open> opens([&](const char*, int f, mode_t p) {
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
    const Fault<&FileCalls::open> opens(EIO, kAlways);
    for (const int mode : {4, 5, 6, 7, 12, 15}) {
        errno = ENOSPC;
        EXPECT_EQ(OSAPI::open_can_fail("/", mode), -1);
        EXPECT_EQ(errno, ENOSPC);
        kFiles.expect("opening file \"/\"", ENOSPC, "open", [&] { OSAPI::open("/", mode); });
    }
    EXPECT_EQ(opens.calls(), 0);
}

TEST(Open, FailureNamesThePathAndLeavesNoDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    const std::string call = "opening file \"" + path + "\"";
    const int before = open_descriptors();
    EXPECT_EQ(OSAPI::open_can_fail(path.c_str(), OSAPI::kRead), -1);
    EXPECT_EQ(errno, ENOENT);
    kFiles.expect(call, ENOENT, "open", [&] { OSAPI::open(path.c_str(), OSAPI::kRead); });
    const int exclusive = OSAPI::kWrite | OSAPI::kExclusive;
    { const DiskFile first(path.c_str(), exclusive); }
    kFiles.expect(call, EEXIST, "open", [&] { DiskFile(path.c_str(), exclusive); });
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Close, ReportsAFailureAndIsNeverRetried) {
    kFiles.expect("close", EBADF, "close", [] { OSAPI::close(-1); });
    kFiles.expect_every<&FileCalls::close>("close", "close", [] { OSAPI::close(1000); });
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

/// Interrupts a kind of transfer, then calls it not ready, then lets three bytes pass; and so on.
template <auto Call>
class Hesitant {
public:
    int calls() const { return intercept_.calls(); }

private:
    Intercept<Call> intercept_{[this](int fd, auto* buffer, size_t count, auto... offset) {
        if (calls() % 3 != 0) {
            errno = calls() % 3 == 1 ? EINTR : EAGAIN;
            return ssize_t{-1};
        }
        return intercept_.real(fd, buffer, std::min<size_t>(count, 3), offset...);
    }};
};

TEST_F(TenBytes, ReadGivesExactlyWhatIsAskedForHoweverItComes) {
    const Hesitant<&FileCalls::read> reads;
    EXPECT_EQ(OSAPI::read(fd(), buffer_, 4), 4);
    EXPECT_STREQ(buffer_, "0123");
    EXPECT_EQ(reads.calls(), 3 * 2);
    EXPECT_EQ(OSAPI::read(fd(), buffer_ + 4, 6), 6);
    EXPECT_STREQ(buffer_, "0123456789");
    EXPECT_EQ(OSAPI::read(fd(), buffer_, 0), 0);
    EXPECT_EQ(reads.calls(), 3 * 4);
}

TEST_F(TenBytes, ReadUpToStopsAtTheEndOnly) {
    const Hesitant<&FileCalls::read> reads;
    EXPECT_EQ(OSAPI::read_up_to(fd(), buffer_, 4), 4);
    EXPECT_STREQ(buffer_, "0123");
    EXPECT_EQ(reads.calls(), 3 * 2);
    EXPECT_EQ(OSAPI::read_up_to(fd(), buffer_, 11), 6);
    EXPECT_STREQ(buffer_, "456789");
    EXPECT_EQ(OSAPI::read_up_to(fd(), buffer_, 11), 0);
    EXPECT_EQ(OSAPI::read_up_to(fd(), buffer_, 0), 0);
}

TEST_F(TenBytes, TransfersAtAnOffsetAdvanceItAndKeepThePosition) {
    const Hesitant<&FileCalls::pread> reads;
    const Hesitant<&FileCalls::pwrite> writes;
    EXPECT_EQ(OSAPI::pread(fd(), buffer_, 8, 2), 8);
    EXPECT_STREQ(buffer_, "23456789");
    EXPECT_EQ(reads.calls(), 3 * 3);
    EXPECT_EQ(OSAPI::pwrite(fd(), "abcd", 4, 3), 4);
    EXPECT_EQ(content(), "012abcd789");
    EXPECT_EQ(writes.calls(), 3 * 2);
    EXPECT_EQ(OSAPI::seek_from_curpos(fd(), 0), 0);
}

TEST_F(TenBytes, WriteSendsAllInAsManyChunksAsItTakes) {
    {
        const Hesitant<&FileCalls::write> writes;
        EXPECT_EQ(OSAPI::write(fd(), "abcdefghij", 10), 10);
        EXPECT_EQ(writes.calls(), 3 * 4);
        EXPECT_EQ(content(), "abcdefghij");
    }
    // Nothing written and no failure: tried again.
    const Intercept<&FileCalls::write> writes([&](int fd, const void* buffer, size_t count) {
        return writes.calls() == 1 ? ssize_t{0} : writes.real(fd, buffer, count);
    });
    EXPECT_EQ(OSAPI::write(fd(), "kl", 2), 2);
    EXPECT_EQ(content(), "abcdefghijkl");
}

TEST_F(TenBytes, ReadBeyondTheEndThrowsAfterTakingWhatThereIs) {
    kFiles.expect_text("unexpected EOF", "read", [&] { OSAPI::read(fd(), buffer_, 11); });
    EXPECT_STREQ(buffer_, "0123456789");
    EXPECT_EQ(OSAPI::seek_from_curpos(fd(), 0), 10);
    kFiles.expect_text("unexpected EOF", "pread", [&] { OSAPI::pread(fd(), buffer_, 9, 2); });
}

TEST_F(TenBytes, EveryTransferReportsAnyOtherFailureAtOnce) {
    const Fault<&FileCalls::read> reads(EIO, kAlways);
    const Fault<&FileCalls::pread> preads(EIO, kAlways);
    const Fault<&FileCalls::write> writes(ENOSPC, kAlways);
    const Fault<&FileCalls::pwrite> pwrites(ENOSPC, kAlways);
    kFiles.expect("read", EIO, "read", [&] { OSAPI::read(fd(), buffer_, 10); });
    kFiles.expect("read", EIO, "read_short", [&] { OSAPI::read_short(fd(), buffer_, 4); });
    kFiles.expect("read", EIO, "read_up_to", [&] { OSAPI::read_up_to(fd(), buffer_, 3); });
    kFiles.expect("read", EIO, "pread", [&] { OSAPI::pread(fd(), buffer_, 1, 0); });
    kFiles.expect("write", ENOSPC, "write", [&] { OSAPI::write(fd(), "x", 1); });
    kFiles.expect("write", ENOSPC, "pwrite", [&] { OSAPI::pwrite(fd(), "x", 1, 0); });
    EXPECT_EQ(reads.calls(), 3);
    EXPECT_EQ(preads.calls() + writes.calls() + pwrites.calls(), 3);
}

TEST_F(TenBytes, ReadShortGivesWhatThereIsAndRetriesInterruptionsOnly) {
    {
        const Fault<&FileCalls::read> fault(EINTR, {.after = 0, .times = 2});
        EXPECT_EQ(OSAPI::read_short(fd(), buffer_, 16), 10);
        EXPECT_EQ(fault.calls(), 3);
    }
    EXPECT_STREQ(buffer_, "0123456789");
    EXPECT_EQ(OSAPI::read_short(fd(), buffer_, 16), 0);
    const Fault<&FileCalls::read> fault(EAGAIN, kAlways);
    EXPECT_EQ(OSAPI::read_short(fd(), buffer_, 4), 0);
    EXPECT_EQ(fault.calls(), 1);
}

TEST(Transfer, AsksForNoMoreThanAnIntCounts) {
    if constexpr (sizeof(uword) > sizeof(int)) {
        const uword count = static_cast<uword>(INT_MAX) + 5;
        std::vector<size_t> asked;
        // Counts only: the buffer's bytes are never touched.
        const Intercept<&FileCalls::write> writes([&](int, const void*, size_t size) {
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
    kFiles.expect("fstat", EBADF, "getsize", [] { OSAPI::getsize(-1); });
    kPaths.expect("stat", ENOENT, "getsize", [&] { OSAPI::getsize((path + "x").c_str()); });
}

TEST_F(TenBytes, TruncateAndSizesBeyondFourGigabytes) {
    // A hole: no disk is needed for it.
    const s64 size = (s64{5} << 30) + 1;
    OSAPI::truncate(fd(), size);
    EXPECT_EQ(file_->getsize(), static_cast<u64>(size));
    EXPECT_EQ(OSAPI::lseek(fd(), -1, SEEK_END), size - 1);
    OSAPI::truncate(fd(), 3);
    EXPECT_EQ(content(), "012");
    kFiles.expect("ftruncate", EINVAL, "truncate", [&] { OSAPI::truncate(fd(), -1); });
}

TEST_F(TenBytes, Seeking) {
    EXPECT_EQ(OSAPI::seek_from_start(fd(), 4), 4);
    EXPECT_EQ(OSAPI::seek_from_curpos(fd(), 3), 7);
    EXPECT_EQ(file_->seek_from_curpos(-2), 5);
    EXPECT_EQ(file_->seek_from_start(1), 1);
    EXPECT_EQ(OSAPI::read(fd(), buffer_, 1), 1);
    EXPECT_STREQ(buffer_, "1");
    for (const auto seek : {OSAPI::seek_from_start, OSAPI::seek_from_curpos}) {
        kFiles.expect("lseek", EINVAL, "lseek", [&] { seek(fd(), -100); });
    }
}

TEST_F(TenBytes, SyncOfAFileReportsFailuresThatOfTheSystemHasNone) {
    OSAPI::sync(fd());
    OSAPI::datasync(fd());
    const Fault<&FileCalls::fsync> fault(EIO, kAlways);
    kFiles.expect("fsync", EIO, "sync", [&] { OSAPI::sync(fd()); });
    kFiles.expect("fsync", EIO, "sync", [&] { OSAPI::datasync(fd()); });
    const Intercept<&FileCalls::sync> syncs([] {});
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
    kPaths.expect("rename(" + from + "," + to + ")", ENOENT, "rename",
                  [&] { OSAPI::rename(from.c_str(), to.c_str()); });
    for (const auto remove : {OSAPI::rm, OSAPI::rm_ifexist}) {
        write_file(to, "");
        remove(to.c_str());
        EXPECT_FALSE(std::filesystem::exists(to));
    }
    kPaths.expect("unlink(" + to + ")", ENOENT, "rm", [&] { OSAPI::rm(to.c_str()); });
    OSAPI::rm_ifexist(to.c_str());  // a missing file alone is no error
    const Fault<&PathCalls::unlink> fault(EROFS);
    kPaths.expect("unlink(" + to + ")", EROFS, "rm_ifexist",
                  [&] { OSAPI::rm_ifexist(to.c_str()); });
}

TEST(FileExists, AsksForThePermissionsOfTheMode) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    EXPECT_FALSE(OSAPI::file_exists(path.c_str(), 0));
    write_file(path, "");
    EXPECT_TRUE(OSAPI::file_exists(path.c_str(), 0));
    std::vector<int> asked;
    const Intercept<&PathCalls::access> checks([&](const char*, int what) {
        asked.push_back(what);
        return 0;
    });
    for (int mode = 0; mode < 4; ++mode) {
        EXPECT_TRUE(OSAPI::file_exists("x", mode));
    }
    EXPECT_EQ(asked, (std::vector<int>{F_OK, R_OK, W_OK, R_OK | W_OK}));
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
        const Fault<&FileCalls::open> opens(error);
        const Fault<&FileCalls::close> closes(error);
        const std::string text = std::strerror(error);
        EXPECT_EQ(reason_of([] { OSAPI::open("a", OSAPI::kRead); }), text);
        EXPECT_EQ(reason_of([] { OSAPI::close(-1); }), text);
    }
}

TEST(Reason, IsNotMisledByThePath) {
    const std::string text = std::strerror(ENOENT);
    const Fault<&FileCalls::open> opens(ENOENT);
    const Fault<&PathCalls::rename> renames(ENOENT);
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

const FailuresOf kMappings("osapi/osapi-unix-mappings.cpp");

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

TEST_F(FileMapping, FailureNamesTheCallAndLeavesNothing) {
    const auto map = [&] { OSAPI::FileMapping(path_.c_str(), OSAPI::kRead); };
    {
        const Fault<&FileCalls::fstat> fault(EIO);
        kFiles.expect("fstat", EIO, "getsize", map);
    }
    {
        const Intercept<&MappingCalls::munmap> unmaps(
            [&](void* addr, size_t size) { return unmaps.real(addr, size); });
        const CloseFault closes(EIO);
        kFiles.expect("close", EIO, "close", map);
        EXPECT_EQ(unmaps.calls(), 1);
        EXPECT_EQ(closes.calls(), 1);
    }
    OSAPI::FileMapping mapping;
    kMappings.expect("mmap(file)", EBADF, "FileMapping::map",
                     [&] { mapping.map(OSAPI::kNoDescriptor, 10, OSAPI::kRead); });
    EXPECT_EQ(mapping.addr(), nullptr);
    EXPECT_EQ(mapping.size(), 0U);
    write_file(path_, "");
    kMappings.expect("mmap(file)", EINVAL, "FileMapping::map", map);
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
    std::vector<int> asked;
    const Intercept<&MappingCalls::mmap> maps(
        [&](void*, size_t size, int protection, int flags, int fd, off_t offset) {
            asked.push_back(protection);
            EXPECT_EQ(size, 10U);
            EXPECT_EQ(flags, MAP_SHARED);
            EXPECT_EQ(fd, 77);
            EXPECT_EQ(offset, 0);
            return MAP_FAILED;
        });
    for (int mode = 0; mode < 4; ++mode) {
        thrown_message([&] { OSAPI::FileMapping(77, 10, mode); });
    }
    EXPECT_EQ(asked, (std::vector<int>{PROT_NONE, PROT_READ, PROT_WRITE, PROT_READ | PROT_WRITE}));
}

TEST(AnonMapping, IsZeroedWritableAndSharedOrPrivateAsAsked) {
    for (const bool shared : {false, true}) {
        int flags = 0;
        const Intercept<&MappingCalls::mmap> maps(
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
    const Fault<&MappingCalls::mmap> fault(ENOMEM);
    kMappings.expect("mmap(anonymous)", ENOMEM, "AnonMapping::AnonMapping",
                     [] { OSAPI::AnonMapping(100, false); });
}

TEST(MemoryMapping, UnmapsWhatItHasAndReportsThatItCannot) {
    const Fault<&MappingCalls::munmap> fault(EINVAL, kAlways);
    { const OSAPI::MemoryMapping empty; }
    EXPECT_EQ(fault.calls(), 0);
    kMappings.expect_from_destructor("munmap", EINVAL, "MemoryMapping::~MemoryMapping",
                                     [](auto end) {
                                         const OSAPI::AnonMapping mapping(100, false);
                                         end();
                                     });
}

TEST(LockMemory, PinsAndUnpinsTheRange) {
    char page[64];
    std::string log;
    const Intercept<&MappingCalls::mlock> locks([&](const void* addr, size_t size) {
        EXPECT_EQ(addr, page);
        log += "lock " + std::to_string(size);
        return 0;
    });
    const Intercept<&MappingCalls::munlock> unlocks([&](const void* addr, size_t size) {
        EXPECT_EQ(addr, page);
        log += " unlock " + std::to_string(size);
        errno = ENOMEM;
        return -1;  // ignored
    });
    { const OSAPI::LockMemory lock(page, sizeof page); }
    EXPECT_EQ(log, "lock 64 unlock 64");
}

TEST(LockMemory, FailureNamesTheCallAndUnlocksNothing) {
    const Fault<&MappingCalls::mlock> fault(EPERM);
    const Fault<&MappingCalls::munlock> unlocks(ENOMEM);
    char page[64];
    kMappings.expect("mlock", EPERM, "LockMemory::LockMemory",
                     [&] { OSAPI::LockMemory(page, sizeof page); });
    EXPECT_EQ(unlocks.calls(), 0);
}

}  // namespace
