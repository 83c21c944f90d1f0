// Paths and directories.
#include <gtest/gtest.h>
#include <osapi/directories.h>
#include <osapi/paths.h>

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

const char* const kSource = "osapi/osapi-unix-paths.cpp";

struct PathText {
    const char* path;
    const char* expected;
};

template <std::size_t N>
void expect_texts(String (*function)(const char*), const PathText (&table)[N]) {
    for (const PathText& row : table) {
        EXPECT_STREQ(function(row.path).c_str(), row.expected) << row.path;
    }
}

TEST(Basename, IsTheTextAfterTheLastSlash) {
    expect_texts(OSAPI::basename, {
                                      {"", ""},
                                      {"name", "name"},
                                      {"/name", "name"},
                                      {"a/b/name.x", "name.x"},
                                      {"a/b/", ""},
                                      {"/", ""},
                                      {"//", ""},
                                      {"a//b", "b"},
                                  });
}

TEST(Dirname, IsTheTextBeforeTheLastSlash) {
    expect_texts(OSAPI::dirname, {
                                     {"", ""},
                                     {"name", "."},
                                     {"/name", "/"},
                                     {"/", "/"},
                                     {"a/", "a"},
                                     {"a/b/name", "a/b"},
                                     {"/a/b", "/a"},
                                     {"a//b", "a/"},
                                     {"//name", "/"},
                                     {".", "."},
                                     {"/a/", "/a"},
                                 });
}

TEST(Extension, IsTheTextAfterTheLastDot) {
    expect_texts(OSAPI::extension,
                 {
                     {"", ""},
                     {"name", ""},
                     {"name.", ""},
                     {"sky.stars", "stars"},
                     {"a.b.c", "c"},
                     {".hidden", "hidden"},
                     // The last dot of the whole path counts, also one in a folder's name.
                     {"folder.d/name", "d/name"},
                 });
}

TEST(Extension, OfAFileInProgressIsThatOfItsFinalName) {
    expect_texts(OSAPI::extension,
                 {
                     {"sky.stars.inprogress", "stars"},
                     {"sky.stars.INPROGRESS", "stars"},
                     {"sky.stars.InProgress", "stars"},
                     {"/folder/name.inprogress", ""},
                     {"abcd.inprogress", ""},           // 15 characters, no dot before the suffix
                     {"ab.x.inprogress", "x"},          // 15
                     {"a.x.inprogress", "inprogress"},  // 14: too short for the rule
                     {"A.X.INPROGRESS", "INPROGRESS"},  // 14, in its own case
                     {".inprogress", "inprogress"},
                     {"sky.stars.inprogress2", "inprogress2"},
                     {"sky.inprogress.stars", "stars"},
                     // The rule is applied once.
                     {"sky.stars.inprogress.inprogress", "inprogress"},
                 });
}

class PathStatus : public testing::Test {
protected:
    PathStatus() { write_file(file_, "x"); }

    ScratchFolder folder_;
    const std::string file_ = folder_ / "file";
    const std::string missing_ = folder_ / "missing";
};

TEST_F(PathStatus, IsDirectory) {
    EXPECT_TRUE(OSAPI::is_directory(folder_.path().c_str()));
    EXPECT_FALSE(OSAPI::is_directory(file_.c_str()));
    expect_message(thrown_message([&] { OSAPI::is_directory(missing_.c_str()); }),
                   with_error("stat(" + missing_ + ")", ENOENT), "OSAPI::is_directory", kSource);
}

TEST_F(PathStatus, ModificationTimeGoesInAndComesOut) {
    for (const OSAPI::FileTime time : {1L, 1234567890L, -1L}) {
        OSAPI::set_mtime(file_.c_str(), time);
        EXPECT_EQ(OSAPI::get_mtime(file_.c_str()), time);
        EXPECT_EQ(OSAPI::get_mtime_ifexist(file_.c_str()), time);
    }
}

TEST_F(PathStatus, SetMtimeSetsTheTimeOfAccessToo) {
    const Intercept<&Syscalls::utime> utimes([](const char*, const utimbuf* times) {
        EXPECT_EQ(times->actime, 77);
        EXPECT_EQ(times->modtime, 77);
        return 0;
    });
    OSAPI::set_mtime(file_.c_str(), 77);
    EXPECT_EQ(utimes.calls(), 1);
}

TEST_F(PathStatus, MissingFileHasNoTime) {
    EXPECT_EQ(OSAPI::get_mtime_ifexist(missing_.c_str()), 0);
    expect_message(thrown_message([&] { OSAPI::get_mtime(missing_.c_str()); }),
                   with_error("stat(" + missing_ + ")", ENOENT), "OSAPI::get_mtime", kSource);
    expect_message(thrown_message([&] { OSAPI::set_mtime(missing_.c_str(), 1); }),
                   with_error("utime(" + missing_ + ")", ENOENT), "OSAPI::set_mtime", kSource);
}

TEST_F(PathStatus, FileFromTheEpochIsReportedAsAnError) {
    OSAPI::set_mtime(file_.c_str(), 0);
    EXPECT_EQ(OSAPI::get_mtime_ifexist(file_.c_str()), 0);
    errno = EDOM;
    expect_message(thrown_message([&] { OSAPI::get_mtime(file_.c_str()); }),
                   with_error("stat(" + file_ + ")", EDOM), "OSAPI::get_mtime", kSource);
}

