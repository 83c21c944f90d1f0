#include "camera_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "failure.h"
#include "file_axes.h"
#include "text_numbers.h"

namespace lumivar {
namespace {

using Axis = std::array<double, 3>;

constexpr double kFarthestTime = 1e9;    // seconds: thirty years
constexpr double kSmallestRatio = 1e-9;  // of the image's distance to the picture's size

double dot(const Axis& a, const Axis& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Axis cross(const Axis& a, const Axis& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Of length 1; all 0 when it has none. Its largest element is made 1 first, as a length that is
/// hardly a number, large or small, has few digits.
Axis normalized(const Axis& a) {
    const double largest = std::max({std::abs(a[0]), std::abs(a[1]), std::abs(a[2])});
    if (!(largest > 0.0)) {
        return {};
    }
    const Axis b = {a[0] / largest, a[1] / largest, a[2] / largest};
    const double length = std::hypot(b[0], b[1], b[2]);
    return {b[0] / length, b[1] / length, b[2] / length};
}

/// Without scale and shear: z keeps its direction, y its side of z. `where` is told in messages.
host::Matrix turn_and_move(const host::Matrix& m, const std::string& where) {
    for (const double element : m) {
        if (!std::isfinite(element)) {
            throw Failure(where + " has a matrix with a number that is not finite");
        }
    }
    constexpr double kRounding = 1e-6;
    if (std::fabs(m[3]) + std::fabs(m[7]) + std::fabs(m[11]) + std::fabs(m[15] - 1.0) > kRounding) {
        throw Failure(where +
                      " has a matrix whose last column is not 0, 0, 0, 1; points are row vectors "
                      "here, and the last row moves them: is it transposed?");
    }
    const Axis given_x = {m[0], m[1], m[2]};
    const Axis given_y = {m[4], m[5], m[6]};
    const Axis z = normalized({m[8], m[9], m[10]});
    // Of length 1 first, so that what is nearly parallel is told by its angle and not its scale.
    const Axis x = normalized(cross(normalized(given_y), z));
    if (dot(x, x) == 0.0 || std::abs(dot(normalized(given_y), z)) > 1.0 - 1e-12) {
        throw Failure(where +
                      " has a matrix that flattens: a scale of 0 on the camera or above it");
    }
    if (!(dot(x, given_x) > 0.0)) {
        throw Failure(where +
                      " has a matrix that mirrors; take the negative scale from the camera or from "
                      "what it hangs on");
    }
    const Axis y = cross(z, x);
    return {x[0], x[1], x[2], 0, y[0], y[1], y[2], 0, z[0], z[1], z[2], 0, m[12], m[13], m[14], 1};
}

}  // namespace

CameraPath world_path(const FileCamera& camera, double parsecs_per_unit,
                      const std::string& source) {
    CameraPath path;
    path.name = camera.name;
    path.samples.reserve(camera.samples.size());
    for (const FileCameraSample& sample : camera.samples) {
        const std::string where =
            source + ": the camera \"" + camera.name + "\" at " + number_text(sample.time) + " s";
        if (!(std::abs(sample.time) <= kFarthestTime)) {
            throw Failure(where + " is too far away in time");
        }
        if (sample.lens &&
            !(sample.lens->ratio > kSmallestRatio && sample.lens->ratio < 1.0 / kSmallestRatio)) {
            throw Failure(where + " has a lens that sees nothing");
        }
        host::Matrix matrix = sample.camera_to_world;
        for (std::size_t i = 12; i < 15; ++i) {
            matrix[i] *= parsecs_per_unit;
        }
        path.samples.push_back(
            {sample.time, world_matrix(turn_and_move(matrix, where), camera.up), sample.lens});
    }
    return path;
}

std::vector<host::CameraSample> samples_on_picture(const CameraPath& path, int width, int height,
                                                   const host::Camera& other) {
    std::vector<host::CameraSample> samples;
    samples.reserve(path.samples.size());
    for (const PathSample& sample : path.samples) {
        samples.push_back(
            {sample.time, sample.layer_to_world,
             sample.lens ? sample.lens->zoom(width, height) : other.zoom(sample.time)});
    }
    return samples;
}

}  // namespace lumivar
