// A film of a shot for looking at, made by the program ffmpeg.
//
// It takes the 8-bit sRGB pictures as they are. Their codes are converted to Y'CbCr by the matrix
// of BT.709, in its limited range (16 to 235), with colour at half the resolution each way, and the
// file says so: primaries and matrix of BT.709, transfer of IEC 61966-2-1 (sRGB). A player that
// heeds it shows the pictures' colours; H.264 at a constant quality of 16.
#pragma once

#include <filesystem>
#include <string>
#include <utility>

namespace lumivar {

/// Throws `Failure`, with the remedy, where the encoder is not installed.
void require_film_encoder();

/// Throws `UsageError` for a name that does not end in .mp4.
void check_film_name(const std::string& path);

/// Encodes FOLDER/000000.png, 000001.png and so on, all of one size, `rate` (a fraction) of them a
/// second. The film appears whole or not at all. A last column or row is left out where the size is
/// odd. Throws `Failure`.
void make_film(const std::filesystem::path& folder, std::pair<int, int> rate,
               const std::filesystem::path& film);

/// The film in the folder until it is whole, beside the pictures.
inline constexpr char kFilmFile[] = "film.mp4";

/// The name of a picture for `make_film`.
std::string film_picture(std::size_t number);

}  // namespace lumivar
