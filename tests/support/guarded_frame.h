// A float frame as the effect lays it out (alpha, red, green, blue), with guard floats around every
// row, so that a write beside a pixel is found.
#pragma once

#include <libimgops/records.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "support/pixels.h"

namespace support {

class GuardedFrame {
public:
    /// All channels 0; `padding` guard floats after every row and 64 before the first and after the
    /// last.
    GuardedFrame(int width, int height, int padding = 5)
        : width_(width),
          height_(height),
          stride_(4 * width + padding),
          floats_(
              2 * kMargin + static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height),
              std::bit_cast<float>(kGuard)) {
        for_each_pixel(width, height, [this](int x, int y) {
            for (std::size_t channel = 0; channel < 4; ++channel) {
                floats_[at(x, y) + channel] = 0;
            }
        });
    }

    int width() const { return width_; }
    int height() const { return height_; }

    StarFramebuffer view() {
        float* first = &floats_[kMargin];
        StarFramebuffer fb;
        fb.a = first;
        fb.r = first + 1;
        fb.g = first + 2;
        fb.b = first + 3;
        fb.width = width_;
        fb.height = height_;
        fb.stride = stride_;
        fb.pixel_stride = 4;
        return fb;
    }

    float& a(int x, int y) { return floats_[at(x, y)]; }
    float& r(int x, int y) { return floats_[at(x, y) + 1]; }
    float& g(int x, int y) { return floats_[at(x, y) + 2]; }
    float& b(int x, int y) { return floats_[at(x, y) + 3]; }

    /// Whether every float outside the pixels still has its bits.
    bool guards_intact() const {
        for (std::size_t i = 0; i < floats_.size(); ++i) {
            if (!is_pixel(i) && std::bit_cast<std::uint32_t>(floats_[i]) != kGuard) {
                return false;
            }
        }
        return true;
    }
    /// Whether all channels of all pixels are 0.
    bool is_blank() const {
        for (std::size_t i = 0; i < floats_.size(); ++i) {
            if (is_pixel(i) && !(floats_[i] == 0.0F)) {
                return false;
            }
        }
        return true;
    }
    /// Whether every float has the same bits, guards included.
    bool same_bits(const GuardedFrame& other) const {
        return floats_.size() == other.floats_.size() &&
               std::memcmp(floats_.data(), other.floats_.data(), sizeof(float) * floats_.size()) ==
                   0;
    }
    /// Sum of the red channel.
    double total_red() const {
        double sum = 0;
        for_each_pixel(width_, height_,
                       [&](int x, int y) { sum += static_cast<double>(floats_[at(x, y) + 1]); });
        return sum;
    }
    /// Gives all pixels this coverage.
    void cover(float coverage) {
        for_each_pixel(width_, height_, [&](int x, int y) { a(x, y) = coverage; });
    }

private:
    static constexpr std::size_t kMargin = 64;
    /// A quiet NaN that no arithmetic makes.
    static constexpr std::uint32_t kGuard = 0x7fc5a5a5;

    std::size_t at(int x, int y) const {
        return kMargin + static_cast<std::size_t>(y) * static_cast<std::size_t>(stride_) +
               4 * static_cast<std::size_t>(x);
    }
    bool is_pixel(std::size_t i) const {
        if (i < kMargin || i >= floats_.size() - kMargin) {
            return false;
        }
        return (i - kMargin) % static_cast<std::size_t>(stride_) <
               4 * static_cast<std::size_t>(width_);
    }

    int width_;
    int height_;
    int stride_;
    std::vector<float> floats_;
};

}  // namespace support
