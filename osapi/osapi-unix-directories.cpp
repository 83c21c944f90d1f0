// What is in directories, over POSIX.
#include <base/exceptions.h>
#include <dirent.h>
#include <osapi/directories.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

namespace {

// Closes the directory when an exception passes, and ignores a failure of that: it would hide the
// exception.
class OpenDirectory {
public:
    explicit OpenDirectory(DIR* directory) : directory_(directory) {}
    OpenDirectory(const OpenDirectory&) = delete;
    OpenDirectory& operator=(const OpenDirectory&) = delete;
    ~OpenDirectory() {
        if (directory_ != nullptr) {
            close();
        }
    }

    // The next entry, or null with errno 0 at the end and another errno after a failure.
    const dirent* next() {
        errno = 0;
        return calls<DirectoryCalls>().readdir(directory_);
    }
    int close() {
        DIR* directory = directory_;
        directory_ = nullptr;
        return calls<DirectoryCalls>().closedir(directory);
    }

private:
    DIR* directory_;
};

}  // namespace

void lsdir(const char* path, Array<String>& out) {
    DIR* opened = calls<DirectoryCalls>().opendir(path);
    if (opened == nullptr) {
        XTHROW("opendir(\"%s\"): %s", path, std::strerror(errno));
    }
    OpenDirectory directory(opened);
    while (const dirent* entry = directory.next()) {
        out.append(String(entry->d_name));
    }
    // Half a listing must not pass for the whole.
    if (errno != 0) {
        XTHROW("readdir(\"%s\"): %s", path, std::strerror(errno));
    }
    if (directory.close() != 0) {
        XTHROW("closedir(\"%s\"): %s", path, std::strerror(errno));
    }
}

}  // namespace OSAPI
