// The running program; each system has a way of its own to ask.
#include <osapi/program.h>

#include <cstdlib>
#include <memory>

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

}  // namespace OSAPI
