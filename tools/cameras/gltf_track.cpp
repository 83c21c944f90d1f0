#include "gltf_track.h"

#include <algorithm>
#include <array>
#include <cmath>
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

/// Of length 1; no turn when it has none.
Value unit_quaternion(const Value& q) {
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    return length > 0.0 ? mixed(q, 1.0 / length, {}, 0.0) : Value{0.0, 0.0, 0.0, 1.0};
}

/// Spherical linear interpolation, the short way.
Value turned_between(const Value& a, const Value& b, double t) {
    const double product = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    const double sign = product < 0.0 ? -1.0 : 1.0;
    const Value difference = mixed(b, sign, a, -1.0);
    const double chord = std::sqrt(difference[0] * difference[0] + difference[1] * difference[1] +
                                   difference[2] * difference[2] + difference[3] * difference[3]);
    // From the chord, as the cosine cannot tell small angles apart.
    const double angle = 2.0 * std::asin(std::min(1.0, chord / 2.0));
    if (std::sin(angle) < 1e-9) {
        return unit_quaternion(mixed(a, 1.0 - t, b, sign * t));
    }
    return unit_quaternion(mixed(a, std::sin((1.0 - t) * angle) / std::sin(angle), b,
                                 sign * std::sin(t * angle) / std::sin(angle)));
}

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
        return kind_ == Kind::Rotation ? unit_quaternion(value) : value;
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
        return kind_ == Kind::Rotation ? turned_between(unit_quaternion(a), unit_quaternion(b), t)
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
