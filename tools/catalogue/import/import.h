// A table of stars (CSV) to a star database.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace lumivar {

struct ImportSummary {
    std::uint32_t stars = 0;
    std::uint32_t without_colour = 0;    ///< given the neutral colour
    std::uint32_t without_distance = 0;  ///< given distance -1
};

/// Reads `input` ("-" is standard input) and writes the database `output`, whole or not at all.
///
/// Columns are found by their names in the header line, in any order, and others are passed over:
/// `ra_deg` (0..360 degrees), `dec_deg` (-90..90 degrees), `vmag` (magnitudes, -30..90) must be
/// there and filled; `bv` (colour index; empty or no such column: `kNeutralColourIndex`) and
/// `distance_pc` (parsecs above 0; empty or no such column: -1) may be missing. The stars keep
/// their order.
///
/// Throws `Failure`, naming file, line and column.
ImportSummary import_catalogue(const std::string& input, const std::filesystem::path& output);

}  // namespace lumivar
