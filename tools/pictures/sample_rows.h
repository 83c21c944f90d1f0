// The samples of a picture's file, as all formats take them.
#pragma once

#include <cstddef>
#include <functional>

namespace lumivar {

enum class SampleKind { Codes8, Codes16, Floats };

constexpr std::size_t sample_bytes(SampleKind kind) {
    return kind == SampleKind::Codes8 ? 1 : kind == SampleKind::Codes16 ? 2 : 4;
}

/// What the samples mean, for formats that can say it.
enum class SampleSpace {
    Linear,
    Srgb,
    Unsaid  ///< a display's own, which the colour management's configuration alone knows
};

/// Rows from the top, made as they are asked for.
struct SampleRows {
    int width = 0;     ///< pixels
    int height = 0;    ///< pixels
    int channels = 3;  ///< red, green, blue and perhaps alpha
    SampleKind kind = SampleKind::Codes8;
    SampleSpace space = SampleSpace::Linear;
    /// Puts row `y` at `out`, pixel by pixel, in the machine's byte order.
    std::function<void(int y, std::byte* out)> read;

    std::size_t row_bytes() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) *
               sample_bytes(kind);
    }
};

}  // namespace lumivar
