#include "support/blobs.h"

#include <algorithm>
#include <cmath>

namespace support {

namespace {

double light(const Picture& picture, int x, int y) {
    double sum = 0;
    for (int channel = 0; channel < picture.channels; ++channel) {
        sum += picture.at(x, y, channel);
    }
    return sum;
}

// Where the parabola through the logarithms of three neighbouring values, the middle one the
// highest, has its vertex, from the middle.
std::optional<double> vertex(double before, double middle, double after) {
    if (!(before > 0) || !(after > 0) || !(middle >= before) || !(middle >= after) ||
        !std::isfinite(middle)) {
        return std::nullopt;
    }
    const double left = std::log(before / middle);
    const double right = std::log(after / middle);
    const double curvature = left + right;
    if (!(curvature < 0)) {
        return std::nullopt;
    }
    return (left - right) / (2 * curvature);
}

struct Range {
    int first;
    int last;
};

// The integers within `radius` of `centre` among 1 .. size - 2.
Range inner(double centre, double radius, int size) {
    const double first = std::max(std::ceil(centre - radius), 1.0);
    const double last = std::min(std::floor(centre + radius), size - 2.0);
    // Also when something is not a number.
    if (!(first <= last)) {
        return {0, -1};
    }
    return {static_cast<int>(first), static_cast<int>(last)};
}

}  // namespace

std::optional<Blob> find_blob(const Picture& picture, double x, double y, double radius) {
    // The outermost pixels lack the neighbours that a fit needs.
    const Range columns = inner(x, radius, picture.width);
    const Range rows = inner(y, radius, picture.height);
    double peak = 0;
    int peak_x = -1;
    int peak_y = -1;
    for (int row = rows.first; row <= rows.last; ++row) {
        for (int column = columns.first; column <= columns.last; ++column) {
            const double here = light(picture, column, row);
            if (here > peak && std::hypot(column - x, row - y) <= radius) {
                peak = here;
                peak_x = column;
                peak_y = row;
            }
        }
    }
    if (peak_x < 0) {
        return std::nullopt;
    }
    const auto across =
        vertex(light(picture, peak_x - 1, peak_y), peak, light(picture, peak_x + 1, peak_y));
    const auto down =
        vertex(light(picture, peak_x, peak_y - 1), peak, light(picture, peak_x, peak_y + 1));
    if (!across || !down) {
        return std::nullopt;
    }
    return Blob{peak_x + *across, peak_y + *down};
}

}  // namespace support
