// What the program does with signals while it works; that they clean up is shown with its commands.
#include "cleanup.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

using lumivar::SignalCleanup;
using OSAPI::SignalDefault;
using OSAPI::SignalIgnore;

void do_nothing(int) {}

struct sigaction disposition(int sig) {
    struct sigaction action = {};
    EXPECT_EQ(sigaction(sig, nullptr, &action), 0);
    return action;
}

TEST(SignalCleanup, HandlesTheSignalsThatEndAProgramAndBlocksThemAllMeanwhile) {
    const SignalDefault interrupt(SIGINT);
    const SignalDefault terminate(SIGTERM);
    const SignalDefault hang_up(SIGHUP);
    const SignalDefault broken_pipe(SIGPIPE);
    const SignalCleanup cleanup;
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        const struct sigaction action = disposition(number);
        EXPECT_NE(action.sa_handler, SIG_DFL);
        EXPECT_NE(action.sa_handler, SIG_IGN);
        EXPECT_NE(action.sa_flags & SA_RESTART, 0);
        for (const int other : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
            EXPECT_EQ(sigismember(&action.sa_mask, other), 1) << number << " and " << other;
        }
    }
    EXPECT_TRUE(OSAPI::is_signal_ignored(SIGXFSZ));
}

TEST(SignalCleanup, LeavesEverySignalAsItWasBefore) {
    const OSAPI::SignalHandler interrupt(SIGINT, do_nothing, false);
    const SignalDefault terminate(SIGTERM);
    const SignalDefault file_size(SIGXFSZ);
    const SignalIgnore hang_up(SIGHUP);
    {
        const SignalCleanup cleanup;
        EXPECT_NE(disposition(SIGINT).sa_handler, do_nothing);
        EXPECT_TRUE(OSAPI::is_signal_ignored(SIGHUP)) << "as under nohup";
    }
    EXPECT_EQ(disposition(SIGINT).sa_handler, do_nothing);
    EXPECT_EQ(disposition(SIGTERM).sa_handler, SIG_DFL);
    EXPECT_EQ(disposition(SIGXFSZ).sa_handler, SIG_DFL);
    EXPECT_TRUE(OSAPI::is_signal_ignored(SIGHUP));
}

}  // namespace
