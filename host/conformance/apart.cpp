#include "apart.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <system_error>
#include <utility>

namespace conformance {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const char* call) {
    throw std::system_error(errno, std::generic_category(), call);
}

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) {
            fail("pipe");
        }
        from = ends[0];
        to = ends[1];
    }
    ~Pipe() {
        close_end(from);
        close_end(to);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    static void close_end(int& end) {
        if (end >= 0) {
            close(std::exchange(end, -1));
        }
    }

    int from = -1;
    int to = -1;
};

[[noreturn]] void live(const Body& body, std::chrono::milliseconds limit, Pipe& notes_pipe,
                       Pipe& words) {
    // The checker's own ways with signals are not the module's.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
        std::signal(signal, SIG_DFL);
    }
    // Modules that crash are expected here: no dumps.
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    Pipe::close_end(notes_pipe.from);
    Pipe::close_end(words.from);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(words.to, STDERR_FILENO);
    close(nowhere);
    Pipe::close_end(words.to);

    Notes notes(notes_pipe.to, limit);
    try {
        body(notes);
    } catch (const std::exception& error) {
        notes.find("", error.what());
    }
    notes.end();
    // Without the end of the program: what it registered belongs to the parent.
    _exit(0);
}

/// Takes what there is to read; false at the end.
bool take(int descriptor, std::string& text) {
    std::array<char, 4096> piece{};
    const ssize_t size = read(descriptor, piece.data(), piece.size());
    if (size > 0) {
        text.append(piece.data(), static_cast<std::size_t>(size));
    }
    return size > 0 || (size < 0 && errno == EINTR);
}

/// True for the last line.
bool hear(Heard& heard, const json& line) {
    const std::string kind = line.at(0);
    if (kind == "end") {
        return true;
    }
    if (kind == "doing") {
        heard.doing = line.at(1);
    } else if (kind == "say") {
        heard.said = line.at(1);
    } else if (kind == "find") {
        heard.findings.push_back({line.at(1), line.at(2), line.at(3)});
    } else {
        heard.kept[line.at(1).get<std::string>()] = line.at(2);
    }
    return false;
}

/// Hears the whole lines and leaves the rest; true when the last was among them.
bool hear_lines(Heard& heard, std::string& text) {
    std::size_t begin = 0;
    bool last = false;
    for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        last = hear(heard, json::parse(text.substr(begin, end - begin)));
    }
    text.erase(0, begin);
    return last;
}

std::string last_line(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text.substr(text.rfind('\n') + 1).substr(0, 300);
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

std::string seconds_text(std::chrono::milliseconds time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g s", static_cast<double>(time.count()) / 1000.0);
    return text.data();
}

}  // namespace

Notes::Notes(int descriptor, std::chrono::milliseconds limit)
    : descriptor_(descriptor), alarm_seconds_(static_cast<unsigned>(limit.count() / 1000) + 2) {
    alarm(alarm_seconds_);
}

void Notes::send(const json& line) {
    // If the parent should be gone, nobody else would end a module that hangs.
    alarm(alarm_seconds_);
    const std::string text = line.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t size = write(descriptor_, text.data() + sent, text.size() - sent);
        if (size < 0 && errno != EINTR) {
            _exit(1);
        }
        sent += size > 0 ? static_cast<std::size_t>(size) : 0;
    }
}

void Notes::doing(std::string_view what) { send({"doing", what}); }
void Notes::find(std::string_view rule, std::string_view text, std::string_view deviation) {
    send({"find", rule, text, deviation});
}
void Notes::say(std::string_view text) { send({"say", text}); }
void Notes::end() { send({"end"}); }
void Notes::keep(const std::string& name, const json& value) { send({"keep", name, value}); }

Heard run_apart(const Body& body, std::chrono::milliseconds limit) {
    Pipe notes;
    Pipe words;
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        fail("fork");
    }
    if (child == 0) {
        live(body, limit, notes, words);
    }
    Pipe::close_end(notes.to);
    Pipe::close_end(words.to);

    Heard heard;
    std::string text;
    std::string errors;
    bool hung = false;
    bool ended = false;
    Clock::time_point deadline = Clock::now() + limit;
    while (notes.from >= 0 || words.from >= 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            hung = true;
            break;
        }
        // A closed end, -1, is passed over by the call.
        std::array<pollfd, 2> ends = {pollfd{notes.from, POLLIN, 0}, pollfd{words.from, POLLIN, 0}};
        if (poll(ends.data(), ends.size(), static_cast<int>(left.count()) + 1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            break;
        }
        if (ends[0].revents != 0) {
            if (!take(notes.from, text)) {
                Pipe::close_end(notes.from);
            }
            ended = hear_lines(heard, text) || ended;
            deadline = Clock::now() + limit;
        }
        if (ends[1].revents != 0 && !take(words.from, errors)) {
            Pipe::close_end(words.from);
        }
    }
    if (hung) {
        kill(child, SIGKILL);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    heard.last_words = last_line(errors);
    if (hung) {
        heard.died = "no answer within " + seconds_text(limit);
    } else if (WIFSIGNALED(status)) {
        heard.died = "killed by " + signal_name(WTERMSIG(status));
    } else if (!ended) {
        heard.died = "the process was ended with exit code " + std::to_string(WEXITSTATUS(status));
    }
    return heard;
}

}  // namespace conformance
