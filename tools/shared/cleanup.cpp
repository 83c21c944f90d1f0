#include "cleanup.h"

#include <osapi/processes.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>

namespace lumivar {

struct RemoveOnSignal::Entry {
    std::string path;
    Kind kind;
    Entry* next;
};

namespace {

constexpr std::array<int, 4> kSignals = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// Changed by the main thread alone, with the signals blocked; read by the handler in that thread.
RemoveOnSignal::Entry* volatile first_entry = nullptr;
pthread_t main_thread;
// Those of `kSignals` that were not ignored when the program began.
sigset_t ending_signals;

sigset_t handled_signals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : kSignals) {
        sigaddset(&set, number);
    }
    return set;
}

class SignalsBlocked {
public:
    SignalsBlocked() {
        const sigset_t set = handled_signals();
        pthread_sigmask(SIG_BLOCK, &set, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_;
};

}  // namespace

// Only calls that are safe within a signal handler: unlink, rmdir, sigaction, raise, pthread_kill.
extern "C" {
static void remove_and_die(int number) {
    // A picture library's thread may be the one that is interrupted: hand the signal on to the
    // thread that owns the list, which may just be changing it.
    if (pthread_equal(pthread_self(), main_thread) == 0) {
        pthread_kill(main_thread, number);
        return;
    }
    const int saved_errno = errno;
    for (const RemoveOnSignal::Entry* entry = first_entry; entry != nullptr; entry = entry->next) {
        if (entry->kind == RemoveOnSignal::Kind::File) {
            unlink(entry->path.c_str());
        } else {
            rmdir(entry->path.c_str());
        }
    }
    // Not by a guard, which may throw and would put this handler back at its end.
    struct sigaction by_default = {};
    by_default.sa_handler = SIG_DFL;
    sigaction(number, &by_default, nullptr);
    raise(number);  // blocked while the handler runs: the program dies as soon as it returns
    errno = saved_errno;
}
}

namespace {

struct sigaction removal() {
    struct sigaction action = {};
    action.sa_handler = remove_and_die;
    action.sa_mask = handled_signals();
    action.sa_flags = SA_RESTART;
    return action;
}

}  // namespace

SignalCleanup::SignalCleanup() : file_size_limit_(SIGXFSZ) {
    main_thread = pthread_self();
    sigemptyset(&ending_signals);
    const struct sigaction action = removal();
    for (const int number : kSignals) {
        if (!OSAPI::is_signal_ignored(number)) {
            ends_.emplace_back(number).install(&action);
            sigaddset(&ending_signals, number);
        }
    }
}

int fork_with_own_cleanup() {
    const SignalsBlocked blocked;  // or a signal would find the child with its parent's list
    const int id = OSAPI::fork();
    if (id == 0) {
        first_entry = nullptr;
        const struct sigaction action = removal();
        for (const int number : kSignals) {
            if (sigismember(&ending_signals, number) == 1) {
                sigaction(number, &action, nullptr);
            }
        }
    }
    return id;
}

RemoveOnSignal::RemoveOnSignal(const std::filesystem::path& path, Kind kind)
    : entry_(new Entry{std::filesystem::absolute(path).string(), kind, nullptr}) {
    const SignalsBlocked blocked;
    entry_->next = first_entry;
    first_entry = entry_;
}

RemoveOnSignal::~RemoveOnSignal() {
    {
        const SignalsBlocked blocked;
        if (first_entry == entry_) {
            first_entry = entry_->next;
        } else {
            for (Entry* entry = first_entry; entry != nullptr; entry = entry->next) {
                if (entry->next == entry_) {
                    entry->next = entry_->next;
                    break;
                }
            }
        }
    }
    delete entry_;
}

}  // namespace lumivar
