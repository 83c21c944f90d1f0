// A value that a glTF animation changes over time.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "gltf_buffers.h"
#include "json_place.h"

namespace lumivar {

/// The keys of an animation sampler, interpolated as the standard defines LINEAR, STEP and
/// CUBICSPLINE (glTF 2.0, appendix C), held before the first and after the last.
class GltfTrack {
public:
    enum class Kind { Numbers, Rotation };

    /// `sampler` is the sampler's object; a value has `components` numbers, a rotation 4 (x, y, z,
    /// w). Throws `Failure`.
    GltfTrack(const GltfDocument& document, const JsonPlace& sampler, std::size_t components,
              Kind kind);

    const std::vector<double>& times() const { return times_; }  ///< seconds, increasing
    bool steps() const { return interpolation_ == Interpolation::Step; }
    /// The numbers at a time, as many as a value has. A rotation is of length 1.
    std::array<double, 4> at(double seconds) const;

private:
    enum class Interpolation { Linear, Step, Cubic };

    std::array<double, 4> stored(std::size_t index) const;

    Interpolation interpolation_ = Interpolation::Linear;
    Kind kind_;
    std::size_t components_;
    std::vector<double> times_;
    std::vector<double> values_;
};

}  // namespace lumivar
