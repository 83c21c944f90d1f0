#include "path_refinement.h"

#include <host/camera.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "camera_path.h"

namespace lumivar {
namespace {

/// Parts of an interval at which the straight way is held against the curve.
constexpr std::array<double, 3> kProbes = {0.25, 0.5, 0.75};

class Refinement {
public:
    Refinement(const std::function<FileCameraSample(double)>& sample_at, std::string source,
               std::string name)
        : sample_at_(sample_at), source_(std::move(source)), name_(std::move(name)) {}

    std::vector<FileCameraSample> run(const std::vector<double>& times) {
        measure_extent(times);
        samples_.push_back(sample_at_(times.front()));
        for (std::size_t i = 1; i < times.size(); ++i) {
            const FileCameraSample end = sample_at_(times[i]);
            divide(samples_.back(), end, kMostDivisions);
            samples_.push_back(end);
        }
        return std::move(samples_);
    }

private:
    static constexpr int kMostDivisions = 12;
    static constexpr std::size_t kMostSamples = 500000;
    static constexpr double kTurn = 1e-6;
    static constexpr double kExtent = 1e-7;
    static constexpr double kZoom = 1e-6;

    void measure_extent(const std::vector<double>& times) {
        std::array<double, 3> low{}, high{};
        low.fill(std::numeric_limits<double>::infinity());
        high.fill(-std::numeric_limits<double>::infinity());
        for (std::size_t i = 0; i < times.size(); ++i) {
            const double next = times[std::min(i + 1, times.size() - 1)];
            for (const double part : {0.0, 0.25, 0.5, 0.75}) {
                const FileCameraSample sample = sample_at_(times[i] + part * (next - times[i]));
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    const double x = sample.camera_to_world[12 + axis];
                    low[axis] = std::min(low[axis], x);
                    high[axis] = std::max(high[axis], x);
                    largest_ = std::max(largest_, std::abs(x));
                }
            }
        }
        extent_ = std::hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);
    }

    /// Appends what is needed between two samples, without the two.
    void divide(const FileCameraSample& start, const FileCameraSample& end, int divisions) {
        const double middle = start.time + (end.time - start.time) / 2.0;
        if (divisions == 0 || samples_.size() > kMostSamples ||
            !(middle > start.time && middle < end.time) || is_straight(start, end)) {
            return;
        }
        const FileCameraSample sample = sample_at_(middle);
        divide(start, sample, divisions - 1);
        samples_.push_back(sample);
        divide(sample, end, divisions - 1);
    }

    bool is_straight(const FileCameraSample& start, const FileCameraSample& end) const {
        FileCamera ends;
        ends.name = name_;
        ends.samples = {start, end};
        const auto straight = host::path_camera(in_world(ends));
        const double off_position = std::max(kExtent * extent_, 1e-13 * largest_);
        for (const double part : kProbes) {
            const double time = start.time + part * (end.time - start.time);
            FileCamera curve;
            curve.name = name_;
            curve.samples = {sample_at_(time)};
            const host::CameraSample right = in_world(curve).front();
            const host::Matrix got = straight->layer_to_world(time);
            for (std::size_t i = 0; i < 15; ++i) {
                if (!(std::abs(got[i] - right.layer_to_world[i]) <=
                      (i < 12 ? kTurn : off_position))) {
                    return false;
                }
            }
            if (!(std::abs(straight->zoom(time) - right.zoom) <= kZoom * right.zoom)) {
                return false;
            }
        }
        return true;
    }

    /// With the lens in any unit.
    std::vector<host::CameraSample> in_world(const FileCamera& camera) const {
        std::vector<host::CameraSample> samples;
        for (const PathSample& sample : world_path(camera, 1.0, source_).samples) {
            samples.push_back(
                {sample.time, sample.layer_to_world, sample.lens ? sample.lens->ratio : 1.0});
        }
        return samples;
    }

    const std::function<FileCameraSample(double)>& sample_at_;
    std::string source_;
    std::string name_;  ///< of the camera
    double extent_ = 0.0;
    double largest_ = 0.0;  ///< of all coordinates
    std::vector<FileCameraSample> samples_;
};

}  // namespace

std::vector<FileCameraSample> refined(
    const std::vector<double>& times,
    const std::function<FileCameraSample(double seconds)>& sample_at, const std::string& source,
    const std::string& name) {
    return Refinement(sample_at, source, name).run(times);
}

}  // namespace lumivar
