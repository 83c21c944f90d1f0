// Which directory is current.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// The current directory. Throws "getcwd: ...".
String getcwd();

/// Makes `path` the current directory. "." does nothing, even in a directory that has been removed.
/// Throws "chdir(PATH): ...".
void chdir(const char* path);

/// Another current directory while the object lives.
///
/// The destructor changes back, which may throw "chdir(PATH): ...". While another exception is
/// under way the failure is printed instead.
class ScopedChdir {
public:
    /// An empty path changes nothing. Throws "getcwd: ..." and "chdir(PATH): ...".
    explicit ScopedChdir(const char* path);
    ScopedChdir(const ScopedChdir&) = delete;
    ScopedChdir& operator=(const ScopedChdir&) = delete;
    ~ScopedChdir() noexcept(false);

private:
    String saved_;
    bool changed_ = false;
};

}  // namespace OSAPI
