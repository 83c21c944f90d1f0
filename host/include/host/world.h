// A frame of pixels as a host holds it: padded rows, with guards that show writes outside the
// pixels.
//
//   guard | row 0 pixels | padding | row 1 pixels | padding | ... | guard
//
// A guard is longer than a row, so a row drawn above the first or below the last is found.
//
// Pixels are four channels, in memory in the world's own order; readers get them as alpha, red,
// green, blue. The first pixel is aligned for its channels and, on purpose, for nothing more.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace host {

/// Bits of a channel: integers 0..255, integers 0..32768, or single-precision floats.
enum class Depth { Bits8 = 8, Bits16 = 16, Float = 32 };

/// 4, 8 or 16.
constexpr int bytes_per_pixel(Depth depth) { return static_cast<int>(depth) / 2; }

/// How a pixel's channels follow each other in memory.
enum class ChannelOrder {
    Argb,
    Bgra,  ///< Premiere Pro's
};

/// Half-open: `right` and `bottom` are the first column and row outside.
struct Rect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    std::int32_t width() const { return right - left; }
    std::int32_t height() const { return bottom - top; }
    bool empty() const { return left >= right || top >= bottom; }
    bool operator==(const Rect&) const = default;
};

/// Bytes behind each row's pixels that a plug-in must not write to.
inline constexpr int kDefaultRowPadding = 20;

/// Effects hardly draw it: as a 16-bit channel it is above the maximum of 32768, and as an alpha it
/// is never full.
inline constexpr std::byte kDefaultMark{0xA5};

class World {
public:
    /// A world of `width` x `height` pixels (0 x 0 is one without pixels), all bytes zero, the
    /// guards set. `row_padding` is a multiple of 4 bytes. Throws `HostError` for a size that
    /// addresses cannot reach.
    World(int width, int height, Depth depth, int row_padding = kDefaultRowPadding,
          ChannelOrder order = ChannelOrder::Argb);
    World() : World(0, 0, Depth::Bits8) {}

    int width() const { return width_; }
    int height() const { return height_; }
    Depth depth() const { return depth_; }
    ChannelOrder order() const { return order_; }
    /// Bytes from one row to the next.
    int row_bytes() const { return row_bytes_; }

    /// First byte of a row's pixels.
    std::byte* row(int y) { return bytes_.get() + row_offset(y); }
    const std::byte* row(int y) const { return bytes_.get() + row_offset(y); }

    /// The pixels' bytes, row by row, without padding.
    std::vector<std::byte> packed() const;

    /// One pixel: alpha, red, green, blue, whatever the order in memory. `Channel` is
    /// `std::uint8_t`, `std::uint16_t` or `float` and must be the world's.
    template <class Channel>
    std::array<Channel, 4> pixel(int x, int y) const {
        std::array<Channel, 4> channels;
        copy_pixels(x, y, 1, Depth{8 * sizeof(Channel)}, channels.data());
        to_argb<Channel>(channels);
        return channels;
    }

    /// The pixels of a row, each alpha, red, green, blue, into `channels` of four times the width.
    template <class Channel>
    void read_row(int y, std::span<Channel> channels) const {
        static_assert(std::is_trivially_copyable_v<Channel>);
        const std::size_t count = channels.size() / 4;
        copy_pixels(0, y, count, Depth{8 * sizeof(Channel)}, channels.data());
        to_argb(channels.first(4 * count));
    }

    /// Fills what of `area` lies inside with a colour of alpha, red, green and blue from 0 to 255:
    /// as it is at 8 bits, to the nearest of 0..32768 at 16, divided by 255 as floats.
    void fill(const Rect& area, const std::array<std::uint8_t, 4>& argb);

    /// Sets every byte of every pixel to `value`, so that `marked_pixels` counts what was not
    /// drawn. A new world is marked with zeros, which take no memory until they are drawn over.
    void mark(std::byte value = kDefaultMark);
    /// Pixels that still hold the mark, byte for byte.
    std::size_t marked_pixels() const;

    /// Where bytes outside the pixels were written to, in words for a message; nothing when all are
    /// as they were.
    std::optional<std::string> breach() const;

    /// Sets every pixel to a pattern of channels that are valid in every depth and never zero:
    /// codes from 1, floats above 0 and up to 1. No row is like the next.
    void fill_with_pattern();
    /// Whether every pixel is as `fill_with_pattern` left it, byte for byte.
    bool shows_pattern() const;

private:
    std::size_t row_offset(int y) const;
    std::size_t pixel_bytes() const;
    void copy_pixels(int x, int y, std::size_t count, Depth depth, void* to) const;

    /// Of whole pixels as they lie in memory.
    template <class Channel>
    void to_argb(std::span<Channel> channels) const {
        // One order is the other backwards.
        for (std::size_t i = 0; order_ == ChannelOrder::Bgra && i < channels.size(); i += 4) {
            std::reverse(channels.data() + i, channels.data() + i + 4);
        }
    }

    int width_;
    int height_;
    Depth depth_;
    ChannelOrder order_;
    int row_bytes_ = 0;
    std::size_t guard_ = 0;  ///< bytes on either side
    std::size_t size_ = 0;
    std::byte mark_{};
    struct Free {
        void operator()(std::byte* bytes) const { std::free(bytes); }
    };
    /// Zeros, of which the system makes none before they are touched: a blank world costs nothing.
    std::unique_ptr<std::byte[], Free> bytes_;
};

}  // namespace host
