#include "path_summary.h"

#include <host/camera.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace lumivar {
namespace {

constexpr double kToDegrees = 180.0 / std::numbers::pi;

// The picture that lenses are told for, as a path knows none: 16:9, on film 36 mm wide.
constexpr int kShownWidth = 1920;
constexpr int kShownHeight = 1080;
constexpr double kFilmWidth = 36.0;

struct SkyPlace {
    double ra, dec;  ///< degrees
};

SkyPlace looks_at(const host::Matrix& layer_to_world) {
    // The third row is the way ahead; north is -y.
    const double x = layer_to_world[8], y = layer_to_world[9], z = layer_to_world[10];
    const double ra = std::atan2(z, x) * kToDegrees;
    return {ra < 0.0 ? ra + 360.0 : ra, std::atan2(-y, std::hypot(x, z)) * kToDegrees};
}

/// Degrees between two turns.
double turn_between(const host::Matrix& a, const host::Matrix& b) {
    double square = 0.0;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const double difference = a[4 * row + column] - b[4 * row + column];
            square += difference * difference;
        }
    }
    // The elements differ by 2 sqrt(2) sin(angle / 2) in all.
    return 2.0 * std::asin(std::min(1.0, std::sqrt(square / 8.0))) * kToDegrees;
}

/// With so many digits behind the point. What they do not show of a number below 0 leaves no sign.
std::string fixed(double number, int digits) {
    char text[400];  // the largest number has 309 before it
    std::snprintf(text, sizeof text, "%.*f", digits, number);
    const bool is_nothing = std::strpbrk(text, "123456789") == nullptr;
    return text + (is_nothing && text[0] == '-' ? 1 : 0);
}

/// With six digits in all; 0 has no sign.
std::string rounded(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number == 0.0 ? 0.0 : number);
    return text;
}

std::string place_text(const host::Matrix& matrix) {
    const SkyPlace place = looks_at(matrix);
    return "ra " + fixed(place.ra, 3) + ", dec " + fixed(place.dec, 3);
}

std::string position_text(const host::Matrix& matrix) {
    return "[" + rounded(matrix[12]) + ", " + rounded(matrix[13]) + ", " + rounded(matrix[14]) +
           "]";
}

/// "A", or "A to B" where the second reads otherwise.
std::string range_text(const std::string& low, const std::string& high) {
    return low == high ? low : low + " to " + high;
}

std::string lens_text(const CameraPath& path) {
    double least = HUGE_VAL;
    double most = 0.0;
    for (const PathSample& sample : path.samples) {
        if (!sample.lens) {
            return "none in the file: that of the scene is taken";
        }
        const double zoom = sample.lens->zoom(kShownWidth, kShownHeight);
        least = std::min(least, zoom);
        most = std::max(most, zoom);
    }
    const auto fov = [](double zoom) {
        return fixed(2.0 * std::atan(kShownHeight / 2.0 / zoom) * kToDegrees, 3);
    };
    const auto millimetres = [](double zoom) { return fixed(zoom * kFilmWidth / kShownWidth, 2); };
    return "vertical field of view " + range_text(fov(most), fov(least)) + " degrees, " +
           range_text(millimetres(least), millimetres(most)) + " mm on film 36 mm wide, at 16:9";
}

std::shared_ptr<const host::Camera> as_camera(const CameraPath& path) {
    std::vector<host::CameraSample> samples;
    samples.reserve(path.samples.size());
    for (const PathSample& sample : path.samples) {
        samples.push_back({sample.time, sample.layer_to_world, 1.0});
    }
    return host::path_camera(std::move(samples));
}

/// The largest turn from one frame to the next, in degrees.
double largest_turn(const CameraPath& path, double frames_per_second) {
    constexpr int kMostFrames = 100000;  // as many are enough to tell
    const auto camera = as_camera(path);
    const double start = path.samples.front().time;
    const double end = path.samples.back().time;
    double largest = 0.0;
    host::Matrix before = camera->layer_to_world(start);
    for (int frame = 1; frame <= kMostFrames; ++frame) {
        const double time = start + frame / frames_per_second;
        const host::Matrix matrix = camera->layer_to_world(std::min(time, end));
        largest = std::max(largest, turn_between(before, matrix));
        before = matrix;
        if (time >= end) {
            break;
        }
    }
    return largest;
}

}  // namespace

std::string path_summary(const CameraPath& path, double frames_per_second) {
    const PathSample& first = path.samples.front();
    const PathSample& last = path.samples.back();
    std::string text = "  samples    " + std::to_string(path.samples.size()) + ", " +
                       fixed(first.time, 3) + " s to " + fixed(last.time, 3) + " s (frames " +
                       rounded(first.time * frames_per_second) + " to " +
                       rounded(last.time * frames_per_second) + " at " +
                       rounded(frames_per_second) + " a second)\n";
    text.append("  looks at   ").append(place_text(first.layer_to_world));
    if (path.samples.size() > 1) {
        text.append("; at the end ").append(place_text(last.layer_to_world));
    }
    text.append("\n  stands at  ").append(position_text(first.layer_to_world));
    if (path.samples.size() > 1) {
        text.append("; at the end ").append(position_text(last.layer_to_world));
    }
    text.append(" parsecs, x, y down, z\n  lens       ").append(lens_text(path)).append("\n");
    if (path.samples.size() > 1) {
        text.append("  turns      ")
            .append(fixed(largest_turn(path, frames_per_second), 3))
            .append(" degrees a frame at most\n");
    }
    return text;
}

std::string path_plot(const CameraPath& path) {
    constexpr std::size_t kColumns = 73;  // a column for 5 degrees
    constexpr std::size_t kRows = 19;     // a row for 10
    constexpr int kSteps = 4000;          // finer than the columns for any path that turns once
    std::vector<std::string> rows(kRows, std::string(kColumns, ' '));
    for (std::size_t row = 0; row < kRows; ++row) {
        for (std::size_t column = 0; column < kColumns; column += 18) {
            rows[row][column] = ':';
        }
    }
    rows[kRows / 2] = std::string(kColumns, '.');
    const auto mark = [&](const host::Matrix& matrix, char letter) {
        const SkyPlace place = looks_at(matrix);
        const double column = (360.0 - place.ra) / 360.0 * (kColumns - 1);
        const double row = (90.0 - place.dec) / 180.0 * (kRows - 1);
        rows[static_cast<std::size_t>(std::lround(row))]
            [static_cast<std::size_t>(std::lround(column))] = letter;
    };
    const auto camera = as_camera(path);
    const double start = path.samples.front().time;
    const double span = path.samples.back().time - start;
    for (int step = 1; step < kSteps; ++step) {
        mark(camera->layer_to_world(start + span * step / kSteps), '*');
    }
    mark(path.samples.back().layer_to_world, 'E');
    mark(path.samples.front().layer_to_world, 'S');
    std::string text =
        "  dec   ra 24h              18h               12h               6h       "
        "          0h\n";
    for (std::size_t row = 0; row < kRows; ++row) {
        const int dec = 90 - 10 * static_cast<int>(row);
        std::string label = row % 3 == 0 ? std::to_string(dec) : "";
        label.insert(0, 5 - label.size(), ' ');
        text.append(label).append("  ");
        text.append("|").append(rows[row]).append("|\n");
    }
    return text;
}

}  // namespace lumivar
