// Work in a process of its own: what is heard of it.
#include "apart.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace {

using conformance::Heard;
using conformance::Notes;
using conformance::run_apart;

constexpr std::chrono::milliseconds kLimit{60000};

TEST(Apart, WhatIsSaidArrives) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.doing("this");
            notes.find("rule", "a text\nof two lines", "a habit");
            notes.say("fine");
            notes.keep("number", 7);
        },
        kLimit);
    EXPECT_EQ(heard.died, "");
    EXPECT_EQ(heard.doing, "this");
    EXPECT_EQ(heard.said, "fine");
    EXPECT_EQ(heard.kept["number"], 7);
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].rule, "rule");
    EXPECT_EQ(heard.findings[0].text, "a text\nof two lines");
    EXPECT_EQ(heard.findings[0].deviation, "a habit");
}

TEST(Apart, MuchCanBeSaid) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            for (int i = 0; i < 5000; ++i) {
                notes.find("", std::string(100, 'x'));
            }
        },
        kLimit);
    EXPECT_EQ(heard.findings.size(), 5000U);
}

TEST(Apart, WhatWasSaidBeforeADeathArrives) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.doing("the end");
            notes.find("", "found before");
            std::fputs("one\nlast words\n", stderr);
            std::abort();
        },
        kLimit);
    EXPECT_EQ(heard.died, "killed by SIGABRT");
    EXPECT_EQ(heard.doing, "the end");
    EXPECT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.last_words, "last words");
}

TEST(Apart, AnExceptionIsAFinding) {
    const Heard heard = run_apart([](Notes&) { throw std::runtime_error("no use"); }, kLimit);
    EXPECT_EQ(heard.died, "");
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].text, "no use");
}

TEST(Apart, AnEndByExitIsADeath) {
    EXPECT_EQ(run_apart([](Notes&) { _exit(0); }, kLimit).died,
              "the process was ended with exit code 0");
    EXPECT_EQ(run_apart([](Notes&) { _exit(3); }, kLimit).died,
              "the process was ended with exit code 3");
}

/// A handler of the parent's that must not run in the child.
void wait_for_ever() {
    for (;;) {
        pause();
    }
}

TEST(Apart, AnEndOfTheProgramIsADeathAtOnceAndLeavesTheParentsHandlersAlone) {
    const pid_t parent = fork();
    if (parent == 0) {
        std::atexit(wait_for_ever);
        const Heard heard = run_apart(
            [](Notes& notes) {
                notes.doing("this");
                std::exit(0);
            },
            kLimit);
        _exit(heard.died == "the process was ended by a call of exit" && heard.doing == "this" ? 0
                                                                                               : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(parent, &status, 0), parent);
    EXPECT_EQ(status, 0);
}

TEST(Apart, SilenceEndsAtTheLimitAndSignsOfLifeRestartTheClock) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            for (int i = 0; i < 4; ++i) {
                usleep(400000);
                notes.say("still here");
            }
            for (;;) {
                pause();
            }
        },
        std::chrono::milliseconds(1000));
    EXPECT_EQ(heard.died, "no answer within 1 s");
    EXPECT_EQ(heard.said, "still here");
}

TEST(Apart, CommandsAreSignsOfLifeToo) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            for (int i = 0; i < 4; ++i) {
                usleep(400000);
                notes.running("PF_Cmd_RENDER");
            }
            notes.say("came to its end");
        },
        std::chrono::milliseconds(1000));
    EXPECT_EQ(heard.died, "");
    EXPECT_EQ(heard.said, "came to its end");
}

TEST(Apart, TheCommandThatRanAtADeathIsTold) {
    const auto dies = [](const char* last) {
        return run_apart(
            [last](Notes& notes) {
                notes.running("PF_Cmd_PARAMS_SETUP");
                notes.running(last);
                std::abort();
            },
            kLimit);
    };
    EXPECT_EQ(dies("PF_Cmd_ABOUT").running, "PF_Cmd_ABOUT") << "shorter than the one before";
    EXPECT_EQ(dies(nullptr).running, "") << "none ran";
    EXPECT_EQ(dies("PF_Cmd_ABOUT").died, "killed by SIGABRT");
    const std::string longer(1000, 'x');
    const std::string told = dies(longer.c_str()).running;
    EXPECT_GE(told.size(), 100U);
    EXPECT_EQ(told, longer.substr(0, told.size()));
}

TEST(Apart, StandardOutputGoesNowhere) {
    testing::internal::CaptureStdout();
    run_apart([](Notes&) { (void)!write(STDOUT_FILENO, "noise", 5); }, kLimit);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(Apart, StandardInputIsEmpty) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            char byte = 0;
            notes.keep("read", read(STDIN_FILENO, &byte, 1));
        },
        kLimit);
    EXPECT_EQ(heard.kept["read"], 0);
}

TEST(Apart, WhatIsNoAnswerIsAFindingAndTheChildIsGone) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.find("", "before");
            for (int descriptor = STDERR_FILENO + 1; descriptor < 100; ++descriptor) {
                struct stat about {};
                if (fstat(descriptor, &about) == 0 && S_ISFIFO(about.st_mode)) {
                    (void)!write(descriptor, "[\n[\"find\"]\n", 11);
                }
            }
            notes.find("", "after");
        },
        kLimit);
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

TEST(Apart, OfMuchStandardErrorOnlyTheEndIsKept) {
    const long before = peak_kilobytes();
    const Heard heard = run_apart(
        [](Notes&) {
            const std::string line = std::string(999, 'x') + "\n";
            for (int i = 0; i < 64000; ++i) {
                (void)!write(STDERR_FILENO, line.data(), line.size());
            }
            std::fputs("the end\n", stderr);
        },
        kLimit);
    EXPECT_EQ(heard.last_words, "the end");
    EXPECT_LT(peak_kilobytes() - before, 16000) << "of 64 MB";
}

}  // namespace
