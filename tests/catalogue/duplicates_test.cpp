// Which stars of several catalogues are one, judged by comparing all with all.
#include "database/duplicates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/random_numbers.h"
#include "support/scratch.h"

namespace {

using lumivar::CatalogueStar;
using lumivar::DuplicateMerger;
using lumivar::SortLimits;

constexpr double kArcsecond = 1.0 / 3600.0;

struct InputStar {
    CatalogueStar star;
    unsigned input;
};

struct Collected : lumivar::StarSink {
    void add(const CatalogueStar& star, unsigned input) override { stars.push_back({star, input}); }
    std::vector<InputStar> stars;
};

InputStar star_of(unsigned input, double lon, double lat, double magnitude,
                  double distance = -1.0) {
    CatalogueStar star;
    star.lon = lon;
    star.lat = lat;
    star.luminance = static_cast<float>(std::pow(10.0, -0.4 * magnitude));
    star.distance = distance;
    return {star, input};
}

/// What stays, as (place, input, distance) in its order.
using Kept = std::vector<std::tuple<double, unsigned, double>>;

Kept as_kept(const std::vector<InputStar>& stars) {
    Kept kept;
    for (const InputStar& one : stars) {
        kept.emplace_back(one.star.lon, one.input, one.star.distance);
    }
    return kept;
}

Kept merged(const std::vector<InputStar>& stars, double arcseconds, const SortLimits& limits = {}) {
    const ScratchFolder folder;
    Collected collected;
    DuplicateMerger merger(arcseconds, collected, folder / "out", lumivar::kDuplicateMagnitudes,
                           limits);
    for (const InputStar& one : stars) {
        merger.add(one.star, one.input);
    }
    const std::uint64_t count = merger.finish();
    EXPECT_EQ(count + collected.stars.size(), stars.size()) << "the account";
    return as_kept(collected.stars);
}

/// Degrees between two places: by their vectors' cross and scalar product.
double angle(const CatalogueStar& a, const CatalogueStar& b) {
    const auto vector_of = [](const CatalogueStar& s) -> std::array<double, 3> {
        const double lon = s.lon * std::numbers::pi / 180;
        const double lat = s.lat * std::numbers::pi / 180;
        return {std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat)};
    };
    const auto [ax, ay, az] = vector_of(a);
    const auto [bx, by, bz] = vector_of(b);
    const double cross = std::hypot(ay * bz - az * by, az * bx - ax * bz, ax * by - ay * bx);
    return std::atan2(cross, ax * bx + ay * by + az * bz) * 180 / std::numbers::pi;
}

/// All with all, by the letter of the rule.
Kept merged_by_comparing_all(const std::vector<InputStar>& stars, double arcseconds) {
    std::vector<std::tuple<double, std::size_t, std::size_t>> pairs;
    for (std::size_t i = 0; i < stars.size(); ++i) {
        for (std::size_t j = i + 1; j < stars.size(); ++j) {
            const double apart = angle(stars[i].star, stars[j].star);
            const double magnitudes =
                std::abs(2.5 * std::log10(static_cast<double>(stars[i].star.luminance) /
                                          static_cast<double>(stars[j].star.luminance)));
            if (stars[i].input != stars[j].input && apart <= arcseconds * kArcsecond &&
                magnitudes <= 1.0) {
                pairs.emplace_back(apart, i, j);
            }
        }
    }
    std::sort(pairs.begin(), pairs.end());
    std::vector<std::set<std::size_t>> group_of(stars.size());
    for (std::size_t i = 0; i < stars.size(); ++i) {
        group_of[i] = {i};
    }
    for (const auto& [apart, i, j] : pairs) {
        std::set<std::size_t> both = group_of[i];
        both.insert(group_of[j].begin(), group_of[j].end());
        std::set<unsigned> inputs;
        for (const std::size_t k : both) {
            inputs.insert(stars[k].input);
        }
        if (inputs.size() == both.size()) {
            for (const std::size_t k : both) {
                group_of[k] = both;
            }
        }
    }
    Kept kept;
    for (std::size_t i = 0; i < stars.size(); ++i) {
        std::vector<std::pair<unsigned, std::size_t>> members;
        for (const std::size_t k : group_of[i]) {
            members.emplace_back(stars[k].input, k);
        }
        std::sort(members.begin(), members.end());
        if (members.front().second != i) {
            continue;
        }
        double distance = stars[i].star.distance;
        for (const auto& [input, k] : members) {
            if (distance <= 0) {
                distance = stars[k].star.distance;
            }
        }
        kept.emplace_back(stars[i].star.lon, stars[i].input, distance);
    }
    return kept;
}

