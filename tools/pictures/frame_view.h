// A finished frame as the host holds it.
#pragma once

#include <host/world.h>

#include <cstddef>
#include <cstring>

namespace lumivar {

/// Rows from the top, pixels of alpha, red, green, blue in the machine's byte order. Not owned.
struct FrameView {
    const void* pixels = nullptr;  ///< row 0
    std::ptrdiff_t row_bytes = 0;
    int width = 0;
    int height = 0;
    host::Depth depth = host::Depth::Float;
};

/// One sample as the host stores it; channels 0 to 3 are alpha, red, green, blue. `Code` is the
/// type of the frame's depth. A copy through the same type keeps every bit, of not-a-numbers too.
template <class Code>
Code stored_sample(const FrameView& frame, int x, int y, std::size_t channel) {
    Code code;
    std::memcpy(&code,
                static_cast<const std::byte*>(frame.pixels) + y * frame.row_bytes +
                    (static_cast<std::size_t>(x) * 4 + channel) * sizeof(Code),
                sizeof(Code));
    return code;
}

}  // namespace lumivar
