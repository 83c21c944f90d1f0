#include "tool_run.h"

#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <osapi/processes.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "command_line.h"
#include "support/scratch.h"

namespace {

/// A copy of this process has none of its threads: the picture library must not wait for any there.
const bool kWithoutThreads = OIIO::attribute("threads", 1) && OIIO::attribute("exr_threads", -1);

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#else
constexpr bool kAddressSanitizer = false;
#endif

// Linux counts in KiB, macOS in bytes.
#if defined(__APPLE__)
constexpr unsigned long kMaxrssUnit = 1;
#else
constexpr unsigned long kMaxrssUnit = 1024;
#endif

std::string temporary_file() {
    std::string name = (std::filesystem::temp_directory_path() / "lumivar-run-XXXXXX").string();
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) {
        throw std::runtime_error("no temporary file");
    }
    close(descriptor);
    return name;
}

std::string take_file(const std::string& path) {
    std::string text = read_file(path);
    unlink(path.c_str());
    return text;
}

void redirect(const char* path, int flags, int target) {
    const int descriptor = open(path, flags);
    if (descriptor < 0 || dup2(descriptor, target) < 0) {
        OSAPI::exit_now(126);
    }
    close(descriptor);
}

}  // namespace

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, const ToolOptions& options)
    : out_file_(temporary_file()), err_file_(temporary_file()) {
    std::string program = options.program.empty() ? "lumivar" : options.program;
    std::vector<std::string> texts = arguments;
    std::vector<char*> argv = {program.data()};
    for (std::string& text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    std::vector<std::string> environment = options.environment;
    const std::string& output = options.output.empty() ? out_file_ : options.output;
    const std::string& error = options.error.empty() ? err_file_ : options.error;

    std::fflush(nullptr);  // or the copy writes it too
    id_ = OSAPI::fork();
    if (id_ > 0) {
        return;
    }
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        std::signal(number, number == options.ignored_signal ? SIG_IGN : SIG_DFL);
    }
    redirect(options.input.c_str(), O_RDONLY, STDIN_FILENO);
    redirect(output.c_str(), O_WRONLY, STDOUT_FILENO);
    redirect(error.c_str(), O_WRONLY | O_NOCTTY, STDERR_FILENO);
    for (const int descriptor : options.closed) {
        close(descriptor);
    }
    if (options.file_size_limit) {
        const rlimit limit = {*options.file_size_limit, *options.file_size_limit};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (options.memory_limit) {
        const rlimit limit = {*options.memory_limit, *options.memory_limit};
        setrlimit(RLIMIT_AS, &limit);
    }
    unsetenv("OCIO");  // whoever runs the tests may have colours of their own
    for (std::string& variable : environment) {
        putenv(variable.data());
    }
    if (options.program.empty()) {
        for (int descriptor = STDERR_FILENO + 1; descriptor < 256; ++descriptor) {
            if (fcntl(descriptor, F_GETFD) == FD_CLOEXEC) {
                close(descriptor);
            }
        }
        // Without the clean-up of libraries, one of which waits for its threads. What it throws
        // ends the copy here, as it would end the program.
        [&]() noexcept {
            OSAPI::exit_now(
                lumivar::run_command_line(static_cast<int>(arguments.size()) + 1, argv.data()));
        }();
    }
    execv(argv[0], argv.data());
    OSAPI::exit_now(127);
}

ToolProcess::~ToolProcess() {
    if (id_ > 0) {
        OSAPI::kill(id_, SIGKILL);
        wait();
    }
}

void ToolProcess::send(int signal) const { OSAPI::kill(id_, signal); }

ToolResult ToolProcess::wait() {
    int status = 0;
    rusage used = {};
    if (wait4(id_, &status, 0, &used) != id_) {
        throw std::runtime_error("lost the child");
    }
    id_ = -1;
    ToolResult result;
    if (WIFEXITED(status)) {
        result.code = WEXITSTATUS(status);
    } else {
        result.signal = WTERMSIG(status);
    }
    if (!kAddressSanitizer) {
        result.peak_bytes = static_cast<unsigned long>(used.ru_maxrss) * kMaxrssUnit;
    }
    result.out = take_file(out_file_);
    result.err = take_file(err_file_);
    return result;
}

ToolResult run_tool(const std::vector<std::string>& arguments, const ToolOptions& options) {
    return ToolProcess(arguments, options).wait();
}

std::string shown_on_terminal(const std::vector<std::string>& arguments, ToolOptions options,
                              int code) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
        throw std::runtime_error("no terminal");
    }
    options.error = ptsname(terminal);
    // Held open: what was written can be read after the program has ended, and then ends by a mark.
    const int other_end = open(options.error.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (run_tool(arguments, options).code != code) {
        throw std::runtime_error("the program ended otherwise");
    }
    // What is written reaches the terminal in its order, but not at once: read up to the mark.
    constexpr char kMark = '\f';
    std::string shown;
    if (write(other_end, &kMark, 1) == 1) {
        for (char c = 0; read(terminal, &c, 1) == 1 && c != kMark;) {
            shown += c;
        }
    }
    close(other_end);
    close(terminal);
    return shown;
}

void wait_until(const std::function<bool()>& happens) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(50);
    while (!happens()) {
        if (std::chrono::steady_clock::now() > limit) {
            throw std::runtime_error("it does not happen");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

std::vector<std::string> names_in(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}
