#include "reaper.h"

#include <base/exceptions.h>
#include <check/check.h>
#include <osapi/descendants.h>
#include <osapi/offspring.h>
#include <osapi/pipe_readers.h>
#include <osapi/pipes.h>
#include <osapi/processes.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "probe.h"

namespace check {
namespace {

using nlohmann::json;

// What stands first in a line.
constexpr char kTold[] = "told";
constexpr char kDone[] = "done";
constexpr char kFailed[] = "failed";

/// Never comes back, by an exception neither: the frames above belong to the process that forked.
[[noreturn]] void live(const std::function<void(const Tell&, const ReaperEnds&)>& work,
                       OSAPI::Pipe& parent, OSAPI::Pipe& lines) noexcept {
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
            say(kFailed, text_of_exception());
        }
    } catch (...) {
        // Nobody is there to be told.
    }
    OSAPI::exit_now(0);
}

}  // namespace

void run_reaped(const std::function<void(const Tell& tell, const ReaperEnds& ends)>& work,
                const Tell& hear) {
    OSAPI::Pipe parent;
    OSAPI::Pipe lines;
    parent.open();
    lines.open();
    std::fflush(nullptr);
    const int id = OSAPI::fork();
    if (id == 0) {
        live(work, parent, lines);
    }
    parent.read_end().close();
    lines.write_end().close();
    std::string last;
    std::string failure;
    const auto take = [&](const std::string& text) {
        const json line = json::parse(text, nullptr, /*allow_exceptions=*/false);
        // A module that finds this pipe may write anything to it.
        if (!line.is_array() || line.size() != 2 || !line[0].is_string()) {
            return;
        }
        last = line.at(0);
        if (last == kFailed) {
            failure = line.at(1);
        } else if (last == kTold) {
            hear(line.at(1));
        }
    };
    OSAPI::LineReader reader(lines.read_end());
    int status = 0;
    try {
        // Not to the pipe's end: a process that a module left may hold it open.
        while (last != kDone && last != kFailed && reader.read(take)) {
        }
        status = OSAPI::wait_for(id);
    } catch (...) {
        parent.write_end().close();
        OSAPI::wait_for(id);
        throw;
    }
    if (last == kFailed || last != kDone) {
        throw Defect("the check itself failed: " +
                     (last == kFailed ? failure : "its process was " + OSAPI::how_ended(status)));
    }
}

}  // namespace check
