// Some stars of a star database: the bright ones, those of a part of the sky, a sample.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "database/catalogue_star.h"

namespace lumivar {

/// A circle on the sky, in degrees; a star on its edge is inside.
struct Cone {
    double right_ascension;
    double declination;
    double radius;  ///< 0 to 180
};

/// From one right ascension eastward to another, and between two declinations, in degrees; what
/// lies on an edge is inside. The first right ascension may be larger: the box then reaches over 0.
struct Box {
    double right_ascension_from;
    double right_ascension_to;
    double declination_from;
    double declination_to;
};

/// A star stays that all of these let through.
struct FilterRules {
    std::optional<double> faintest;  ///< magnitude
    std::optional<Cone> cone;
    std::optional<Box> box;
    /// Share of the stars, 0 to 1. Decided by the star's place and light alone: it is in or out
    /// whatever the file and its order, and what a smaller share lets through a larger one does
    /// too.
    std::optional<double> sample;
};

struct FilterSummary {
    std::uint64_t read = 0;
    std::uint64_t too_faint = 0;  ///< also without a luminance that is a number
    std::uint64_t outside_cone = 0;
    std::uint64_t outside_box = 0;
    std::uint64_t not_sampled = 0;
    std::uint64_t written = 0;
};

bool is_in_cone(const CatalogueStar& star, const Cone& cone);
bool is_in_box(const CatalogueStar& star, const Box& box);
bool is_in_sample(const CatalogueStar& star, double share);

/// Writes the stars of `input` that stay to `output`, which may be the same: it takes its place at
/// the end. Order, records and version stay. A star that several rules drop is counted by the first
/// of them in the order of `FilterRules`. Throws `Failure`.
FilterSummary filter_database(const std::filesystem::path& input,
                              const std::filesystem::path& output, const FilterRules& rules);

}  // namespace lumivar
