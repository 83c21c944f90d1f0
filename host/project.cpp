#include <host/project.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace host {
namespace {

using Wide = std::int64_t;

[[noreturn]] void does_not_fit() {
    throw std::out_of_range("the time does not fit the host's 32 bits");
}

Wide product(Wide a, Wide b) {
    Wide result = 0;
    if (__builtin_mul_overflow(a, b, &result)) {
        does_not_fit();
    }
    return result;
}

/// Always in lowest terms, the denominator above 0.
struct Fraction {
    Wide num;
    Wide den;
};

Fraction fraction(Wide num, Wide den) {
    if (den == 0) {
        throw std::invalid_argument("a time with a scale of 0, or a layer with a stretch of 0");
    }
    const Wide common = std::gcd(num, den) * (den < 0 ? -1 : 1);
    return {num / common, den / common};
}

Fraction times(const Fraction& a, const Fraction& b) {
    // Common factors are taken out across the two fractions first, so that the products stay small.
    const Fraction one = fraction(a.num, b.den);
    const Fraction other = fraction(b.num, a.den);
    return {product(one.num, other.num), product(one.den, other.den)};
}

Fraction plus(const Fraction& a, const Fraction& b) {
    const Wide common = std::gcd(a.den, b.den);
    const Wide left = product(a.num, b.den / common);
    const Wide right = product(b.num, a.den / common);
    Wide sum = 0;
    if (__builtin_add_overflow(left, right, &sum)) {
        does_not_fit();
    }
    return fraction(sum, product(a.den / common, b.den));
}

Fraction fraction(Time time) { return fraction(time.value, time.scale); }
Fraction fraction(Ratio ratio) { return fraction(ratio.num, ratio.den); }

Time time_of(const Fraction& exact, std::uint32_t scale) {
    Wide value = exact.num;
    Wide units = exact.den;
    if (scale % exact.den == 0) {
        value = product(value, scale / exact.den);
        units = scale;
    }
    if (std::abs(value) > std::numeric_limits<std::int32_t>::max() ||
        units > std::numeric_limits<std::uint32_t>::max()) {
        does_not_fit();
    }
    return {static_cast<std::int32_t>(value), static_cast<std::uint32_t>(units)};
}

}  // namespace

Time LayerSpec::composition_time(Time layer_time) const {
    return time_of(plus(fraction(start), times(fraction(layer_time), fraction(stretch))),
                   layer_time.scale);
}

Time LayerSpec::layer_time(Time composition_time) const {
    const Fraction begin = fraction(start);
    const Fraction since = plus(fraction(composition_time), {-begin.num, begin.den});
    const Fraction rate = fraction(stretch);
    return time_of(times(since, fraction(rate.den, rate.num)), composition_time.scale);
}

Project::Project(const Scene& scene)
    : source(scene.source), composition(scene.composition), layers(1) {
    if (scene.camera) {
        cameras.push_back({scene.camera});
    }
    std::vector<ControlSetting> controls = scene.controls;
    layers.front().controls = std::move(controls);
}

const CameraLayer* Project::camera_at(double seconds) const {
    const auto found =
        std::find_if(cameras.begin(), cameras.end(), [seconds](const CameraLayer& camera) {
            return camera.camera && camera.active_at(seconds);
        });
    return found == cameras.end() ? nullptr : &*found;
}

}  // namespace host
