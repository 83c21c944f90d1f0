// What the system says about what paths name.
#pragma once

#include <base/string.h>
#include <osapi/files.h>

namespace OSAPI {

/// Whether `path` is a directory. Throws "stat(PATH): ...", also when nothing is there.
bool is_directory(const char* path);

/// When `path` was last modified; 0 when it is missing. Throws "stat(PATH): ...".
FileTime get_mtime_ifexist(const char* path);
/// The same, but 0 throws "stat(PATH): ..." with whatever error text is current, be the file
/// missing or as old as the epoch.
FileTime get_mtime(const char* path);
/// Sets the times of both last access and last modification. Throws "utime(PATH): ...".
void set_mtime(const char* path, FileTime time);

/// Removes a file when the object dies, on every way out; a missing file is no error.
///
/// The destructor may throw "unlink(PATH): ...". While another exception is under way the failure
/// is printed instead.
class Remover {
public:
    explicit Remover(const char* path) : path_(path) {}
    explicit Remover(const String& path) : path_(path) {}
    Remover(const Remover&) = delete;
    Remover& operator=(const Remover&) = delete;
    ~Remover() noexcept(false);

private:
    String path_;
};

}  // namespace OSAPI
