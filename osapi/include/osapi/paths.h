// Paths: their text, and what the system says about what they name.
#pragma once

#include <base/string.h>
#include <osapi/files.h>

namespace OSAPI {

/// The text after the last '/': empty when the path ends in one, the whole path when it has none.
String basename(const char* path);

/// The text before the last '/'. "/" for a name directly under the root, "." for a bare name,
/// empty for an empty path.
String dirname(const char* path);

/// The text after the last '.' of the whole path, without the dot; empty when there is none.
/// A path of more than 14 characters that ends in ".inprogress" (in any case) has the extension of
/// the path before it: that of the file which is being written there.
String extension(const char* path);

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
