// Pictures as the judges see them: plain double values, whatever drew them.
#pragma once

#include <cstddef>
#include <vector>

namespace support {

/// `width` x `height` pixels of `channels` linear values each, row by row from the top.
struct Picture {
    Picture() = default;
    /// A picture of zeros.
    Picture(int w, int h, int c)
        : width(w),
          height(h),
          channels(c),
          values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) *
                 static_cast<std::size_t>(c)) {}

    std::size_t index(int x, int y, int channel) const {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(x)) *
                   static_cast<std::size_t>(channels) +
               static_cast<std::size_t>(channel);
    }
    double& at(int x, int y, int channel) { return values[index(x, y, channel)]; }
    double at(int x, int y, int channel) const { return values[index(x, y, channel)]; }

    /// The sum of every value of one channel.
    double total(int channel) const {
        double sum = 0;
        for (std::size_t i = static_cast<std::size_t>(channel); i < values.size();
             i += static_cast<std::size_t>(channels)) {
            sum += values[i];
        }
        return sum;
    }

    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<double> values;
};

/// The red, green and blue of a float image that stores alpha, red, green, blue; `row_floats` is
/// the distance between rows in floats. Every float is kept exactly.
inline Picture picture_from_argb(const float* pixels, int width, int height, int row_floats) {
    Picture picture(width, height, 3);
    for (int y = 0; y < height; ++y) {
        const float* row = pixels + static_cast<std::ptrdiff_t>(y) * row_floats;
        for (int x = 0; x < width; ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                picture.at(x, y, channel) = static_cast<double>(row[4 * x + 1 + channel]);
            }
        }
    }
    return picture;
}

}  // namespace support
