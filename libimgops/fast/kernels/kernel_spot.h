// Still spots.
// For `kernel_source.h` alone.
#pragma once

#include <cstddef>

#include "kernel_light.h"
#include "kernel_math.h"
#include "kernel_offsets.h"

using star_kernels::Pixels;
using star_kernels::Spot;

namespace {

/// Factors of a spot's columns, each on all lanes of its pixel.
struct Columns {
    float factors[kPixel * (kBlock + LANES)];
    int count;
};

/// The next columns of a spot, kBlock or what is left up to the offset `last`. `rx`: the first
/// one's offset, moved on behind them.
LANES_INLINE void find_columns(float w2, float* rx, float last, int room, Columns* columns) {
    float factors[kBlock + LANES];
    int n = LANES;
    int found = 0;
    while (n == LANES && found < kBlock) {
        const Floats offset = offsets(rx);
        n = count(offset <= splat(last));
        store(factors + found, exp_of_negative(-(offset * offset) / splat(w2)));
        found += n;
    }
    columns->count = found < room ? found : room;
    for (int i = 0; i < columns->count; i += LANES / kPixel) {
        store(columns->factors + std::ptrdiff_t{kPixel} * i, load_for_pixels(factors + i));
    }
}

/// Draws `columns` of the rows of a spot, from the pixel `first` on; returns the offset `ry` behind
/// the last row.
LANES_INLINE float draw_columns(const Pixels& to, const Spot& spot, const Columns& columns,
                                float* first, float ry) {
    const Floats colour = pixel_colour(spot);
    for (int y = spot.y0; y <= spot.y1; y += LANES) {
        float rest = ry;
        const Floats offset = offsets(&rest);
        float lanes[LANES], peaks[LANES];
        store(lanes, offset);
        store(peaks, exp_of_negative(-(offset * offset) / splat(spot.h2)) * splat(spot.energy));
        const int rows = spot.y1 - y + 1 < LANES ? spot.y1 - y + 1 : LANES;
        for (int k = 0; k < rows; ++k, first += to.row) {
            const Floats peak = splat(peaks[k]);
            const auto of_row = [&](std::ptrdiff_t i) __attribute__((always_inline)) {
                return load(columns.factors + kPixel * i) * peak;
            };
            light(to.is_covered, first, of_row, columns.count, colour);
        }
        ry = rows < LANES ? lanes[rows] : rest;
    }
    return ry;
}

float draw_spot(const Pixels& to, const Spot& spot, float ry) {
    // exp(-(x / w)^2 - (y / h)^2) is a product of one factor a column and one a row.
    float rx = static_cast<float>(spot.x0) - spot.mid_x;
    const float last = static_cast<float>(spot.x1) - spot.mid_x;
    Columns columns;
    float after = ry;
    int x = spot.x0;
    do {
        find_columns(spot.w2, &rx, last, to.width - x, &columns);
        float* first = to.first + spot.y0 * to.row + std::ptrdiff_t{kPixel} * x;
        after = draw_columns(to, spot, columns, first, ry);
        x += columns.count;
    } while (columns.count == kBlock);
    return after;
}

}  // namespace
