// Going through the pixels of a frame.
#pragma once

namespace support {

/// Calls `use(x, y)` for every pixel, row by row.
template <class Use>
void for_each_pixel(int width, int height, Use use) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            use(x, y);
        }
    }
}

}  // namespace support
