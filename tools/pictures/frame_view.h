// A finished frame as the host holds it.
#pragma once

#include <host/world.h>

#include <cstddef>

namespace lumivar {

/// Rows from the top, pixels of alpha, red, green, blue in the machine's byte order. Not owned.
struct FrameView {
    const void* pixels = nullptr;  ///< row 0
    std::ptrdiff_t row_bytes = 0;
    int width = 0;
    int height = 0;
    host::Depth depth = host::Depth::Float;
};

}  // namespace lumivar
