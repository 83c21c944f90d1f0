// The system's own calls: the bytes of files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "syscalls.h"

namespace OSAPI {

template <>
FileCalls& calls() {
    static FileCalls table = {
        // The system's open takes its permissions as a variable argument.
        .open = [](const char* path, int flags,
                   mode_t permissions) { return ::open(path, flags, permissions); },
        .close = ::close,
        .read = ::read,
        .pread = ::pread,
        .write = ::write,
        .pwrite = ::pwrite,
        .fstat = ::fstat,
        .lseek = ::lseek,
        .ftruncate = ::ftruncate,
        .fsync = ::fsync,
        .sync = ::sync,
    };
    return table;
}

}  // namespace OSAPI
