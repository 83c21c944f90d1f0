// The system's own calls: mapped and locked memory.
#include <sys/mman.h>

#include "syscalls.h"

namespace OSAPI {

template <>
MappingCalls& calls() {
    static MappingCalls table = {
        .mmap = ::mmap,
        .munmap = ::munmap,
        .mlock = ::mlock,
        .munlock = ::munlock,
    };
    return table;
}

}  // namespace OSAPI
