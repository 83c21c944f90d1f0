// Files by descriptor: the calls every other room may treat as infallible.
//
// Each function either succeeds or throws `StrXception` with a message that names the system call
// and carries the system's own error text. Functions that do otherwise say so.
#pragma once

#include <base/words.h>
#include <osapi/open_mode.h>

struct stat;

namespace OSAPI {

/// A file descriptor; `kNoDescriptor` for none.
using fd_t = int;
inline constexpr fd_t kNoDescriptor = -1;

/// Whole seconds since the epoch.
using FileTime = sword;

/// The descriptor, closed when another program is executed, or -1 with `errno` set. A mode with
/// `kUnsupported` gives -1 without asking the system and leaves `errno` alone. Does not throw.
fd_t open_can_fail(const char* path, int mode);
/// Throws "opening file "PATH": ..." where `open_can_fail` gives -1.
fd_t open(const char* path, int mode);
/// Throws "close: ..."; the descriptor is gone even then and must not be closed again.
void close(fd_t fd);

/// Reads exactly `count` bytes and returns `count`. Throws "read: ...", or "unexpected EOF" when
/// the file ends before. A non-blocking descriptor is polled without waiting.
sword read(int fd, char* buffer, uword count);
/// One read of at most `count` bytes. Returns the bytes read: 0 at the end of the file and where a
/// non-blocking descriptor has nothing yet. Throws "read: ...".
sword read_short(int fd, char* buffer, uword count);
/// Reads `count` bytes, or up to the end of the file where that comes first, and returns how many.
/// Throws "read: ...". A non-blocking descriptor is polled without waiting.
sword read_up_to(int fd, char* buffer, uword count);
/// `read` from `offset` on; the descriptor's own position stays.
sword pread(int fd, char* buffer, uword count, u64 offset);
/// Writes all `count` bytes and returns `count`. Throws "write: ...".
sword write(int fd, const char* buffer, uword count);
/// `write` from `offset` on; the descriptor's own position stays.
sword pwrite(int fd, const char* buffer, uword count, u64 offset);

/// Size in bytes. Throw "fstat: ..." and "stat: ...".
u64 getsize(fd_t fd);
u64 getsize(const char* path);

/// Moves the position and returns it, in bytes from the start. `whence` as in the C library.
/// Throws "lseek: ...".
s64 lseek(fd_t fd, s64 offset, int whence);
s64 seek_from_start(int fd, s64 offset);
s64 seek_from_curpos(int fd, s64 offset);
/// Makes the file `size` bytes long. Throws "ftruncate: ...".
void truncate(fd_t fd, s64 size);

/// Brings the file's bytes to the disk. Throw "fsync: ...".
void sync(fd_t fd);
void datasync(int fd);
/// Starts the writing of everything the system holds back.
void sync();

/// Throws "rename(FROM,TO): ...".
void rename(const char* from, const char* to);
/// Throws "unlink(PATH): ...".
void rm(const char* path);
/// The same, but a missing file is no error.
void rm_ifexist(const char* path);
/// Whether `path` may be read (`kRead`), written (`kWrite`), both, or, with mode 0, is there at
/// all. Does not throw.
bool file_exists(const char* path, int mode);

/// Bytes of a memory page.
int get_page_size();

/// Owns one descriptor, or none. Not copyable.
///
/// Destroying it closes the descriptor, which may throw "close: ...". While another exception is
/// under way the failure is printed instead.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes ownership of `fd`.
    explicit FileDescriptor(fd_t fd) : fd_(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() noexcept(false);

    fd_t fd() const { return fd_; }
    bool is_open() const { return fd_ != kNoDescriptor; }
    /// Takes ownership of `fd`; asserts that none is owned yet.
    void init(fd_t fd);
    /// Closes the descriptor if there is one. After a failure there is none either.
    void close();
    /// Gives the descriptor to the caller without closing it.
    fd_t release();
    /// Asks the device for something of its own; what `arg` must point to depends on `request`.
    /// Throws "ioctl: ...".
    void ioctl(int request, char* arg);

private:
    fd_t fd_ = kNoDescriptor;
};

/// A descriptor with the two calls of a byte stream.
class RWFileDescriptor : public FileDescriptor {
public:
    using FileDescriptor::FileDescriptor;

    sword write(const char* buffer, uword count);
    sword read_short(char* buffer, uword count);
};

/// A named file, opened at construction.
class DiskFile : public RWFileDescriptor {
public:
    /// Throws "opening file "PATH": ...".
    DiskFile(const char* path, int mode);

    /// Size in bytes.
    u64 getsize() const;
    /// Fills the caller's record. Throws "fstat: ...".
    void stat(struct ::stat* out) const;
    /// When the file was last modified. Throws "fstat: ...".
    FileTime get_mtime() const;
    s64 seek_from_start(s64 offset);
    s64 seek_from_curpos(s64 offset);
};

}  // namespace OSAPI
