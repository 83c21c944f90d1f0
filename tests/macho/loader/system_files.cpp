#include "system_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "system_errors.h"

namespace loader {
namespace {

/// The call itself, but for where its error number goes; given twice for the sake of its type.
template <auto function, class Result, class... Arguments>
void* same(Result (*)(Arguments...)) {
    return address(+[](Arguments... arguments) -> Result { return told(function(arguments...)); });
}

struct AppleTime {
    std::int64_t seconds;
    std::int64_t nanoseconds;
};

struct AppleStat {
    std::int32_t device;
    std::uint16_t mode;
    std::uint16_t links;
    std::uint64_t number;
    std::uint32_t user;
    std::uint32_t group;
    std::int32_t special_device;
    std::int32_t gap;
    AppleTime accessed;
    AppleTime modified;
    AppleTime changed;
    AppleTime born;
    std::int64_t size;
    std::int64_t blocks;
    std::int32_t block_size;
    std::uint32_t flags;
    std::uint32_t generation;
    std::int32_t spare;
    std::int64_t spares[2];
};
static_assert(sizeof(AppleStat) == 144);

AppleTime apple_time(const timespec& time) { return {time.tv_sec, time.tv_nsec}; }

int stat_of_descriptor(int descriptor, AppleStat* apple) {
    struct stat here = {};
    if (told(fstat(descriptor, &here)) != 0) {
        return -1;
    }
    *apple = {.device = static_cast<std::int32_t>(here.st_dev),
              .mode = static_cast<std::uint16_t>(here.st_mode),
              .links = static_cast<std::uint16_t>(here.st_nlink),
              .number = here.st_ino,
              .user = here.st_uid,
              .group = here.st_gid,
              .special_device = static_cast<std::int32_t>(here.st_rdev),
              .gap = 0,
              .accessed = apple_time(here.st_atim),
              .modified = apple_time(here.st_mtim),
              .changed = apple_time(here.st_ctim),
              .born = apple_time(here.st_ctim),  // this system does not say
              .size = here.st_size,
              .blocks = here.st_blocks,
              .block_size = static_cast<std::int32_t>(here.st_blksize),
              .flags = 0,
              .generation = 0,
              .spare = 0,
              .spares = {}};
    return 0;
}

void* map_memory(void* at, std::size_t size, int protection, int flags, int descriptor,
                 off_t offset) {
    constexpr Flag table[] = {{0x1, MAP_SHARED}, {0x2, MAP_PRIVATE}, {0x1000, MAP_ANONYMOUS}};
    void* const mapped =
        mmap(at, size, protection, translated("mmap", flags, table), descriptor, offset);
    if (mapped == MAP_FAILED) {  // alike on both systems
        image_errno() = apple_error(errno);
    }
    return mapped;
}

struct AppleEntry {
    std::uint64_t number;
    std::uint64_t place;
    std::uint16_t record_length;
    std::uint16_t name_length;
    std::uint8_t type;
    char name[1024];
};
static_assert(sizeof(AppleEntry) == 1048);

struct AppleFolder {
    DIR* here;
    AppleEntry entry;
};

AppleFolder* open_folder(const char* path) {
    DIR* const here = told(opendir(path));
    return here == nullptr ? nullptr : new AppleFolder{here, {}};
}

AppleEntry* next_entry(AppleFolder* folder) {
    errno = 0;
    const dirent* const here = readdir(folder->here);
    if (here == nullptr) {
        if (errno != 0) {
            image_errno() = apple_error(errno);
        }
        return nullptr;
    }
    AppleEntry& entry = folder->entry;
    const std::size_t length = std::min(std::strlen(here->d_name), sizeof entry.name - 1);
    entry = {here->d_ino, 0, sizeof entry, static_cast<std::uint16_t>(length), here->d_type, {}};
    std::memcpy(entry.name, here->d_name, length);
    return &entry;
}

int close_folder(AppleFolder* folder) {
    DIR* const here = folder->here;
    delete folder;
    return told(closedir(here));
}

}  // namespace

int open_file(const char* path, int flags, int mode) {
    constexpr Flag table[] = {{0x1, O_WRONLY}, {0x2, O_RDWR},           {0x4, O_NONBLOCK},
                              {0x8, O_APPEND}, {0x200, O_CREAT},        {0x400, O_TRUNC},
                              {0x800, O_EXCL}, {0x100000, O_DIRECTORY}, {0x1000000, O_CLOEXEC}};
    return told(open(path, translated("open", flags, table), mode));
}

Symbols file_calls() {
    return {
        {"_close", same<&close>(&close)},
        {"_read", same<&read>(&read)},
        {"_pread", same<&pread>(&pread)},
        {"_lseek", same<&lseek>(&lseek)},
        {"_mmap", address(&map_memory)},
        {"_munmap", same<&munmap>(&munmap)},
        // On x86_64 there are two generations of the records, told apart by name.
        {"_fstat", address(&stat_of_descriptor)},
        {"_fstat$INODE64", address(&stat_of_descriptor)},
        {"_opendir", address(&open_folder)},
        {"_opendir$INODE64", address(&open_folder)},
        {"_readdir", address(&next_entry)},
        {"_readdir$INODE64", address(&next_entry)},
        {"_closedir", address(&close_folder)},
    };
}

}  // namespace loader
