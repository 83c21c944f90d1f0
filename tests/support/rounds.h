// How often a test of random input plays.
#pragma once

namespace support {

/// So many rounds, and a tenth of them under the address sanitizer: it looks for faults that every
/// round would show, and takes up to a hundred times as long for each large block that a round
/// allocates.
constexpr int rounds(int wanted) {
#ifdef __SANITIZE_ADDRESS__
    return wanted / 10;
#else
    return wanted;
#endif
}

}  // namespace support
