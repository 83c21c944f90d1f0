#include "synthesis/star_population.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "synthesis/interpolation.h"

namespace lumivar {
namespace {

/// The sixteenths of the stars by colour index, and the two ends, at five magnitudes.
constexpr std::size_t kQuantiles = 17;
constexpr std::array<double, 5> kMixMagnitudes = {4.0, 7.2, 8.5, 13.0, 18.0};
constexpr std::array<std::array<double, kQuantiles>, 5> kMixes = {{
    {-0.26, -0.16, -0.11, -0.07, 0.00, 0.07, 0.17, 0.32, 0.47, 0.71, 0.93, 1.00, 1.09, 1.20, 1.40,
     1.57, 1.80},
    {-0.25, -0.03, 0.04, 0.12, 0.22, 0.33, 0.41, 0.49, 0.58, 0.80, 0.96, 1.03, 1.11, 1.22, 1.39,
     1.56, 1.85},
    {-0.20, 0.04, 0.14, 0.26, 0.36, 0.43, 0.49, 0.54, 0.61, 0.73, 0.93, 1.01, 1.08, 1.17, 1.30,
     1.50, 1.85},
    {-0.10, 0.16, 0.32, 0.42, 0.48, 0.53, 0.58, 0.63, 0.68, 0.74, 0.81, 0.89, 0.98, 1.06, 1.16,
     1.32, 1.75},
    {0.20, 0.42, 0.50, 0.56, 0.62, 0.68, 0.74, 0.80, 0.87, 0.95, 1.04, 1.14, 1.25, 1.35, 1.43, 1.50,
     1.85},
}};

/// From B-V -0.4 on, in steps of a tenth.
constexpr double kFirstColour = -0.4;
constexpr double kColoursInAMagnitude = 10.0;
constexpr std::array<std::array<std::uint8_t, 3>, 25> kColours = {
    {{169, 192, 255}, {177, 198, 255}, {186, 204, 255}, {195, 210, 255}, {204, 217, 255},
     {214, 223, 255}, {224, 230, 255}, {235, 237, 255}, {247, 244, 255}, {255, 248, 251},
     {255, 243, 240}, {255, 239, 229}, {255, 235, 218}, {255, 230, 208}, {255, 226, 198},
     {255, 222, 189}, {255, 219, 180}, {255, 215, 171}, {255, 211, 163}, {255, 207, 155},
     {255, 204, 148}, {255, 200, 140}, {255, 197, 133}, {255, 194, 127}, {255, 190, 120}}};

/// Absolute magnitudes, in halves, by colour index.
constexpr std::array<double, 13> kColourIndices = {-0.4, -0.2, 0.0, 0.2, 0.4, 0.6, 0.8,
                                                   1.0,  1.2,  1.4, 1.6, 1.8, 2.0};
constexpr std::array<int, 13> kHalfMagnitudesOfDwarfs = {-9, -3, 1,  4,  6,  9, 12,
                                                         13, 15, 17, 22, 25, 28};
constexpr std::array<int, 13> kHalfMagnitudesOfGiants = {-9, -3, 1,  4,  5,  4, 2,
                                                         2,  1,  -1, -2, -2, -2};

constexpr std::array<double, 4> kGiantMagnitudes = {5.0, 8.0, 13.0, 18.0};
constexpr std::array<double, 4> kGiantShares = {0.95, 0.90, 0.55, 0.10};

/// Luminance of an absolute magnitude of so many halves; 10^-0.2 is half a magnitude.
double luminance_of_halves(int halves) {
    constexpr double kHalfMagnitude = 0.63095734448019325;
    double luminance = 1.0;
    for (; halves > 0; --halves) {
        luminance *= kHalfMagnitude;
    }
    for (; halves < 0; ++halves) {
        luminance /= kHalfMagnitude;
    }
    return luminance;
}

std::array<double, 13> luminances_of(const std::array<int, 13>& halves) {
    std::array<double, 13> luminances{};
    for (std::size_t i = 0; i < halves.size(); ++i) {
        luminances[i] = luminance_of_halves(halves[i]);
    }
    return luminances;
}

}  // namespace

double draw_colour_index(double magnitude, RandomStream& random) {
    const TablePlace mix = place_in(kMixMagnitudes, magnitude);
    const double along = random.unit() * (kQuantiles - 1);
    const double low = std::floor(along);
    const auto quantile = static_cast<std::size_t>(low);
    const auto in_mix = [&](std::size_t row) {
        return between(kMixes[row][quantile], kMixes[row][quantile + 1], along - low);
    };
    return between(in_mix(mix.row), in_mix(mix.row + 1), mix.share);
}

std::array<std::uint8_t, 3> synthetic_colour(double colour_index) {
    const double along = std::clamp((colour_index - kFirstColour) * kColoursInAMagnitude, 0.0,
                                    static_cast<double>(kColours.size() - 1));
    const double low = std::min(std::floor(along), static_cast<double>(kColours.size() - 2));
    const auto row = static_cast<std::size_t>(low);
    std::array<std::uint8_t, 3> code{};
    for (std::size_t c = 0; c < code.size(); ++c) {
        code[c] = static_cast<std::uint8_t>(
            std::floor(between(kColours[row][c], kColours[row + 1][c], along - low) + 0.5));
    }
    return code;
}

double draw_intrinsic_luminance(double magnitude, double colour_index, RandomStream& random) {
    static const std::array<double, 13> dwarfs = luminances_of(kHalfMagnitudesOfDwarfs);
    static const std::array<double, 13> giants = luminances_of(kHalfMagnitudesOfGiants);
    // Bluer than B-V 0.6 both tell the same kind of star; redder than 0.9 they are far apart.
    const double reddish = std::clamp((colour_index - 0.6) / 0.3, 0.0, 1.0);
    const double share = reddish * value_at(kGiantShares, place_in(kGiantMagnitudes, magnitude));
    const bool giant = random.unit() < share;
    const double typical =
        value_at(giant ? giants : dwarfs, place_in(kColourIndices, colour_index));
    // From two magnitudes fainter to one brighter, most of them close to the middle.
    const double deviation = 0.4 + 0.6 * (random.unit() + random.unit());
    return typical * (deviation * deviation);
}

}  // namespace lumivar
