#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/processes.h>
#include <osapi/standard_descriptors.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <vector>

#include "support/faults.h"

namespace {

/// Whether something holds in a process of its own in which these descriptors are closed.
bool holds_without(const std::vector<int>& closed, const std::function<bool()>& something) {
    const pid_t child = OSAPI::fork();
    if (child == 0) {
        for (const int descriptor : closed) {
            close(descriptor);
        }
        OSAPI::exit_now(something() ? 0 : 1);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool is_open(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

bool fails_unopened() {
    char byte = 0;
    return read(STDIN_FILENO, &byte, 1) == -1 && errno == EBADF &&
           write(STDOUT_FILENO, "x", 1) == -1 && errno == EBADF &&
           write(STDERR_FILENO, "x", 1) == -1 && errno == EBADF;
}

}  // namespace

TEST(StandardDescriptors, AreHeldWhicheverAreMissing) {
    for (const std::vector<int>& closed :
         {std::vector<int>{0}, {1}, {2}, {0, 1}, {0, 2}, {1, 2}, {0, 1, 2}}) {
        EXPECT_TRUE(holds_without(closed,
                                  [&] {
                                      OSAPI::hold_standard_descriptors();
                                      const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
                                      return is_open(0) && is_open(1) && is_open(2) && next > 2;
                                  }))
            << closed.size() << " closed, from " << closed.front();
    }
}

TEST(StandardDescriptors, FailAsIfTheyWereClosed) {
    EXPECT_TRUE(holds_without({0, 1, 2}, [] {
        OSAPI::hold_standard_descriptors();
        return fails_unopened();
    }));
}

TEST(StandardDescriptors, StayAsTheyAreIfTheyAreOpen) {
    EXPECT_TRUE(holds_without({0}, [] {
        // One that can be read, as a program finds it.
        const int in = open("/dev/zero", O_RDONLY | O_CLOEXEC);
        OSAPI::hold_standard_descriptors();
        char byte = 1;
        return in == 0 && read(in, &byte, 1) == 1 && byte == 0;
    }));
}

TEST(StandardDescriptors, StayClosedWhereNothingCanBeOpened) {
    EXPECT_TRUE(holds_without({0, 2}, [] {
        const Fault<&OSAPI::Syscalls::open> fault(ENOENT);
        OSAPI::hold_standard_descriptors();
        return !is_open(0) && !is_open(2) && fault.calls() == 1;
    }));
}
