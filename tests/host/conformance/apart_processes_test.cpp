// Processes of the work in a process of its own: nothing of them stays.
#include <gtest/gtest.h>
#include <osapi/files.h>
#include <osapi/pipes.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "apart.h"
#include "support/expect_throw.h"
#include "support/faults.h"

namespace {

using conformance::Heard;
using conformance::Notes;
using conformance::run_apart;

constexpr std::chrono::milliseconds kLimit{60000};

void wait_for_ever() {
    for (;;) {
        pause();
    }
}

/// A process that holds all that this one has open, and can outlive it.
pid_t fork_a_holder(bool leaves_the_group = false) {
    const pid_t holder = fork();
    if (holder == 0) {
        if (leaves_the_group) {
            setsid();
        }
        alarm(40);
        wait_for_ever();
    }
    return holder;
}

/// A pipe that all processes made meanwhile hold, to see when the last of them is gone.
class Held {
public:
    Held() { pipe_.open(); }
    void say() { OSAPI::write(pipe_.write_end().fd(), "!", 1); }
    void hear() {
        char byte = 0;
        EXPECT_EQ(OSAPI::read_short(pipe_.read_end().fd(), &byte, 1), 1);
    }
    /// Waits for it, not for ever.
    bool is_let_go() {
        pipe_.write_end().close();
        pollfd end{pipe_.read_end().fd(), POLLIN, 0};
        return poll(&end, 1, 20000) == 1;
    }

private:
    OSAPI::Pipe pipe_;
};

bool is_there(pid_t process) { return kill(process, 0) == 0; }

/// What a run found is the holders, and they are gone.
void expect_left(const Heard& heard, const std::string& text) {
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].rule, "");
    EXPECT_EQ(heard.findings[0].text, text);
    for (const nlohmann::json& holder : heard.kept) {
        EXPECT_FALSE(is_there(holder.get<pid_t>()));
    }
}

TEST(ApartProcesses, AnEndIsOneThoughOthersHoldThePipes) {
    for (const bool crash : {false, true}) {
        const auto begin = std::chrono::steady_clock::now();
        const Heard heard = run_apart(
            [=](Notes& notes) {
                notes.keep("holder", fork_a_holder());
                if (crash) {
                    std::fputs("last words\n", stderr);
                    std::abort();
                }
            },
            kLimit);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
        EXPECT_EQ(heard.died, crash ? "killed by SIGABRT" : "");
        EXPECT_EQ(heard.last_words, crash ? "last words" : "");
        expect_left(heard, "1 process was left running");
    }
}

TEST(ApartProcesses, WhatAHangingOneLeavesIsEndedWithIt) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.keep("one", fork_a_holder());
            notes.keep("other", fork_a_holder());
            wait_for_ever();
        },
        std::chrono::milliseconds(500));
    EXPECT_EQ(heard.died, "no answer within 0.5 s");
    expect_left(heard, "2 processes were left running");
}

#ifdef __linux__
/// Elsewhere the system keeps no track of it.
TEST(ApartProcesses, WhatLeftTheGroupIsEndedToo) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            const pid_t between = fork();
            if (between == 0) {
                notes.keep("far", fork_a_holder(true));
                _exit(0);
            }
            waitpid(between, nullptr, 0);
            notes.keep("near", fork_a_holder(true));
        },
        kLimit);
    expect_left(heard, "2 processes were left running");
}
#endif

TEST(ApartProcesses, WhatEndsByItselfIsNotLeft) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            // One that nobody waits for, and one that is about to end.
            for (const unsigned microseconds : {0U, 20000U}) {
                if (fork() == 0) {
                    usleep(microseconds);
                    _exit(0);
                }
            }
            notes.say("fine");
        },
        kLimit);
    EXPECT_EQ(heard.said, "fine");
    EXPECT_TRUE(heard.findings.empty());
}

TEST(ApartProcesses, WithoutAnyWayToAdoptTheGroupIsEndedAllTheSame) {
    const Fault<&OSAPI::Syscalls::become_reaper> fault(ENOSYS);
    Held held;
    const Heard heard = run_apart([](Notes&) { fork_a_holder(); }, kLimit);
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].text, "processes were left running");
    EXPECT_TRUE(held.is_let_go());
    const Heard clean = run_apart([](Notes& notes) { notes.say("fine"); }, kLimit);
    EXPECT_TRUE(clean.findings.empty());
}

TEST(ApartProcesses, NothingOutlivesAParentThatIsKilled) {
    for (const int signal : {SIGKILL, SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        Held held;
        const pid_t parent = fork();
        if (parent == 0) {
            std::signal(signal, SIG_DFL);
            run_apart(
                [&](Notes&) {
                    fork_a_holder();
                    held.say();
                    wait_for_ever();
                },
                kLimit);
            _exit(0);
        }
        held.hear();
        kill(parent, signal);
        int status = 0;
        ASSERT_EQ(waitpid(parent, &status, 0), parent);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << signal;
        EXPECT_TRUE(held.is_let_go()) << "somebody is left after signal " << signal;
    }
}

TEST(ApartProcesses, TheChildLeadsAGroupOfItsOwn) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.keep("leads", getpgid(0) == getpid());
            notes.keep("group", getpgid(0));
        },
        kLimit);
    EXPECT_EQ(heard.kept["leads"], true);
    EXPECT_NE(heard.kept["group"], getpgid(0));
}

TEST(ApartProcesses, SaysWhyThereCanBeNoProcess) {
    for (const int earlier : {0, 1}) {
        const Fault<&OSAPI::Syscalls::fork> fault(EAGAIN, {.after = earlier});
        EXPECT_NE(thrown_message([] {
                      run_apart([](Notes&) {}, kLimit);
                  }).find(with_error("fork", EAGAIN)),
                  std::string::npos)
            << earlier;
    }
}

}  // namespace
