#include "apart.h"

#include <base/exceptions.h>
#include <osapi/descriptor_flags.h>
#include <osapi/files.h>
#include <osapi/pipes.h>
#include <osapi/polling.h>
#include <osapi/processes.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

namespace conformance {
namespace {

using nlohmann::json;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// How often a silent child is looked after: the end of its pipes does not tell that it ended,
/// since others may hold them.
constexpr milliseconds kGlance{20};
/// More reads than a pipe holds: what is left there when the child has ended.
constexpr int kPipeful = 64;
/// What of its standard error is kept.
constexpr std::size_t kTail = 4096;

void leave_signals_and_streams(OSAPI::Pipe& words) {
    // The checker's own ways with signals are not the module's.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
        std::signal(signal, SIG_DFL);
    }
    // Modules that crash are expected here: no dumps.
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    const OSAPI::fd_t nowhere = OSAPI::open("/dev/null", OSAPI::kWrite);
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

/// Never comes back, by an exception neither: the frames above are the parent's.
[[noreturn]] void live(const Body& body, milliseconds limit, OSAPI::Pipe& lines,
                       OSAPI::Pipe& words) noexcept {
    leave_signals_and_streams(words);
    lines.read_end().close();
    Notes notes(lines.write_end().fd(), limit);
    notes_of_child = &notes;
    std::atexit(leave_at_exit);
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

/// A child of this process; when nobody waited for it, it is ended.
class Child {
public:
    explicit Child(int id) : id_(id) {}
    ~Child() {
        if (!reaped_) {
            end();
            wait();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    bool has_ended() {
        look(WNOHANG);
        return reaped_;
    }
    /// Waits for its end.
    int wait() {
        look(0);
        return status_;
    }
    void end() const { ::kill(id_, SIGKILL); }

private:
    /// The system's own call: `OSAPI` does not tell a signal from an exit code.
    void look(int options) {
        while (!reaped_) {
            const pid_t ended = waitpid(id_, &status_, options);
            reaped_ = ended == id_ || (ended < 0 && errno != EINTR);
            if (ended == 0) {
                return;
            }
        }
    }

    int id_;
    int status_ = 0;
    bool reaped_ = false;
};

std::string last_line(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text.substr(text.rfind('\n') + 1).substr(0, 300);
}

/// What comes through the pipes of a child.
class Listener {
public:
    Listener(OSAPI::FileDescriptor& lines, OSAPI::FileDescriptor& words)
        : lines_(lines), words_(words) {}

    enum class News { None, Words, Lines };
    /// Takes in what comes within a time.
    News listen(milliseconds time) {
        // A closed end, -1, is passed over by the call.
        std::array<pollfd, 2> ends = {pollfd{lines_.fd(), POLLIN, 0},
                                      pollfd{words_.fd(), POLLIN, 0}};
        if (OSAPI::poll(ends.data(), ends.size(), static_cast<int>(time.count()), false) == 0) {
            return News::None;
        }
        if (ends[1].revents != 0) {
            take(words_, errors_);
            if (errors_.size() > 2 * kTail) {
                errors_.erase(0, errors_.size() - kTail);
            }
        }
        if (ends[0].revents == 0) {
            return News::Words;
        }
        take(lines_, text_);
        hear_lines();
        return News::Lines;
    }
    /// The last word was among it.
    bool has_last_word() const { return last_word_; }
    /// It ended the program by the C library's `exit`.
    bool has_exited() const { return exited_; }
    Heard heard() {
        heard_.last_words = last_line(std::move(errors_));
        return std::move(heard_);
    }

private:
    static void take(OSAPI::FileDescriptor& end, std::string& text) {
        std::array<char, 4096> piece{};
        const sword size = OSAPI::read_short(end.fd(), piece.data(), piece.size());
        text.append(piece.data(), static_cast<std::size_t>(size));
        if (size == 0) {
            end.close();
        }
    }

    /// Hears the whole lines and leaves the rest.
    void hear_lines() {
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = text_.find('\n', begin)) != std::string::npos;
             begin = end + 1) {
            const std::string line = text_.substr(begin, end - begin);
            try {
                hear(json::parse(line));
            } catch (const json::exception&) {
                // A module can write to any descriptor.
                heard_.findings.push_back(
                    {"", "between the answers stands \"" + line.substr(0, 60) + "\"", "",
                     heard_.doing});
            }
        }
        text_.erase(0, begin);
    }

    void hear(const json& line) {
        const std::string kind = line.at(0);
        if (kind == "end") {
            last_word_ = true;
        } else if (kind == "exit") {
            exited_ = true;
        } else if (kind == "doing") {
            heard_.doing = line.at(1);
        } else if (kind == "say") {
            heard_.said = line.at(1);
        } else if (kind == "find") {
            heard_.findings.push_back({line.at(1), line.at(2), line.at(3), heard_.doing});
        } else {
            heard_.kept[line.at(1).get<std::string>()] = line.at(2);
        }
    }

    OSAPI::FileDescriptor& lines_;
    OSAPI::FileDescriptor& words_;
    std::string text_;
    std::string errors_;
    bool last_word_ = false;
    bool exited_ = false;
    Heard heard_;
};

/// False when nothing was heard for as long as the limit.
bool listen_to_the_end(Listener& listener, Child& child, milliseconds limit) {
    Clock::time_point deadline = Clock::now() + limit;
    while (!listener.has_last_word() && !child.has_ended()) {
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            return false;
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

}  // namespace

Notes::Notes(int descriptor, milliseconds limit)
    : descriptor_(descriptor), alarm_seconds_(static_cast<unsigned>(limit.count() / 1000) + 2) {
    alarm(alarm_seconds_);
}

void Notes::send(const json& line) {
    // If the parent should be gone, nobody else would end a module that hangs.
    alarm(alarm_seconds_);
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
void Notes::end() { send({"end"}); }
void Notes::exited() { send({"exit"}); }
void Notes::keep(const std::string& name, const json& value) { send({"keep", name, value}); }

Heard run_apart(const Body& body, milliseconds limit) {
    OSAPI::Pipe lines;
    OSAPI::Pipe words;
    lines.open();
    words.open();
    std::fflush(nullptr);
    const int id = OSAPI::fork();
    if (id == 0) {
        live(body, limit, lines, words);
    }
    Child child(id);
    lines.write_end().close();
    words.write_end().close();

    Listener listener(lines.read_end(), words.read_end());
    const bool hung = !listen_to_the_end(listener, child, limit);
    if (hung) {
        child.end();
    }
    const int status = child.wait();
    for (int i = 0; i < kPipeful && listener.listen(milliseconds(0)) != Listener::News::None; ++i) {
    }
    Heard heard = listener.heard();
    if (hung) {
        heard.died = "no answer within " + seconds_text(limit);
    } else if (WIFSIGNALED(status)) {
        heard.died = "killed by " + signal_name(WTERMSIG(status));
    } else if (listener.has_exited()) {
        heard.died = "the process was ended by a call of exit";
    } else if (!listener.has_last_word()) {
        heard.died = "the process was ended with exit code " + std::to_string(WEXITSTATUS(status));
    }
    return heard;
}

}  // namespace conformance
