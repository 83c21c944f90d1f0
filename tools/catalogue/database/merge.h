// Several star databases to one.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace lumivar {

struct MergeSummary {
    std::uint64_t read = 0;
    std::uint64_t merged = 0;   ///< duplicates that are not written
    std::uint64_t written = 0;  ///< `read` less `merged`
    int version = 0;            ///< of the output
};

/// Writes the stars of all inputs, in the order in which these are named, to `output`, which may be
/// one of them: it takes its place at the end.
///
/// The output is of version 1 if all inputs are, so that its distances stay unused; otherwise it is
/// of version 2, and the stars of a version-1 input have the distance -1 in it, as they are drawn.
/// `arcseconds`: merge the duplicates of different inputs (see duplicates.h). Throws `Failure`.
MergeSummary merge_databases(const std::vector<std::filesystem::path>& inputs,
                             const std::filesystem::path& output, std::optional<double> arcseconds);

}  // namespace lumivar
