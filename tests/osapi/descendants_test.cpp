#include <gtest/gtest.h>
#include <osapi/descendants.h>
#include <osapi/memory.h>
#include <osapi/pipes.h>
#include <osapi/processes.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

#include "support/child.h"
#include "support/expect_throw.h"
#include "support/faults.h"

namespace {

using OSAPI::_wait_until_dead;
using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-descendants.cpp";

int wait_for_ever() {
    alarm(40);
    for (;;) {
        OSAPI::pause();
    }
}

bool holds(const std::vector<int>& ids, int id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

TEST(LeadGroup, MakesAGroupThatChildrenJoin) {
    const int before = getpgid(0);
    EXPECT_EQ(result_in_child([=] {
                  if (getpgid(0) != before) {
                      return 1;
                  }
                  OSAPI::lead_group();
                  if (getpgid(0) != OSAPI::getpid()) {
                      return 2;
                  }
                  const int group = getpgid(0);
                  return result_in_child([=] { return getpgid(0) == group ? 0 : 3; });
              }),
              0);
    EXPECT_EQ(getpgid(0), before);
}

TEST(LeadGroup, ReportsEveryFailure) {
    expect_every_error<&Syscalls::setpgid>([] { OSAPI::lead_group(); }, "setpgid",
                                           "OSAPI::lead_group", kSource);
}

TEST(Children, AreOwnOnesAloneUntilTheyAreWaitedFor) {
    if (access("/proc/self/stat", R_OK) != 0) {
        GTEST_SKIP() << "this system does not tell";
    }
    const int first = fork_child(wait_for_ever);
    const int second = fork_child(wait_for_ever);
    const std::vector<int> both = OSAPI::children();
    EXPECT_TRUE(holds(both, first));
    EXPECT_TRUE(holds(both, second));
    EXPECT_FALSE(holds(both, OSAPI::getpid()));
    EXPECT_FALSE(holds(both, getppid()));
    OSAPI::kill(first, SIGKILL);
    _wait_until_dead(first, nullptr, false);
    const std::vector<int> one = OSAPI::children();
    EXPECT_FALSE(holds(one, first));
    EXPECT_TRUE(holds(one, second));
    OSAPI::kill(second, SIGKILL);
    _wait_until_dead(second, nullptr, false);
}

TEST(Children, AreFoundThoughOtherProcessesEndMeanwhile) {
    if (access("/proc/self/stat", R_OK) != 0) {
        GTEST_SKIP() << "this system does not tell";
    }
    const int child = fork_child(wait_for_ever);
    // What is told of a process that ended between the two calls: process 1, say, which comes
    // first.
    {
        const Fault<&Syscalls::open> gone(ENOENT);
        EXPECT_TRUE(holds(OSAPI::children(), child));
        EXPECT_GT(gone.calls(), 1);
    }
    {
        const Fault<&Syscalls::read> gone(ESRCH);
        EXPECT_TRUE(holds(OSAPI::children(), child));
        EXPECT_GT(gone.calls(), 1);
    }
    OSAPI::kill(child, SIGKILL);
    _wait_until_dead(child, nullptr, false);
}

TEST(Children, LeaveNoDescriptorOpen) {
    const int before = OSAPI::open_descriptors();
    OSAPI::children();
    {
        const Fault<&Syscalls::read> gone(ESRCH, kAlways);
        OSAPI::children();
    }
    EXPECT_EQ(OSAPI::open_descriptors(), before);
}

TEST(AdoptOrphans, MakesChildrenOfThem) {
    const int result = result_in_child([] {
        if (!OSAPI::adopt_orphans()) {
            return 50;
        }
        OSAPI::Pipe pipe;
        pipe.open();
        // Out of the group and the session too.
        result_in_child([&] {
            const int orphan = fork_child([] {
                setsid();
                return wait_for_ever();
            });
            OSAPI::write(pipe.write_end().fd(), reinterpret_cast<const char*>(&orphan),
                         sizeof orphan);
            return 0;
        });
        int orphan = 0;
        OSAPI::read(pipe.read_end().fd(), reinterpret_cast<char*>(&orphan), sizeof orphan);
        if (!holds(OSAPI::children(), orphan)) {
            return 1;
        }
        OSAPI::kill(orphan, SIGKILL);
        int ended = 0;
        const int how = _wait_until_dead(-1, &ended, false);
        return how == SIGKILL && ended == orphan ? 0 : 2;
    });
    if (result == 50) {
        GTEST_SKIP() << "this system has no such thing";
    }
    EXPECT_EQ(result, 0);
}

TEST(AdoptOrphans, SaysWhereThereIsNoSuchThing) {
    const Fault<&Syscalls::become_reaper> fault(ENOSYS);
    EXPECT_FALSE(OSAPI::adopt_orphans());
    EXPECT_EQ(fault.calls(), 1);
}

}  // namespace
