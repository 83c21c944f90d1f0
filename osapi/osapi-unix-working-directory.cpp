// The current directory over POSIX.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/working_directory.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

String getcwd() {
    // Given no buffer, the systems this is built for return one of the right size.
    char* directory = calls<PathCalls>().getcwd(nullptr, 0);
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
    if (calls<PathCalls>().chdir(path) != 0) {
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

}  // namespace OSAPI
