#include "probe.h"

#include <base/exceptions.h>
#include <base/string.h>
#include <check/check.h>
#include <host/errors.h>
#include <host/watch.h>
#include <osapi/descendants.h>
#include <osapi/files.h>
#include <osapi/offspring.h>
#include <osapi/pipe_readers.h>
#include <osapi/pipes.h>
#include <osapi/polling.h>
#include <osapi/processes.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

namespace check {

using nlohmann::json;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

namespace {

/// How often a silent process is looked after. The end of its pipes does not tell that it ended,
/// since processes that it made may hold them.
constexpr milliseconds kGlance{20};
/// More reads than a pipe holds: what is left there when the process has ended.
constexpr int kPipeful = 64;
// Names that have a meaning here. A process that came to its end, or called `exit`, says so last.
constexpr char kFind[] = "find";
constexpr char kEnd[] = "end";
constexpr char kExit[] = "exit";

/// Of the new process, for its end.
Notes* own_notes = nullptr;

/// What else an end of the program does belongs to the process that forked: its handlers, its
/// objects, its files.
void leave_at_exit() {
    own_notes->keep(kExit, true);
    OSAPI::exit_now(0);
}

void tell_running(const char* command) { own_notes->running(command); }

/// The module called what the host lacks: nobody's fault, but the end.
void leave_at_lack(const char* function) {
    own_notes->keep("lacking", function);
    OSAPI::exit_now(0);
}

/// A value as one line. Throws `StrXception` when it cannot be written.
void write_line(int descriptor, const json& value) {
    const std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
    OSAPI::write(descriptor, text.data(), text.size());
}

/// The text of the exception being handled, if it is one of the rooms' or of the standard library.
std::string text_of_exception() {
    try {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    } catch (const StrXception& error) {
        return error.message().c_str();
    } catch (const AssertXception& error) {
        return std::string("the assertion ") + error.expression() + " does not hold in " +
               error.function();
    } catch (...) {
        return "an exception of an unknown type";
    }
}

/// Never comes back, by an exception neither: the frames above belong to the process that forked.
[[noreturn]] void live(const Body& body, milliseconds limit, OSAPI::Pipe& lines, OSAPI::Pipe& words,
                       OSAPI::SharedText& running, const ReaperEnds& ends) noexcept {
    Notes notes(lines.write_end().fd(), limit, running);
    try {
        OSAPI::start_apart(words.write_end().fd());
        words.read_end().close();
        words.write_end().close();
        lines.read_end().close();
        for (const int end : {ends.parent, ends.lines}) {
            if (end != -1) {
                OSAPI::close(end);
            }
        }
        own_notes = &notes;
        std::atexit(leave_at_exit);
        host::set_watch({tell_running, leave_at_lack});
        body(notes);
    } catch (const host::HostError& error) {
        notes.find(error.what());
    } catch (const std::bad_alloc&) {
        notes.find("memory ran out");
    } catch (...) {
        notes.keep("defect", text_of_exception());
    }
    notes.keep(kEnd, true);
    // Without what the program registered for its end: that belongs to the process that forked.
    OSAPI::exit_now(0);
}

/// The process that asked for the check is gone.
struct ParentGone {};

/// What comes through the pipes of such a process.
class Listener {
public:
    Listener(OSAPI::FileDescriptor& lines, OSAPI::FileDescriptor& words, int parent)
        : lines_(lines), words_(words), parent_(parent), line_reader_(lines), word_reader_(words) {}

