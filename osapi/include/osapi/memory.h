// What the running process holds of memory.
#pragma once

#include <base/words.h>

namespace OSAPI {

struct MemoryInUse {
    /// Bytes that `malloc` and its kin have handed out and not taken back.
    u64 heap = 0;
    /// Bytes of address space; 0 where the system does not tell, or a sanitizer has most of them.
    u64 mapped = 0;
};

/// As of now. The heap is counted block by block: what has been freed does not count, except for
/// small blocks that a running thread keeps for reuse.
MemoryInUse memory_in_use();

/// How many file descriptors the process has open. Where the system gives no list of them, only the
/// first 1024 numbers are tried.
int open_descriptors();

}  // namespace OSAPI
