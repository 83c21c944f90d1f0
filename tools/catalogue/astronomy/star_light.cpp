#include "astronomy/star_light.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "astronomy/srgb.h"

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

}  // namespace

double luminance_from_magnitude(double magnitude) { return std::pow(10.0, -0.4 * magnitude); }

double magnitude_from_luminance(double luminance) {
    return 0.0 - 2.5 * std::log10(luminance);  // magnitude 0, never -0
}

double temperature_from_colour_index(double colour_index) {
    const double bv = std::clamp(colour_index, -0.4, 2.0);  // the formula has a pole at -0.674
    return 4600.0 * (1.0 / (0.92 * bv + 1.7) + 1.0 / (0.92 * bv + 0.62));
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

std::array<std::uint8_t, 3> code_from_colour_index(double colour_index) {
    const std::array<double, 3> colour =
        black_body_colour(temperature_from_colour_index(colour_index));
    return {srgb_code(colour[0]), srgb_code(colour[1]), srgb_code(colour[2])};
}

}  // namespace lumivar
