#include "synthesis/milky_way.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "synthesis/interpolation.h"

namespace lumivar {
namespace {

using Vector = std::array<double, 3>;

/// How stars of a magnitude are spread; see the class. `dust`: how much of the light of the clouds'
/// background is lost in the thickest of them.
constexpr std::array<double, 5> kMagnitudes = {5, 9, 12, 16, 20};
constexpr std::array<double, 5> kDiscShares = {0.45, 0.52, 0.56, 0.56, 0.52};
constexpr std::array<double, 5> kBulgeShares = {0.0, 0.02, 0.06, 0.15, 0.24};
constexpr std::array<double, 5> kDiscHeights = {0.30, 0.25, 0.19, 0.14, 0.10};
constexpr std::array<double, 5> kTowardCentre = {0.05, 0.15, 0.3, 0.4, 0.5};
constexpr std::array<double, 5> kDust = {0.0, 0.6, 0.9, 0.95, 0.95};

constexpr double kBulgeWidth = 0.20;   ///< tangent of some 11 degrees
constexpr double kBulgeHeight = 0.11;  ///< and of some 6

/// The axes of the galactic frame in the ICRS (ESA, 1997, The Hipparcos and Tycho Catalogues, vol.
/// 1, eq. 1.5.11), toward the centre, along its turning, and toward its pole.
constexpr Vector kToCentre = {-0.0548755604, -0.8734370902, -0.4838350155};
constexpr Vector kAlongTurning = {0.4941094279, -0.4448296300, 0.7469822445};
constexpr Vector kToPole = {-0.8676661490, -0.1980763734, 0.4559837762};

/// A random point of the unit disc but its middle: by it a direction is drawn without a sine.
struct DiscPoint {
    double x, y;
    double square;  ///< of its distance from the middle
};
DiscPoint point_in_disc(RandomStream& random) {
    for (;;) {
        const double x = random.signed_unit();
        const double y = random.signed_unit();
        const double square = x * x + y * y;
        if (square > 0.0 && square < 1.0) {
            return {x, y, square};
        }
    }
}

/// All over the sky (G. Marsaglia, 1972, Annals of Mathematical Statistics 43, 645).
Vector anywhere(RandomStream& random) {
    const auto [x, y, square] = point_in_disc(random);
    const double root = 2.0 * std::sqrt(1.0 - square);
    return {x * root, y * root, 1.0 - 2.0 * square};
}

/// By Student's distribution with two degrees of freedom, whose quantiles need a square root alone.
/// `chance`: -1 to 1, both excluded.
double student_quantile(double chance) { return chance * std::sqrt(2.0 / (1.0 - chance * chance)); }

Vector in_disc(double height, double toward_centre, RandomStream& random) {
    // No further than to the poles: z = 1 is this chance.
    const double scaled = 1.0 / height;
    const double most = scaled / std::sqrt(2.0 + scaled * scaled);
    const double z = height * student_quantile(most * random.signed_unit());
    const double across = std::sqrt(std::max(0.0, 1.0 - z * z));
    for (;;) {
        const auto [x, y, square] = point_in_disc(random);
        const double root = std::sqrt(square);
        const double cosine = x / root;
        if (random.unit() * (1.0 + toward_centre) < 1.0 + toward_centre * cosine) {
            return {across * cosine, across * (y / root), z};
        }
    }
}

Vector in_bulge(RandomStream& random) {
    // Its far wings would be as wide as the sky.
    constexpr double kMostChance = 0.97;
    return {1.0, kBulgeWidth * student_quantile(kMostChance * random.signed_unit()),
            kBulgeHeight * student_quantile(kMostChance * random.signed_unit())};
}

/// Random numbers of 0 to 1 at whole coordinates, and smooth between.
double lattice_noise(const Vector& at, std::uint64_t seed) {
    std::array<std::int64_t, 3> cell{};
    Vector share{};
    for (std::size_t i = 0; i < at.size(); ++i) {
        const double low = std::floor(at[i]);
        const double t = at[i] - low;
        cell[i] = static_cast<std::int64_t>(low);
        share[i] = t * t * (3.0 - 2.0 * t);
    }
    const auto corner = [&](std::int64_t x, std::int64_t y, std::int64_t z) {
        // The cells lie within some tens of the origin: each coordinate has bits of its own.
        const auto number = static_cast<std::uint64_t>(
            (cell[0] + x + 512) << 40U | (cell[1] + y + 512) << 20U | (cell[2] + z + 512));
        return static_cast<double>(scrambled_bits(seed ^ number) >> 11U) * 0x1p-53;
    };
    const auto along_x = [&](std::int64_t y, std::int64_t z) {
        return between(corner(0, y, z), corner(1, y, z), share[0]);
    };
    const auto along_y = [&](std::int64_t z) {
        return between(along_x(0, z), along_x(1, z), share[1]);
    };
    return between(along_y(0), along_y(1), share[2]);
}

/// Coarse and fine noise added up, 0 to 1.
double cloud_noise(const Vector& direction, std::uint64_t seed) {
    const auto scaled = [&direction](double scale) {
        // Flat clouds, along the plane.
        return Vector{scale * direction[0], scale * direction[1], 2.0 * scale * direction[2]};
    };
    return 0.5 * lattice_noise(scaled(4.5), seed) + 0.3 * lattice_noise(scaled(11.0), seed + 1) +
           0.2 * lattice_noise(scaled(27.0), seed + 2);
}

/// The share of the stars that is seen in a direction, 0 to 1.
double seen_share(const Vector& direction, double dust, std::uint64_t seed) {
    constexpr double kLaneHeight = 0.07;
    const double slope = direction[2] / kLaneHeight;
    const double lane = 1.0 / (1.0 + slope * slope);
    if (lane * dust < 0.01) {
        return 1.0;
    }
    // Thicker toward the centre than away from it.
    const double thickness = 0.65 + 0.35 * direction[0];
    const double patch = std::clamp(3.5 * (cloud_noise(direction, seed) - 0.36), 0.0, 1.0);
    return 1.0 - dust * lane * thickness * patch;
}

Vector scaled_to_unit(const Vector& v) {
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    return {v[0] / length, v[1] / length, v[2] / length};
}

}  // namespace

std::array<double, 3> MilkyWay::place_of_star(double magnitude, RandomStream& random) const {
    const TablePlace place = place_in(kMagnitudes, magnitude);
    const double bulge = value_at(kBulgeShares, place);
    const double disc = bulge + value_at(kDiscShares, place);
    const double dust = value_at(kDust, place);
    for (;;) {
        const double part = random.unit();
        const Vector galactic = part < bulge  ? scaled_to_unit(in_bulge(random))
                                : part < disc ? in_disc(value_at(kDiscHeights, place),
                                                        value_at(kTowardCentre, place), random)
                                              : anywhere(random);
        if (random.unit() < seen_share(galactic, dust, seed_)) {
            Vector equatorial{};
            for (std::size_t i = 0; i < equatorial.size(); ++i) {
                equatorial[i] = galactic[0] * kToCentre[i] + galactic[1] * kAlongTurning[i] +
                                galactic[2] * kToPole[i];
            }
            return equatorial;
        }
    }
}

}  // namespace lumivar
