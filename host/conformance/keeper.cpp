#include "keeper.h"

#include <base/exceptions.h>
#include <osapi/descendants.h>
#include <osapi/files.h>
#include <osapi/polling.h>
#include <osapi/processes.h>
#include <osapi/signals.h>
#include <poll.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace conformance {
namespace {

using nlohmann::json;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// For an end whose signal came just before the wait for it.
constexpr milliseconds kGlance{20};
/// How long what is about to end by itself may take.
constexpr milliseconds kGrace{200};
/// How long the system may take to end what was killed.
constexpr milliseconds kBurial{5000};

void do_nothing(int) {}

void sleep(milliseconds time) {
    OSAPI::poll(nullptr, 0, static_cast<int>(time.count()), /*return_on_interrupt=*/true);
}

/// The keeper's own doings.
class Custody {
public:
    explicit Custody(bool adopts) : adopts_(adopts) {}

    /// Until the child has ended, or the leash has: then it is made to.
    void await(int child, int leash) {
        child_ = child;
        bool released = false;
        while (!has_ended()) {
            pollfd end{leash, POLLIN, 0};
            if (released) {
                sleep(kGlance);
            } else if (OSAPI::poll(&end, 1, static_cast<int>(kGlance.count()), true) > 0) {
                released = true;
                ::kill(child_, SIGKILL);
            }
        }
        clear_up(released ? milliseconds(0) : kGrace);
    }
    const Account& account() const { return account_; }

private:
    /// The system's own call: `OSAPI` does not tell a signal from an exit code.
    bool has_ended() { return waitpid(child_, &account_.status, WNOHANG) != 0; }

    /// Whether anything is left. What has ended is taken off.
    bool anything_left() {
        if (!adopts_) {
            return ::kill(-child_, 0) == 0;
        }
        pid_t ended = 0;
        while ((ended = waitpid(-1, nullptr, WNOHANG)) > 0) {
            ++buried_;
        }
        return ended == 0;
    }

    void clear_up(milliseconds grace) {
        for (const auto limit = Clock::now() + grace; anything_left(); sleep(milliseconds(5))) {
            if (Clock::now() >= limit) {
                end_the_rest();
                return;
            }
        }
    }

    void end_the_rest() {
        buried_ = 0;
        account_.counted = adopts_;
        const auto limit = Clock::now() + kBurial;
        do {
            ::kill(-child_, SIGKILL);
            // Those that left the group; theirs come to be children of this process next.
            for (const int orphan : adopts_ ? OSAPI::children() : std::vector<int>()) {
                ::kill(orphan, SIGKILL);
            }
            sleep(milliseconds(1));
        } while (anything_left() && Clock::now() < limit);
        account_.left = buried_;
    }

    bool adopts_;
    int child_ = -1;
    int buried_ = 0;
    Account account_;
};

/// Runs `life` in a child and answers for it.
json keep(const std::function<void()>& life, OSAPI::Pipe& leash, OSAPI::Pipe& account) {
    // Out of the checker's group: neither a terminal's keys nor a signal to all of it stop this.
    OSAPI::lead_group();
    // So that an end cuts a wait short.
    const OSAPI::SignalHandler on_end(SIGCHLD, do_nothing, /*restart=*/false);
    Custody custody(OSAPI::adopt_orphans());
    const int child = OSAPI::fork();
    if (child == 0) {
        leash.read_end().close();
        account.write_end().close();
        OSAPI::lead_group();
        life();
    }
    custody.await(child, leash.read_end().fd());
    const Account& told = custody.account();
    return {{"status", told.status}, {"left", told.left}, {"counted", told.counted}};
}

/// Never comes back, by an exception neither: the frames above are another process's.
[[noreturn]] void live(const std::function<void()>& life, OSAPI::Pipe& leash,
                       OSAPI::Pipe& account) noexcept {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        std::signal(signal, SIG_IGN);
    }
    leash.write_end().close();
    account.read_end().close();
    json answer;
    try {
        answer = keep(life, leash, account);
    } catch (const StrXception& error) {
        answer = {{"failed", error.message().c_str()}};
    } catch (const std::exception& error) {
        answer = {{"failed", error.what()}};
    }
    const std::string text = answer.dump();
    try {
        OSAPI::write(account.write_end().fd(), text.data(), text.size());
    } catch (const Xception&) {
        // Nobody is there to be told.
    }
    OSAPI::exit_now(0);
}

std::string read_all(OSAPI::FileDescriptor& end) {
    std::array<char, 512> piece{};
    std::string text;
    sword size = 0;
    while ((size = OSAPI::read_short(end.fd(), piece.data(), piece.size())) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(size));
    }
    return text;
}

}  // namespace

Keeper::Keeper(const std::function<void()>& life) {
    leash_.open();
    account_.open();
    id_ = OSAPI::fork();
    if (id_ == 0) {
        live(life, leash_, account_);
    }
    leash_.read_end().close();
    account_.write_end().close();
}

Keeper::~Keeper() {
    if (!reaped_) {
        end();
        look(0);
    }
}

void Keeper::look(int options) {
    while (!reaped_) {
        const pid_t ended = waitpid(id_, &status_, options);
        reaped_ = ended == id_ || (ended < 0 && errno != EINTR);
        if (ended == 0) {
            return;
        }
    }
}

bool Keeper::has_ended() {
    look(WNOHANG);
    return reaped_;
}

void Keeper::end() { leash_.write_end().close(); }

Account Keeper::wait() {
    look(0);
    const json told = json::parse(read_all(account_.read_end()), nullptr, false);
    if (told.is_discarded()) {
        // The keeper itself was killed.
        return {status_, 0, true};
    }
    if (told.contains("failed")) {
        throw StrXception(String(told["failed"].get<std::string>().c_str()));
    }
    return {told["status"], told["left"], told["counted"]};
}

}  // namespace conformance
