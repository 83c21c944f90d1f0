// Signals that keep arriving, to meet system calls while they wait.
#pragma once

#include <osapi/signals.h>
#include <sys/time.h>

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
