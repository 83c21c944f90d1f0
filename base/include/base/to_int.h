// Floating point to integer without undefined behaviour.
#pragma once

#include <cstdint>
#include <limits>

/// `x` with its fraction dropped, or the most negative 32-bit integer when that does not fit or `x`
/// is not a number: what the processors' own conversion gives, defined on every target. Takes a
/// `float` as well, which widens exactly.
inline std::int32_t s32_from_double(double x) {
    // Both limits are exact in double; a NaN is on neither side of them.
    if (x > -2147483649.0 && x < 2147483648.0) {
        return static_cast<std::int32_t>(x);
    }
    return std::numeric_limits<std::int32_t>::min();
}
