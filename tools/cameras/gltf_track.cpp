#include "gltf_track.h"

#include <host/quaternion.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace lumivar {
namespace {

using Value = std::array<double, 4>;

/// `a` * s + `b` * t.
Value mixed(const Value& a, double s, const Value& b, double t) {
    return {a[0] * s + b[0] * t, a[1] * s + b[1] * t, a[2] * s + b[2] * t, a[3] * s + b[3] * t};
}

/// The file has x, y, z, w.
host::Quaternion quaternion(const Value& value) {
    return host::normalized({value[3], value[0], value[1], value[2]});
}

Value stored_turn(const host::Quaternion& q) { return {q[1], q[2], q[3], q[0]}; }

}  // namespace

GltfTrack::GltfTrack(const GltfDocument& document, const JsonPlace& sampler, std::size_t components,
                     Kind kind)
    : kind_(kind), components_(components) {
    if (const auto interpolation = sampler.find("interpolation")) {
        const std::string name = interpolation->text();
        if (name == "STEP") {
            interpolation_ = Interpolation::Step;
        } else if (name == "CUBICSPLINE") {
            interpolation_ = Interpolation::Cubic;
        } else if (name != "LINEAR") {
            interpolation->fail("\"LINEAR\", \"STEP\" or \"CUBICSPLINE\"");
        }
    }
    times_ = document.numbers(sampler["input"], 1);
    values_ = document.numbers(sampler["output"], components);
    const std::size_t of_a_key = interpolation_ == Interpolation::Cubic ? 3 : 1;
    if (times_.empty()) {
        sampler.complain("it has no key");
    }
    if (values_.size() != times_.size() * of_a_key * components) {
        sampler.complain("expected " + std::to_string(times_.size() * of_a_key) +
                         " values for its " + std::to_string(times_.size()) + " times, found " +
                         std::to_string(values_.size() / components));
    }
    if (std::adjacent_find(times_.begin(), times_.end(),
                           [](double a, double b) { return !(b > a); }) != times_.end()) {
        sampler["input"].complain("the times of these keys do not increase");
    }
}

std::array<double, 4> GltfTrack::stored(std::size_t index) const {
    Value value{};
    for (std::size_t i = 0; i < components_; ++i) {
        value[i] = values_[index * components_ + i];
    }
    return value;
}

std::array<double, 4> GltfTrack::at(double seconds) const {
    const bool cubic = interpolation_ == Interpolation::Cubic;
    const auto value_of_key = [&](std::size_t key) { return stored(cubic ? 3 * key + 1 : key); };
    const auto finished = [&](const Value& value) {
        return kind_ == Kind::Rotation ? stored_turn(quaternion(value)) : value;
    };
    const auto after = std::upper_bound(times_.begin(), times_.end(), seconds);
    if (after == times_.begin()) {
        return finished(value_of_key(0));
    }
    const auto key = static_cast<std::size_t>(after - times_.begin()) - 1;
    if (after == times_.end() || interpolation_ == Interpolation::Step || seconds == times_[key]) {
        return finished(value_of_key(key));
    }
    const double span = times_[key + 1] - times_[key];
    const double t = (seconds - times_[key]) / span;
    const Value a = value_of_key(key);
    const Value b = value_of_key(key + 1);
    if (!cubic) {
        return kind_ == Kind::Rotation ? stored_turn(host::slerp(quaternion(a), quaternion(b), t))
                                       : mixed(a, 1.0 - t, b, t);
    }
    const Value out_tangent = stored(3 * key + 2);
    const Value in_tangent = stored(3 * (key + 1));
    const double t2 = t * t;
    const double t3 = t2 * t;
    return finished(
        mixed(mixed(a, 2.0 * t3 - 3.0 * t2 + 1.0, out_tangent, span * (t3 - 2.0 * t2 + t)), 1.0,
              mixed(b, 3.0 * t2 - 2.0 * t3, in_tangent, span * (t3 - t2)), 1.0));
}

}  // namespace lumivar
