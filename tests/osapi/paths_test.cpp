// Paths and directories.
#include <gtest/gtest.h>
#include <osapi/directories.h>
#include <osapi/file_patterns.h>
#include <osapi/path_text.h>
#include <osapi/paths.h>
#include <osapi/working_directory.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "failures.h"
#include "support/scratch.h"

namespace {

using OSAPI::DirectoryCalls;
using OSAPI::PathCalls;

TEST(Path, HasADirectoryABasenameAndAnExtension) {
    const struct {
        const char *path, *dirname, *basename, *extension;
    } table[] = {
        {"", "", "", ""},
        {"name", ".", "name", ""},
        {"/name", "/", "name", ""},
        {"//name", "/", "name", ""},
        {"/", "/", "", ""},
        {"//", "/", "", ""},
        {".", ".", ".", ""},
        {"a/", "a", "", ""},
        {"/a/", "/a", "", ""},
        {"a/b/", "a/b", "", ""},
        {"/a/b", "/a", "b", ""},
        {"a//b", "a/", "b", ""},
        {"a/b/name", "a/b", "name", ""},
        {"a/b/name.x", "a/b", "name.x", "x"},
        {"name.", ".", "name.", ""},
        {"sky.stars", ".", "sky.stars", "stars"},
        {"a.b.c", ".", "a.b.c", "c"},
        {".hidden", ".", ".hidden", "hidden"},
        // The last dot of the whole path counts, also one in a folder's name.
        {"folder.d/name", "folder.d", "name", "d/name"},
    };
    for (const auto& row : table) {
        EXPECT_STREQ(OSAPI::dirname(row.path).c_str(), row.dirname) << row.path;
        EXPECT_STREQ(OSAPI::basename(row.path).c_str(), row.basename) << row.path;
        EXPECT_STREQ(OSAPI::extension(row.path).c_str(), row.extension) << row.path;
    }
}

TEST(Extension, OfAFileInProgressIsThatOfItsFinalName) {
    const struct {
        const char *path, *expected;
    } table[] = {
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
    };
    for (const auto& row : table) {
        EXPECT_STREQ(OSAPI::extension(row.path).c_str(), row.expected) << row.path;
    }
}

class PathStatus : public testing::Test {
protected:
    PathStatus() { write_file(file_, "x"); }

    ScratchFolder folder_;
    const std::string file_ = folder_ / "file";
    const std::string missing_ = folder_ / "missing";
};

TEST_F(PathStatus, IsReportedWhereItCannotBeHad) {
    EXPECT_TRUE(OSAPI::is_directory(folder_.path().c_str()));
    EXPECT_FALSE(OSAPI::is_directory(file_.c_str()));
    const auto expect_failures = [](const std::string& path, int error, const char* of_time) {
        const std::string call = "stat(" + path + ")";
        kPaths.expect(call, error, "is_directory", [&] { OSAPI::is_directory(path.c_str()); });
        kPaths.expect(call, error, of_time, [&] { OSAPI::get_mtime(path.c_str()); });
    };
    EXPECT_EQ(OSAPI::get_mtime_ifexist(missing_.c_str()), 0);
    expect_failures(missing_, ENOENT, "get_mtime");
    kPaths.expect("utime(" + missing_ + ")", ENOENT, "set_mtime",
                  [&] { OSAPI::set_mtime(missing_.c_str(), 1); });
    expect_failures(file_ + "/x", ENOTDIR, "get_mtime_ifexist");
    // The time 0 stands for a missing file.
    OSAPI::set_mtime(file_.c_str(), 0);
    EXPECT_EQ(OSAPI::get_mtime_ifexist(file_.c_str()), 0);
    errno = EDOM;
    kPaths.expect("stat(" + file_ + ")", EDOM, "get_mtime",
                  [&] { OSAPI::get_mtime(file_.c_str()); });
    const Fault<&PathCalls::stat> fault(EACCES, kAlways);
    expect_failures(file_, EACCES, "get_mtime_ifexist");
}

TEST_F(PathStatus, ModificationTimeGoesInAndComesOut) {
    for (const OSAPI::FileTime time : {1L, 1234567890L, -1L}) {
        const Intercept<&PathCalls::utime> utimes([&](const char* path, const utimbuf* times) {
            EXPECT_EQ(times->actime, time) << "of access too";
            return utimes.real(path, times);
        });
        OSAPI::set_mtime(file_.c_str(), time);
        EXPECT_EQ(utimes.calls(), 1);
        EXPECT_EQ(OSAPI::get_mtime(file_.c_str()), time);
        EXPECT_EQ(OSAPI::get_mtime_ifexist(file_.c_str()), time);
    }
}

TEST_F(PathStatus, RemoverRemovesOnEveryWayOutAndReportsWhatItCannotRemove) {
    {
        const OSAPI::Remover remover(file_.c_str());
        EXPECT_TRUE(std::filesystem::exists(file_));
    }
    EXPECT_FALSE(std::filesystem::exists(file_));
    write_file(file_, "x");
    const auto interrupted = [this] {
        const OSAPI::Remover remover(String(file_.c_str()));
        throw 5;
    };
    EXPECT_THROW(interrupted(), int);
    EXPECT_FALSE(std::filesystem::exists(file_));
    EXPECT_THROW(interrupted(), int) << "nothing left to remove is no error";
    const Fault<&PathCalls::unlink> fault(EROFS, kAlways);
    kPaths.expect_from_destructor("unlink(" + file_ + ")", EROFS, "rm_ifexist", [&](auto end) {
        const OSAPI::Remover remover(file_.c_str());
        end();
    });
}

const FailuresOf kDirectories("osapi/osapi-unix-directories.cpp");
const FailuresOf kWorkingDirectory("osapi/osapi-unix-working-directory.cpp");
const FailuresOf kGlobs("osapi/osapi-unix-glob.cpp");

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
    const Intercept<&DirectoryCalls::readdir> reads([&](DIR*) -> dirent* {
        return reads.calls() <= 2 ? &entries[reads.calls() - 1] : nullptr;
    });
    Array<String> names;
    names.append("before");
    OSAPI::lsdir(path_.c_str(), names);
    EXPECT_EQ(texts(names), (std::vector<std::string>{"before", "b", "a"}));
}