TEST_F(PathStatus, OtherFailuresOfTheStatusCallAreReported) {
    const std::string beneath_a_file = file_ + "/x";
    expect_message(thrown_message([&] { OSAPI::get_mtime_ifexist(beneath_a_file.c_str()); }),
                   with_error("stat(" + beneath_a_file + ")", ENOTDIR), "OSAPI::get_mtime_ifexist",
                   kSource);
    const Fault<&Syscalls::stat> fault(EACCES, kAlways);
    expect_message(thrown_message([&] { OSAPI::get_mtime(file_.c_str()); }),
                   with_error("stat(" + file_ + ")", EACCES), "OSAPI::get_mtime_ifexist", kSource);
    expect_message(thrown_message([&] { OSAPI::is_directory(file_.c_str()); }),
                   with_error("stat(" + file_ + ")", EACCES), "OSAPI::is_directory", kSource);
}

TEST_F(PathStatus, RemoverRemovesOnEveryWayOut) {
    {
        const OSAPI::Remover remover(file_.c_str());
        EXPECT_TRUE(std::filesystem::exists(file_));
    }
    EXPECT_FALSE(std::filesystem::exists(file_));
    write_file(file_, "x");
    EXPECT_THROW(
        {
            const OSAPI::Remover remover(String(file_.c_str()));
            throw 5;
        },
        int);
    EXPECT_FALSE(std::filesystem::exists(file_));
    // Nothing left to remove is no error.
    { const OSAPI::Remover remover(file_.c_str()); }
}

TEST_F(PathStatus, RemoverReportsWhatItCannotRemove) {
    const Fault<&Syscalls::unlink> fault(EROFS, kAlways);
    expect_failing_destructor(with_error("unlink(" + file_ + ")", EROFS), "OSAPI::rm_ifexist",
                              "osapi/osapi-unix.cpp", [&](auto end) {
                                  const OSAPI::Remover remover(file_.c_str());
                                  end();
                              });
}

const char* const kDirectoriesSource = "osapi/osapi-unix-directories.cpp";

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
                   with_error("opendir(\"" + missing_ + "\")", ENOENT), "OSAPI::lsdir",
                   kDirectoriesSource);
    EXPECT_TRUE(names.empty());
}

TEST_F(Directories, ListingThatBreaksOffIsAnErrorAndLeaksNothing) {
    const Fault<&Syscalls::readdir> fault(EIO, {.after = 1});
    Array<String> names;
    expect_message(thrown_message([&] { OSAPI::lsdir(path_.c_str(), names); }),
                   with_error("readdir(\"" + path_ + "\")", EIO), "OSAPI::lsdir",
                   kDirectoriesSource);
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
                   with_error("closedir(\"" + path_ + "\")", EIO), "OSAPI::lsdir",
                   kDirectoriesSource);
    EXPECT_EQ(closes.calls(), 1);
}

TEST_F(Directories, ChangingTheCurrentOne) {
    OSAPI::chdir(path_.c_str());
    EXPECT_EQ(std::string(OSAPI::getcwd().c_str()), path_);
    expect_message(thrown_message([&] { OSAPI::chdir(missing_.c_str()); }),
                   with_error("chdir(" + missing_ + ")", ENOENT), "OSAPI::chdir",
                   kDirectoriesSource);
    EXPECT_EQ(std::string(OSAPI::getcwd().c_str()), path_);
}

TEST_F(Directories, CurrentOneMayHaveBeenRemoved) {
    std::filesystem::create_directory(path_ + "/gone");
    OSAPI::chdir((path_ + "/gone").c_str());
    std::filesystem::remove(path_ + "/gone");
    expect_message(thrown_message([] { OSAPI::getcwd(); }), with_error("getcwd", ENOENT),
                   "OSAPI::getcwd", kDirectoriesSource);
    const Fault<&Syscalls::chdir> changes(EIO, kAlways);
    OSAPI::chdir(".");
    EXPECT_EQ(changes.calls(), 0);
    // Only the very text "." is exempt.
    expect_message(thrown_message([] { OSAPI::chdir("./"); }), with_error("chdir(./)", EIO),
                   "OSAPI::chdir", kDirectoriesSource);
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
                   with_error("chdir(" + missing_ + ")", ENOENT), "OSAPI::chdir",
                   kDirectoriesSource);
    EXPECT_EQ(std::filesystem::current_path(), start_);
}

TEST_F(Directories, ScopedChangeReportsThatItCannotGoBack) {
    expect_failing_destructor(with_error("chdir(" + start_.string() + ")", EACCES), "OSAPI::chdir",
                              kDirectoriesSource, [&](auto end) {
                                  std::filesystem::current_path(start_);
                                  const Fault<&Syscalls::chdir> fault(EACCES, {.after = 1});
                                  const OSAPI::ScopedChdir inside(path_.c_str());
                                  end();
                              });
}

TEST_F(Directories, GlobGivesTheMatchesSortedOrNone) {
    for (const char* name : {"/c.stars", "/a.stars", "/b.stars", "/a.txt"}) {
        write_file(path_ + name, "");
    }
    OSAPI::Glob glob((path_ + "/*.stars").c_str());
    for (const char* name : {"/a.stars", "/b.stars", "/c.stars"}) {
        EXPECT_EQ(std::string(glob.next()), path_ + name);
    }
    OSAPI::Glob none((path_ + "/*.none").c_str());
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(glob.next(), nullptr);
        EXPECT_EQ(none.next(), nullptr);
    }
}

TEST_F(Directories, GlobReportsTheSystemsCode) {
    const Intercept<&Syscalls::glob> globs(
        [](const char*, int flags, int (*)(const char*, int), glob_t*) {
            EXPECT_EQ(flags, 0);
            return GLOB_NOSPACE;
        });
    expect_message(thrown_message([] { OSAPI::Glob glob("*.stars"); }),
                   "glob(*.stars): " + std::to_string(GLOB_NOSPACE), "OSAPI::Glob::Glob",
                   kDirectoriesSource);
}

}  // namespace
