// Writes star databases: 32-byte little-endian records after a header of the same size.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace lumivar {

inline constexpr std::size_t kStarRecordBytes = 32;
using StarRecord = std::array<std::byte, kStarRecordBytes>;

/// One star in the units of the file.
struct CatalogueStar {
    double lon = 0.0;        ///< first sky angle, degrees (right ascension)
    double lat = 0.0;        ///< second sky angle, degrees (declination)
    float luminance = 0.0F;  ///< linear
    std::array<std::uint8_t, 3> rgb = {255, 255, 255};  ///< sRGB codes
    double distance = -1.0;                             ///< parsecs; -1 when unknown
};

/// Record 0 of a version-2 file, the one whose distances count: "LUMIVAR2" and zeros.
StarRecord encode_header();
/// The star's record, byte by byte, whatever the byte order of the machine; the reserved byte is 0.
StarRecord encode_star(const CatalogueStar& star);

}  // namespace lumivar
