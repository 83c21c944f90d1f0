#include <gtest/gtest.h>
#include <osapi/paths.h>

#include <cerrno>
#include <filesystem>
#include <string>

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

}  // namespace
