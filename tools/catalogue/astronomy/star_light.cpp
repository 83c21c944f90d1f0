#include "astronomy/star_light.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "srgb.h"

namespace lumivar {
namespace {

constexpr int kFirstNanometre = 380;
constexpr int kStepNanometres = 5;
constexpr std::size_t kSamples = (780 - kFirstNanometre) / kStepNanometres + 1;

double nanometres(std::size_t sample) {
    return kFirstNanometre + kStepNanometres * static_cast<double>(sample);
}

/// A bell with its peak at `middle` and different widths below and above.
double bell(double at, double middle, double below, double above) {
    const double t = (at - middle) / (at < middle ? below : above);
    return std::exp(-0.5 * t * t);
}

/// CIE 1931 2-degree matching functions at each sample.
std::array<std::array<double, 3>, kSamples> matching_functions() {
    std::array<std::array<double, 3>, kSamples> table{};
    for (std::size_t i = 0; i < kSamples; ++i) {
        const double l = nanometres(i);
        table[i] = {1.056 * bell(l, 599.8, 37.9, 31.0) + 0.362 * bell(l, 442.0, 16.0, 26.7) -
                        0.065 * bell(l, 501.1, 20.4, 26.2),
                    0.821 * bell(l, 568.8, 46.9, 40.5) + 0.286 * bell(l, 530.9, 16.3, 31.1),
                    1.217 * bell(l, 437.0, 11.8, 36.0) + 0.681 * bell(l, 459.0, 26.0, 13.8)};
    }
    return table;
}

// The table of codes over 1 / temperature, from the coldest star to the hottest.
constexpr double kColdest = 1.0 / 1000.0;
constexpr double kHottest = 1.0 / 100000.0;
constexpr std::size_t kTableSteps = 4096;
constexpr double kTableStep = (kColdest - kHottest) / kTableSteps;
/// A step is straight if the value in its middle is this close to the line, in codes. Elsewhere in
/// the step the distance is at most twice as large, even where the curve has a corner.
constexpr double kStraight = 1e-4;
constexpr double kNearBorder = 4e-4;

}  // namespace

double luminance_from_magnitude(double magnitude, double zero_point) {
    return std::pow(10.0, -0.4 * (magnitude - zero_point));
}

double magnitude_from_luminance(double luminance) {
    return 0.0 - 2.5 * std::log10(luminance);  // magnitude 0, never -0
}

double temperature_from_colour_index(double colour_index) {
    const double bv = std::clamp(colour_index, -0.4, 2.0);  // the formula has a pole at -0.674
    return 4600.0 * (1.0 / (0.92 * bv + 1.7) + 1.0 / (0.92 * bv + 0.62));
}

double temperature_from_bp_rp(double bp_rp) {
    const double c = std::clamp(bp_rp, -0.6, 5.0);
    return 5040.0 / (0.4929 + c * (0.5092 - c * 0.0353));
}

std::array<double, 3> black_body_colour(double kelvin) {
    static const std::array<std::array<double, 3>, kSamples> matching = matching_functions();
    constexpr double kSecondRadiationConstant = 0.014387769e9;  // nanometre kelvin
    std::array<double, 3> xyz{};
    for (std::size_t i = 0; i < kSamples; ++i) {
        const double l = nanometres(i) / 560.0;  // any unit will do: only ratios matter
        const double radiance =
            1.0 /
            (l * l * l * l * l * std::expm1(kSecondRadiationConstant / (nanometres(i) * kelvin)));
        for (std::size_t c = 0; c < 3; ++c) {
            xyz[c] += radiance * matching[i][c];
        }
    }
    const auto [x, y, z] = xyz;
    std::array<double, 3> rgb = {3.2404542 * x - 1.5371385 * y - 0.4985314 * z,
                                 -0.9692660 * x + 1.8760108 * y + 0.0415560 * z,
                                 0.0556434 * x - 0.2040259 * y + 1.0572252 * z};
    const double largest = *std::max_element(rgb.begin(), rgb.end());
    for (double& channel : rgb) {
        channel = std::max(channel, 0.0) / largest;
    }
    return rgb;
}

std::array<double, 3> black_body_colour(double kelvin, WhitePoint white) {
    std::array<double, 3> colour = black_body_colour(kelvin);
    if (white == WhitePoint::Sun) {
        static const std::array<double, 3> sun = black_body_colour(5772.0);
        for (std::size_t c = 0; c < 3; ++c) {
            colour[c] /= sun[c];
        }
        const double largest = *std::max_element(colour.begin(), colour.end());
        for (double& channel : colour) {
            channel /= largest;
        }
    }
    return colour;
}

std::array<std::uint8_t, 3> black_body_code(double kelvin, WhitePoint white) {
    const std::array<double, 3> colour = black_body_colour(kelvin, white);
    return {srgb_code(colour[0]), srgb_code(colour[1]), srgb_code(colour[2])};
}

StarColours::StarColours(WhitePoint white) : white_(white) {
    const auto values_at = [white](double position) {
        const std::array<double, 3> colour =
            black_body_colour(1.0 / (kColdest - position * kTableStep), white);
        return Values{255.0 * srgb_encode(colour[0]), 255.0 * srgb_encode(colour[1]),
                      255.0 * srgb_encode(colour[2])};
    };
    values_.reserve(kTableSteps + 1);
    straight_.reserve(kTableSteps);
    values_.push_back(values_at(0.0));
    for (std::size_t i = 0; i < kTableSteps; ++i) {
        const Values middle = values_at(static_cast<double>(i) + 0.5);
        const Values next = values_at(static_cast<double>(i) + 1.0);
        bool straight = true;
        for (std::size_t c = 0; c < 3; ++c) {
            const double on_line = 0.5 * (values_.back()[c] + next[c]);
            straight = straight && std::abs(on_line - middle[c]) < kStraight;
        }
        straight_.push_back(straight);
        values_.push_back(next);
    }
}

std::array<std::uint8_t, 3> StarColours::code_at(double kelvin) const {
    // Written so that what is not a number becomes the coldest.
    const double clamped =
        kelvin > 1.0 / kColdest ? std::min(kelvin, 1.0 / kHottest) : 1.0 / kColdest;
    const double position = std::max((kColdest - 1.0 / clamped) / kTableStep, 0.0);
    const std::size_t i = std::min(static_cast<std::size_t>(position), kTableSteps - 1);
    const double part = position - static_cast<double>(i);
    std::array<std::uint8_t, 3> code{};
    bool decided = straight_[i];
    for (std::size_t c = 0; c < 3; ++c) {
        const double value = values_[i][c] + part * (values_[i + 1][c] - values_[i][c]);
        // No value is below 0, so that cutting rounds; std::lround is a call.
        const double raised = value + 0.5;
        const auto rounded = static_cast<std::uint8_t>(raised);
        decided = decided && std::abs(std::abs(value - rounded) - 0.5) > kNearBorder;
        code[c] = rounded;
    }
    return decided ? code : black_body_code(clamped, white_);
}

}  // namespace lumivar
