// Processes, waiting for them, and what comes of them.
#include <gtest/gtest.h>
#include <osapi/descendants.h>
#include <osapi/memory.h>
#include <osapi/offspring.h>
#include <osapi/pipes.h>
#include <osapi/processes.h>
#include <osapi/shared_text.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "failures.h"
#include "support/captured_output.h"
#include "support/child.h"
#include "support/interruptions.h"
#include "support/scratch.h"

namespace {

using OSAPI::_wait_until_dead;
using OSAPI::ChildProcess;
using OSAPI::FileCalls;
using OSAPI::ProcessCalls;

const FailuresOf kProcesses("osapi/osapi-unix-processes.cpp");

/// A child that lives until it is let go or ended by a signal.
class WaitingChild {
public:
    WaitingChild() {
        pipe_.open();
        pid_ = fork_child([this] {
            pipe_.write_end().close();
            char byte;
            return static_cast<int>(OSAPI::read_short(pipe_.read_end().fd(), &byte, 1));
        });
        pipe_.read_end().close();
    }

    int pid() const { return pid_; }
    /// It exits with 0.
    void let_go() { pipe_.write_end().close(); }

private:
    OSAPI::Pipe pipe_;
    int pid_ = -1;
};

TEST(Fork, GivesZeroToTheChildAndTheChildsIdToTheParent) {
    OSAPI::Pipe pipe;
    pipe.open();
    const int pid = OSAPI::fork();
    if (pid == 0) {
        const int self = OSAPI::getpid();
        OSAPI::write(pipe.write_end().fd(), reinterpret_cast<const char*>(&self), sizeof self);
        OSAPI::exit_now(0);
    }
    int told = 0;
    OSAPI::read(pipe.read_end().fd(), reinterpret_cast<char*>(&told), sizeof told);
    EXPECT_EQ(told, pid);
    EXPECT_NE(pid, OSAPI::getpid());
    EXPECT_EQ(OSAPI::getpid(), ::getpid());
    EXPECT_EQ(_wait_until_dead(pid, nullptr, false), 0);
    kProcesses.expect_every<&ProcessCalls::fork>("fork", "fork", [] { OSAPI::fork(); });
}

TEST(Exec, RunsAProgramFoundAlongThePathWithItsArgumentsOrItsNameAlone) {
    const char* const arguments[] = {"sh", "-c", "exit $1", "name", "42", nullptr};
    EXPECT_EQ(result_in_child([&]() -> int { OSAPI::exec("sh", arguments); }), 42);
    const ScratchFolder folder;
    const std::string program = folder / "program";
    write_file(program, "#!/bin/sh\ntest \"$0\" = '" + program + "' && exit $((40 + $#))\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    EXPECT_EQ(result_in_child([&]() -> int { OSAPI::exec(program.c_str(), nullptr); }), 40);
}

TEST(Exec, ReturnsOnlyByThrowing) {
    const ScratchFolder folder;
    const std::string missing = folder / "none";
    kProcesses.expect("exec(" + missing + ")", ENOENT, "exec",
                      [&] { OSAPI::exec(missing.c_str(), nullptr); });
    kProcesses.expect_every<&ProcessCalls::execvp>("exec(true)", "exec",
                                                   [] { OSAPI::exec("true", nullptr); });
}

TEST(Wait, GivesTheExitCodeAndTheIdOfTheChild) {
    for (const int code : {0, 1, 15, 255}) {
        for (const bool any : {false, true}) {
            const int pid = fork_child([code] { return code; });
            int ended = 0;
            EXPECT_EQ(_wait_until_dead(any ? -1 : pid, &ended, false), code);
            EXPECT_EQ(ended, pid);
        }
    }
}

TEST(Wait, GivesTheNumberOfTheSignalThatKilled) {
    for (const int sig : {SIGKILL, SIGTERM, SIGUSR1}) {
        const WaitingChild child;
        OSAPI::kill(child.pid(), sig);
        int ended = 0;
        EXPECT_EQ(_wait_until_dead(child.pid(), &ended, false), sig);
        EXPECT_EQ(ended, child.pid());
    }
}

TEST(Wait, GoesOnWhenTheSystemReportsAStopOrAContinuation) {
    WaitingChild child;
    std::string seen;
    // As for a traced child, whose stops are always reported.
    const Intercept<&ProcessCalls::waitpid> waits([&](pid_t pid, int* status, int options) {
        const pid_t result = waits.real(pid, status, options | WUNTRACED | WCONTINUED);
        if (WIFSTOPPED(*status)) {
            seen += "stopped ";
            OSAPI::kill(pid, SIGCONT);
        } else if (WIFCONTINUED(*status)) {
            seen += "continued ";
            child.let_go();
        } else {
            seen += "ended";
        }
        return result;
    });
    OSAPI::kill(child.pid(), SIGSTOP);
    int ended = 0;
    EXPECT_EQ(_wait_until_dead(child.pid(), &ended, false), 0);
    EXPECT_EQ(ended, child.pid());
    EXPECT_EQ(seen, "stopped continued ended");
}

TEST(Wait, WithoutHangingTellsThatThereIsNoEndYet) {
    WaitingChild child;
    int ended = 77;
    EXPECT_EQ(_wait_until_dead(child.pid(), &ended, true), -1);
    EXPECT_EQ(ended, 77);
    child.let_go();
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child.pid()), &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(_wait_until_dead(child.pid(), &ended, true), 0);
    EXPECT_EQ(ended, child.pid());
}

TEST(Wait, ForWhatIsNoChildGives15) {
    int ended = 77;
    EXPECT_EQ(_wait_until_dead(OSAPI::getpid(), &ended, false), 15);
    EXPECT_EQ(_wait_until_dead(OSAPI::getpid(), &ended, true), 15);
    EXPECT_EQ(ended, 77);
}

TEST(Wait, IsRepeatedWhenASignalArrives) {
    WaitingChild child;
    const ThreeInterruptions<&ProcessCalls::waitpid> waits([&] { child.let_go(); });
    EXPECT_EQ(_wait_until_dead(child.pid(), nullptr, false), 0);
    EXPECT_EQ(waits.calls(), 4);
}

TEST(Wait, ReportsAnyOtherFailure) {
    const int pid = fork_child([] { return 6; });
    for (const int error : {EAGAIN, ENOSPC, EIO, EMFILE}) {
        const Fault<&ProcessCalls::waitpid> fault(error);
        kProcesses.expect("waitpid", error, "_wait_until_dead",
                          [&] { _wait_until_dead(pid, nullptr, false); });
        EXPECT_EQ(fault.calls(), 1);
    }
    EXPECT_EQ(_wait_until_dead(pid, nullptr, false), 6);
}

TEST(Wait, RefusesAReturnWithoutAnEnd) {
    const Intercept<&ProcessCalls::waitpid> waits([](pid_t, int*, int) { return pid_t{0}; });
    kProcesses.expect_text("unexpected return value from waitpid()", "_wait_until_dead",
                           [] { _wait_until_dead(1, nullptr, false); });
    EXPECT_EQ(_wait_until_dead(1, nullptr, true), -1);
}

TEST(WaitUntilDead, AcceptsAnExitCodeOfZeroAlone) {
    OSAPI::wait_until_dead(fork_child([] { return 0; }));
    const WaitingChild killed;
    OSAPI::kill(killed.pid(), SIGKILL);
    for (const int pid : {fork_child([] { return 1; }), killed.pid(), OSAPI::getpid()}) {
        kProcesses.expect_text("child process returned non-zero exit code", "wait_until_dead",
                               [=] { OSAPI::wait_until_dead(pid); });
    }
}

TEST(Kill, ReportsProcessAndSignal) {
    const int self = OSAPI::getpid();
    OSAPI::kill(self, 0);  // only asks whether it could
    kProcesses.expect("kill(" + std::to_string(self) + ",12345)", EINVAL, "kill",
                      [&] { OSAPI::kill(self, 12345); });
    kProcesses.expect_every<&ProcessCalls::kill>("kill(-7,9)", "kill", [] { OSAPI::kill(-7, 9); });
}

OSAPI::Pipe* cleaned_up = nullptr;

/// What is written into a pipe by the clean-up of a child that ends through `end`.
std::string clean_up_before(void (*end)(int)) {
    OSAPI::Pipe pipe;
    pipe.open();
    const int pid = OSAPI::fork();
    if (pid == 0) {
        cleaned_up = &pipe;
        std::atexit([] { OSAPI::write(cleaned_up->write_end().fd(), "cleaned up", 10); });
        end(4);
    }
    EXPECT_EQ(_wait_until_dead(pid, nullptr, false), 4);
    pipe.write_end().close();
    char text[16] = {};
    OSAPI::read_short(pipe.read_end().fd(), text, sizeof text);
    return text;
}

TEST(Exit, CleansUpUnlessItIsNow) {
    EXPECT_EQ(clean_up_before([](int code) { OSAPI::exit(code); }), "cleaned up");
    EXPECT_EQ(clean_up_before([](int code) { OSAPI::exit_now(code); }), "");
}

TEST(UsableProcessors, AreThoseThatTheProcessIsBoundTo) {
    EXPECT_GE(OSAPI::usable_processors(), 1);
    EXPECT_LE(OSAPI::usable_processors(), sysconf(_SC_NPROCESSORS_ONLN));
#ifdef CPU_COUNT
    EXPECT_EQ(result_in_child([] {
                  cpu_set_t bound;
                  sched_getaffinity(0, sizeof bound, &bound);
                  int first = 0;
                  while (!CPU_ISSET(first, &bound)) {
                      ++first;
                  }
                  CPU_ZERO(&bound);
                  CPU_SET(first, &bound);
                  sched_setaffinity(0, sizeof bound, &bound);
                  return OSAPI::usable_processors();
              }),
              1);
#endif
}

TEST(Pause, ReturnsAfterASignal) {
    const Interruptions interruptions;
    OSAPI::pause();
    EXPECT_GT(interruptions.seen(), 0);
}

TEST(Sleep, TellsWhatIsLeftWhenASignalArrives) {
    EXPECT_EQ(OSAPI::sleep(0), 0U);
    const Interruptions interruptions;
    const unsigned int left = OSAPI::sleep(100000);
    EXPECT_GT(interruptions.seen(), 0);
    EXPECT_GT(left, 90000U);
    EXPECT_LE(left, 100000U);
}

TEST(Yield, AsksTheSystem) {
    const Intercept<&ProcessCalls::sched_yield> yields([&] { return yields.real(); });
    OSAPI::yield();
    EXPECT_EQ(yields.calls(), 1);
}

TEST(ChildProcess, RunsOneFunctionAtATimeAndIsWaitedFor) {
    ChildProcess child;
    EXPECT_EQ(child.pid(), -1);
    child.stop();  // none: nothing to wait for
    {
        const Fault<&ProcessCalls::fork> fault(EAGAIN);
        kProcesses.expect("fork", EAGAIN, "fork", [&] { child.start([] { return 0; }); });
        EXPECT_EQ(child.pid(), -1);
    }
    child.start([] { return 5; });
    kProcesses.expect_text("child process returned non-zero exit code", "wait_until_dead",
                           [&] { child.stop(); });
    EXPECT_EQ(child.pid(), -1) << "gone all the same";
    child.start([] { return 0; });
    EXPECT_EQ(failed_assertion([&] { child.start([] { return 0; }); }), "pid_ == kNoChild");
    const int pid = child.pid();
    EXPECT_GT(pid, 0);
    child.stop();
    EXPECT_EQ(child.pid(), -1);
    EXPECT_EQ(_wait_until_dead(pid, nullptr, true), 15) << "waited for already";
    child.stop();
}

TEST(ChildProcess, PrintsTheExceptionThatEndsItAndNotWhatTheParentHasBuffered) {
    CapturedOutput errors(stderr);
    CapturedOutput out(stdout);
    std::printf("parent ");
    ChildProcess child;
    child.start([]() -> int {
        std::printf("child ");
        OSAPI::exec("/none/at/all", nullptr);
    });
    EXPECT_EQ(_wait_until_dead(child.pid(), nullptr, false), 1);
    EXPECT_EQ(errors.text().find("Error: " + with_error("exec(/none/at/all)", ENOENT)), 0U);
    EXPECT_EQ(out.text(), "parent child ");
}

const FailuresOf kDescendants("osapi/osapi-unix-descendants.cpp");

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
    kDescendants.expect_every<&ProcessCalls::setpgid>("setpgid", "lead_group",
                                                      [] { OSAPI::lead_group(); });
}

