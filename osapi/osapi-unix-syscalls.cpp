#include "syscalls.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>

namespace OSAPI {

Syscalls& syscalls() {
    static Syscalls table = {
        // The system's open takes its permissions as a variable argument.
        .open = [](const char* path, int flags,
                   mode_t permissions) { return ::open(path, flags, permissions); },
        .close = ::close,
        .read = ::read,
        .pread = ::pread,
        .write = ::write,
        .pwrite = ::pwrite,
        .fstat = ::fstat,
        .stat = ::stat,
        .lseek = ::lseek,
        .ftruncate = ::ftruncate,
        .fsync = ::fsync,
        .sync = ::sync,
        .rename = ::rename,
        .unlink = ::unlink,
        .access = ::access,
        .mmap = ::mmap,
        .munmap = ::munmap,
        .mlock = ::mlock,
        .munlock = ::munlock,
        .opendir = ::opendir,
        .readdir = ::readdir,
        .closedir = ::closedir,
        .getcwd = ::getcwd,
        .chdir = ::chdir,
        .utime = ::utime,
        .glob = ::glob,
    };
    return table;
}

}  // namespace OSAPI
