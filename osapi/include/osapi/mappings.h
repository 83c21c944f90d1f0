// Files and blocks of memory mapped into the address space.
#pragma once

#include <base/words.h>
#include <osapi/open_mode.h>

#ifndef _WIN32
#include <osapi/files.h>
#endif

namespace OSAPI {

/// Owns a range of mapped bytes, or none. Not copyable.
///
/// Destroying it unmaps the range, which may throw "munmap: ...". While another exception is under
/// way the failure is printed instead.
class MemoryMapping {
public:
    MemoryMapping() = default;
    MemoryMapping(const MemoryMapping&) = delete;
    MemoryMapping& operator=(const MemoryMapping&) = delete;
    ~MemoryMapping() noexcept(false);

    /// The first byte; null when nothing is mapped. Valid while this object lives.
    char* addr() const { return addr_; }
    /// Bytes mapped.
    uword size() const { return size_; }

protected:
    /// Adopts the result of the system's mapping call and tells whether it is a mapping; if not,
    /// nothing is mapped.
    bool adopt(void* mapped, uword size);

private:
    char* addr_ = nullptr;
    uword size_ = 0;
};

/// A file's bytes, shared with everyone who maps or reads it.
class FileMapping : public MemoryMapping {
public:
    FileMapping() = default;
    /// Maps the whole file; it stays mapped after its descriptor is closed, which happens before
    /// the constructor returns. Throws "opening file "PATH": ..." and "mmap(file): ...", the latter
    /// for an empty file too.
    ///
    /// While it is mapped others may read, write and rename the file, and delete it where the
    /// system lets them; on Windows files are mapped for reading alone, and
    /// another mode than `kRead` is an assertion.
    FileMapping(const char* path, int mode);
#ifndef _WIN32
    /// Maps the first `size` bytes of an open file, which the caller goes on owning.
    FileMapping(fd_t fd, uword size, int mode);

    /// The same on an object that maps nothing yet. `kRead` makes the bytes readable, `kWrite`
    /// writable. Throws "mmap(file): ...".
    void map(fd_t fd, uword size, int mode);
#endif
};

#ifndef _WIN32

/// Readable and writable zeros from the system.
class AnonMapping : public MemoryMapping {
public:
    /// `shared`: child processes see the same bytes. Throws "mmap(anonymous): ...".
    AnonMapping(uword size, bool shared);
};

/// Keeps a range of the caller's memory from being paged out while the object lives.
class LockMemory {
public:
    /// Throws "mlock: ...".
    LockMemory(void* addr, uword size);
    LockMemory(const LockMemory&) = delete;
    LockMemory& operator=(const LockMemory&) = delete;
    ~LockMemory();

private:
    void* addr_;
    uword size_;
};

#endif

}  // namespace OSAPI