TEST(Duplicates, AreWhatComparingAllWithAllFinds) {
    RandomNumbers random(11);
    // Crowded where places are hard: over 0 degrees, at both poles, and across zones of
    // declination.
    const std::array<double, 2> crowds[] = {{0, 12}, {180, -30}, {250, 89.999}, {70, -89.9995}};
    for (const double arcseconds : {0.5, 4.0, 60.0}) {
        std::vector<InputStar> stars;
        for (int i = 0; i < 800; ++i) {
            const auto& [lon, lat] = random.of(crowds);
            const double spread = 20 * arcseconds * kArcsecond;
            const double declination =
                std::clamp(lat + random.between(-spread, spread), -90.0, 90.0);
            // Round the pole in all directions.
            const double width =
                std::abs(lat) > 89 ? 180.0 : spread / std::cos(lat * std::numbers::pi / 180);
            double place = lon + random.between(-width, width);
            place += place < 0 ? 360 : 0;
            place -= place >= 360 ? 360 : 0;
            stars.push_back(star_of(random.bits() % 4U, place, declination, random.between(5, 8),
                                    random.chance(0.5) ? random.between(1, 100) : -1.0));
        }
        const Kept expected = merged_by_comparing_all(stars, arcseconds);
        EXPECT_LT(expected.size(), stars.size() * 9 / 10) << "many are merged";
        EXPECT_EQ(merged(stars, arcseconds), expected);
        EXPECT_EQ(merged(stars, arcseconds, {9000, 2}), expected) << "with little memory";
    }
}

TEST(Duplicates, AreFoundOverZeroAndAtThePoles) {
    const double near = 0.4 * kArcsecond;
    EXPECT_EQ(merged({star_of(0, 359.99995, 0, 5), star_of(1, 0.00005, 0, 5)}, 1).size(), 1U);
    EXPECT_EQ(merged({star_of(0, 10, 90 - near, 5), star_of(1, 190, 90 - near, 5)}, 1).size(), 1U);
    EXPECT_EQ(merged({star_of(0, 10, -90, 5), star_of(1, 300, -90 + near, 5)}, 1).size(), 1U);
    // 360 degrees are 0 degrees, and angles outside the circle are taken into it.
    EXPECT_EQ(
        merged({star_of(0, 360, 0, 5), star_of(1, 0, 0, 5), star_of(2, -360, 0, 5)}, 1).size(), 1U);
    // 60 degrees north a degree of right ascension is half a degree.
    const double step = 1.9 * kArcsecond;
    EXPECT_EQ(merged({star_of(0, 40, 60, 5), star_of(1, 40 + step, 60, 5)}, 1).size(), 1U);
    EXPECT_EQ(merged({star_of(0, 40, 0, 5), star_of(1, 40 + step, 0, 5)}, 1).size(), 2U);
}

TEST(Duplicates, KeepTheEarlierInputsStarAtItsPlaceAndTakeTheDistanceThatItLacks) {
    EXPECT_EQ(merged({star_of(1, 10, 0, 5, 7.5), star_of(0, 80, 0, 5), star_of(0, 10, 0, 5),
                      star_of(1, 80, 0, 5, -1.0), star_of(2, 80, 0, 5, 3.0)},
                     1),
              (Kept{{80, 0, 3.0}, {10, 0, 7.5}}));
    EXPECT_EQ(merged({star_of(0, 10, 0, 5, 20.0), star_of(1, 10, 0, 5, 7.5)}, 1),
              (Kept{{10, 0, 20.0}}));
    EXPECT_EQ(merged({star_of(0, 10, 0, 5, 0.0), star_of(1, 10, 0, 5)}, 1), (Kept{{10, 0, 0.0}}));
}

TEST(Duplicates, DifferByOneMagnitudeAtMost) {
    EXPECT_EQ(merged({star_of(0, 10, 0, 5), star_of(1, 10, 0, 6)}, 1).size(), 1U);
    EXPECT_EQ(merged({star_of(0, 10, 0, 5), star_of(1, 10, 0, 6.01)}, 1).size(), 2U);
}

TEST(Duplicates, LeaveDoubleStarsOfOneInput) {
    // Both catalogues tell the two stars apart: each finds its own, not the nearer of its
    // neighbours.
    const double half = 0.5 * kArcsecond;
    EXPECT_EQ(merged({star_of(0, 10, 0, 5), star_of(0, 10 + half, 0, 5), star_of(1, 10, 0.00001, 5),
                      star_of(1, 10 + half, 0.00001, 5)},
                     2),
              (Kept{{10, 0, -1}, {10 + half, 0, -1}}));
    EXPECT_EQ(merged({star_of(3, 10, 0, 5), star_of(3, 10, 0, 5)}, 2).size(), 2U);
    // Of two possible ones the nearest joins.
    EXPECT_EQ(
        merged({star_of(0, 10, 0, 5), star_of(1, 10 + half, 0, 5), star_of(1, 10 - half / 2, 0, 5)},
               2),
        (Kept{{10, 0, -1}, {10 + half, 1, -1}}));
}

TEST(Duplicates, HaveNumbersForPlaceAndLight) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    InputStar dark = star_of(0, 10, 0, 5);
    dark.star.luminance = 0.0F;
    InputStar other = dark;
    other.input = 1;
    EXPECT_EQ(merged({dark, other}, 1).size(), 2U);
    EXPECT_EQ(merged({star_of(0, 10, kNan, 5), star_of(1, 10, kNan, 5)}, 1).size(), 2U);
    EXPECT_EQ(merged({star_of(0, 10, 91, 5), star_of(1, 10, 91, 5)}, 1).size(), 2U);
}

}  // namespace