    enum class News { None, Words, Lines };
    /// Takes in what comes within a time. Throws `ParentGone`.
    News listen(milliseconds time) {
        // A closed end, -1, is passed over by the call.
        std::array<pollfd, 3> ends = {pollfd{lines_.fd(), POLLIN, 0},
                                      pollfd{words_.fd(), POLLIN, 0}, pollfd{parent_, POLLIN, 0}};
        if (OSAPI::poll(ends.data(), ends.size(), static_cast<int>(time.count()), true) <= 0) {
            return News::None;
        }
        if (ends[2].revents != 0) {
            throw ParentGone();
        }
        if (ends[1].revents != 0) {
            word_reader_.read();
        }
        if (ends[0].revents == 0) {
            return News::Words;
        }
        line_reader_.read([this](const std::string& line) { hear(line); });
        return News::Lines;
    }
    bool has(const char* last_word) const { return heard_.kept.contains(last_word); }
    Heard heard() {
        heard_.last_words = word_reader_.last_line().substr(0, 300);
        return std::move(heard_);
    }

private:
    void hear(const std::string& text) {
        Finding found = {"", "", {}, heard_.text("doing"), heard_.text("at")};
        try {
            const json line = json::parse(text);
            if (line.at(0) == kFind) {
                found.text = line.at(1);
                found.deviation = line.at(2);
                if (!line.at(3).is_null()) {
                    found.rule = line.at(3).get<host::Rule>();
                }
                heard_.findings.push_back(found);
            } else {
                heard_.kept[line.at(0).get<std::string>()] = line.at(1);
            }
        } catch (const json::exception&) {
            // A module can write to any descriptor.
            found.text = "between the answers stands \"" + text.substr(0, 60) + "\"";
            found.deviation.clear();
            heard_.findings.push_back(found);
        }
    }

    OSAPI::FileDescriptor& lines_;
    OSAPI::FileDescriptor& words_;
    int parent_;
    OSAPI::LineReader line_reader_;
    OSAPI::TailReader word_reader_;
    Heard heard_;
};

/// False when there was no sign of life for as long as the limit.
bool listen_to_the_end(Listener& listener, OSAPI::Offspring& child,
                       const OSAPI::SharedText& running, milliseconds limit) {
    Clock::time_point deadline = Clock::now() + limit;
    unsigned changes = running.changes();
    while (!listener.has(kEnd) && !child.has_ended()) {
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
        // What was said while this process was stopped counts even when the time is up.
        const auto news = listener.listen(std::clamp(left, milliseconds(0), kGlance));
        const unsigned before = std::exchange(changes, running.changes());
        if (news == Listener::News::Lines || changes != before) {
            deadline = Clock::now() + limit;
        } else if (left.count() <= 0) {
            return false;
        }
    }
    return true;
}

// What stands first in a line of the reaper's.
constexpr char kTold[] = "told";
constexpr char kDone[] = "done";  ///< with what went wrong, or null

/// Never comes back either.
[[noreturn]] void reap(const Work& work, OSAPI::Pipe& parent, OSAPI::Pipe& lines) noexcept {
    // Neither a terminal's keys nor a signal to its group end this process before its work is done.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        std::signal(signal, SIG_IGN);
    }
    // Whoever ignores it learns nothing of how children end.
    std::signal(SIGCHLD, SIG_DFL);
    const auto say = [&](const char* what, const json& value) {
        write_line(lines.write_end().fd(), {what, value});
    };
    try {
        OSAPI::lead_group();
        parent.write_end().close();
        lines.read_end().close();
        try {
            work([&](const json& value) { say(kTold, value); },
                 {parent.read_end().fd(), lines.write_end().fd()});
            say(kDone, nullptr);
        } catch (const ParentGone&) {
            OSAPI::exit_now(0);
        } catch (...) {
            say(kDone, text_of_exception());
        }
    } catch (...) {
        // Nobody is there to be told.
    }
    OSAPI::exit_now(0);
}

}  // namespace

Notes::Notes(int descriptor, milliseconds limit, OSAPI::SharedText& running)
    : descriptor_(descriptor),
      alarm_seconds_(static_cast<unsigned>(limit.count() / 1000) + 2),
      running_(running) {
    restart_alarm();
}

// In case nobody is left to end a module that hangs.
void Notes::restart_alarm() const { alarm(alarm_seconds_); }

void Notes::send(const json& line) {
    restart_alarm();
    try {
        write_line(descriptor_, line);
    } catch (const Xception&) {
        OSAPI::exit_now(1);
    }
}

void Notes::find(std::string_view text, std::string_view deviation) {
    send({kFind, text, deviation, nullptr});
}

void Notes::find(host::Rule rule, std::string_view text, std::string_view deviation) {
    send({kFind, text, deviation, rule});
}

void Notes::find(const std::vector<host::Violation>& violations) {
    for (const host::Violation& violation : violations) {
        find(violation.rule, violation.text);
    }
}