TEST(Children, AreOwnOnesAloneUntilTheyAreWaitedFor) {
    if (access("/proc/self/stat", R_OK) != 0) {
        GTEST_SKIP() << "this system does not tell";
    }
    const int descriptors = OSAPI::open_descriptors();
    const int first = fork_child(wait_for_ever);
    const int second = fork_child(wait_for_ever);
    const std::vector<int> both = OSAPI::children();
    EXPECT_TRUE(holds(both, first));
    EXPECT_TRUE(holds(both, second));
    EXPECT_FALSE(holds(both, OSAPI::getpid()));
    EXPECT_FALSE(holds(both, getppid()));
    OSAPI::kill(first, SIGKILL);
    _wait_until_dead(first, nullptr, false);
    // What is told of a process that ended between two calls: process 1, say, which comes first.
    {
        const Fault<&FileCalls::open> gone(ENOENT);
        const std::vector<int> one = OSAPI::children();
        EXPECT_FALSE(holds(one, first));
        EXPECT_TRUE(holds(one, second));
        EXPECT_GT(gone.calls(), 1);
    }
    {
        const Fault<&FileCalls::read> gone(ESRCH);
        EXPECT_TRUE(holds(OSAPI::children(), second));
        EXPECT_GT(gone.calls(), 1);
    }
    EXPECT_EQ(OSAPI::open_descriptors(), descriptors);
    OSAPI::kill(second, SIGKILL);
    _wait_until_dead(second, nullptr, false);
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
    const Fault<&ProcessCalls::become_reaper> fault(ENOSYS);
    EXPECT_FALSE(OSAPI::adopt_orphans());
    EXPECT_EQ(fault.calls(), 1);
}

