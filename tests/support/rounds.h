// How often a test of random input plays.
#pragma once

#include <cstdlib>

namespace support {

/// Under the address sanitizer and on an emulated processor, which look for faults that every round
/// would show, and take up to a hundred times as long.
#if defined(__SANITIZE_ADDRESS__) || defined(LUMIVAR_EMULATED)
inline constexpr bool kPlaysLess = true;
#else
inline constexpr bool kPlaysLess = false;
#endif

/// Programs that are made with ALL_ROUNDS (cmake/rooms.cmake) play a third of their rounds, and all
/// of them when CTest runs them with the label slow, which sets this variable.
#if defined(LUMIVAR_SOME_ROUNDS)
inline bool plays_all() { return std::getenv("LUMIVAR_ALL_ROUNDS") != nullptr; }
#else
constexpr bool plays_all() { return true; }
#endif

/// So many rounds, or the part of them that is played: a tenth where less is played.
inline int rounds(int wanted) {
    if (kPlaysLess) {
        return wanted / 10;
    }
    return plays_all() ? wanted : wanted / 3;
}

/// Likewise so many seeds: a quarter of them where less is played. Elsewhere all, so that each seed
/// keeps its name.
constexpr unsigned seeds(unsigned wanted) { return kPlaysLess ? wanted / 4 : wanted; }

}  // namespace support
