// Signal dispositions over POSIX.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/signals.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

namespace {

struct ::sigaction action_of(int sig, void (*handler)(int), bool restart) {
    struct ::sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaddset(&action.sa_mask, sig);
    action.sa_flags = restart ? SA_RESTART : 0;
    return action;
}

}  // namespace

Signal::~Signal() noexcept(false) {
    if (!installed_) {
        return;
    }
    // Inside the lambda the message would name the lambda in place of this destructor.
    const char* function = __PRETTY_FUNCTION__;
    release_in_destructor([this, function] {
        if (calls<ProcessCalls>().sigaction(sig_, &previous_, nullptr) != 0) {
            throw StrXception(__FILE__, function, __LINE__, "sigaction(%d): %s", sig_,
                              std::strerror(errno));
        }
    });
}

void Signal::install(const struct ::sigaction* action) {
    struct ::sigaction previous = {};
    if (calls<ProcessCalls>().sigaction(sig_, action, &previous) != 0) {
        XTHROW("sigaction(%d): %s", sig_, std::strerror(errno));
    }
    if (!installed_) {
        previous_ = previous;
        installed_ = true;
    }
}

SignalHandler::SignalHandler(int sig, void (*handler)(int), bool restart) : Signal(sig) {
    const struct ::sigaction action = action_of(sig, handler, restart);
    install(&action);
}

SignalDefault::SignalDefault(int sig) : Signal(sig) {
    const struct ::sigaction action = action_of(sig, SIG_DFL, true);
    install(&action);
}

SignalIgnore::SignalIgnore(int sig) : Signal(sig) {
    const struct ::sigaction action = action_of(sig, SIG_IGN, true);
    install(&action);
}

bool is_signal_ignored(int sig) {
    struct ::sigaction action = {};
    if (calls<ProcessCalls>().sigaction(sig, nullptr, &action) != 0) {
        XTHROW("sigaction(%d): %s", sig, std::strerror(errno));
    }
    return action.sa_handler == SIG_IGN;
}

}  // namespace OSAPI
