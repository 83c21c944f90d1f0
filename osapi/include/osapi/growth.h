// Whether something that is done again and again loses memory.
#pragma once

#include <osapi/memory.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace OSAPI {

/// What was lost: in each round, at the least, or in some rounds together.
struct Growth {
    std::uint64_t heap = 0;    ///< bytes
    std::uint64_t mapped = 0;  ///< bytes of address space
    int descriptors = 0;
    int rounds = 1;  ///< in which that was lost

    bool none() const { return heap == 0 && mapped == 0 && descriptors == 0; }
};

/// So many rounds in a row, taken together: every second may lose, or every fourth.
inline constexpr std::size_t kQuietRounds = 4;

/// Does `round` again and again and stops as soon as `quiet` rounds in a row leave nothing behind,
/// as they most often do at once.
///
/// What is lost in every round is lost for good, and no block is too small to be seen. What is made
/// once and kept, a cache or an allocator's own stock, grows in some of the first rounds and then
/// no more, whatever its size; so where some rounds lose and others do not, the late ones together
/// count, what they gave back included.
Growth growth_of(const std::function<void()>& round, std::size_t quiet = kQuietRounds);

/// "32 bytes of heap lost each time", "96 bytes of heap lost in 16 rounds".
std::string text_of(const Growth& growth);

}  // namespace OSAPI
