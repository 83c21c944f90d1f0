// A star database as comma-separated text.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace lumivar {

/// Writes a header line and one line a star, ending with line feeds:
/// `lon_deg,lat_deg,luminance,r,g,b,distance_pc`. Each number is the shortest decimal that reads
/// back as the same bits. The last column of a version-1 database, whose distances are never read,
/// is called `distance_unused`. `write` takes the text piece by piece, some hundred lines at a
/// time. Returns how many stars there are. Throws `Failure`.
std::uint64_t dump_database(const std::filesystem::path& database,
                            const std::function<void(std::string_view text)>& write);

}  // namespace lumivar
