#include "program_run.h"

#include <osapi/descendants.h>
#include <osapi/descriptor_flags.h>
#include <osapi/files.h>
#include <osapi/offspring.h>
#include <osapi/open_mode.h>
#include <osapi/pipe_readers.h>
#include <osapi/pipes.h>
#include <osapi/polling.h>
#include <osapi/processes.h>
#include <osapi/reason.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>

#include "failure.h"

namespace lumivar {
namespace {

// As a shell tells that it could not start a program.
constexpr int kNotStarted = 127;

/// In the child. Lets no exception out: the frames above belong to this program.
[[noreturn]] void become(const std::vector<const char*>& argv, OSAPI::Pipe& output,
                         OSAPI::Pipe& errors) noexcept {
    try {
        // What this program does at a signal is not the other's business, nor is what it ignores.
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
            std::signal(signal, SIG_DFL);
        }
        OSAPI::end_with_parent();
        OSAPI::dup2(OSAPI::open("/dev/null", OSAPI::kRead), STDIN_FILENO);
        OSAPI::dup2(output.write_end().fd(), STDOUT_FILENO);
        OSAPI::dup2(errors.write_end().fd(), STDERR_FILENO);
        OSAPI::exec(argv.front(), argv.data());
    } catch (const StrXception& failure) {
        std::fprintf(stderr, "%s cannot be started: %s\n", argv.front(),
                     OSAPI::reason(failure).c_str());
    }
    OSAPI::exit_now(kNotStarted);
}

/// A child that is not left behind.
class RunningChild {
public:
    explicit RunningChild(int id) : id_(id) {}
    ~RunningChild() {
        if (id_ > 0) {
            OSAPI::kill(id_, SIGKILL);
            OSAPI::wait_for(id_);
        }
    }
    RunningChild(const RunningChild&) = delete;
    RunningChild& operator=(const RunningChild&) = delete;

    int wait() {
        const int status = OSAPI::wait_for(id_);
        id_ = -1;
        return status;
    }

private:
    int id_;
};

}  // namespace

ProgramRun run_program(const std::vector<std::string>& arguments, std::size_t most) {
    std::vector<const char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    argv.push_back(nullptr);
    ProgramRun run;
    try {
        OSAPI::Pipe output;
        OSAPI::Pipe errors;
        for (OSAPI::Pipe* pipe : {&output, &errors}) {
            pipe->open();
            OSAPI::close_on_exec(pipe->read_end().fd());
            OSAPI::close_on_exec(pipe->write_end().fd());
        }
        std::fflush(nullptr);  // or the copy writes it too
        const int id = OSAPI::fork();
        if (id == 0) {
            become(argv, output, errors);
        }
        RunningChild child(id);
        output.write_end().close();
        errors.write_end().close();
        OSAPI::TailReader words(errors.read_end());
        while (output.read_end().is_open() || errors.read_end().is_open()) {
            // A closed end, -1, is passed over by the call.
            std::array<pollfd, 2> ends = {pollfd{output.read_end().fd(), POLLIN, 0},
                                          pollfd{errors.read_end().fd(), POLLIN, 0}};
            OSAPI::poll(ends.data(), ends.size(), -1, false);
            if (ends[0].revents != 0) {
                OSAPI::append_what_came(output.read_end(), run.out);
            }
            if (ends[1].revents != 0) {
                words.read();
            }
            if (run.out.size() > most) {
                throw Failure(arguments.front() + " prints more than " + std::to_string(most) +
                              " bytes");
            }
        }
        const int status = child.wait();
        run.succeeded = status == 0;
        run.how_ended = OSAPI::how_ended(status);
        run.last_words = words.last_line();
    } catch (const StrXception& failure) {
        throw system_failure("cannot run " + arguments.front(), failure);
    }
    return run;
}

}  // namespace lumivar
