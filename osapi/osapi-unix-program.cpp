// The running program; each system has a way of its own to ask.
#include <osapi/program.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "syscalls.h"

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <cstdint>
#include <vector>
#endif

namespace OSAPI {

namespace {

/// `path` with links followed; empty when it leads nowhere.
String resolved(const char* path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path, nullptr), &std::free);
    return real == nullptr ? String() : String(real.get());
}

}  // namespace

String program_path() {
#ifdef __APPLE__
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);  // says only how much room the path takes
    std::vector<char> path(size);
    return _NSGetExecutablePath(path.data(), &size) == 0 ? resolved(path.data()) : String();
#else
    return resolved("/proc/self/exe");
#endif
}

bool is_console(fd_t fd) { return calls<DescriptorCalls>().isatty(fd) != 0; }

bool stdin_is_console() { return is_console(STDIN_FILENO); }

bool stdout_is_console() { return is_console(STDOUT_FILENO); }

bool stderr_is_console() { return is_console(STDERR_FILENO); }

bool running_as_root() { return calls<ProcessCalls>().geteuid() == 0; }

}  // namespace OSAPI
