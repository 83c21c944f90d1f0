// A star in plain numbers, and its record in a star database.
#pragma once

#include <libimgops/star_record.h>

#include <array>
#include <cstdint>
#include <limits>

namespace lumivar {

/// The version whose distances count.
inline constexpr int kLatestStarVersion = 2;

/// A reader counts records, the header among them, in 32 bits.
inline constexpr std::uint64_t kMostStars = std::numeric_limits<std::uint32_t>::max() - 1;

/// One star in the units of the file.
struct CatalogueStar {
    double lon = 0.0;        ///< first sky angle, degrees (right ascension)
    double lat = 0.0;        ///< second sky angle, degrees (declination)
    float luminance = 0.0F;  ///< linear
    std::array<std::uint8_t, 3> rgb = {255, 255, 255};  ///< sRGB codes
    double distance = -1.0;                             ///< parsecs; -1 when unknown
};

/// Record 0 of a file of that version, 1 or 2: its word and zeros.
star encode_header(int version = kLatestStarVersion);
/// The star's record, little-endian whatever the machine; the reserved byte is 0.
star encode_star(const CatalogueStar& star);
/// The star of a record; every number keeps its bits. The reserved byte is lost.
CatalogueStar decode_star(const star& record);

}  // namespace lumivar
