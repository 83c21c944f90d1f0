// One move of a camera, worked out in vectors alone, and the files that other programs would write
// of it. The sky's own axes are used: x to right ascension 0 h, y to 6 h, z north.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <vector>

#include "text_numbers.h"

namespace one_move {

using Vector = std::array<double, 3>;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kFramesPerSecond = 24.0;

inline double dot(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// `v` turned about a unit `axis`, right-handed, by Rodrigues' formula.
inline Vector turned(const Vector& v, const Vector& axis, double degrees) {
    const double s = std::sin(degrees * kDegree);
    const double c = std::cos(degrees * kDegree);
    const double along = dot(v, axis) * (1.0 - c);
    return {v[0] * c + (axis[1] * v[2] - axis[2] * v[1]) * s + axis[0] * along,
            v[1] * c + (axis[2] * v[0] - axis[0] * v[2]) * s + axis[1] * along,
            v[2] * c + (axis[0] * v[1] - axis[1] * v[0]) * s + axis[2] * along};
}

/// A moment of the move as an artist keys it, in axes with y up: angles about the fixed axes, z
/// first, then x, then y.
struct Moment {
    double frame;
    Vector position;  ///< parsecs, y up
    Vector angles;    ///< degrees about x, y, z
    double vertical_fov;

    /// Where an axis of the camera points, in axes with y up.
    Vector axis(const Vector& of_camera) const {
        return turned(turned(turned(of_camera, {0, 0, 1}, angles[2]), {1, 0, 0}, angles[0]),
                      {0, 1, 0}, angles[1]);
    }
};

/// Axes with y up as the sky's: north is y, 6 h is -z.
inline Vector in_sky(const Vector& y_up) { return {y_up[0], -y_up[2], y_up[1]}; }

/// Every sample of the shutter: 180 degrees, opened 90 before the frame, in 8 segments.
inline std::vector<Moment> moments() {
    std::vector<Moment> all;
    for (int frame = 0; frame < 4; ++frame) {
        for (int segment = 0; segment <= 8; ++segment) {
            const double f = frame - 0.25 + 0.5 * segment / 8.0;
            all.push_back({f,
                           {0.3 * f, 0.1 * f * f, -1.5 * f},
                           {12.0 - 3.0 * f, -75.0 - 9.0 * f + f * f, 170.0 + 8.0 * f},
                           38.0 - 2.0 * f});
        }
    }
    return all;
}

struct Star {
    double ra, dec, parsecs;

    Vector place() const {
        return {parsecs * std::cos(dec * kDegree) * std::cos(ra * kDegree),
                parsecs * std::cos(dec * kDegree) * std::sin(ra * kDegree),
                parsecs * std::sin(dec * kDegree)};
    }
};

inline std::vector<Star> stars() {
    return {{345, 12, 20}, {2, 3, 60}, {10, 20, 1000}, {20, -3, 8}, {350, 0, 35}};
}

struct Pixel {
    double x, y;
};

struct Picture {
    int width = kWidth;
    int height = kHeight;
    /// Width by height of the film, whose width fills the picture's. The vertical field of view is
    /// the film's.
    double film = static_cast<double>(kWidth) / kHeight;
};

/// Where a star is in the picture: x to the right, y down.
inline Pixel seen(const Moment& moment, const Star& star, const Picture& picture = {}) {
    Vector v = star.place();
    const Vector from = in_sky(moment.position);
    for (std::size_t i = 0; i < 3; ++i) {
        v[i] -= from[i];
    }
    const double ahead = dot(v, in_sky(moment.axis({0, 0, -1})));
    const double image =
        picture.width / 2.0 / picture.film / std::tan(moment.vertical_fov * kDegree / 2.0);
    return {picture.width / 2.0 + image * dot(v, in_sky(moment.axis({1, 0, 0}))) / ahead,
            picture.height / 2.0 - image * dot(v, in_sky(moment.axis({0, 1, 0}))) / ahead};
}

inline std::string joined(const std::vector<double>& numbers, const char* separator) {
    std::string text;
    for (const double number : numbers) {
        text.append(text.empty() ? "" : separator).append(lumivar::number_text(number));
    }
    return text;
}

/// Where the camera's own axes point, as a file has it.
struct Axes {
    Vector x, y, z;
};

inline Axes axes_of(const Moment& m, bool z_up) {
    const auto in_file = [&](const Vector& v) { return z_up ? in_sky(m.axis(v)) : m.axis(v); };
    return {in_file({1, 0, 0}), in_file({0, 1, 0}), in_file({0, 0, 1})};
}

inline Vector position_of(const Moment& m, bool z_up) {
    return z_up ? in_sky(m.position) : m.position;
}

/// Angles that turn z first, then x, then y: the camera's z comes to
/// (sin y cos x, -sin x, cos y cos x), and what its axes have of y is cos x (sin z, cos z).
inline Vector angles_zxy(const Axes& axes) {
    return {std::asin(-axes.z[1]) / kDegree, std::atan2(axes.z[0], axes.z[2]) / kDegree,
            std::atan2(axes.x[1], axes.y[1]) / kDegree};
}

/// Angles that turn x first, then y, then z: the camera's x comes to
/// (cos y cos z, cos y sin z, -sin y), and what the others have of z is cos y (sin x, cos x).
inline Vector angles_xyz(const Axes& axes) {
    return {std::atan2(axes.y[2], axes.z[2]) / kDegree, std::asin(-axes.x[2]) / kDegree,
            std::atan2(axes.x[1], axes.x[0]) / kDegree};
}

inline std::string as_chan() {
    std::string text = "# a move\n\n";
    for (const Moment& m : moments()) {
        text.append(joined({m.frame, m.position[0], m.position[1], m.position[2], m.angles[0],
                            m.angles[1], m.angles[2], m.vertical_fov},
                           " "))
            .append("\n");
    }
    return text;
}

/// With z up, the angles in the order ZXY.
inline std::string as_chan_with_z_up() {
    std::string text;
    for (const Moment& m : moments()) {
        const Vector p = position_of(m, true);
        const Vector a = angles_zxy(axes_of(m, true));
        text.append(joined({m.frame, p[0], p[1], p[2], a[0], a[1], a[2], m.vertical_fov}, "\t"))
            .append("\n");
    }
    return text;
}

/// With y up, the angles in the order XYZ, in light-years.
inline std::string as_chan_xyz_in_light_years() {
    // A parsec is 648000 / pi astronomical units; light goes one year of 365.25 days.
    const double light_years =
        648000.0 / std::numbers::pi * 149597870700.0 / (299792458.0 * 86400.0 * 365.25);
    std::string text;
    for (const Moment& m : moments()) {
        const Vector a = angles_xyz(axes_of(m, false));
        text.append(joined({m.frame, m.position[0] * light_years, m.position[1] * light_years,
                            m.position[2] * light_years, a[0], a[1], a[2], m.vertical_fov},
                           " "))
            .append("\n");
    }
    return text;
}

/// Angles in the order ZXY, and frames.
inline std::string as_csv_of_angles(bool z_up) {
    std::string text = "frame;vfov;tx;ty;tz;rx;ry;rz\n";
    for (const Moment& m : moments()) {
        const Vector p = position_of(m, z_up);
        const Vector a = angles_zxy(axes_of(m, z_up));
        text.append(joined({m.frame, m.vertical_fov, p[0], p[1], p[2], a[0], a[1], a[2]}, ";"))
            .append("\n");
    }
    return text;
}

/// Matrices and times. With `z_up` in the sky's own axes.
inline std::string as_csv(bool z_up) {
    std::string text = "time";
    for (const char row : {'0', '1', '2', '3'}) {
        for (const char column : {'0', '1', '2', '3'}) {
            text.append(",m").append(1, row).append(1, column);
        }
    }
    text.append(",Focal_Length,horizontal_aperture\r\n");
    for (const Moment& m : moments()) {
        std::vector<double> numbers = {m.frame / kFramesPerSecond};
        const auto add = [&](const Vector& v, double last) {
            const Vector w = z_up ? in_sky(v) : v;
            numbers.insert(numbers.end(), {w[0], w[1], w[2], last});
        };
        add(m.axis({1, 0, 0}), 0);
        add(m.axis({0, 1, 0}), 0);
        add(m.axis({0, 0, 1}), 0);
        add(m.position, 1);
        // On film 36 mm wide behind a picture of 16:9.
        const double aperture = 36.0;
        numbers.push_back(aperture * kHeight / kWidth / 2.0 /
                          std::tan(m.vertical_fov * kDegree / 2.0));
        numbers.push_back(aperture);
        text.append(joined(numbers, ",")).append("\r\n");
    }
    return text;
}

}  // namespace one_move
