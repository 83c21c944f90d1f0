// What a signal does while an object lives.
#pragma once

#include <csignal>

namespace OSAPI {

/// Another disposition of one signal while the object lives. Not copyable.
///
/// The destructor restores the disposition that the first `install` found, which may throw
/// "sigaction(SIG): ..."; while another exception is under way the failure is printed instead.
/// Guards of one signal must die in the reverse order of their birth.
class Signal {
public:
    /// Changes nothing yet.
    explicit Signal(int sig) : sig_(sig) {}
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    ~Signal() noexcept(false);

    /// Throws "sigaction(SIG): ...".
    void install(const struct ::sigaction* action);

private:
    int sig_;
    bool installed_ = false;
    struct ::sigaction previous_ = {};
};

/// Calls `handler`, during which the signal itself is blocked. System calls that it interrupts go
/// on afterwards if `restart` is set, else they fail with EINTR; some, like `poll`, always fail.
class SignalHandler : public Signal {
public:
    SignalHandler(int sig, void (*handler)(int), bool restart);
};

/// What the system does by default.
class SignalDefault : public Signal {
public:
    explicit SignalDefault(int sig);
};

/// Nothing happens.
class SignalIgnore : public Signal {
public:
    explicit SignalIgnore(int sig);
};

/// Whether nothing happens at present, as for a hang-up under nohup. Throws "sigaction(SIG): ...".
bool is_signal_ignored(int sig);

}  // namespace OSAPI
