#include <gtest/gtest.h>
#include <osapi/directories.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"
#include "support/unwinding.h"

namespace {

using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-directories.cpp";

std::vector<std::string> texts(const Array<String>& names) {
    std::vector<std::string> result;
    for (uword i = 0; i < names.len(); ++i) {
        result.emplace_back(names[i].c_str());
    }
    return result;
}

// Tests of the current directory begin in a folder of their own and end where they began.
class Directories : public testing::Test {
protected:
    ~Directories() override {
        EXPECT_EQ(open_descriptors(), before_);
        std::filesystem::current_path(start_);
    }

    const std::filesystem::path start_ = std::filesystem::current_path();
    ScratchFolder folder_;
    // The system's name of the folder, which may differ where the way to it has links.
    const std::string path_ = std::filesystem::canonical(folder_.path()).string();
    const std::string missing_ = path_ + "/missing";
    const int before_ = open_descriptors();
};

TEST_F(Directories, ListingGivesEveryEntry) {
    write_file(path_ + "/a.stars", "");
    write_file(path_ + "/.hidden", "");
    Array<String> names;
    OSAPI::lsdir(path_.c_str(), names);
    std::vector<std::string> sorted = texts(names);
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, (std::vector<std::string>{".", "..", ".hidden", "a.stars"}));
}

TEST_F(Directories, ListingKeepsTheSystemsOrderAndAppends) {
    dirent entries[2] = {};
    std::strcpy(entries[0].d_name, "b");
    std::strcpy(entries[1].d_name, "a");
    const Intercept<&Syscalls::readdir> reads([&](DIR*) -> dirent* {
        return reads.calls() <= 2 ? &entries[reads.calls() - 1] : nullptr;
    });
    Array<String> names;
    names.append("before");
    OSAPI::lsdir(path_.c_str(), names);
    EXPECT_EQ(texts(names), (std::vector<std::string>{"before", "b", "a"}));
}

TEST_F(Directories, ListingOfAMissingDirectoryAppendsNothing) {
    Array<String> names;
    expect_message(thrown_message([&] { OSAPI::lsdir(missing_.c_str(), names); }),
                   with_error("opendir(\"" + missing_ + "\")", ENOENT), "OSAPI::lsdir", kSource);
    EXPECT_TRUE(names.empty());
}

TEST_F(Directories, ListingThatBreaksOffIsAnErrorAndLeaksNothing) {
    const Fault<&Syscalls::readdir> fault(EIO, {.after = 1});
    Array<String> names;
    expect_message(thrown_message([&] { OSAPI::lsdir(path_.c_str(), names); }),
                   with_error("readdir(\"" + path_ + "\")", EIO), "OSAPI::lsdir", kSource);
}

TEST_F(Directories, ListingReportsAFailedClose) {
    // Closed for real, as the system does.
    const Intercept<&Syscalls::closedir> closes([&](DIR* directory) {
        closes.real(directory);
        errno = EIO;
        return -1;
    });
    Array<String> names;
    expect_message(thrown_message([&] { OSAPI::lsdir(path_.c_str(), names); }),
                   with_error("closedir(\"" + path_ + "\")", EIO), "OSAPI::lsdir", kSource);
    EXPECT_EQ(closes.calls(), 1);
}

TEST_F(Directories, ChangingTheCurrentOne) {
    OSAPI::chdir(path_.c_str());
    EXPECT_EQ(std::string(OSAPI::getcwd().c_str()), path_);
    expect_message(thrown_message([&] { OSAPI::chdir(missing_.c_str()); }),
                   with_error("chdir(" + missing_ + ")", ENOENT), "OSAPI::chdir", kSource);
    EXPECT_EQ(std::string(OSAPI::getcwd().c_str()), path_);
}

TEST_F(Directories, CurrentOneMayHaveBeenRemoved) {
    std::filesystem::create_directory(path_ + "/gone");
    OSAPI::chdir((path_ + "/gone").c_str());
    std::filesystem::remove(path_ + "/gone");
    expect_message(thrown_message([] { OSAPI::getcwd(); }), with_error("getcwd", ENOENT),
                   "OSAPI::getcwd", kSource);
    const Fault<&Syscalls::chdir> changes(EIO, kAlways);
    OSAPI::chdir(".");
    EXPECT_EQ(changes.calls(), 0);
    // Only the very text "." is exempt.
    expect_message(thrown_message([] { OSAPI::chdir("./"); }), with_error("chdir(./)", EIO),
                   "OSAPI::chdir", kSource);
}

TEST_F(Directories, ScopedChangeEndsWithItsObject) {
    {
        const OSAPI::ScopedChdir inside(path_.c_str());
        EXPECT_EQ(std::filesystem::current_path(), path_);
    }
    EXPECT_EQ(std::filesystem::current_path(), start_);
    EXPECT_THROW(
        {
            const OSAPI::ScopedChdir inside(path_.c_str());
            throw 5;
        },
        int);
    EXPECT_EQ(std::filesystem::current_path(), start_);
}

TEST_F(Directories, ScopedChangeToAnEmptyPathChangesNothing) {
    const Fault<&Syscalls::chdir> changes(EIO, kAlways);
    { const OSAPI::ScopedChdir nowhere(""); }
    EXPECT_EQ(changes.calls(), 0);
}

TEST_F(Directories, ScopedChangeToAMissingOneStaysWhereItWas) {
    expect_message(thrown_message([&] { OSAPI::ScopedChdir(missing_.c_str()); }),
                   with_error("chdir(" + missing_ + ")", ENOENT), "OSAPI::chdir", kSource);
    EXPECT_EQ(std::filesystem::current_path(), start_);
}

TEST_F(Directories, ScopedChangeReportsThatItCannotGoBack) {
    expect_failing_destructor(with_error("chdir(" + start_.string() + ")", EACCES), "OSAPI::chdir",
                              kSource, [&](auto end) {
                                  std::filesystem::current_path(start_);
                                  const Fault<&Syscalls::chdir> fault(EACCES, {.after = 1});
                                  const OSAPI::ScopedChdir inside(path_.c_str());
                                  end();
                              });
}

TEST_F(Directories, GlobGivesTheMatchesSorted) {
    for (const char* name : {"/c.stars", "/a.stars", "/b.stars", "/a.txt"}) {
        write_file(path_ + name, "");
    }
    OSAPI::Glob glob((path_ + "/*.stars").c_str());
    for (const char* name : {"/a.stars", "/b.stars", "/c.stars"}) {
        EXPECT_EQ(std::string(glob.next()), path_ + name);
    }
    EXPECT_EQ(glob.next(), nullptr);
}

TEST_F(Directories, GlobWithoutAMatchIsNoError) {
    OSAPI::Glob glob((path_ + "/*.stars").c_str());
    EXPECT_EQ(glob.next(), nullptr);
    EXPECT_EQ(glob.next(), nullptr);
}

TEST_F(Directories, GlobReportsTheSystemsCode) {
    const Intercept<&Syscalls::glob> globs(
        [](const char*, int flags, int (*)(const char*, int), glob_t*) {
            EXPECT_EQ(flags, 0);
            return GLOB_NOSPACE;
        });
    expect_message(thrown_message([] { OSAPI::Glob glob("*.stars"); }),
                   "glob(*.stars): " + std::to_string(GLOB_NOSPACE), "OSAPI::Glob::Glob", kSource);
}

}  // namespace
