// Memory mappings and locked memory over POSIX.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/mappings.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

namespace {

#ifdef MAP_ANONYMOUS
constexpr int kAnonymous = MAP_ANONYMOUS;
#else
constexpr int kAnonymous = MAP_ANON;
#endif

int protection(int mode) {
    int bits = PROT_NONE;
    if ((mode & kRead) != 0) {
        bits |= PROT_READ;
    }
    if ((mode & kWrite) != 0) {
        bits |= PROT_WRITE;
    }
    return bits;
}

// On 32-bit targets a file can be larger than the address space: cut to a machine word its size
// would map a part of it as if it were the whole.
uword mappable_size(u64 size) {
    if (size > static_cast<uword>(-1)) {
        XTHROW("mmap(file): %s", std::strerror(EFBIG));
    }
    return static_cast<uword>(size);
}

}  // namespace

MemoryMapping::~MemoryMapping() noexcept(false) {
    if (addr_ == nullptr) {
        return;
    }
    // Inside the lambda the message would name the lambda in place of this destructor.
    const char* function = __PRETTY_FUNCTION__;
    release_in_destructor([this, function] {
        if (calls<MappingCalls>().munmap(addr_, size_) != 0) {
            throw StrXception(__FILE__, function, __LINE__, "munmap: %s", std::strerror(errno));
        }
    });
    addr_ = nullptr;
    size_ = 0;
}

bool MemoryMapping::adopt(void* mapped, uword size) {
    const bool is_mapping = mapped != MAP_FAILED;
    addr_ = is_mapping ? static_cast<char*>(mapped) : nullptr;
    size_ = is_mapping ? size : 0;
    return is_mapping;
}

FileMapping::FileMapping(const char* path, int mode) {
    const DiskFile file(path, mode);
    map(file.fd(), mappable_size(file.getsize()), mode);
}

FileMapping::FileMapping(fd_t fd, uword size, int mode) { map(fd, size, mode); }

void FileMapping::map(fd_t fd, uword size, int mode) {
    XASSERT(addr() == nullptr);
    if (!adopt(calls<MappingCalls>().mmap(nullptr, size, protection(mode), MAP_SHARED, fd, 0),
               size)) {
        XTHROW("mmap(file): %s", std::strerror(errno));
    }
}

AnonMapping::AnonMapping(uword size, bool shared) {
    const int flags = kAnonymous | (shared ? MAP_SHARED : MAP_PRIVATE);
    if (!adopt(calls<MappingCalls>().mmap(nullptr, size, PROT_READ | PROT_WRITE, flags,
                                          kNoDescriptor, 0),
               size)) {
        XTHROW("mmap(anonymous): %s", std::strerror(errno));
    }
}

LockMemory::LockMemory(void* addr, uword size) : addr_(addr), size_(size) {
    if (calls<MappingCalls>().mlock(addr, size) != 0) {
        XTHROW("mlock: %s", std::strerror(errno));
    }
}

// The range may have been unmapped by now, which unlocked it: a failure tells nothing.
LockMemory::~LockMemory() { calls<MappingCalls>().munlock(addr_, size_); }

}  // namespace OSAPI
