// The C library's buffered files on a descriptor of ours.
#pragma once

#include <osapi/files.h>

#include <cstdio>

namespace OSAPI {

/// Owns a buffered file. Not copyable.
///
/// Destroying it writes what is buffered and closes the descriptor, which may throw "fclose: ...".
/// While another exception is under way the failure is printed instead.
class ScopedFILE {
public:
    /// Takes ownership of `fd`, which is closed if this fails. `path` serves the message alone:
    /// throws "fdopen("PATH", "MODE")".
    ScopedFILE(fd_t fd, const char* path, const char* mode);
    ScopedFILE(const ScopedFILE&) = delete;
    ScopedFILE& operator=(const ScopedFILE&) = delete;
    ~ScopedFILE() noexcept(false);

    /// Never null. Valid while this object lives.
    std::FILE* file() const { return file_; }

private:
    std::FILE* file_;
};

}  // namespace OSAPI
