#include "synthesis/star_counts.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "synthesis/interpolation.h"

namespace lumivar {
namespace {

constexpr std::size_t kStepsInAMagnitude = 16;

constexpr std::array<double, 24> kCounts = {
    0.3,   1.2,   4,      15,    49,     172,  515,  1606,  4992,  15397, 41058,  117e3,
    324e3, 870e3, 2.27e6, 5.7e6, 13.8e6, 32e6, 71e6, 150e6, 296e6, 560e6, 1000e6, 1700e6};

/// Luminance of magnitude -2, and what a magnitude takes away: 10^0.8 and 10^-0.4.
constexpr double kFirstLuminance = 6.3095734448019325;
constexpr double kMagnitude = 0.39810717055349726;

/// The sixteenth root, by square roots, which are exact on every machine.
double root_of_step(double ratio) { return std::sqrt(std::sqrt(std::sqrt(std::sqrt(ratio)))); }

/// Between whole magnitudes by equal ratios.
void append_steps(std::vector<double>& values, double from, double to) {
    const double ratio = root_of_step(to / from);
    for (std::size_t step = 0; step < kStepsInAMagnitude; ++step) {
        values.push_back(from);
        from *= ratio;
    }
}

}  // namespace

StarCounts::StarCounts() {
    double luminance = kFirstLuminance;
    for (std::size_t row = 0; row + 1 < kCounts.size(); ++row) {
        append_steps(counts_, kCounts[row], kCounts[row + 1]);
        append_steps(luminances_, luminance, luminance * kMagnitude);
        luminance *= kMagnitude;
    }
    counts_.push_back(kCounts.back());
    luminances_.push_back(luminance);
}

double StarCounts::brighter_than(double magnitude) const {
    const double steps = (magnitude - kBrightest) * kStepsInAMagnitude;
    const double bin = std::clamp(std::floor(steps), 0.0, static_cast<double>(counts_.size() - 2));
    const auto row = static_cast<std::size_t>(bin);
    return between(counts_[row], counts_[row + 1], steps - bin);
}

StarCounts::Point StarCounts::at_rank(double rank, std::size_t& bin) const {
    while (bin + 2 < counts_.size() && rank >= counts_[bin + 1]) {
        ++bin;
    }
    const double share = (rank - counts_[bin]) / (counts_[bin + 1] - counts_[bin]);
    return {between(luminances_[bin], luminances_[bin + 1], share),
            kBrightest + (static_cast<double>(bin) + share) / kStepsInAMagnitude};
}

}  // namespace lumivar
