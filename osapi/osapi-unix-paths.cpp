// What paths name.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/paths.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

u64 getsize(const char* path) {
    struct stat info;
    if (calls<PathCalls>().stat(path, &info) != 0) {
        XTHROW("stat: %s", std::strerror(errno));
    }
    return static_cast<u64>(info.st_size);
}

void rename(const char* from, const char* to) {
    if (calls<PathCalls>().rename(from, to) != 0) {
        XTHROW("rename(%s,%s): %s", from, to, std::strerror(errno));
    }
}

void rm(const char* path) {
    if (calls<PathCalls>().unlink(path) != 0) {
        XTHROW("unlink(%s): %s", path, std::strerror(errno));
    }
}

void rm_ifexist(const char* path) {
    if (calls<PathCalls>().unlink(path) != 0 && errno != ENOENT) {
        XTHROW("unlink(%s): %s", path, std::strerror(errno));
    }
}

bool file_exists(const char* path, int mode) {
    int what = F_OK;
    if ((mode & kRead) != 0) {
        what |= R_OK;
    }
    if ((mode & kWrite) != 0) {
        what |= W_OK;
    }
    return calls<PathCalls>().access(path, what) == 0;
}

bool is_directory(const char* path) {
    struct stat info;
    if (calls<PathCalls>().stat(path, &info) != 0) {
        XTHROW("stat(%s): %s", path, std::strerror(errno));
    }
    return S_ISDIR(info.st_mode);
}

FileTime get_mtime_ifexist(const char* path) {
    struct stat info;
    if (calls<PathCalls>().stat(path, &info) != 0) {
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
    if (calls<PathCalls>().utime(path, &times) != 0) {
        XTHROW("utime(%s): %s", path, std::strerror(errno));
    }
}

Remover::~Remover() noexcept(false) {
    release_in_destructor([this] { rm_ifexist(path_.c_str()); });
}

}  // namespace OSAPI
