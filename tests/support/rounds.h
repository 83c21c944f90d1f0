// How often a test of random input plays.
#pragma once

namespace support {

/// So many rounds, and a tenth of them under the address sanitizer and on an emulated processor:
/// those look for faults that every round would show, and take up to a hundred times as long.
constexpr int rounds(int wanted) {
#if defined(__SANITIZE_ADDRESS__) || defined(LUMIVAR_EMULATED)
    return wanted / 10;
#else
    return wanted;
#endif
}

/// Likewise so many seeds, and a quarter of them there.
constexpr unsigned seeds(unsigned wanted) {
#if defined(__SANITIZE_ADDRESS__) || defined(LUMIVAR_EMULATED)
    return wanted / 4;
#else
    return wanted;
#endif
}

}  // namespace support
