#include <gtest/gtest.h>
#include <osapi/whole_file.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/faults.h"
#include "support/scratch.h"

namespace {

using OSAPI::cannot_read;
using OSAPI::FileCalls;
using OSAPI::read_head;
using OSAPI::read_whole;

class WholeFile : public testing::Test {
protected:
    ~WholeFile() override { EXPECT_EQ(open_descriptors(), before_); }

    /// What a user is told of the file that `run` cannot read.
    template <class Run>
    static std::string told(Run run) {
        try {
            run();
        } catch (const StrXception& failure) {
            return cannot_read("NAME", failure);
        }
        return "nothing";
    }

    ScratchFolder folder_;
    const std::string path_ = folder_ / "a \"b\": c) in <d";
    const int before_ = open_descriptors();
};

TEST_F(WholeFile, GivesTheHeadOrAllThatThereIs) {
    const std::string bytes("\0 with zeros\n\0", 14);
    write_file(path_, bytes);
    EXPECT_EQ(read_head(path_.c_str(), 5), bytes.substr(0, 5));
    EXPECT_EQ(read_head(path_.c_str(), 14), bytes);
    EXPECT_EQ(read_head(path_.c_str(), 15), bytes);
    EXPECT_EQ(read_whole(path_.c_str(), 14), bytes);
    write_file(path_, "");
    EXPECT_EQ(read_head(path_.c_str(), 5), "");
    EXPECT_EQ(read_whole(path_.c_str(), 0), "");
}

TEST_F(WholeFile, IsReadToItsEndThoughASingleReadGivesLess) {
    const Intercept<&FileCalls::read> reads(
        [&](int fd, void* to, std::size_t) { return reads.real(fd, to, 1); });
    write_file(path_, "three");
    EXPECT_EQ(read_whole(path_.c_str(), 5), "three");
    EXPECT_EQ(read_head(path_.c_str(), 3), "thr");
}

// Whoever opens a pipe without a writer waits for one.
TEST_F(WholeFile, NothingButARegularFileIsReadOrWaitedFor) {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {pipe, std::string("/dev/zero")}) {
        EXPECT_EQ(told([&] { read_head(path.c_str(), 8); }),
                  "cannot read NAME: it is no regular file");
        EXPECT_EQ(told([&] { read_whole(path.c_str(), 8); }),
                  "cannot read NAME: it is no regular file");
    }
    EXPECT_EQ(told([&] { read_head(folder_.path().c_str(), 8); }),
              "cannot read NAME: it is no regular file but a folder");
}

TEST_F(WholeFile, SaysWhyItCannotBeRead) {
    EXPECT_EQ(told([&] { read_head(path_.c_str(), 8); }),
              "cannot read NAME: No such file or directory");
    write_file(path_, "eight...");
    EXPECT_EQ(told([&] { read_whole(path_.c_str(), 7); }),
              "cannot read NAME: it has 8 bytes; 7 are read at most");
    {
        const Fault<&FileCalls::open> fault(EMFILE);
        EXPECT_EQ(told([&] { read_head(path_.c_str(), 8); }),
                  "cannot read NAME: Too many open files");
    }
    {
        const Fault<&FileCalls::fstat> fault(EIO);
        EXPECT_EQ(told([&] { read_head(path_.c_str(), 8); }),
                  "cannot read NAME: Input/output error");
    }
    {
        const Fault<&FileCalls::read> fault(EIO);
        EXPECT_EQ(told([&] { read_whole(path_.c_str(), 8); }),
                  "cannot read NAME: Input/output error");
    }
    const Intercept<&FileCalls::read> cut_short([&](int fd, void* to, std::size_t count) {
        std::filesystem::resize_file(path_, 3);
        return cut_short.real(fd, to, count);
    });
    EXPECT_EQ(told([&] { read_whole(path_.c_str(), 8); }),
              "cannot read NAME: it ends before its 8 bytes");
}

}  // namespace
