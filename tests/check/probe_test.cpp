// Work in a process of its own: what is heard of it, and that nothing of it stays.
#include "probe.h"

#include <base/exceptions.h>
#include <check/check.h>
#include <gtest/gtest.h>
#include <host/errors.h>
#include <osapi/files.h>
#include <osapi/pipes.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/child.h"
#include "support/expect_throw.h"
#include "support/faults.h"

namespace {

using check::Body;
using check::Heard;
using check::Notes;
using host::Rule;
using std::chrono::milliseconds;

constexpr milliseconds kLimit{60000};

Heard run_apart(const Body& body, milliseconds limit = kLimit) {
    return check::Probes(limit).run(body);
}

void wait_for_ever() {
    for (;;) {
        pause();
    }
}

TEST(Probe, WhatIsSaidArrives) {
    const Heard heard = run_apart([](Notes& notes) {
        notes.doing("this");
        notes.find(Rule::Layers, "a text\nof two lines", "a habit");
        notes.say("fine");
        notes.keep("number", 7);
        notes.keep("leads a group of its own", getpgid(0) == getpid());
    });
    EXPECT_EQ(heard.died, "");
    EXPECT_EQ(heard.text("doing"), "this");
    EXPECT_EQ(heard.text("said"), "fine");
    EXPECT_EQ(heard.kept["number"], 7);
    EXPECT_EQ(heard.kept["leads a group of its own"], true);
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].rule, Rule::Layers);
    EXPECT_EQ(heard.findings[0].text, "a text\nof two lines");
    EXPECT_EQ(heard.findings[0].deviation, "a habit");
}

TEST(Probe, MuchThatWasSaidBeforeADeathArrives) {
    const Heard heard = run_apart([](Notes& notes) {
        notes.doing("the end");
        for (int i = 0; i < 5000; ++i) {
            notes.find(std::string(100, 'x'));
        }
        std::fputs("one\nlast words\n", stderr);
        std::abort();
    });
    EXPECT_EQ(heard.died, "killed by SIGABRT");
    EXPECT_EQ(heard.text("doing"), "the end");
    EXPECT_EQ(heard.findings.size(), 5000U);
    EXPECT_EQ(heard.last_words, "last words");
}

TEST(Probe, WhatThePlugInCausesIsAFindingAndAFaultOfTheCheckIsNone) {
    const std::pair<Body, const char*> findings[] = {
        {[](Notes&) { throw host::ModuleDefect("no use"); }, "no use"},
        {[](Notes&) { throw std::bad_alloc(); }, "memory ran out"}};
    for (const auto& [body, text] : findings) {
        const Heard heard = run_apart(body);
        ASSERT_EQ(heard.findings.size(), 1U);
        EXPECT_EQ(heard.findings[0].text, text);
        EXPECT_EQ(heard.text("defect"), "");
    }
    const std::pair<Body, const char*> defects[] = {
        {[](Notes&) { throw std::logic_error("a slip"); }, "a slip"},
        {[](Notes&) { XASSERT(1 > 2); }, "the assertion 1 > 2 does not hold in "}};
    for (const auto& [body, text] : defects) {
        const Heard heard = run_apart(body);
        EXPECT_TRUE(heard.findings.empty());
        EXPECT_EQ(heard.text("defect").find(text), 0U);
        EXPECT_EQ(heard.died, "");
    }
}

TEST(Probe, AnEndByExitIsADeathAtOnceAndLeavesTheParentsHandlersAlone) {
    EXPECT_EQ(run_apart([](Notes&) { _exit(0); }).died, "the process was ended with exit code 0");
    EXPECT_EQ(run_apart([](Notes&) { _exit(3); }).died, "the process was ended with exit code 3");
    EXPECT_EQ(result_in_child([] {
                  std::atexit(wait_for_ever);
                  const Heard heard = run_apart([](Notes& notes) {
                      notes.doing("this");
                      std::exit(0);
                  });
                  return heard.died == "the process was ended by a call of exit" &&
                                 heard.text("doing") == "this"
                             ? 0
                             : 1;
              }),
              0);
}

TEST(Probe, SilenceEndsAtTheLimitAndSignsOfLifeRestartTheClock) {
    const auto hear = [](bool of_commands) {
        return run_apart(
            [=](Notes& notes) {
                for (int i = 0; i < 4; ++i) {
                    usleep(400000);
                    of_commands ? notes.running("PF_Cmd_RENDER") : notes.say("still here");
                }
                if (of_commands) {
                    return;
                }
                wait_for_ever();
            },
            milliseconds(1000));
    };
    const Heard silent = hear(false);
    EXPECT_EQ(silent.died, "no answer within 1 s");
    EXPECT_EQ(silent.text("said"), "still here");
    EXPECT_EQ(hear(true).died, "");
}

