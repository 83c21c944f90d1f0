// What the process holds of memory and descriptors; each system has a way of its own to ask.
#include <dirent.h>
#include <fcntl.h>
#include <osapi/memory.h>

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define ALLOCATOR_IS_THE_SANITIZERS 1
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#define ALLOCATOR_IS_THE_SANITIZERS 1
#endif

#if defined(ALLOCATOR_IS_THE_SANITIZERS)
#include <cstddef>
// As g++'s run-time has it; its header does not come with every compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#elif defined(__APPLE__)
#include <malloc/malloc.h>
#else
#include <malloc.h>
#endif

#if !defined(__APPLE__) && !defined(ALLOCATOR_IS_THE_SANITIZERS)
#define MAPPINGS_TELL 1
#include <unistd.h>

#include <cstdio>
#include <memory>
#endif

namespace OSAPI {

namespace {

u64 heap_bytes() {
#if defined(ALLOCATOR_IS_THE_SANITIZERS)
    return __sanitizer_get_current_allocated_bytes();
#elif defined(__APPLE__)
    malloc_statistics_t all = {};
    malloc_zone_statistics(nullptr, &all);
    return all.size_in_use;
#else
    const struct mallinfo2 all = mallinfo2();
    return u64{all.uordblks} + all.hblkhd;
#endif
}

u64 mapped_bytes() {
#ifndef MAPPINGS_TELL
    return 0;
#else
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("/proc/self/statm", "re"),
                                                               std::fclose);
    unsigned long pages = 0;
    if (file == nullptr || std::fscanf(file.get(), "%lu", &pages) != 1) {
        return 0;
    }
    return u64{pages} * static_cast<u64>(sysconf(_SC_PAGESIZE));
#endif
}

}  // namespace

MemoryInUse memory_in_use() {
    // The heap last: reading the size of the address space takes a buffer from it for a while.
    MemoryInUse use;
    use.mapped = mapped_bytes();
    use.heap = heap_bytes();
    return use;
}

int open_descriptors() {
    int count = 0;
    // Each system has this list; to try a thousand numbers takes a hundred times as long.
    if (DIR* const list = opendir("/dev/fd")) {
        while (const dirent* const entry = readdir(list)) {
            count += entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(list);
        return count - 1;  // without the list's own
    }
    for (int fd = 0; fd < 1024; ++fd) {
        count += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
    }
    return count;
}

}  // namespace OSAPI
