// Makes star catalogues byte by byte from the file's layout, without the renderer's own records.
#pragma once

#include <string>
#include <vector>

namespace support {

/// One star in plain numbers; the defaults are a white star of luminance 1 on the +x axis.
struct CatalogueStar {
    double lon = 0;
    double lat = 0;
    float luminance = 1;
    unsigned char r = 255;
    unsigned char g = 255;
    unsigned char b = 255;
    double distance = 0;
};

inline constexpr const char* kVersion1 = "LUMIVAR1";
inline constexpr const char* kVersion2 = "LUMIVAR2";

/// The 32-byte header with `magic` (8 characters) and zeros.
std::string catalogue_header(const std::string& magic);
/// The 32 bytes of one star, little-endian on every machine; the reserved byte is 0.
std::string catalogue_record(const CatalogueStar& star);
/// A whole file: header and records.
std::string catalogue_bytes(const std::string& magic, const std::vector<CatalogueStar>& stars);
/// Writes such a file.
void write_catalogue(const std::string& path, const std::string& magic,
                     const std::vector<CatalogueStar>& stars);

}  // namespace support