TEST(Probe, TheCommandThatRanAtADeathIsTold) {
    const auto dies = [](const char* last) {
        return run_apart([last](Notes& notes) {
            notes.running("PF_Cmd_PARAMS_SETUP");
            notes.running(last);
            std::abort();
        });
    };
    EXPECT_EQ(dies("PF_Cmd_ABOUT").running, "PF_Cmd_ABOUT") << "shorter than the one before";
    EXPECT_EQ(dies(nullptr).running, "") << "none ran";
    EXPECT_EQ(dies("PF_Cmd_ABOUT").died, "killed by SIGABRT");
}

TEST(Probe, WhatIsNoAnswerIsAFindingAndTheChildIsGone) {
    const Heard heard = run_apart([](Notes& notes) {
        notes.find("before");
        for (int descriptor = STDERR_FILENO + 1; descriptor < 100; ++descriptor) {
            struct stat about {};
            if (fstat(descriptor, &about) == 0 && S_ISFIFO(about.st_mode)) {
                (void)!write(descriptor, "[\n[\"find\"]\n", 11);
            }
        }
        notes.find("after");
    });
    EXPECT_EQ(heard.died, "");
    ASSERT_EQ(heard.findings.size(), 4U);
    EXPECT_EQ(heard.findings[0].text, "before");
    EXPECT_EQ(heard.findings[1].text, "between the answers stands \"[\"");
    EXPECT_EQ(heard.findings[2].text, "between the answers stands \"[\"find\"]\"");
    EXPECT_EQ(heard.findings[3].text, "after");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nobody is left to wait for";
}

long peak_kilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(Probe, OfMuchStandardErrorOnlyTheEndIsKept) {
    const long before = peak_kilobytes();
    const Heard heard = run_apart([](Notes&) {
        const std::string line = std::string(999, 'x') + "\n";
        for (int i = 0; i < 64000; ++i) {
            (void)!write(STDERR_FILENO, line.data(), line.size());
        }
        std::fputs("the end\n", stderr);
    });
    EXPECT_EQ(heard.last_words, "the end");
    EXPECT_LT(peak_kilobytes() - before, 16000) << "of 64 MB";
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
    EXPECT_EQ(heard.findings[0].rule, std::nullopt);
    EXPECT_EQ(heard.findings[0].text, text);
    for (const char* holder : {"holder", "one", "other", "near", "far"}) {
        EXPECT_FALSE(heard.kept.contains(holder) && is_there(heard.kept[holder].get<pid_t>()));
    }
}

TEST(Probe, AnEndIsOneThoughOthersHoldThePipes) {
    for (const bool crash : {false, true}) {
        const auto begin = std::chrono::steady_clock::now();
        const Heard heard = run_apart([=](Notes& notes) {
            notes.keep("holder", fork_a_holder());
            if (crash) {
                std::fputs("last words\n", stderr);
                std::abort();
            }
        });
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
        EXPECT_EQ(heard.died, crash ? "killed by SIGABRT" : "");
        EXPECT_EQ(heard.last_words, crash ? "last words" : "");
        expect_left(heard, "1 process was left running");
    }
}

TEST(Probe, WhatAHangingOneLeavesIsEndedWithIt) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.keep("one", fork_a_holder());
            notes.keep("other", fork_a_holder());
            wait_for_ever();
        },
        milliseconds(500));
    EXPECT_EQ(heard.died, "no answer within 0.5 s");
    expect_left(heard, "2 processes were left running");
}

#ifdef __linux__
/// Elsewhere the system keeps no track of it.
TEST(Probe, WhatLeftTheGroupIsEndedToo) {
    const Heard heard = run_apart([](Notes& notes) {
        const pid_t between = fork();
        if (between == 0) {
            notes.keep("far", fork_a_holder(true));
            _exit(0);
        }
        waitpid(between, nullptr, 0);
        notes.keep("near", fork_a_holder(true));
    });
    expect_left(heard, "2 processes were left running");
}
#endif

TEST(Probe, WhatEndsByItselfIsNotLeft) {
    const Heard heard = run_apart([](Notes& notes) {
        // One that nobody waits for, and one that is about to end.
        for (const unsigned microseconds : {0U, 20000U}) {
            if (fork() == 0) {
                usleep(microseconds);
                _exit(0);
            }
        }
        notes.say("fine");
    });
    EXPECT_EQ(heard.text("said"), "fine");
    EXPECT_TRUE(heard.findings.empty());
}

