// Directories: what is in them, and which one is current.
#pragma once

#include <base/array.h>
#include <base/scoped_ptr.h>
#include <base/string.h>

namespace OSAPI {

/// Appends the name of every entry to `out`, in the system's order; "." and "..", hidden files and
/// all else included. Throws "opendir("PATH"): ...", "readdir("PATH"): ..." and
/// "closedir("PATH"): ...".
void lsdir(const char* path, Array<String>& out);

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

/// The paths that match a shell pattern, sorted.
class Glob {
public:
    /// No match is no error; any other failure throws "glob(PATTERN): CODE" with the system's code.
    explicit Glob(const char* pattern);
    Glob(const Glob&) = delete;
    Glob& operator=(const Glob&) = delete;
    ~Glob();

    /// The next match, valid while this object lives; null after the last one.
    const char* next();

private:
    struct Matches;
    scoped_ptr<Matches> matches_;
};

}  // namespace OSAPI
