// The star database's record, as it lies in the file.
//
//     record 0       header: the word of its version and 24 bytes that nobody reads
//     record 1...    one `star` each
//
// There is no count and no checksum. Bytes after the last whole record are no part of the database.
#pragma once

#include <cstddef>
#include <cstring>

/// One record, little-endian: read the numbers through `libimgops/byte_order.h`.
struct star {
    /// Angles on the sky, in degrees.
    double lon;
    double lat;
    /// Linear brightness.
    float luminance;
    /// sRGB codes.
    unsigned char r;
    unsigned char g;
    unsigned char b;
    unsigned char reserved;
    /// Carries a distance in files of version 2 only.
    double distance;
};
// In the file's own layout on every target; 32-bit ones align double to 4 bytes.
static_assert(sizeof(star) == 32);
static_assert(offsetof(star, lon) == 0);
static_assert(offsetof(star, lat) == 8);
static_assert(offsetof(star, luminance) == 16);
static_assert(offsetof(star, r) == 20);
static_assert(offsetof(star, g) == 21);
static_assert(offsetof(star, b) == 22);
static_assert(offsetof(star, reserved) == 23);
static_assert(offsetof(star, distance) == 24);

/// The word that a header begins with, without a zero behind it.
inline constexpr const char* kStarHeaderWord1 = "LUMIVAR1";
inline constexpr const char* kStarHeaderWord2 = "LUMIVAR2";
inline constexpr std::size_t kStarHeaderWordBytes = 8;

/// The version of the database that begins with these 8 bytes: 1, 2, or 0 for no database.
inline int star_header_version(const void* header) {
    // As text: a NUL in the header ends the comparison, as a difference.
    const char* word = static_cast<const char*>(header);
    if (std::strncmp(word, kStarHeaderWord1, kStarHeaderWordBytes) == 0) {
        return 1;
    }
    return std::strncmp(word, kStarHeaderWord2, kStarHeaderWordBytes) == 0 ? 2 : 0;
}
