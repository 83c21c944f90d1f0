// Directories over POSIX.
#include <base/exceptions.h>
#include <base/release.h>
#include <dirent.h>
#include <glob.h>
#include <osapi/directories.h>

#include <cerrno>
#include <cstdlib>
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
        return syscalls().readdir(directory_);
    }
    int close() {
        DIR* directory = directory_;
        directory_ = nullptr;
        return syscalls().closedir(directory);
    }

private:
    DIR* directory_;
};

}  // namespace

void lsdir(const char* path, Array<String>& out) {
    DIR* opened = syscalls().opendir(path);
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

String getcwd() {
    // Given no buffer, the systems this is built for return one of the right size.
    char* directory = syscalls().getcwd(nullptr, 0);
    if (directory == nullptr) {
        XTHROW("getcwd: %s", std::strerror(errno));
    }
    String result(directory);
    std::free(directory);
    return result;
}

void chdir(const char* path) {
    if (std::strcmp(path, ".") == 0) {
        return;
    }
    if (syscalls().chdir(path) != 0) {
        XTHROW("chdir(%s): %s", path, std::strerror(errno));
    }
}

ScopedChdir::ScopedChdir(const char* path) : saved_(getcwd()) {
    if (*path != '\0') {
        changed_ = true;
        chdir(path);
    }
}

ScopedChdir::~ScopedChdir() noexcept(false) {
    if (changed_) {
        release_in_destructor([this] { chdir(saved_.c_str()); });
    }
}

struct Glob::Matches {
    Matches() = default;
    Matches(const Matches&) = delete;
    Matches& operator=(const Matches&) = delete;
    ~Matches() { ::globfree(&result); }

    unsigned int index = 0;
    glob_t result = {};
    bool none = false;
};

Glob::Glob(const char* pattern) : matches_(new Matches) {
    const int code = syscalls().glob(pattern, 0, nullptr, &matches_->result);
    if (code == GLOB_NOMATCH) {
        matches_->none = true;
    } else if (code != 0) {
        XTHROW("glob(%s): %d", pattern, code);
    }
}

Glob::~Glob() = default;

const char* Glob::next() {
    if (matches_->none) {
        return nullptr;
    }
    // The system's list ends in a null, where the index stays.
    const char* match = matches_->result.gl_pathv[matches_->index];
    if (match != nullptr) {
        ++matches_->index;
    }
    return match;
}

}  // namespace OSAPI
