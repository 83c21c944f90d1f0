// The stars of a database in another order.
#pragma once

#include <cstdint>
#include <filesystem>

#include "database/external_sort.h"

namespace lumivar {

enum class StarOrder {
    /// The brightest first. Luminances that are not numbers last.
    Brightness,
    /// Along a space-filling curve (see sky_curve.h), so that stars that are close to each other in
    /// the file are close on the sky too. Places that are not numbers last.
    Position,
};

/// Writes the stars of `input` in this order to `output`, which may be the same: it takes its place
/// at the end. Stars that are equal in it keep their order. Records and version stay. What does not
/// fit into memory lies beside the output meanwhile. Returns how many stars there are. Throws
/// `Failure`.
std::uint64_t sort_database(const std::filesystem::path& input, const std::filesystem::path& output,
                            StarOrder order, const SortLimits& limits = {});

}  // namespace lumivar