TEST(Probe, WithoutAnyWayToAdoptTheGroupIsEndedAllTheSame) {
    const Fault<&OSAPI::ProcessCalls::become_reaper> fault(ENOSYS);
    Held held;
    const Heard heard = run_apart([](Notes&) { fork_a_holder(); });
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].text, "processes were left running");
    EXPECT_TRUE(held.is_let_go());
    const Heard clean = run_apart([](Notes& notes) { notes.say("fine"); });
    EXPECT_TRUE(clean.findings.empty());
}

TEST(Reaper, LeavesNothingOfAParentThatIsKilled) {
    for (const int signal : {SIGKILL, SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        Held held;
        const pid_t parent = fork();
        if (parent == 0) {
            std::signal(signal, SIG_DFL);
            check::run_reaped(
                [&](const check::Tell&, const check::ReaperEnds& ends) {
                    check::Probes(kLimit, ends).run([&](Notes&) {
                        // One that stays in the group and, where the system can find it, one that
                        // does not.
                        fork_a_holder();
#ifdef __linux__
                        fork_a_holder(true);
#endif
                        held.say();
                        wait_for_ever();
                    });
                },
                [](const nlohmann::json&) {});
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

/// What `run_reaped` throws for this work.
std::string failure_of(const std::function<void()>& work) {
    try {
        check::run_reaped([&](const check::Tell&, const check::ReaperEnds&) { work(); },
                          [](const nlohmann::json&) {});
    } catch (const check::Defect& error) {
        return error.what();
    }
    return "none";
}

/// What a probe inside a reaper's process comes to.
std::string died_inside(const Body& body) {
    std::string died;
    check::run_reaped(
        [&](const check::Tell& tell, const check::ReaperEnds& ends) {
            tell(check::Probes(kLimit, ends).run(body).died);
        },
        [&](const nlohmann::json& told) { died = told; });
    return died;
}

TEST(Reaper, IsOutOfAModulesReach) {
    const std::string noise = "[\n[\"find\",1,2,3]\n[\"doing\",5]\n[7]\n{}\n";
    EXPECT_EQ(died_inside([&](Notes&) {
                  for (int descriptor = STDERR_FILENO + 1; descriptor < 100; ++descriptor) {
                      (void)!write(descriptor, noise.data(), noise.size());
                  }
              }),
              "")
        << "what it writes to all that it can find is no word of the check";
#ifdef __linux__
    EXPECT_EQ(died_inside([](Notes&) {
                  fork_a_holder(true);
                  std::abort();
              }),
              "killed by SIGABRT");
#endif
}

TEST(Reaper, HearsOfEndsThoughItsParentIgnoresThem) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(died_inside([](Notes&) { std::abort(); }), "killed by SIGABRT");
    std::signal(SIGCHLD, before);
}

TEST(Reaper, TellsHowTheCheckItselfFailed) {
    EXPECT_EQ(failure_of([] {}), "none");
    EXPECT_EQ(failure_of([] { throw std::logic_error("a slip"); }),
              "the check itself failed: a slip");
    EXPECT_EQ(failure_of([] { raise(SIGKILL); }),
              "the check itself failed: its process was killed by SIGKILL");
    EXPECT_EQ(failure_of([] { _exit(3); }),
              "the check itself failed: its process was ended with exit code 3");
}

TEST(Reaper, PassesOnWhatIsToldAndWhatTheHearerThrows) {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
        // What tests before left to this process, which took over their orphans.
    }
    std::vector<int> heard;
    const auto count = [](const check::Tell& tell, const check::ReaperEnds&) {
        for (int i = 0; i < 3; ++i) {
            tell(i);
        }
    };
    check::run_reaped(count, [&](const nlohmann::json& told) { heard.push_back(told); });
    EXPECT_EQ(heard, (std::vector<int>{0, 1, 2}));
    EXPECT_THROW(
        check::run_reaped(count, [](const nlohmann::json&) { throw std::runtime_error("enough"); }),
        std::runtime_error);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nobody is left to wait for";
}

TEST(Probe, SaysWhyThereCanBeNoProcess) {
    const Fault<&OSAPI::ProcessCalls::fork> fault(EAGAIN);
    const std::string reason = with_error("fork", EAGAIN);
    EXPECT_NE(thrown_message([] { run_apart([](Notes&) {}); }).find(reason), std::string::npos);
}

}  // namespace
