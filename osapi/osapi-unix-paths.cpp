// The text of paths, and the status of what they name.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/paths.h>
#include <strings.h>
#include <sys/stat.h>
#include <utime.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

namespace {

const char* const kInProgress = ".inprogress";
// With three characters or fewer before the suffix, the suffix is taken for a real extension.
constexpr std::size_t kLongestExempt = 14;

String after_last(char character, const String& text, const char* otherwise) {
    const unsigned int index = text.findr(character);
    return index == String::kNotFound ? String(otherwise) : String(text.c_str() + index + 1);
}

}  // namespace

String basename(const char* path) { return after_last('/', path, path); }

String dirname(const char* path) {
    if (*path == '\0') {
        return {};
    }
    for (std::size_t index = std::strlen(path); index > 0; --index) {
        if (path[index] == '/') {
            return {path, static_cast<unsigned int>(index)};
        }
    }
    return *path == '/' ? "/" : ".";
}

String extension(const char* path) {
    const char* dot = std::strrchr(path, '.');
    if (dot != nullptr && strcasecmp(dot, kInProgress) == 0 && std::strlen(path) > kLongestExempt) {
        return after_last('.', String(path, static_cast<unsigned int>(dot - path)), "");
    }
    return after_last('.', path, "");
}

bool is_directory(const char* path) {
    struct stat info;
    if (syscalls().stat(path, &info) != 0) {
        XTHROW("stat(%s): %s", path, std::strerror(errno));
    }
    return S_ISDIR(info.st_mode);
}

FileTime get_mtime_ifexist(const char* path) {
    struct stat info;
    if (syscalls().stat(path, &info) != 0) {
        if (errno == ENOENT) {
            return 0;
        }
        XTHROW("stat(%s): %s", path, std::strerror(errno));
    }
    return static_cast<FileTime>(info.st_mtime);
}

FileTime get_mtime(const char* path) {
    const FileTime time = get_mtime_ifexist(path);
    // A file from the very epoch is refused too: by contract 0 means that there is none.
    if (time == 0) {
        XTHROW("stat(%s): %s", path, std::strerror(errno));
    }
    return time;
}

void set_mtime(const char* path, FileTime time) {
    const utimbuf times = {time, time};
    if (syscalls().utime(path, &times) != 0) {
        XTHROW("utime(%s): %s", path, std::strerror(errno));
    }
}

Remover::~Remover() noexcept(false) {
    release_in_destructor([this] { rm_ifexist(path_.c_str()); });
}

}  // namespace OSAPI
