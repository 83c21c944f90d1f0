#include <gtest/gtest.h>
#include <osapi/scoped_file.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"
#include "support/unwinding.h"

namespace {

using OSAPI::ScopedFILE;
using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-scoped-file.cpp";

TEST(ScopedFile, WritesWhatIsBufferedAndClosesTheDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    const int before = open_descriptors();
    {
        const ScopedFILE file(OSAPI::open(path.c_str(), OSAPI::kWrite), path.c_str(), "w");
        std::fputs("text", file.file());
        EXPECT_EQ(read_file(path), "");
    }
    EXPECT_EQ(read_file(path), "text");
    EXPECT_EQ(open_descriptors(), before);
}

TEST(ScopedFile, FailureNamesPathAndModeAndClosesTheDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    write_file(path, "");
    const int before = open_descriptors();
    const auto open_as = [&](const char* mode) {
        const ScopedFILE file(OSAPI::open(path.c_str(), OSAPI::kRead), path.c_str(), mode);
    };
    expect_message(thrown_message([&] { open_as("no mode"); }),
                   "fdopen(\"" + path + "\", \"no mode\")", "OSAPI::ScopedFILE::ScopedFILE",
                   kSource);
    for (const int error : kErrors) {
        const Fault<&Syscalls::fdopen> fault(error);
        expect_message(thrown_message([&] { open_as("r"); }), "fdopen(\"" + path + "\", \"r\")",
                       "OSAPI::ScopedFILE::ScopedFILE", kSource);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(ScopedFile, DestructorReportsThatTheLastBytesAreNotTaken) {
    const int before = open_descriptors();
    expect_failing_destructor(
        with_error("fclose", ENOSPC), "OSAPI::ScopedFILE::~ScopedFILE", kSource, [](auto end) {
            const ScopedFILE file(OSAPI::open("/dev/full", OSAPI::kWrite), "/dev/full", "w");
            std::fputs("text", file.file());
            end();
        });
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace
