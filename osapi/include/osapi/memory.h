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

/// As of now. The heap is told to the block: what is asked for and freed again leaves no trace,
/// but for small blocks that a running thread keeps at hand for the next time.
MemoryInUse memory_in_use();

/// How many file descriptors the process has open; of the first 1024, where no list of them can be
/// had.
int open_descriptors();

}  // namespace OSAPI