TEST(StartApart, LeavesStreamsSignalsAndTheGroupOfTheParent) {
    OSAPI::Pipe errors;
    errors.open();
    CapturedOutput out(stdout);
    const int result = result_in_child([&] {
        std::signal(SIGINT, SIG_IGN);
        sigset_t terminate;
        sigemptyset(&terminate);
        sigaddset(&terminate, SIGTERM);
        sigprocmask(SIG_BLOCK, &terminate, nullptr);
        OSAPI::start_apart(errors.write_end().fd());
        sigset_t blocked;
        sigprocmask(SIG_BLOCK, nullptr, &blocked);
        rlimit cores = {1, 1};
        getrlimit(RLIMIT_CORE, &cores);
        char byte = 0;
        std::fputs("noise", stderr);
        return (getpgrp() == getpid() ? 0 : 1) | (std::signal(SIGINT, SIG_DFL) == SIG_DFL ? 0 : 2) |
               (sigismember(&blocked, SIGTERM) == 0 ? 0 : 4) | (cores.rlim_cur == 0 ? 0 : 8) |
               (read(STDIN_FILENO, &byte, 1) == 0 ? 0 : 16) |
               (write(STDOUT_FILENO, "x", 1) == 1 ? 0 : 32);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(out.text(), "");
    errors.write_end().close();
    char text[8] = {};
    EXPECT_EQ(OSAPI::read_short(errors.read_end().fd(), text, sizeof text), 5);
    EXPECT_STREQ(text, "noise");
}

TEST(SharedText, TakesWhatHasRoomAndOutlivesTheWritersCrash) {
    OSAPI::SharedText shared;
    EXPECT_EQ(shared.text(), "");
    const unsigned before = shared.changes();
    const std::string longer(1000, 'x');
    EXPECT_EQ(result_in_child([&]() -> int {
                  shared.set("last");
                  shared.set(longer);
                  OSAPI::kill(OSAPI::getpid(), SIGKILL);
                  OSAPI::pause();
                  return 0;
              }),
              SIGKILL);
    EXPECT_EQ(shared.changes() - before, 2U);
    EXPECT_GE(shared.text().size(), 100U);
    EXPECT_EQ(shared.text(), longer.substr(0, shared.text().size()));
    shared.set("last");
    EXPECT_EQ(shared.text(), "last") << "and no rest of a longer one";
}

}  // namespace
