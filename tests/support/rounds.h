// How often a test of random input plays.
#pragma once

namespace support {

/// Under the address sanitizer and on an emulated processor, which look for faults that every round
/// would show, and take up to a hundred times as long.
#if defined(__SANITIZE_ADDRESS__) || defined(LUMIVAR_EMULATED)
inline constexpr bool kPlaysLess = true;
#else
inline constexpr bool kPlaysLess = false;
#endif

/// So many rounds, and a tenth of them where less is played.
constexpr int rounds(int wanted) { return kPlaysLess ? wanted / 10 : wanted; }

/// Likewise so many seeds, and a quarter of them.
constexpr unsigned seeds(unsigned wanted) { return kPlaysLess ? wanted / 4 : wanted; }

}  // namespace support
