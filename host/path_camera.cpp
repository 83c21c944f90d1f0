// The camera that moves from sample to sample.
#include <host/camera.h>
#include <host/quaternion.h>

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

double blend(double a, double b, double t) { return a + (b - a) * t; }

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
        return matrix_of(slerp(turns_[index], turns_[index + 1], part),
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
