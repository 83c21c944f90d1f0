// Keyframes.
#include <host/scene.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

namespace host {

Track::Track(std::vector<Key> keys) : keys_(std::move(keys)) {
    if (keys_.empty()) {
        throw std::invalid_argument("a track needs at least one key");
    }
    for (std::size_t i = 1; i < keys_.size(); ++i) {
        if (!(keys_[i - 1].time < keys_[i].time)) {
            throw std::invalid_argument("the times of a track's keys must increase");
        }
    }
}

double Track::at(double seconds) const {
    const auto after =
        std::upper_bound(keys_.begin(), keys_.end(), seconds,
                         [](double time, const Key& key) { return time < key.time; });
    if (after == keys_.begin()) {
        return keys_.front().value;
    }
    if (after == keys_.end()) {
        return keys_.back().value;
    }
    const Key& before = *(after - 1);
    switch (before.interpolation) {
        case Interpolation::Hold:
            return before.value;
        case Interpolation::Smooth:
            return smooth_at(static_cast<std::size_t>(after - 1 - keys_.begin()), seconds);
        case Interpolation::Linear:
            break;
    }
    // std::lerp is exact at both ends and between equal values.
    return std::lerp(before.value, after->value,
                     (seconds - before.time) / (after->time - before.time));
}

Track Track::scaled(double factor) const {
    Track product = *this;
    for (Key& key : product.keys_) {
        key.value *= factor;
    }
    return product;
}

double Track::smooth_at(std::size_t before, double seconds) const {
    const Key& from = keys_[before];
    const Key& to = keys_[before + 1];
    const double length = to.time - from.time;
    const double s = (seconds - from.time) / length;
    const double left = s * (1.0 - s) * (1.0 - s);
    const double right = -s * s * (1.0 - s);
    const double value = from.value + (to.value - from.value) * (s * s * (3.0 - 2.0 * s)) +
                         length * (slope_at(before) * left + slope_at(before + 1) * right);
    if (!std::isfinite(value)) {  // differences of numbers near the largest overflow
        return std::lerp(from.value, to.value, s);
    }
    // Rounding alone could still leave the range.
    return std::clamp(value, std::min(from.value, to.value), std::max(from.value, to.value));
}

double Track::slope_at(std::size_t key) const {
    if (key == 0 || key + 1 == keys_.size()) {
        return 0.0;
    }
    const Key& last = keys_[key - 1];
    const Key& here = keys_[key];
    const Key& next = keys_[key + 1];
    const double before = (here.value - last.value) / (here.time - last.time);
    const double after = (next.value - here.value) / (next.time - here.time);
    const bool turns = !((before > 0.0 && after > 0.0) || (before < 0.0 && after < 0.0));
    if (turns || last.interpolation == Interpolation::Hold ||
        here.interpolation == Interpolation::Hold) {
        return 0.0;
    }
    double slope = (next.value - last.value) / (next.time - last.time);
    if (last.interpolation == Interpolation::Linear) {
        slope = before;
    } else if (here.interpolation == Interpolation::Linear) {
        slope = after;
    }
    const double steepest = 3.0 * std::min(std::fabs(before), std::fabs(after));
    return std::clamp(slope, -steepest, steepest);
}

}  // namespace host
