// Pipes over POSIX.
#include <base/exceptions.h>
#include <osapi/pipes.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

namespace {

constexpr mode_t kPermissions = 0664;

void hand_over(FileDescriptor& from, FileDescriptor& to) {
    to.init(from.fd());
    from.release();
}

}  // namespace

void Pipe::open() {
    int ends[2];
    if (calls<DescriptorCalls>().pipe(ends) != 0) {
        XTHROW("pipe: %s", std::strerror(errno));
    }
    // Owned at once, for when the pipe turns out to be open already.
    FileDescriptor reader(ends[0]);
    FileDescriptor writer(ends[1]);
    hand_over(reader, read_end_);
    try {
        hand_over(writer, write_end_);
    } catch (...) {
        // The writing end was open already: the new reading end goes too.
        reader.init(read_end_.release());
        throw;
    }
}

void make_named_pipe(const char* path) {
    if (calls<DescriptorCalls>().mknod(path, S_IFIFO | kPermissions, 0) != 0) {
        XTHROW("mknod(%s): %s", path, std::strerror(errno));
    }
}

}  // namespace OSAPI
