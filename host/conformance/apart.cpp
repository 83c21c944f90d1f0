#include "apart.h"

#include <base/exceptions.h>
#include <host/watch.h>
#include <osapi/descriptor_flags.h>
#include <osapi/files.h>
#include <osapi/pipes.h>
#include <osapi/processes.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <utility>

#include "keeper.h"
#include "listener.h"
#include "running_command.h"

namespace conformance {
namespace {

using nlohmann::json;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// How often a silent process is looked after: the end of its pipes does not tell that it ended,
/// since others may hold them.
constexpr milliseconds kGlance{20};
/// More reads than a pipe holds: what is left there when the process has ended.
constexpr int kPipeful = 64;

void leave_signals_and_streams(OSAPI::Pipe& words) {
    // The checker's own ways with signals, and its keeper's, are not the module's.
    for (const int signal :
         {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGCHLD, SIGALRM}) {
        std::signal(signal, SIG_DFL);
    }
    sigset_t none_blocked;
    sigemptyset(&none_blocked);
    sigprocmask(SIG_SETMASK, &none_blocked, nullptr);
    // Modules that crash are expected here: no dumps.
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    // Nor may it read what is meant for others: in its group a terminal would stop it.
    const OSAPI::fd_t nowhere = OSAPI::open("/dev/null", OSAPI::kReadWrite);
    OSAPI::dup2(nowhere, STDIN_FILENO);
    OSAPI::dup2(nowhere, STDOUT_FILENO);
    OSAPI::close(nowhere);
    OSAPI::dup2(words.write_end().fd(), STDERR_FILENO);
    words.read_end().close();
    words.write_end().close();
}

/// Of the child, for the end of the program.
Notes* notes_of_child = nullptr;

/// What else an end of the program does is the parent's: its handlers, its objects, its files.
void leave_at_exit() {
    notes_of_child->exited();
    OSAPI::exit_now(0);
}

void tell_running(const char* command) { notes_of_child->running(command); }

void leave_at_lack(const char* function) {
    notes_of_child->lacking(function);
    OSAPI::exit_now(0);
}

/// Never comes back, by an exception neither: the frames above are the parent's.
[[noreturn]] void live(const Body& body, milliseconds limit, OSAPI::Pipe& lines, OSAPI::Pipe& words,
                       RunningCommand& running) noexcept {
    leave_signals_and_streams(words);
    lines.read_end().close();
    Notes notes(lines.write_end().fd(), limit, running);
    notes_of_child = &notes;
    std::atexit(leave_at_exit);
    host::set_watch({tell_running, leave_at_lack});
    try {
        body(notes);
    } catch (const std::exception& error) {
        notes.find("", error.what());
    } catch (const StrXception& error) {
        notes.find("", error.message().c_str());
    }
    notes.end();
    // Without the end of the program: what it registered belongs to the parent.
    OSAPI::exit_now(0);
}

/// False when there was no sign of life for as long as the limit.
bool listen_to_the_end(Listener& listener, Keeper& keeper, const RunningCommand& running,
                       milliseconds limit) {
    Clock::time_point deadline = Clock::now() + limit;
    unsigned changes = running.changes();
    while (!listener.has_last_word() && !keeper.has_ended()) {
        if (const unsigned now = running.changes(); now != changes) {
            changes = now;
            deadline = Clock::now() + limit;
        }
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            // What was said while this process was stopped still counts.
            if (listener.listen(milliseconds(0)) != Listener::News::Lines) {
                return false;
            }
            deadline = Clock::now() + limit;
            continue;
        }
        if (listener.listen(std::min(left, kGlance)) == Listener::News::Lines) {
            deadline = Clock::now() + limit;
        }
    }
    return true;
}

std::string signal_name(int number) {
    constexpr std::pair<int, const char*> kNames[] = {
        {SIGABRT, "SIGABRT"}, {SIGBUS, "SIGBUS"},   {SIGFPE, "SIGFPE"},   {SIGILL, "SIGILL"},
        {SIGSEGV, "SIGSEGV"}, {SIGTRAP, "SIGTRAP"}, {SIGKILL, "SIGKILL"}, {SIGTERM, "SIGTERM"},
        {SIGSYS, "SIGSYS"},   {SIGPIPE, "SIGPIPE"}, {SIGALRM, "SIGALRM"}};
    for (const auto& [value, name] : kNames) {
        if (value == number) {
            return name;
        }
    }
    return "signal " + std::to_string(number);
}

std::string seconds_text(milliseconds time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g s", static_cast<double>(time.count()) / 1000.0);
    return text.data();
}

std::string left_text(const Account& account) {
    const std::string count = account.counted ? std::to_string(account.left) + " " : "";
    return count + (account.counted && account.left == 1 ? "process was left running"
                                                         : "processes were left running");
}

}  // namespace

Notes::Notes(int descriptor, milliseconds limit, RunningCommand& running)
    : descriptor_(descriptor),
      alarm_seconds_(static_cast<unsigned>(limit.count() / 1000) + 2),
      running_(running) {
    restart_alarm();
}

void Notes::restart_alarm() const { alarm(alarm_seconds_); }

void Notes::send(const json& line) {
    restart_alarm();
    const std::string text = line.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
    try {
        OSAPI::write(descriptor_, text.data(), text.size());
    } catch (const Xception&) {
        OSAPI::exit_now(1);
    }
}

void Notes::doing(std::string_view what) { send({"doing", what}); }
void Notes::find(std::string_view rule, std::string_view text, std::string_view deviation) {
    send({"find", rule, text, deviation});
}
void Notes::say(std::string_view text) { send({"say", text}); }
void Notes::running(const char* command) {
    restart_alarm();
    running_.set(command == nullptr ? "" : command);
}
void Notes::lacking(const char* function) { send({"lacking", function}); }
void Notes::end() { send({"end"}); }
void Notes::exited() { send({"exit"}); }
void Notes::keep(const std::string& name, const json& value) { send({"keep", name, value}); }

Heard run_apart(const Body& body, milliseconds limit) {
    OSAPI::Pipe lines;
    OSAPI::Pipe words;
    lines.open();
    words.open();
    std::fflush(nullptr);
    RunningCommand running;
    Keeper keeper([&] { live(body, limit, lines, words, running); });
    lines.write_end().close();
    words.write_end().close();

    Listener listener(lines.read_end(), words.read_end());
    const bool hung = !listen_to_the_end(listener, keeper, running, limit);
    if (hung) {
        keeper.end();
    }
    const Account account = keeper.wait();
    for (int i = 0; i < kPipeful && listener.listen(milliseconds(0)) != Listener::News::None; ++i) {
    }
    Heard heard = listener.heard();
    heard.running = running.name();
    if (!account.counted || account.left != 0) {
        heard.findings.push_back({"", left_text(account), ""});
    }
    if (hung) {
        heard.died = "no answer within " + seconds_text(limit);
    } else if (WIFSIGNALED(account.status)) {
        heard.died = "killed by " + signal_name(WTERMSIG(account.status));
    } else if (listener.has_exited()) {
        heard.died = "the process was ended by a call of exit";
    } else if (!listener.has_last_word() && heard.lacking.empty()) {
        heard.died =
            "the process was ended with exit code " + std::to_string(WEXITSTATUS(account.status));
    }
    return heard;
}

}  // namespace conformance
