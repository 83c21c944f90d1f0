#include <gtest/gtest.h>
#include <osapi/files.h>
#include <osapi/reason.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "support/faults.h"

namespace {

using OSAPI::Syscalls;

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

}  // namespace
