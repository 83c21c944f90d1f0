// Values between those of a table, by IEEE's basic operations alone.
#pragma once

#include <array>
#include <cstddef>

namespace lumivar {

inline double between(double low, double high, double share) { return low + (high - low) * share; }

/// Where a value lies in a table's rising column of at least two: behind `row`, by a share of the
/// way to the next row. Below the first and beyond the last row it is held there.
struct TablePlace {
    std::size_t row;
    double share;
};

template <std::size_t Rows>
TablePlace place_in(const std::array<double, Rows>& column, double value) {
    if (!(value > column[0])) {
        return {0, 0.0};
    }
    for (std::size_t row = 0; row + 1 < Rows; ++row) {
        if (value < column[row + 1]) {
            return {row, (value - column[row]) / (column[row + 1] - column[row])};
        }
    }
    return {Rows - 2, 1.0};
}

template <std::size_t Rows>
double value_at(const std::array<double, Rows>& column, const TablePlace& place) {
    return between(column[place.row], column[place.row + 1], place.share);
}

}  // namespace lumivar
