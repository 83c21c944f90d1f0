// Frame times and shutter intervals as integers on one scale.
#include <host/scene.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace host {

namespace {

constexpr double kLargestValue = std::numeric_limits<std::int32_t>::max();
constexpr double kLargestScale = std::numeric_limits<std::uint32_t>::max();
/// The effect's largest number of motion-blur segments, by which it multiplies values and scales.
constexpr int kSegments = 100;
/// Ticks to the frame where a time cannot be held exactly.
constexpr double kFineTicks = 1000.0;
/// Angles count in thousandths of a degree.
constexpr int kAngleUnits = 1000;
constexpr int kFullTurn = 360 * kAngleUnits;
/// The widest shutter is open for two frames. Opened at the largest phase, one frame after the
/// frame's time, it closes three frames after it.
constexpr int kShutterReach = 3;

std::int64_t angle_units(double degrees) { return std::llround(degrees * kAngleUnits); }

bool fits_value(double value) { return std::fabs(value) <= kLargestValue; }

/// `value` on `scale`, checked first in `double`, where no product overflows.
Time checked_time(double value, std::uint64_t scale) {
    if (!fits_value(value) || static_cast<double>(scale) > kLargestScale) {
        throw std::out_of_range("the time does not fit the host's 32 bits");
    }
    return {static_cast<std::int32_t>(value), static_cast<std::uint32_t>(scale)};
}

/// The scale of a composition, called S in the header.
struct Clock {
    std::uint64_t num;  ///< frames a second, lowest terms
    std::uint64_t den;
    std::uint64_t scale;  ///< S, a multiple of `num`
    std::uint64_t limit;  ///< the largest scale with room for all segments to the composition's end

    explicit Clock(const Composition& composition);

    /// Whole ticks to the frame on `some_scale`, a multiple of `num`.
    double ticks_per_frame(std::uint64_t some_scale) const {
        const std::uint64_t multiple = some_scale / num;
        return static_cast<double>(multiple) * static_cast<double>(den);
    }
    /// The factor that gives `some_scale` at least 1000 ticks to the frame, as far as the limit
    /// allows.
    std::uint64_t refinement(std::uint64_t some_scale) const {
        const double wanted = std::ceil(kFineTicks / ticks_per_frame(some_scale));
        return std::max<std::uint64_t>(
            1, std::min(static_cast<std::uint64_t>(wanted), limit / some_scale));
    }
};

Clock::Clock(const Composition& composition) {
    const std::uint64_t common = std::gcd(composition.frame_rate.num, composition.frame_rate.den);
    num = composition.frame_rate.num / common;
    den = composition.frame_rate.den / common;

    const double end =
        composition.duration + kShutterReach * static_cast<double>(den) / static_cast<double>(num);
    limit = static_cast<std::uint64_t>(
        std::min(kLargestValue / kSegments / end, kLargestScale / kSegments));

    // The part of a frame that the shutter waits or stays open is angle / kFullTurn; its
    // denominator times `num`, less what `den` takes out, is what the scale must hold. No product
    // here passes 2^32 * 360000.
    scale = num;
    for (const Track* angle : {&composition.shutter_angle, &composition.shutter_phase}) {
        if (angle->is_constant()) {
            const std::int64_t units = angle_units(angle->at(0.0));
            const auto part = static_cast<std::uint64_t>(
                kFullTurn / std::gcd<std::int64_t, std::int64_t>(units, kFullTurn));
            scale = std::lcm(scale, num * (part / std::gcd(part, den)));
        }
    }
    if (scale > limit) {
        scale = num * std::max<std::uint64_t>(1, limit / num);
    }
    if (!composition.shutter_angle.is_constant() || !composition.shutter_phase.is_constant()) {
        scale *= refinement(scale);
    }
}

}  // namespace

int Composition::frames() const {
    // A duration written with a few decimals, like 2.002 s at 24000/1001, still counts its last
    // frame.
    constexpr double kSlack = 1e-6;
    const double whole = std::floor(duration * frame_rate.per_second() + kSlack);
    return static_cast<int>(std::clamp(whole, 1.0, kLargestValue));
}

Time Composition::frame_duration() const { return frame_time(1); }

Time Composition::frame_time(int index) const {
    const Clock clock(*this);
    return checked_time(index * clock.ticks_per_frame(clock.scale), clock.scale);
}

Time Composition::time_at(double seconds) const {
    const Clock clock(*this);
    const std::uint64_t factor = clock.refinement(clock.scale);
    const std::uint64_t fine = clock.scale * factor;
    const Time time = checked_time(std::round(seconds * static_cast<double>(fine)), fine);
    const auto step = static_cast<std::int64_t>(factor);
    if (time.value % step == 0) {
        return {static_cast<std::int32_t>(time.value / step),
                static_cast<std::uint32_t>(clock.scale)};
    }
    return time;
}

void Composition::shutter_range(Time time, Time& start, Time& duration_out) const {
    const Clock clock(*this);
    // A time on another scale is brought to a scale that holds both, or to the nearest tick of S.
    std::uint64_t scale = std::lcm<std::uint64_t>(time.scale, clock.scale);
    if (scale > clock.limit && scale != time.scale) {
        scale = clock.scale;
    }
    const double value =
        std::round(static_cast<double>(time.value) * static_cast<double>(scale) / time.scale);

    // Where the result fits 32 bits, the product is below 2^53 and the rounding sees the true
    // value.
    const double ticks = clock.ticks_per_frame(scale);
    const auto ticks_in = [ticks](const Track& angle, double seconds) {
        return std::round(static_cast<double>(angle_units(angle.at(seconds))) * ticks / kFullTurn);
    };
    start = checked_time(value + ticks_in(shutter_phase, time.seconds()), scale);
    duration_out = checked_time(ticks_in(shutter_angle, time.seconds()), scale);
}

}  // namespace host
