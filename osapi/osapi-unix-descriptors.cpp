// The owners of descriptors.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/files.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

FileDescriptor::~FileDescriptor() noexcept(false) {
    release_in_destructor([this] { close(); });
}

void FileDescriptor::init(fd_t fd) {
    XASSERT(!is_open());
    fd_ = fd;
}

void FileDescriptor::close() {
    if (is_open()) {
        // Released first: when closing fails, the descriptor is gone nevertheless.
        OSAPI::close(release());
    }
}

fd_t FileDescriptor::release() {
    const fd_t fd = fd_;
    fd_ = kNoDescriptor;
    return fd;
}

sword RWFileDescriptor::write(const char* buffer, uword count) {
    return OSAPI::write(fd(), buffer, count);
}

sword RWFileDescriptor::read_short(char* buffer, uword count) {
    return OSAPI::read_short(fd(), buffer, count);
}

DiskFile::DiskFile(const char* path, int mode) : RWFileDescriptor(OSAPI::open(path, mode)) {}

u64 DiskFile::getsize() const { return OSAPI::getsize(fd()); }

void DiskFile::stat(struct ::stat* out) const {
    if (calls<FileCalls>().fstat(fd(), out) != 0) {
        XTHROW("fstat: %s", std::strerror(errno));
    }
}

FileTime DiskFile::get_mtime() const {
    struct ::stat info;
    stat(&info);
    return static_cast<FileTime>(info.st_mtime);
}

s64 DiskFile::seek_from_start(s64 offset) { return OSAPI::seek_from_start(fd(), offset); }

s64 DiskFile::seek_from_curpos(s64 offset) { return OSAPI::seek_from_curpos(fd(), offset); }

}  // namespace OSAPI
