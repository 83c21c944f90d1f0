// What the process holds, to see that it does not grow.
#pragma once

#include <support/scratch.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>

namespace process {

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer keeps freed memory back on purpose; it finds leaks itself.
inline constexpr bool kMemoryTells = false;
#else
inline constexpr bool kMemoryTells = true;
#endif

struct Use {
    std::size_t resident_bytes = 0;
    int mappings = 0;
    int descriptors = 0;
};

/// Lines of the process's map, all or those that name a file.
inline int mappings_of(const std::string& file) {
    std::ifstream maps("/proc/self/maps");
    if (!maps) {
        throw std::runtime_error("no map of the process");
    }
    int count = 0;
    for (std::string line; std::getline(maps, line);) {
        count += line.find(file) != std::string::npos ? 1 : 0;
    }
    return count;
}

inline Use use() {
    std::ifstream statm("/proc/self/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    if (!(statm >> size >> resident)) {
        throw std::runtime_error("no memory count of the process");
    }
    return {resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)), mappings_of(""),
            open_descriptors()};
}

}  // namespace process
