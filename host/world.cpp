#include <host/errors.h>
#include <host/world.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace host {
namespace {

constexpr std::byte kGuard{0xC3};
constexpr int kWhite8 = 255;
constexpr int kWhite16 = 32768;

/// Bytes before the first row and behind the last: more than a row, so that they catch a row drawn
/// too high or too low. Not a multiple of 16, since the pixels of real hosts are not aligned for
/// vector loads.
std::uint64_t guard_bytes(std::int64_t row_bytes) {
    constexpr std::uint64_t beyond_a_row = 4096;
    constexpr std::uint64_t vector = 16;
    const std::uint64_t whole_vectors =
        (static_cast<std::uint64_t>(row_bytes) + vector - 1) / vector * vector;
    return whole_vectors + beyond_a_row + 4;
}

std::optional<std::size_t> first_overwritten(const std::byte* bytes, std::size_t count) {
    const std::byte* const end = bytes + count;
    const std::byte* const found =
        std::find_if(bytes, end, [](std::byte byte) { return byte != kGuard; });
    if (found == end) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - bytes);
}

template <class Channel>
Channel channel_of(std::uint8_t value) {
    if constexpr (std::is_same_v<Channel, std::uint8_t>) {
        return value;
    } else if constexpr (std::is_same_v<Channel, std::uint16_t>) {
        return static_cast<Channel>((value * kWhite16 + kWhite8 / 2) / kWhite8);
    } else {
        return static_cast<Channel>(value) / Channel{kWhite8};
    }
}

// The pattern is taken from a line of channels, codes from 1 to 32768 that differ much from one to
// the next. Each row begins a pixel further on in the line; after kPatternRows it starts over.
constexpr int kPatternStart = 23456;
constexpr int kPatternLeap = 12345;
constexpr int kPatternRows = 61;

template <class Channel>
Channel channel_of_code(int code) {
    if constexpr (std::is_same_v<Channel, std::uint8_t>) {
        return static_cast<Channel>(1 + code % kWhite8);
    } else if constexpr (std::is_same_v<Channel, std::uint16_t>) {
        return static_cast<Channel>(code);
    } else {
        // Divided by a prime, so that every byte of the quotient varies.
        return static_cast<Channel>(code) / 32771.0F;
    }
}

template <class Channel>
std::vector<std::byte> line_of(std::size_t channels) {
    std::vector<std::byte> line(channels * sizeof(Channel));
    int code = kPatternStart;
    for (std::size_t i = 0; i < channels; ++i) {
        const Channel channel = channel_of_code<Channel>(code);
        std::memcpy(line.data() + i * sizeof channel, &channel, sizeof channel);
        code = 1 + (code + kPatternLeap) % kWhite16;
    }
    return line;
}

/// The pattern's line for a world of `width` pixels a row.
std::vector<std::byte> pattern_line(Depth depth, int width) {
    const std::size_t channels = 4 * (static_cast<std::size_t>(width) + kPatternRows);
    return depth == Depth::Bits8    ? line_of<std::uint8_t>(channels)
           : depth == Depth::Bits16 ? line_of<std::uint16_t>(channels)
                                    : line_of<float>(channels);
}

/// Where a row begins in the line.
std::size_t pattern_offset(Depth depth, int y) {
    return static_cast<std::size_t>(y % kPatternRows) *
           static_cast<std::size_t>(bytes_per_pixel(depth));
}

/// The bytes of a pixel.
template <class Channel>
std::array<std::byte, 16> pixel_of(std::array<std::uint8_t, 4> argb, ChannelOrder order) {
    if (order == ChannelOrder::Bgra) {
        std::reverse(argb.begin(), argb.end());
    }
    std::array<Channel, 4> channels;
    std::transform(argb.begin(), argb.end(), channels.begin(), channel_of<Channel>);
    std::array<std::byte, 16> bytes{};
    std::memcpy(bytes.data(), channels.data(), sizeof channels);
    return bytes;
}

}  // namespace

World::World(int width, int height, Depth depth, int row_padding, ChannelOrder order)
    : width_(width), height_(height), depth_(depth), order_(order) {
    if (width < 0 || height < 0 || row_padding < 0 || row_padding % 4 != 0) {
        throw std::invalid_argument(
            "a world needs a size of 0 or more and rows padded by whole words");
    }
    const std::int64_t row = std::int64_t{width} * bytes_per_pixel(depth) + row_padding;
    // If the row fits a stride of 32 bits, these sums stay far below 2^64.
    const std::uint64_t guard = guard_bytes(row);
    const bool strided = row <= std::numeric_limits<std::int32_t>::max();
    const std::uint64_t size =
        strided ? static_cast<std::uint64_t>(row) * static_cast<unsigned>(height) + 2 * guard : 0;
    if (!strided || size > std::uint64_t{std::numeric_limits<std::ptrdiff_t>::max()}) {
        throw HostError("a world of " + std::to_string(width) + " x " + std::to_string(height) +
                        " pixels is beyond what addresses reach");
    }
    row_bytes_ = static_cast<int>(row);
    guard_ = static_cast<std::size_t>(guard);
    size_ = static_cast<std::size_t>(size);
    bytes_.reset(static_cast<std::byte*>(std::calloc(std::max<std::size_t>(size_, 1), 1)));
    if (!bytes_) {
        throw std::bad_alloc();
    }

    std::fill_n(bytes_.get(), guard_, kGuard);
    for (int y = 0; y < height_; ++y) {
        std::fill_n(this->row(y) + pixel_bytes(), static_cast<std::size_t>(row_padding), kGuard);
    }
    std::fill_n(bytes_.get() + size_ - guard_, guard_, kGuard);
}

