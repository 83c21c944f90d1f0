#include <base/scoped_ptr.h>
#include <gtest/gtest.h>
#include <osapi/atomic_file_write.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <string>

#include "failures.h"
#include "support/failing_allocator.h"
#include "support/scratch.h"

namespace {

using OSAPI::AtomicFileWrite;
using OSAPI::FileCalls;
using OSAPI::PathCalls;

class Atomic : public testing::Test {
protected:
    ~Atomic() override { EXPECT_EQ(open_descriptors(), before_); }

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
    AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
    write_text(file, "new");
    EXPECT_EQ(read_file(path_), "old");
    EXPECT_EQ(read_file(temporary_), "new");
    file.complete();
    EXPECT_EQ(read_file(path_), "new");
    EXPECT_EQ(file.fd(), -1);
    EXPECT_FALSE(in_progress());
}

TEST_F(Atomic, WritesToATemporaryFileOfAnyName) {
    const std::string hidden = folder_ / ".hidden";
    {
        AtomicFileWrite file(path_.c_str(), hidden.c_str(), OSAPI::kWrite);
        write_text(file, "new");
        EXPECT_EQ(read_file(hidden), "new");
        EXPECT_FALSE(in_progress());
        file.complete();
        EXPECT_EQ(read_file(path_), "new");
    }
    { const AtomicFileWrite unfinished(path_.c_str(), hidden.c_str(), OSAPI::kWrite); }
    EXPECT_FALSE(std::filesystem::exists(hidden));
    EXPECT_EQ(read_file(path_), "new");
    write_file(hidden, "another's");
    kFiles.expect("opening file \"" + hidden + "\"", EEXIST, "open", [&] {
        AtomicFileWrite(path_.c_str(), hidden.c_str(), OSAPI::kWrite | OSAPI::kExclusive);
    });
    EXPECT_EQ(read_file(hidden), "another's");
}

TEST_F(Atomic, DestroyedUnfinishedLeavesNothingAndDoesNotTouchThePath) {
    { const AtomicFileWrite file(path_.c_str(), OSAPI::kWrite); }
    EXPECT_FALSE(in_progress());
    EXPECT_FALSE(std::filesystem::exists(path_));
    write_file(path_, "old");
    write_text(AtomicFileWrite(path_.c_str(), OSAPI::kWrite), "new");
    EXPECT_FALSE(in_progress());
    EXPECT_EQ(read_file(path_), "old");
}

TEST_F(Atomic, FinishedWriterLeavesAnothersFileAlone) {
    for (const auto finish : {&AtomicFileWrite::complete_nosync, &AtomicFileWrite::abort}) {
        {
            AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
            EXPECT_TRUE(in_progress());
            (file.*finish)();
            EXPECT_FALSE(in_progress());
            EXPECT_EQ(open_descriptors(), before_);
            write_file(temporary_, "another's");
        }
        EXPECT_EQ(read_file(temporary_), "another's");
    }
}

TEST_F(Atomic, CompleteSyncsThenClosesThenRenames) {
    std::string log;
    const Intercept<&FileCalls::fsync> syncs([&](int fd) {
        log += "sync ";
        return syncs.real(fd);
    });
    const Intercept<&FileCalls::close> closes([&](int fd) {
        log += "close ";
        return closes.real(fd);
    });
    const Intercept<&PathCalls::rename> renames([&](const char* from, const char* to) {
        log += "rename ";
        return renames.real(from, to);
    });
    AtomicFileWrite(path_.c_str(), OSAPI::kWrite).complete();
    EXPECT_EQ(log, "sync close rename ");
    log.clear();
    AtomicFileWrite(path_.c_str(), OSAPI::kWrite).complete_nosync();
    EXPECT_EQ(log, "close rename ");
}

TEST_F(Atomic, FailureAtAnyStepLeavesTheOldFileAndNoRest) {
    write_file(path_, "old");
    const auto expect_failure = [&](const std::string& call, int error, const char* function,
                                    const FailuresOf& source = kFiles) {
        source.expect(call, error, function, [&] {
            AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
            write_text(file, "half");
            write_text(file, "whole");
            file.complete();
        });
        EXPECT_EQ(read_file(path_), "old");
        EXPECT_FALSE(in_progress());
        EXPECT_EQ(open_descriptors(), before_);
    };
    {
        const Fault<&FileCalls::write> full(ENOSPC, {.after = 1});
        expect_failure("write", ENOSPC, "write");
    }
    {
        const Fault<&FileCalls::fsync> fault(ENOSPC);
        expect_failure("fsync", ENOSPC, "sync");
    }
    {
        const CloseFault closes(EIO);
        expect_failure("close", EIO, "close");
        EXPECT_EQ(closes.calls(), 1);
    }
    const Fault<&PathCalls::rename> fault(EIO);
    expect_failure("rename(" + temporary_ + "," + path_ + ")", EIO, "rename", kPaths);
}

TEST_F(Atomic, ReportsWhatItCannotOpenOrRemove) {
    const std::string path = folder_ / "none/sky.stars";
    kFiles.expect("opening file \"" + path + ".inprogress\"", ENOENT, "open",
                  [&] { AtomicFileWrite(path.c_str(), OSAPI::kWrite); });
    const Fault<&PathCalls::unlink> fault(EROFS, kAlways);
    kPaths.expect_from_destructor("unlink(" + temporary_ + ")", EROFS, "rm_ifexist", [&](auto end) {
        const AtomicFileWrite file(path_.c_str(), OSAPI::kWrite);
        end();
    });
}

TEST_F(Atomic, ExclusiveWriterIsAlone) {
    {
        const scoped_ptr<AtomicFileWrite> first(AtomicFileWrite::exclusive(path_.c_str()));
        ASSERT_NE(first.get(), nullptr);
        EXPECT_EQ(AtomicFileWrite::exclusive(path_.c_str()), nullptr);
        EXPECT_EQ(open_descriptors(), before_ + 1);
        write_text(*first, "text");
        first->complete();
        EXPECT_EQ(read_file(path_), "text");
        const scoped_ptr<AtomicFileWrite> next(AtomicFileWrite::exclusive(path_.c_str()));
        EXPECT_TRUE(in_progress());
    }
    EXPECT_FALSE(in_progress()) << "unfinished, it cleans up";
}

TEST_F(Atomic, RefusedExclusiveWriterLeavesTheOthersFileAlone) {
    write_file(temporary_, "another's");
    EXPECT_EQ(AtomicFileWrite::exclusive(path_.c_str()), nullptr);
    EXPECT_EQ(read_file(temporary_), "another's");
    EXPECT_EQ(AtomicFileWrite::exclusive((folder_ / "none/sky.stars").c_str()), nullptr);
}

TEST_F(Atomic, ExclusiveWriterWithoutMemoryLeavesNothingInTheWayOfTheNext) {
    {
        FailingAllocator allocator;
        allocator.refuse_new_after(0);
        EXPECT_THROW(AtomicFileWrite::exclusive(path_.c_str()), std::bad_alloc);
    }
    EXPECT_FALSE(in_progress());
    const scoped_ptr<AtomicFileWrite> next(AtomicFileWrite::exclusive(path_.c_str()));
    EXPECT_NE(next.get(), nullptr);
}

}  // namespace
