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
    // std::lerp is exact at both ends and between equal values.
    return std::lerp(before.value, after->value,
                     (seconds - before.time) / (after->time - before.time));
}

}  // namespace host