TEST_F(Directories, ListingReportsEveryFailureAndLeaksNothing) {
    Array<String> names;
    const auto expect_failure = [&](const std::string& call, const std::string& path, int error) {
        kDirectories.expect(call + "(\"" + path + "\")", error, "lsdir",
                            [&] { OSAPI::lsdir(path.c_str(), names); });
    };
    expect_failure("opendir", missing_, ENOENT);
    EXPECT_TRUE(names.empty());
    {
        const Fault<&DirectoryCalls::readdir> fault(EIO, {.after = 1});
        expect_failure("readdir", path_, EIO);
    }
    // Closed for real, as the system does.
    const Intercept<&DirectoryCalls::closedir> closes([&](DIR* directory) {
        closes.real(directory);
        errno = EIO;
        return -1;
    });
    expect_failure("closedir", path_, EIO);
    EXPECT_EQ(closes.calls(), 1);
}

TEST_F(Directories, ChangingTheCurrentOne) {
    OSAPI::chdir(path_.c_str());
    EXPECT_EQ(std::string(OSAPI::getcwd().c_str()), path_);
    kWorkingDirectory.expect("chdir(" + missing_ + ")", ENOENT, "chdir",
                             [&] { OSAPI::chdir(missing_.c_str()); });
    EXPECT_EQ(std::string(OSAPI::getcwd().c_str()), path_);
}

TEST_F(Directories, CurrentOneMayHaveBeenRemoved) {
    std::filesystem::create_directory(path_ + "/gone");
    OSAPI::chdir((path_ + "/gone").c_str());
    std::filesystem::remove(path_ + "/gone");
    kWorkingDirectory.expect("getcwd", ENOENT, "getcwd", [] { OSAPI::getcwd(); });
    const Fault<&PathCalls::chdir> changes(EIO, kAlways);
    OSAPI::chdir(".");
    EXPECT_EQ(changes.calls(), 0);
    // Only the very text "." is exempt.
    kWorkingDirectory.expect("chdir(./)", EIO, "chdir", [] { OSAPI::chdir("./"); });
}

TEST_F(Directories, ScopedChangeEndsWithItsObject) {
    const auto interrupted = [this] {
        const OSAPI::ScopedChdir inside(path_.c_str());
        EXPECT_EQ(std::filesystem::current_path(), path_);
        throw 5;
    };
    EXPECT_THROW(interrupted(), int);
    EXPECT_EQ(std::filesystem::current_path(), start_);
    kWorkingDirectory.expect("chdir(" + missing_ + ")", ENOENT, "chdir",
                             [&] { OSAPI::ScopedChdir(missing_.c_str()); });
    EXPECT_EQ(std::filesystem::current_path(), start_);
    kWorkingDirectory.expect_from_destructor(
        "chdir(" + start_.string() + ")", EACCES, "chdir", [&](auto end) {
            std::filesystem::current_path(start_);
            const Fault<&PathCalls::chdir> fault(EACCES, {.after = 1});
            const OSAPI::ScopedChdir inside(path_.c_str());
            end();
        });
    const Fault<&PathCalls::chdir> changes(EIO, kAlways);
    { const OSAPI::ScopedChdir nowhere(""); }
    EXPECT_EQ(changes.calls(), 0);
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
    const Intercept<&PathCalls::glob> globs(
        [](const char*, int flags, int (*)(const char*, int), glob_t*) {
            EXPECT_EQ(flags, 0);
            return GLOB_NOSPACE;
        });
    kGlobs.expect_text("glob(*.stars): " + std::to_string(GLOB_NOSPACE), "Glob::Glob",
                       [] { OSAPI::Glob glob("*.stars"); });
}

}  // namespace
