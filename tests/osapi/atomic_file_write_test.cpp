#include <base/scoped_ptr.h>
#include <gtest/gtest.h>
#include <osapi/atomic_file_write.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>

#include "support/captured_output.h"
#include "support/expect_throw.h"
#include "support/failing_allocator.h"
#include "support/faults.h"
#include "support/scratch.h"

namespace {

using OSAPI::AtomicFileWrite;
using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix.cpp";

class Atomic : public testing::Test {
protected:
    bool in_progress() const { return std::filesystem::exists(temporary_); }
    void write_text(const AtomicFileWrite& file, const std::string& text) {
        OSAPI::write(file.fd(), text.data(), text.size());
    }

    ScratchFolder folder_;
    const std::string path_ = folder_ / "sky.stars";
    const std::string temporary_ = path_ + ".inprogress";
    const int before_ = open_descriptors();
};

TEST_F(Atomic, OthersSeeTheOldFileUntilTheNewOneIsComplete) {
    write_file(path_, "old");
    {
        AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
        write_text(file, "new");
        EXPECT_EQ(read_file(path_), "old");
        EXPECT_EQ(read_file(temporary_), "new");
        file.complete();
        EXPECT_EQ(read_file(path_), "new");
        EXPECT_EQ(file.fd(), -1);
    }
    EXPECT_EQ(read_file(path_), "new");
    EXPECT_FALSE(in_progress());
    EXPECT_EQ(open_descriptors(), before_);
}

TEST_F(Atomic, DestroyedUnfinishedLeavesNothingAndDoesNotTouchThePath) {
    { const AtomicFileWrite file(path_.c_str(), OSAPI::kWrite); }
    EXPECT_FALSE(in_progress());
    EXPECT_FALSE(std::filesystem::exists(path_));
    write_file(path_, "old");
    {
        const AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
        write_text(file, "new");
        EXPECT_TRUE(in_progress());
    }
    EXPECT_FALSE(in_progress());
    EXPECT_EQ(read_file(path_), "old");
    EXPECT_EQ(open_descriptors(), before_);
}

TEST_F(Atomic, AbortRemovesAtOnce) {
    AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
    file.abort();
    EXPECT_FALSE(in_progress());
    EXPECT_EQ(open_descriptors(), before_);
}

TEST_F(Atomic, FinishedWriterLeavesAnothersFileAlone) {
    for (const bool completed : {true, false}) {
        {
            AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
            if (completed) {
                file.complete_nosync();
            } else {
                file.abort();
            }
            write_file(temporary_, "another's");
        }
        EXPECT_EQ(read_file(temporary_), "another's");
    }
}

TEST_F(Atomic, CompleteSyncsThenClosesThenRenames) {
    std::string log;
    const Intercept<&Syscalls::fsync> syncs([&](int fd) {
        log += "sync ";
        return syncs.real(fd);
    });
    const Intercept<&Syscalls::close> closes([&](int fd) {
        log += "close ";
        return closes.real(fd);
    });
    const Intercept<&Syscalls::rename> renames([&](const char* from, const char* to) {
        log += "rename ";
        return renames.real(from, to);
    });
    AtomicFileWrite(path_.c_str(), OSAPI::kWrite).complete();
    EXPECT_EQ(log, "sync close rename ");
    log.clear();
    AtomicFileWrite(path_.c_str(), OSAPI::kWrite).complete_nosync();
    EXPECT_EQ(log, "close rename ");
}

TEST_F(Atomic, UnwritablePlaceNamesTheTemporaryFile) {
    const std::string path = folder_ / "none/sky.stars";
    expect_message(thrown_message([&] { AtomicFileWrite(path.c_str(), OSAPI::kWrite); }),
                   "opening file \"" + path + ".inprogress\": " + std::strerror(ENOENT),
                   "OSAPI::open", kSource);
    EXPECT_EQ(open_descriptors(), before_);
}

TEST_F(Atomic, FailedSyncCloseOrRenameLeavesTheOldFileAndNoRest) {
    write_file(path_, "old");
    const auto complete = [&] {
        AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
        write_text(file, "new");
        file.complete();
    };
    const auto old_file_only = [&] {
        EXPECT_EQ(read_file(path_), "old");
        EXPECT_FALSE(in_progress());
        EXPECT_EQ(open_descriptors(), before_);
    };
    {
        const Fault<&Syscalls::fsync> fault(ENOSPC);
        expect_message(thrown_message(complete), std::string("fsync: ") + std::strerror(ENOSPC),
                       "OSAPI::sync", kSource);
    }
    old_file_only();
    {
        // The descriptor is closed for real, the failure comes after it.
        const Intercept<&Syscalls::close> closes([&](int fd) {
            closes.real(fd);
            errno = EIO;
            return -1;
        });
        expect_message(thrown_message(complete), std::string("close: ") + std::strerror(EIO),
                       "OSAPI::close", kSource);
        EXPECT_EQ(closes.calls(), 1);
    }
    old_file_only();
    {
        const Fault<&Syscalls::rename> fault(EIO);
        expect_message(thrown_message(complete),
                       "rename(" + temporary_ + "," + path_ + "): " + std::strerror(EIO),
                       "OSAPI::rename", kSource);
    }
    old_file_only();
}

TEST_F(Atomic, FullDiskLeavesTheOldFileAndNoRest) {
    write_file(path_, "old");
    const Fault<&Syscalls::write> fault(ENOSPC, {.after = 1});
    expect_message(thrown_message([&] {
                       AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
                       write_text(file, "half");
                       write_text(file, "whole");
                   }),
                   std::string("write: ") + std::strerror(ENOSPC), "OSAPI::write", kSource);
    EXPECT_EQ(read_file(path_), "old");
    EXPECT_FALSE(in_progress());
    EXPECT_EQ(open_descriptors(), before_);
}

TEST_F(Atomic, DestructorThrowsWhenItCannotRemove) {
    const Fault<&Syscalls::unlink> fault(EROFS);
    expect_message(
        thrown_message([&] { const AtomicFileWrite file(path_.c_str(), OSAPI::kWrite); }),
        "unlink(" + temporary_ + "): " + std::strerror(EROFS), "OSAPI::rm_ifexist", kSource);
    EXPECT_EQ(open_descriptors(), before_);
}

TEST_F(Atomic, FailureWhileUnwindingIsPrintedAndTheFirstExceptionGoesOn) {
    const Fault<&Syscalls::unlink> fault(EROFS);
    const std::string printed = output_of(stderr, [&] {
        EXPECT_THROW(
            {
                const AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
                throw 5;
            },
            int);
    });
    EXPECT_EQ(printed.find("Error: unlink(" + temporary_ + "): " + std::strerror(EROFS)), 0U)
        << printed;
    EXPECT_EQ(open_descriptors(), before_);
}

TEST_F(Atomic, ExclusiveWriterIsAlone) {
    const scoped_ptr<AtomicFileWrite> first(AtomicFileWrite::exclusive(path_.c_str()));
    ASSERT_NE(first.get(), nullptr);
    const int one_open = open_descriptors();
    EXPECT_EQ(AtomicFileWrite::exclusive(path_.c_str()), nullptr);
    EXPECT_EQ(open_descriptors(), one_open);
    write_text(*first, "text");
    first->complete();
    EXPECT_EQ(read_file(path_), "text");
    const scoped_ptr<AtomicFileWrite> next(AtomicFileWrite::exclusive(path_.c_str()));
    EXPECT_NE(next.get(), nullptr);
}

TEST_F(Atomic, RefusedExclusiveWriterLeavesTheOthersFileAlone) {
    write_file(temporary_, "another's");
    EXPECT_EQ(AtomicFileWrite::exclusive(path_.c_str()), nullptr);
    EXPECT_EQ(read_file(temporary_), "another's");
    const std::string nowhere = folder_ / "none/sky.stars";
    EXPECT_EQ(AtomicFileWrite::exclusive(nowhere.c_str()), nullptr);
}

TEST_F(Atomic, ExclusiveWriterWithoutMemoryLeavesNothingInTheWayOfTheNext) {
    {
        FailingAllocator allocator;
        allocator.refuse_new_after(0);
        EXPECT_THROW(AtomicFileWrite::exclusive(path_.c_str()), std::bad_alloc);
    }
    EXPECT_FALSE(in_progress());
    EXPECT_EQ(open_descriptors(), before_);
    const scoped_ptr<AtomicFileWrite> next(AtomicFileWrite::exclusive(path_.c_str()));
    EXPECT_NE(next.get(), nullptr);
}

TEST_F(Atomic, UnfinishedExclusiveWriterCleansUp) {
    {
        const scoped_ptr<AtomicFileWrite> file(AtomicFileWrite::exclusive(path_.c_str()));
        EXPECT_TRUE(in_progress());
    }
    EXPECT_FALSE(in_progress());
    EXPECT_EQ(open_descriptors(), before_);
}

}  // namespace
