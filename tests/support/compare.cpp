#include "support/compare.h"

#include <cmath>
#include <sstream>

namespace support {

namespace {

bool same_size(const Picture& a, const Picture& b) {
    return a.width == b.width && a.height == b.height && a.channels == b.channels &&
           a.values.size() == b.values.size();
}

std::string size_of(const Picture& picture) {
    return std::to_string(picture.width) + "x" + std::to_string(picture.height) + " with " +
           std::to_string(picture.channels) + " channels";
}

double difference(double a, double b) {
    // Equal infinities differ by nothing, and so do two values that are no numbers.
    return a == b || (std::isnan(a) && std::isnan(b)) ? 0.0 : std::fabs(a - b);
}

// Asked this way round, a difference that is not a number is not within anything.
bool within(double difference, double limit) { return difference <= limit; }

template <class LimitAt>
Comparison judge(const Picture& actual, const Picture& expected, double share, double hard,
                 LimitAt limit_at) {
    if (!same_size(actual, expected)) {
        return {false, "sizes differ: " + size_of(actual) + ", expected " + size_of(expected)};
    }
    if (actual.values.empty()) {
        return {false, "no pixels to compare"};
    }
    const auto channels = static_cast<std::size_t>(actual.channels);
    const std::size_t pixels = actual.values.size() / channels;
    std::size_t off = 0;
    bool too_far = false;
    std::size_t worst = 0;
    double largest_excess = -HUGE_VAL;
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        bool is_off = false;
        for (std::size_t i = pixel * channels; i < (pixel + 1) * channels; ++i) {
            const double found = difference(actual.values[i], expected.values[i]);
            is_off = is_off || !within(found, limit_at(i));
            too_far = too_far || !within(found, hard);
            const double excess = std::isnan(found) ? HUGE_VAL : found - limit_at(i);
            if (excess > largest_excess) {
                largest_excess = excess;
                worst = i;
            }
        }
        off += is_off ? 1 : 0;
    }
    std::ostringstream text;
    text.precision(9);
    text << off << " of " << pixels << " pixels off";
    if (too_far) {
        text << ", some beyond the hard limit " << hard;
    }
    const auto width = static_cast<std::size_t>(actual.width);
    text << "; worst at (" << worst / channels % width << ", " << worst / channels / width
         << ") channel " << worst % channels << ": " << actual.values[worst] << ", expected "
         << expected.values[worst] << " within " << limit_at(worst);
    return {!too_far && static_cast<double>(off) <= share * static_cast<double>(pixels),
            text.str()};
}

}  // namespace

Comparison compare(const Picture& actual, const Picture& expected, const Limits& limits) {
    return judge(actual, expected, limits.share, limits.hard,
                 [&](std::size_t) { return limits.per_value; });
}

Comparison compare_within(const Picture& actual, const Picture& expected,
                          const Picture& allowance) {
    if (!same_size(allowance, expected)) {
        return {false, "sizes differ: allowance " + size_of(allowance) + ", expected " +
                           size_of(expected)};
    }
    return judge(actual, expected, 0.0, std::numeric_limits<double>::infinity(),
                 [&](std::size_t i) { return allowance.values[i]; });
}

}  // namespace support
