// Opening, and whole-buffer input and output, over POSIX.
#include <base/exceptions.h>
#include <fcntl.h>
#include <osapi/files.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

namespace {

constexpr mode_t kPermissions = 0664;

// Some systems refuse a single transfer of more bytes than an int can count.
constexpr uword kMaxTransfer = INT_MAX;

int open_flags(int mode) {
    int flags = O_CLOEXEC;
    switch (mode & kReadWrite) {
        case kWrite:
            flags |= O_WRONLY | O_CREAT | O_TRUNC;
            break;
        case kReadWrite:
            flags |= O_RDWR | O_CREAT | O_TRUNC;
            break;
        default:
            flags |= O_RDONLY;
            break;
    }
    if ((mode & kExclusive) != 0) {
        flags |= O_EXCL;
    }
    return flags;
}

// EAGAIN is retried at once: a non-blocking descriptor is polled.
bool worth_retrying() { return errno == EINTR || errno == EAGAIN; }

enum class Outcome { All, End, Failed };

// What a transfer of 0 bytes means.
enum class OnNothing { End, Retry };

// Calls transfer(done, rest) until all `count` bytes are through. `errno` tells why it failed.
template <class Transfer>
Outcome transfer_all(uword count, OnNothing on_nothing, Transfer transfer) {
    uword done = 0;
    while (done < count) {
        const ssize_t moved = transfer(done, std::min(count - done, kMaxTransfer));
        if (moved > 0) {
            done += static_cast<uword>(moved);
        } else if (moved == 0) {
            if (on_nothing == OnNothing::End) {
                return Outcome::End;
            }
        } else if (!worth_retrying()) {
            return Outcome::Failed;
        }
    }
    return Outcome::All;
}

}  // namespace

fd_t open_can_fail(const char* path, int mode) {
    if ((mode & kUnsupported) != 0) {
        return kNoDescriptor;
    }
    return calls<FileCalls>().open(path, open_flags(mode), kPermissions);
}

fd_t open(const char* path, int mode) {
    const fd_t fd = open_can_fail(path, mode);
    if (fd == kNoDescriptor) {
        XTHROW("opening file \"%s\": %s", path, std::strerror(errno));
    }
    return fd;
}

void close(fd_t fd) {
    // Never retried, not even when interrupted: the number may be another file's by now.
    if (calls<FileCalls>().close(fd) != 0) {
        XTHROW("close: %s", std::strerror(errno));
    }
}

sword read(int fd, char* buffer, uword count) {
    const Outcome outcome = transfer_all(count, OnNothing::End, [=](uword done, uword rest) {
        return calls<FileCalls>().read(fd, buffer + done, rest);
    });
    if (outcome == Outcome::End) {
        XTHROW("unexpected EOF");
    }
    if (outcome == Outcome::Failed) {
        XTHROW("read: %s", std::strerror(errno));
    }
    return static_cast<sword>(count);
}

sword read_short(int fd, char* buffer, uword count) {
    for (;;) {
        const ssize_t got = calls<FileCalls>().read(fd, buffer, std::min(count, kMaxTransfer));
        if (got >= 0) {
            return got;
        }
        if (errno == EAGAIN) {
            return 0;
        }
        if (errno != EINTR) {
            XTHROW("read: %s", std::strerror(errno));
        }
    }
}

sword read_up_to(int fd, char* buffer, uword count) {
    uword got = 0;
    const Outcome outcome = transfer_all(count, OnNothing::End, [&](uword done, uword rest) {
        got = done;
        return calls<FileCalls>().read(fd, buffer + done, rest);
    });
    if (outcome == Outcome::Failed) {
        XTHROW("read: %s", std::strerror(errno));
    }
    return static_cast<sword>(outcome == Outcome::All ? count : got);
}

sword pread(int fd, char* buffer, uword count, u64 offset) {
    const Outcome outcome = transfer_all(count, OnNothing::End, [=](uword done, uword rest) {
        return calls<FileCalls>().pread(fd, buffer + done, rest, static_cast<off_t>(offset + done));
    });
    if (outcome == Outcome::End) {
        XTHROW("unexpected EOF");
    }
    if (outcome == Outcome::Failed) {
        XTHROW("read: %s", std::strerror(errno));
    }
    return static_cast<sword>(count);
}

sword write(int fd, const char* buffer, uword count) {
    const Outcome outcome = transfer_all(count, OnNothing::Retry, [=](uword done, uword rest) {
        return calls<FileCalls>().write(fd, buffer + done, rest);
    });
    if (outcome == Outcome::Failed) {
        XTHROW("write: %s", std::strerror(errno));
    }
    return static_cast<sword>(count);
}

sword pwrite(int fd, const char* buffer, uword count, u64 offset) {
    const Outcome outcome = transfer_all(count, OnNothing::Retry, [=](uword done, uword rest) {
        return calls<FileCalls>().pwrite(fd, buffer + done, rest,
                                         static_cast<off_t>(offset + done));
    });
    if (outcome == Outcome::Failed) {
        XTHROW("write: %s", std::strerror(errno));
    }
    return static_cast<sword>(count);
}

u64 getsize(fd_t fd) {
    struct stat info;
    if (calls<FileCalls>().fstat(fd, &info) != 0) {
        XTHROW("fstat: %s", std::strerror(errno));
    }
    return static_cast<u64>(info.st_size);
}

s64 lseek(fd_t fd, s64 offset, int whence) {
    const off_t position = calls<FileCalls>().lseek(fd, offset, whence);
    if (position == -1) {
        XTHROW("lseek: %s", std::strerror(errno));
    }
    return position;
}

s64 seek_from_start(int fd, s64 offset) { return lseek(fd, offset, SEEK_SET); }

s64 seek_from_curpos(int fd, s64 offset) { return lseek(fd, offset, SEEK_CUR); }

void truncate(fd_t fd, s64 size) {
    if (calls<FileCalls>().ftruncate(fd, size) != 0) {
        XTHROW("ftruncate: %s", std::strerror(errno));
    }
}

void sync(fd_t fd) {
    if (calls<FileCalls>().fsync(fd) != 0) {
        XTHROW("fsync: %s", std::strerror(errno));
    }
}

// Not every target can leave a file's times out of it.
void datasync(int fd) { sync(fd); }

void sync() { calls<FileCalls>().sync(); }

int get_page_size() { return ::getpagesize(); }

}  // namespace OSAPI
