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

struct Tally {
    std::size_t off = 0;
    bool too_far = false;
    bool any = false;
    double excess = 0;
    int x = 0;
    int y = 0;
    int channel = 0;
};

template <class LimitAt>
Tally count(const Picture& actual, const Picture& expected, double hard, LimitAt limit_at) {
    Tally tally;
    for (int y = 0; y < actual.height; ++y) {
        for (int x = 0; x < actual.width; ++x) {
            bool off = false;
            for (int channel = 0; channel < actual.channels; ++channel) {
                const std::size_t i = actual.index(x, y, channel);
                const double found = difference(actual.values[i], expected.values[i]);
                const double limit = limit_at(i);
                off = off || !within(found, limit);
                tally.too_far = tally.too_far || !within(found, hard);
                const double excess = std::isnan(found) ? HUGE_VAL : found - limit;
                if (!tally.any || excess > tally.excess) {
                    tally = {tally.off, tally.too_far, true, excess, x, y, channel};
                }
            }
            tally.off += off ? 1 : 0;
        }
    }
    return tally;
}

template <class LimitAt>
Comparison judge(const Picture& actual, const Picture& expected, double share, double hard,
                 LimitAt limit_at) {
    if (!same_size(actual, expected)) {
        return {false, "sizes differ: " + size_of(actual) + ", expected " + size_of(expected)};
    }
    if (actual.values.empty()) {
        return {false, "no pixels to compare"};
    }
    const Tally tally = count(actual, expected, hard, limit_at);
    const std::size_t pixels =
        static_cast<std::size_t>(actual.width) * static_cast<std::size_t>(actual.height);
    const bool passed =
        !tally.too_far && static_cast<double>(tally.off) <= share * static_cast<double>(pixels);

    std::ostringstream text;
    text.precision(9);
    text << tally.off << " of " << pixels << " pixels off";
    if (tally.too_far) {
        text << ", some beyond the hard limit " << hard;
    }
    if (tally.any) {
        const std::size_t worst = actual.index(tally.x, tally.y, tally.channel);
        text << "; worst at (" << tally.x << ", " << tally.y << ") channel " << tally.channel
             << ": " << actual.values[worst] << ", expected " << expected.values[worst]
             << " within " << limit_at(worst);
    }
    return {passed, text.str()};
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
