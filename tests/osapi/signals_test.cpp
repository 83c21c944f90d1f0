#include <gtest/gtest.h>
#include <osapi/processes.h>
#include <osapi/signals.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <type_traits>

#include "failures.h"
#include "support/child.h"

namespace {

using OSAPI::ProcessCalls;
using OSAPI::Signal;
using OSAPI::SignalDefault;
using OSAPI::SignalHandler;
using OSAPI::SignalIgnore;

static_assert(!std::is_nothrow_destructible_v<SignalHandler>);
static_assert(!std::is_copy_constructible_v<SignalHandler>);

const FailuresOf kSignals("osapi/osapi-unix-signals.cpp");

volatile std::sig_atomic_t first_calls = 0;
volatile std::sig_atomic_t second_calls = 0;
volatile std::sig_atomic_t blocked_meanwhile = 0;

void first(int) { first_calls = first_calls + 1; }
void second(int) { second_calls = second_calls + 1; }
void detailed(int, siginfo_t*, void*) { first_calls = first_calls + 1; }
void look_at_mask(int sig) {
    first(sig);
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    blocked_meanwhile = sigismember(&blocked, sig);
}

struct sigaction disposition(int sig) {
    struct sigaction action = {};
    EXPECT_EQ(sigaction(sig, nullptr, &action), 0);
    return action;
}

class Signals : public testing::Test {
protected:
    Signals() {
        first_calls = 0;
        second_calls = 0;
    }
};

TEST_F(Signals, HandlerIsCalledWhileTheGuardLivesWithItsOwnSignalBlocked) {
    for (const bool restart : {false, true}) {
        blocked_meanwhile = 0;
        const SignalHandler guard(SIGUSR1, look_at_mask, restart);
        const struct sigaction action = disposition(SIGUSR1);
        EXPECT_EQ(action.sa_flags & (SA_RESETHAND | SA_NODEFER | SA_SIGINFO | SA_RESTART),
                  restart ? SA_RESTART : 0);
        EXPECT_EQ(sigismember(&action.sa_mask, SIGUSR1), 1);
        EXPECT_EQ(sigismember(&action.sa_mask, SIGUSR2), 0);
        raise(SIGUSR1);
        raise(SIGUSR1);
        EXPECT_EQ(blocked_meanwhile, 1);
    }
    EXPECT_EQ(first_calls, 4);
    EXPECT_EQ(disposition(SIGUSR1).sa_handler, SIG_DFL);
}

TEST_F(Signals, NestedGuardsRestoreOneAfterTheOther) {
    const SignalHandler other(SIGUSR2, first, true);
    const SignalIgnore outermost(SIGUSR1);
    {
        const SignalHandler outer(SIGUSR1, first, true);
        {
            const SignalHandler inner(SIGUSR1, second, true);
            raise(SIGUSR1);
            {
                const SignalIgnore innermost(SIGUSR1);
                raise(SIGUSR1);
            }
            raise(SIGUSR1);
        }
        raise(SIGUSR1);
    }
    raise(SIGUSR1);
    EXPECT_EQ(second_calls, 2);
    EXPECT_EQ(first_calls, 1);
    EXPECT_TRUE(OSAPI::is_signal_ignored(SIGUSR1));
    raise(SIGUSR2);
    EXPECT_EQ(first_calls, 2) << "signals keep apart";
}

TEST_F(Signals, WholeDispositionIsRestored) {
    struct sigaction before = {};
    before.sa_sigaction = detailed;
    sigemptyset(&before.sa_mask);
    sigaddset(&before.sa_mask, SIGUSR2);
    before.sa_flags = SA_SIGINFO | SA_RESTART;
    Signal outer(SIGUSR1);
    outer.install(&before);
    { const SignalDefault inner(SIGUSR1); }
    const struct sigaction after = disposition(SIGUSR1);
    EXPECT_EQ(after.sa_sigaction, detailed);
    EXPECT_EQ(after.sa_flags & (SA_SIGINFO | SA_RESTART), SA_SIGINFO | SA_RESTART);
    EXPECT_EQ(sigismember(&after.sa_mask, SIGUSR2), 1);
    EXPECT_EQ(sigismember(&after.sa_mask, SIGUSR1), 0);
    raise(SIGUSR1);
    EXPECT_EQ(first_calls, 1);
}

TEST_F(Signals, GuardThatInstalledTwiceRestoresWhatItFoundFirst) {
    const SignalHandler outer(SIGUSR1, first, true);
    {
        struct sigaction action = {};
        action.sa_handler = second;
        sigemptyset(&action.sa_mask);
        Signal guard(SIGUSR1);
        guard.install(&action);
        guard.install(&action);
        raise(SIGUSR1);
    }
    raise(SIGUSR1);
    EXPECT_EQ(second_calls, 1);
    EXPECT_EQ(first_calls, 1);
}

TEST_F(Signals, GuardThatInstalledNothingRestoresNothing) {
    const Fault<&ProcessCalls::sigaction> calls(EIO, kAlways);
    { const Signal guard(SIGUSR1); }
    EXPECT_EQ(calls.calls(), 0);
}

TEST_F(Signals, IgnoredOneDoesNothingAndIsNoticed) {
    EXPECT_FALSE(OSAPI::is_signal_ignored(SIGTERM));
    {
        const SignalIgnore guard(SIGTERM);
        EXPECT_TRUE(OSAPI::is_signal_ignored(SIGTERM));
        EXPECT_EQ(disposition(SIGTERM).sa_flags & SA_RESTART, SA_RESTART);
        raise(SIGTERM);
    }
    EXPECT_FALSE(OSAPI::is_signal_ignored(SIGTERM));
}

TEST_F(Signals, DefaultOneDoesWhatTheSystemDoes) {
    const int end = result_in_child([] {
        const SignalIgnore ignored(SIGTERM);
        const SignalDefault guard(SIGTERM);
        const struct sigaction action = disposition(SIGTERM);
        if (sigismember(&action.sa_mask, SIGTERM) != 1 || (action.sa_flags & SA_RESTART) == 0) {
            return 1;
        }
        raise(SIGTERM);
        return 0;
    });
    EXPECT_EQ(end, SIGTERM);
}

TEST_F(Signals, FailureNamesTheSignal) {
    kSignals.expect("sigaction(9)", EINVAL, "Signal::install",
                    [] { const SignalHandler guard(SIGKILL, first, true); });
    const std::string call = "sigaction(" + std::to_string(SIGUSR1) + ")";
    // Each time one call: there is nothing to restore.
    kSignals.expect_every<&ProcessCalls::sigaction>(call, "Signal::install",
                                                    [] { const SignalIgnore guard(SIGUSR1); });
    EXPECT_EQ(disposition(SIGUSR1).sa_handler, SIG_DFL);
    kSignals.expect_every<&ProcessCalls::sigaction>(call, "is_signal_ignored",
                                                    [] { OSAPI::is_signal_ignored(SIGUSR1); });
    const SignalHandler outer(SIGUSR1, first, true);
    kSignals.expect_from_destructor(call, EIO, "Signal::~Signal", [](auto end) {
        const Fault<&ProcessCalls::sigaction> fault(EIO, {.after = 1});
        const SignalIgnore guard(SIGUSR1);
        end();
    });
}

}  // namespace
