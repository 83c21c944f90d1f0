// Whether something that is done again and again loses memory.
#pragma once

#include <osapi/memory.h>

#include <cstdint>
#include <functional>
#include <string>

namespace conformance {

/// What each round lost at the least.
struct Growth {
    std::uint64_t heap = 0;    ///< bytes
    std::uint64_t mapped = 0;  ///< bytes of address space
    int descriptors = 0;

    bool none() const { return heap == 0 && mapped == 0 && descriptors == 0; }
};

/// Does `round` again and again and stops as soon as one leaves nothing behind, as it most often
/// does at once.
///
/// What is lost in every round is lost for good. What is made once and kept, a cache or an
/// allocator's own stock, grows in some rounds and not in others, so the least growth of all rounds
/// is 0 for it, whatever its size; and no block is too small to be seen. The first round is not
/// counted: it fills what is kept.
Growth least_growth(const std::function<void()>& round);

/// "32 bytes of heap lost each time".
std::string text_of(const Growth& growth);

}  // namespace conformance
