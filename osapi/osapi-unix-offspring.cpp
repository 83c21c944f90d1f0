// The end of children, told and made.
#include <osapi/descendants.h>
#include <osapi/descriptor_flags.h>
#include <osapi/offspring.h>
#include <osapi/polling.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <utility>
#include <vector>

namespace OSAPI {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How long processes that are about to end by themselves may take.
constexpr int kGrace = 200;
/// How long the system may take to end what was killed.
constexpr milliseconds kKillTime{5000};

constexpr std::pair<int, const char*> kSignals[] = {
    {SIGABRT, "SIGABRT"}, {SIGBUS, "SIGBUS"},   {SIGFPE, "SIGFPE"},   {SIGILL, "SIGILL"},
    {SIGSEGV, "SIGSEGV"}, {SIGTRAP, "SIGTRAP"}, {SIGKILL, "SIGKILL"}, {SIGTERM, "SIGTERM"},
    {SIGSYS, "SIGSYS"},   {SIGPIPE, "SIGPIPE"}, {SIGALRM, "SIGALRM"}, {SIGINT, "SIGINT"},
    {SIGHUP, "SIGHUP"}};

}  // namespace

std::string how_ended(int status) {
    if (!WIFSIGNALED(status)) {
        return "ended with exit code " + std::to_string(WEXITSTATUS(status));
    }
    for (const auto& [number, name] : kSignals) {
        if (number == WTERMSIG(status)) {
            return std::string("killed by ") + name;
        }
    }
    return "killed by signal " + std::to_string(WTERMSIG(status));
}

int wait_for(int id) {
    int status = 0;
    while (waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

void start_apart(fd_t errors) {
    lead_group();
    for (const int signal :
         {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGCHLD, SIGALRM}) {
        std::signal(signal, SIG_DFL);
    }
    sigset_t none_blocked;
    sigemptyset(&none_blocked);
    sigprocmask(SIG_SETMASK, &none_blocked, nullptr);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    // In a group of its own a read from the terminal would stop it.
    const fd_t nowhere = open("/dev/null", kReadWrite);
    dup2(nowhere, STDIN_FILENO);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
    dup2(errors, STDERR_FILENO);
}

Offspring::~Offspring() {
    if (!ended_) {
        kill();
        await_end();
        clear_up(0);
    }
}

// The system's own calls throughout: `_wait_until_dead` does not tell a signal from an exit code.

bool Offspring::has_ended() {
    ended_ = ended_ || waitpid(child_, &status_, WNOHANG) != 0;
    return ended_;
}

void Offspring::kill() { ::kill(child_, SIGKILL); }

void Offspring::wait() {
    await_end();
    clear_up(kGrace);
}

void Offspring::await_end() {
    if (!ended_) {
        status_ = wait_for(child_);
        ended_ = true;
    }
}

/// Takes those that have ended off the system's list.
bool Offspring::anything_left() {
    if (!adopts_) {
        return ::kill(-child_, 0) == 0;
    }
    pid_t ended = 0;
    while ((ended = waitpid(-1, nullptr, WNOHANG)) > 0) {
        ++taken_off_;
    }
    return ended == 0;
}

void Offspring::clear_up(int grace_ms) {
    const auto limit = Clock::now() + milliseconds(grace_ms);
    while (anything_left()) {
        if (Clock::now() >= limit) {
            kill_the_rest();
            return;
        }
        poll(nullptr, 0, 5, /*return_on_interrupt=*/true);
    }
}

void Offspring::kill_the_rest() {
    taken_off_ = 0;
    const auto limit = Clock::now() + kKillTime;
    do {
        ::kill(-child_, SIGKILL);
        // Those that left the group. When one of them ends, its own come to be children of this
        // process, and are seen the next time.
        for (const int orphan : adopts_ ? children() : std::vector<int>()) {
            ::kill(orphan, SIGKILL);
        }
        poll(nullptr, 0, 1, /*return_on_interrupt=*/true);
    } while (anything_left() && Clock::now() < limit);
    left_ = adopts_ ? taken_off_ : 1;
}

std::string Offspring::left_text() const {
    if (left_ == 0 || !adopts_) {
        return left_ == 0 ? "" : "processes were left running";
    }
    return std::to_string(left_) +
           (left_ == 1 ? " process was left running" : " processes were left running");
}

}  // namespace OSAPI
