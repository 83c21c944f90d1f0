#include <gtest/gtest.h>
#include <osapi/pipes.h>
#include <osapi/processes.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/captured_output.h"
#include "support/child.h"
#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/interruptions.h"
#include "support/scratch.h"

namespace {

using OSAPI::_wait_until_dead;
using OSAPI::ChildProcess;
using OSAPI::Syscalls;

const char* const kSource = "osapi/osapi-unix-processes.cpp";

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

/// Until the system reports `pid` as stopped.
void await_stop(int pid) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, WUNTRACED), pid);
    ASSERT_TRUE(WIFSTOPPED(status));
}

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
}

TEST(Fork, ReportsEveryFailure) {
    expect_every_error<&Syscalls::fork>([] { OSAPI::fork(); }, "fork", "OSAPI::fork", kSource);
}

TEST(Exec, RunsAProgramFoundAlongThePathWithItsArguments) {
    const char* const arguments[] = {"sh", "-c", "exit $1", "name", "42", nullptr};
    EXPECT_EQ(result_in_child([&]() -> int { OSAPI::exec("sh", arguments); }), 42);
}

TEST(Exec, WithoutArgumentsPassesTheNameOfTheFileAlone) {
    const ScratchFolder folder;
    const std::string program = folder / "program";
    write_file(program, "#!/bin/sh\ntest \"$0\" = '" + program + "' && exit $((40 + $#))\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    EXPECT_EQ(result_in_child([&]() -> int { OSAPI::exec(program.c_str(), nullptr); }), 40);
}

TEST(Exec, ReturnsOnlyByThrowing) {
    const ScratchFolder folder;
    const std::string missing = folder / "none";
    expect_message(thrown_message([&] { OSAPI::exec(missing.c_str(), nullptr); }),
                   with_error("exec(" + missing + ")", ENOENT), "OSAPI::exec", kSource);
    expect_every_error<&Syscalls::execvp>([] { OSAPI::exec("true", nullptr); }, "exec(true)",
                                          "OSAPI::exec", kSource);
}

TEST(Wait, GivesTheExitCodeAndTheIdOfTheChild) {
    for (const int code : {0, 1, 15, 255}) {
        const int pid = fork_child([code] { return code; });
        int ended = 0;
        EXPECT_EQ(_wait_until_dead(pid, &ended, false), code);
        EXPECT_EQ(ended, pid);
    }
}

TEST(Wait, ForAnyChildTellsWhichOneEnded) {
    const int pid = fork_child([] { return 3; });
    int ended = 0;
    EXPECT_EQ(_wait_until_dead(-1, &ended, false), 3);
    EXPECT_EQ(ended, pid);
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

TEST(Wait, OutlastsAStop) {
    WaitingChild child;
    OSAPI::kill(child.pid(), SIGSTOP);
    await_stop(child.pid());
    EXPECT_EQ(_wait_until_dead(child.pid(), nullptr, true), -1);
    OSAPI::kill(child.pid(), SIGCONT);
    child.let_go();
    EXPECT_EQ(_wait_until_dead(child.pid(), nullptr, false), 0);
}

TEST(Wait, GoesOnWhenTheSystemReportsAStopOrAContinuation) {
    WaitingChild child;
    std::string seen;
    // As for a traced child, whose stops are always reported.
    const Intercept<&Syscalls::waitpid> waits([&](pid_t pid, int* status, int options) {
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
    expect_message(thrown_message([] { OSAPI::wait_until_dead(OSAPI::getpid()); }),
                   "child process returned non-zero exit code", "OSAPI::wait_until_dead", kSource);
}

TEST(Wait, IsRepeatedWhenASignalArrives) {
    WaitingChild child;
    Interruptions interruptions;
    int interrupted = 0;
    const Intercept<&Syscalls::waitpid> waits([&](pid_t pid, int* status, int options) {
        const pid_t result = waits.real(pid, status, options);
        if (result == -1 && errno == EINTR && ++interrupted == 3) {
            interruptions.stop();
            child.let_go();
            errno = EINTR;
        }
        return result;
    });
    EXPECT_EQ(_wait_until_dead(child.pid(), nullptr, false), 0);
    EXPECT_EQ(interrupted, 3);
    EXPECT_EQ(waits.calls(), 4);
}

TEST(Wait, ReportsAnyOtherFailure) {
    for (const int error : kErrors) {
        const int pid = fork_child([] { return 6; });
        {
            const Fault<&Syscalls::waitpid> fault(error);
            if (error == EINTR) {
                EXPECT_EQ(_wait_until_dead(pid, nullptr, false), 6);
                EXPECT_EQ(fault.calls(), 2);
                continue;
            }
            expect_message(thrown_message([&] { _wait_until_dead(pid, nullptr, false); }),
                           with_error("waitpid", error), "OSAPI::_wait_until_dead", kSource);
        }
        EXPECT_EQ(_wait_until_dead(pid, nullptr, false), 6);
    }
}

TEST(Wait, RefusesAReturnWithoutAnEnd) {
    const Intercept<&Syscalls::waitpid> waits([](pid_t, int*, int) { return pid_t{0}; });
    expect_message(thrown_message([] { _wait_until_dead(1, nullptr, false); }),
                   "unexpected return value from waitpid()", "OSAPI::_wait_until_dead", kSource);
    EXPECT_EQ(_wait_until_dead(1, nullptr, true), -1);
}

TEST(WaitUntilDead, AcceptsAnExitCodeOfZeroAlone) {
    OSAPI::wait_until_dead(fork_child([] { return 0; }));
    expect_message(thrown_message([] { OSAPI::wait_until_dead(fork_child([] { return 1; })); }),
                   "child process returned non-zero exit code", "OSAPI::wait_until_dead", kSource);
    const WaitingChild killed;
    OSAPI::kill(killed.pid(), SIGKILL);
    expect_message(thrown_message([&] { OSAPI::wait_until_dead(killed.pid()); }),
                   "child process returned non-zero exit code", "OSAPI::wait_until_dead", kSource);
}

TEST(Kill, ReportsProcessAndSignal) {
    const int self = OSAPI::getpid();
    OSAPI::kill(self, 0);  // only asks whether it could
    expect_message(thrown_message([&] { OSAPI::kill(self, 12345); }),
                   with_error("kill(" + std::to_string(self) + ",12345)", EINVAL), "OSAPI::kill",
                   kSource);
    expect_every_error<&Syscalls::kill>([] { OSAPI::kill(-7, 9); }, "kill(-7,9)", "OSAPI::kill",
                                        kSource);
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
    const Intercept<&Syscalls::sched_yield> yields([&] { return yields.real(); });
    OSAPI::yield();
    EXPECT_EQ(yields.calls(), 1);
}

TEST(ChildProcess, RunsAFunctionAndIsWaitedFor) {
    ChildProcess child;
    EXPECT_EQ(child.pid(), -1);
    child.stop();  // none: nothing to wait for
    child.start([] { return 0; });
    const int pid = child.pid();
    EXPECT_GT(pid, 0);
    child.stop();
    EXPECT_EQ(child.pid(), -1);
    EXPECT_EQ(_wait_until_dead(pid, nullptr, true), 15) << "waited for already";
    child.stop();
}

TEST(ChildProcess, FailedOneIsGoneAfterStopAllTheSame) {
    ChildProcess child;
    child.start([] { return 5; });
    expect_message(thrown_message([&] { child.stop(); }),
                   "child process returned non-zero exit code", "OSAPI::wait_until_dead", kSource);
    EXPECT_EQ(child.pid(), -1);
    child.start([] { return 0; });
    child.stop();
}

TEST(ChildProcess, KeepsOneChildAtATime) {
    ChildProcess child;
    child.start([] { return 0; });
    EXPECT_EQ(failed_assertion([&] { child.start([] { return 0; }); }), "pid_ == kNoChild");
    child.stop();
}

TEST(ChildProcess, PrintsTheExceptionThatEndsIt) {
    const std::string printed = output_of(stderr, [] {
        ChildProcess child;
        child.start([]() -> int { OSAPI::exec("/none/at/all", nullptr); });
        EXPECT_EQ(_wait_until_dead(child.pid(), nullptr, false), 1);
    });
    EXPECT_EQ(printed.find("Error: " + with_error("exec(/none/at/all)", ENOENT)), 0U) << printed;
}

TEST(ChildProcess, DoesNotRepeatWhatTheParentHasBuffered) {
    const std::string printed = output_of(stdout, [] {
        std::printf("parent ");
        ChildProcess child;
        child.start([] {
            std::printf("child ");
            return 0;
        });
        child.stop();
    });
    EXPECT_EQ(printed, "parent child ");
}

TEST(ChildProcess, KeepsNoneWhenThereIsNoProcessToBeHad) {
    const Fault<&Syscalls::fork> fault(EAGAIN);
    ChildProcess child;
    expect_message(thrown_message([&] { child.start([] { return 0; }); }),
                   with_error("fork", EAGAIN), "OSAPI::fork", kSource);
    EXPECT_EQ(child.pid(), -1);
}

}  // namespace
