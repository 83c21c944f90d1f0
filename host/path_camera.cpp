// The camera that moves from sample to sample.
#include <host/camera.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace host {

namespace {

/// A unit quaternion: w, x, y, z. It turns the same way as its negative.
using Quaternion = std::array<double, 4>;

/// Of a matrix for row vectors. The largest of the four elements is found first, so that the
/// division by it loses nothing.
Quaternion quaternion_of(const Matrix& m) {
    const double trace = m[0] + m[5] + m[10];
    const std::array<double, 4> sizes = {trace, m[0], m[5], m[10]};
    const auto largest = std::max_element(sizes.begin(), sizes.end()) - sizes.begin();
    Quaternion q{};
    switch (largest) {
        case 0:
            q = {1.0 + trace, m[6] - m[9], m[8] - m[2], m[1] - m[4]};
            break;
        case 1:
            q = {m[6] - m[9], 1.0 + m[0] - m[5] - m[10], m[1] + m[4], m[8] + m[2]};
            break;
        case 2:
            q = {m[8] - m[2], m[1] + m[4], 1.0 + m[5] - m[0] - m[10], m[6] + m[9]};
            break;
        default:
            q = {m[1] - m[4], m[8] + m[2], m[6] + m[9], 1.0 + m[10] - m[0] - m[5]};
            break;
    }
    const double length = std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3]));
    for (double& element : q) {
        element /= length;
    }
    return q;
}

Matrix matrix_of(const Quaternion& q, const std::array<double, 3>& position) {
    const auto [w, x, y, z] = q;
    return {1.0 - 2.0 * (y * y + z * z),
            2.0 * (x * y + w * z),
            2.0 * (x * z - w * y),
            0.0,  //
            2.0 * (x * y - w * z),
            1.0 - 2.0 * (x * x + z * z),
            2.0 * (y * z + w * x),
            0.0,  //
            2.0 * (x * z + w * y),
            2.0 * (y * z - w * x),
            1.0 - 2.0 * (x * x + y * y),
            0.0,  //
            position[0],
            position[1],
            position[2],
            1.0};
}

double blend(double a, double b, double t) { return a + (b - a) * t; }

/// The turn at the part `t` of the way from `a` to `b`, the short way.
Quaternion between(const Quaternion& a, Quaternion b, double t) {
    double cosine = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
        cosine += a[i] * b[i];
    }
    if (cosine < 0.0) {
        for (double& element : b) {
            element = -element;
        }
    }
    // From the chord: the arc's cosine cannot tell small angles apart.
    double chord = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
        chord += (b[i] - a[i]) * (b[i] - a[i]);
    }
    const double angle = 2.0 * std::asin(std::min(1.0, std::sqrt(chord) / 2.0));
    const double sine = std::sin(angle);
    double of_a = 1.0 - t;
    double of_b = t;
    if (sine > 1e-9) {  // below, the arc is as good as straight
        of_a = std::sin((1.0 - t) * angle) / sine;
        of_b = std::sin(t * angle) / sine;
    }
    Quaternion q{};
    double square = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
        q[i] = of_a * a[i] + of_b * b[i];
        square += q[i] * q[i];
    }
    for (double& element : q) {
        element /= std::sqrt(square);
    }
    return q;
}

/// Whether the upper left 3x3 elements turn and do nothing else.
bool only_turns(const Matrix& m) {
    constexpr double kTolerance = 1e-6;
    for (std::size_t a = 0; a < 3; ++a) {
        for (std::size_t b = 0; b < 3; ++b) {
            double product = 0.0;
            for (std::size_t i = 0; i < 3; ++i) {
                product += m[4 * a + i] * m[4 * b + i];
            }
            if (!(std::abs(product - (a == b ? 1.0 : 0.0)) <= kTolerance)) {
                return false;
            }
        }
    }
    return m[0] * (m[5] * m[10] - m[6] * m[9]) + m[1] * (m[6] * m[8] - m[4] * m[10]) +
               m[2] * (m[4] * m[9] - m[5] * m[8]) >
           0.0;
}

class PathCamera : public Camera {
public:
    PathCamera(std::vector<CameraSample> samples, std::shared_ptr<const Camera> lens)
        : samples_(std::move(samples)), lens_(std::move(lens)) {
        if (samples_.empty()) {
            throw std::invalid_argument("a camera's path has no sample");
        }
        turns_.reserve(samples_.size());
        for (std::size_t i = 0; i < samples_.size(); ++i) {
            const CameraSample& sample = samples_[i];
            if (!std::isfinite(sample.time) || (i > 0 && !(sample.time > samples_[i - 1].time))) {
                throw std::invalid_argument("the times of a camera's path do not increase");
            }
            if (!only_turns(sample.layer_to_world)) {
                throw std::invalid_argument("a matrix of a camera's path does more than turn");
            }
            if (!(sample.zoom > 0.0)) {
                throw std::invalid_argument("a zoom of a camera's path is not above 0");
            }
            turns_.push_back(quaternion_of(sample.layer_to_world));
        }
    }

    Matrix layer_to_world(double seconds) const override {
        const auto [index, part] = place(seconds);
        const Matrix& first = samples_[index].layer_to_world;
        if (part == 0.0) {
            return first;
        }
        const Matrix& second = samples_[index + 1].layer_to_world;
        return matrix_of(between(turns_[index], turns_[index + 1], part),
                         {blend(first[12], second[12], part), blend(first[13], second[13], part),
                          blend(first[14], second[14], part)});
    }

    double zoom(double seconds) const override {
        if (lens_) {
            return lens_->zoom(seconds);
        }
        const auto [index, part] = place(seconds);
        return part == 0.0 ? samples_[index].zoom
                           : blend(samples_[index].zoom, samples_[index + 1].zoom, part);
    }

private:
    /// The sample at or before a time, and the part of the way from it to the next.
    std::pair<std::size_t, double> place(double seconds) const {
        const auto after =
            std::upper_bound(samples_.begin(), samples_.end(), seconds,
                             [](double time, const CameraSample& s) { return time < s.time; });
        if (after == samples_.begin()) {
            return {0, 0.0};
        }
        const auto index = static_cast<std::size_t>(after - samples_.begin()) - 1;
        if (after == samples_.end()) {
            return {index, 0.0};
        }
        return {index, (seconds - samples_[index].time) / (after->time - samples_[index].time)};
    }

    std::vector<CameraSample> samples_;
    std::shared_ptr<const Camera> lens_;  ///< null: the samples' zoom
    std::vector<Quaternion> turns_;       ///< of the samples
};

}  // namespace

std::shared_ptr<const Camera> path_camera(std::vector<CameraSample> samples,
                                          std::shared_ptr<const Camera> lens) {
    return std::make_shared<PathCamera>(std::move(samples), std::move(lens));
}

}  // namespace host