void Notes::find_own(const std::vector<host::Violation>& violations) {
    for (const host::Violation& violation : violations) {
        find(violation.text);
    }
}

void Notes::find(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        find(text);
    }
}

void Notes::running(const char* command) {
    restart_alarm();
    running_.set(command == nullptr ? "" : command);
}

std::string Heard::text(const char* name) const {
    const auto found = kept.find(name);
    return found != kept.end() && found->is_string() ? found->get<std::string>() : "";
}

std::vector<Finding> Heard::all() const {
    std::vector<Finding> found = findings;
    if (!died.empty()) {
        std::string end = died;
        end += text("doing").empty() ? "" : " during " + text("doing");
        end += running.empty() ? "" : ", in " + running;
        end += last_words.empty() ? "" : ": " + last_words;
        found.push_back({end, {}, {}, {}, text("at")});
    }
    return found;
}

std::vector<Finding> Heard::own() const {
    std::vector<Finding> found = all();
    std::erase_if(found, [](const Finding& finding) { return finding.rule.has_value(); });
    return found;
}

Probes::Probes(milliseconds limit, const ReaperEnds& ends)
    : limit_(limit), ends_(ends), adopts_(OSAPI::adopt_orphans()) {}

Heard Probes::run(const Body& body) {
    OSAPI::Pipe lines;
    OSAPI::Pipe words;
    lines.open();
    words.open();
    std::fflush(nullptr);
    OSAPI::SharedText running;
    const int id = OSAPI::fork();
    if (id == 0) {
        live(body, limit_, lines, words, running, ends_);
    }
    OSAPI::Offspring child(id, adopts_);
    lines.write_end().close();
    words.write_end().close();

    Listener listener(lines.read_end(), words.read_end(), ends_.parent);
    const bool hung = !listen_to_the_end(listener, child, running, limit_);
    if (hung) {
        child.kill();
    }
    child.wait();
    for (int i = 0; i < kPipeful && listener.listen(milliseconds(0)) != Listener::News::None; ++i) {
    }
    Heard heard = listener.heard();
    heard.running = running.text();
    if (const std::string left = child.left_text(); !left.empty()) {
        heard.findings.push_back({left, {}, {}, {}, heard.text("at")});
    }
    if (hung) {
        heard.died =
            String::fmt("no answer within %.3g s", static_cast<double>(limit_.count()) / 1000.0)
                .c_str();
    } else if (WIFSIGNALED(child.status())) {
        heard.died = OSAPI::how_ended(child.status());
    } else if (heard.kept.contains(kExit)) {
        heard.died = "the process was ended by a call of exit";
    } else if (!heard.kept.contains(kEnd) && heard.text("lacking").empty()) {
        heard.died = "the process was " + OSAPI::how_ended(child.status());
    }
    return heard;
}

void run_reaped(const Work& work, const Tell& hear) {
    OSAPI::Pipe parent;
    OSAPI::Pipe lines;
    parent.open();
    lines.open();
    std::fflush(nullptr);
    const int id = OSAPI::fork();
    if (id == 0) {
        reap(work, parent, lines);
    }
    parent.read_end().close();
    lines.write_end().close();
    std::optional<json> done;
    const auto take = [&](const std::string& text) {
        const json line = json::parse(text, nullptr, /*allow_exceptions=*/false);
        // A module that finds this pipe may write anything to it.
        if (!line.is_array() || line.size() != 2) {
            return;
        }
        if (line[0] == kTold) {
            hear(line[1]);
        } else if (line[0] == kDone) {
            done = line[1];
        }
    };
    OSAPI::LineReader reader(lines.read_end());
    int status = 0;
    try {
        // Not to the pipe's end: a process that a module left may hold it open.
        while (!done && reader.read(take)) {
        }
        status = OSAPI::wait_for(id);
    } catch (...) {
        parent.write_end().close();
        OSAPI::wait_for(id);
        throw;
    }
    if (!done || done->is_string()) {
        throw Defect(
            "the check itself failed: " +
            (done ? done->get<std::string>() : "its process was " + OSAPI::how_ended(status)));
    }
}

}  // namespace check
