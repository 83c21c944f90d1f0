// Signals that keep arriving, to meet system calls while they wait.
#pragma once

#include <osapi/signals.h>
#include <sys/time.h>

#include <cerrno>
#include <functional>
#include <utility>

#include "faults.h"

/// SIGALRM every two milliseconds while the object lives. Interrupted calls fail with EINTR unless
/// `restart` is set. A call that waits for ever is thus interrupted sooner or later, however the
/// machine is loaded. One at a time.
class Interruptions {
public:
    explicit Interruptions(bool restart = false) : handler_(SIGALRM, count, restart) {
        seen_ = 0;
        every(2000);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;
    ~Interruptions() { stop(); }

    /// None comes any more.
    void stop() { every(0); }
    /// Signals so far.
    int seen() const { return seen_; }

private:
    static void count(int) { seen_ = seen_ + 1; }
    static void every(int microseconds) {
        const itimerval timer = {{0, microseconds}, {0, microseconds}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }

    static inline volatile std::sig_atomic_t seen_ = 0;
    OSAPI::SignalHandler handler_;
};

/// Interrupts one kind of call that waits. After the third time no signal comes any more, and
/// `let_go` ends the wait.
template <auto Call>
class ThreeInterruptions {
public:
    explicit ThreeInterruptions(std::function<void()> let_go, bool restart = false)
        : let_go_(std::move(let_go)), interruptions_(restart), calls_([this](auto... arguments) {
              const auto result = calls_.real(arguments...);
              if (result == -1 && errno == EINTR && ++interrupted_ == 3) {
                  interruptions_.stop();
                  let_go_();
                  errno = EINTR;
              }
              return result;
          }) {}

    /// Calls since construction: four when each interrupted one was tried again.
    int calls() const { return calls_.calls(); }

private:
    std::function<void()> let_go_;
    int interrupted_ = 0;
    Interruptions interruptions_;
    Intercept<Call> calls_;
};
