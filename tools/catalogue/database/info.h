// What a star database holds: the ranges of its fields, and what is wrong with them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace lumivar {

/// The finite values of one field.
struct FieldRange {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();
    std::uint64_t values = 0;

    void add(double value);
};

struct CatalogueInfo {
    std::string path;
    int version = 0;
    std::uint64_t bytes = 0;
    std::uint64_t stars = 0;
    FieldRange lon, lat;          ///< degrees
    FieldRange luminance;         ///< linear
    FieldRange magnitude;         ///< -2.5 log10 of the luminances above 0
    FieldRange red, green, blue;  ///< sRGB codes
    FieldRange distance;          ///< of the stars that have one, that is above 0
    /// Stars by whole magnitudes: the key m counts those in m <= magnitude < m + 1
    /// (both less a millionth, for the rounding of the stored luminance).
    std::map<int, std::uint64_t> histogram;
    /// Whole lines: values that are not numbers or out of range, trailing bytes ...
    std::vector<std::string> warnings;
};

/// Reads the whole file. Throws `Failure` when it is no star database or cannot be read.
CatalogueInfo examine_catalogue(const std::filesystem::path& path);

/// A table and bars, ending with a line feed.
std::string info_as_text(const CatalogueInfo& info);
/// The same as one JSON object; the range of a field without values is null.
std::string info_as_json(const CatalogueInfo& info);

}  // namespace lumivar