std::size_t World::row_offset(int y) const {
    return guard_ + static_cast<std::size_t>(y) * static_cast<std::size_t>(row_bytes_);
}

std::size_t World::pixel_bytes() const {
    return static_cast<std::size_t>(width_) * static_cast<std::size_t>(bytes_per_pixel(depth_));
}

std::vector<std::byte> World::packed() const {
    std::vector<std::byte> all;
    for (int y = 0; y < height_; ++y) {
        all.insert(all.end(), row(y), row(y) + pixel_bytes());
    }
    return all;
}

void World::copy_pixels(int x, int y, std::size_t count, Depth depth, void* to) const {
    if (depth != depth_) {
        throw std::invalid_argument("the world has channels of another depth");
    }
    if (x < 0 || y < 0 || x > width_ || y >= height_ ||
        count > static_cast<std::size_t>(width_ - x)) {
        throw std::out_of_range("no such pixel in the world");
    }
    const std::size_t size = static_cast<std::size_t>(bytes_per_pixel(depth));
    std::memcpy(to, row(y) + static_cast<std::size_t>(x) * size, count * size);
}

void World::fill(const Rect& area, const std::array<std::uint8_t, 4>& argb) {
    const std::array<std::byte, 16> pixel =
        depth_ == Depth::Bits8    ? pixel_of<std::uint8_t>(argb, order_)
        : depth_ == Depth::Bits16 ? pixel_of<std::uint16_t>(argb, order_)
                                  : pixel_of<float>(argb, order_);
    const std::size_t size = static_cast<std::size_t>(bytes_per_pixel(depth_));
    const int left = std::max(area.left, 0);
    const int right = std::min(area.right, width_);
    const int bottom = std::min(area.bottom, height_);
    if (left >= right) {
        return;
    }
    for (int y = std::max(area.top, 0); y < bottom; ++y) {
        std::byte* to = row(y) + static_cast<std::size_t>(left) * size;
        for (int x = left; x < right; ++x, to += size) {
            std::memcpy(to, pixel.data(), size);
        }
    }
}

void World::mark(std::byte value) {
    mark_ = value;
    for (int y = 0; y < height_; ++y) {
        std::fill_n(row(y), pixel_bytes(), mark_);
    }
}

std::size_t World::marked_pixels() const {
    std::array<std::byte, 16> mark;
    mark.fill(mark_);
    const std::size_t size = static_cast<std::size_t>(bytes_per_pixel(depth_));
    std::size_t marked = 0;
    for (int y = 0; y < height_; ++y) {
        const std::byte* pixel = row(y);
        for (int x = 0; x < width_; ++x, pixel += size) {
            marked += std::memcmp(pixel, mark.data(), size) == 0 ? 1 : 0;
        }
    }
    return marked;
}

std::optional<std::string> World::breach() const {
    if (const auto at = first_overwritten(bytes_.get(), guard_)) {
        return std::to_string(guard_ - *at) + " bytes before the first pixel";
    }
    const std::size_t pixels = pixel_bytes();
    const std::size_t padding = static_cast<std::size_t>(row_bytes_) - pixels;
    for (int y = 0; y < height_; ++y) {
        if (const auto at = first_overwritten(row(y) + pixels, padding)) {
            return "in the padding of row " + std::to_string(y) + ", " + std::to_string(*at) +
                   " bytes behind its last pixel";
        }
    }
    if (const auto at = first_overwritten(bytes_.get() + size_ - guard_, guard_)) {
        return std::to_string(*at) + " bytes behind the last row";
    }
    return std::nullopt;
}

void World::fill_with_pattern() {
    const std::vector<std::byte> line = pattern_line(depth_, width_);
    for (int y = 0; y < height_; ++y) {
        std::memcpy(row(y), line.data() + pattern_offset(depth_, y), pixel_bytes());
    }
}

bool World::shows_pattern() const {
    const std::vector<std::byte> line = pattern_line(depth_, width_);
    for (int y = 0; y < height_; ++y) {
        if (std::memcmp(row(y), line.data() + pattern_offset(depth_, y), pixel_bytes()) != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace host
