// The judge of pictures. Sizes come first; a value passes only when it is known to be close enough,
// so that one that is not a number never slips through.
#pragma once

#include <limits>
#include <string>

#include "support/picture.h"

namespace support {

struct Limits {
    /// A pixel is off unless each of its values is within this of the expected one.
    double per_value = 0;
    /// The share of pixels (0 to 1) that may be off.
    double share = 0;
    /// No value may be farther off than this, whatever the share.
    double hard = std::numeric_limits<double>::infinity();
};

struct Comparison {
    bool passed = false;
    std::string report;  ///< what differs and where it is worst; for a passed one too
};

/// Whether the pictures agree within `limits`. Two values that both are no number agree; pictures
/// without a pixel do not, since nothing was compared.
Comparison compare(const Picture& actual, const Picture& expected, const Limits& limits);

/// Whether every value is within its own limit, the value of `allowance` at its place.
Comparison compare_within(const Picture& actual, const Picture& expected, const Picture& allowance);

}  // namespace support
