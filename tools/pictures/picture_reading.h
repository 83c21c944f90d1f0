// What a picture's file says about how it was made, and whether the file is whole.
#pragma once

#include <filesystem>

#include "picture_text.h"

namespace lumivar {

/// The details that `write_picture` put into the file, by their keys. Every pixel is read, so that
/// a file that was cut short is a `Failure`, which names it. So is damage that the format notices:
/// `.png` and packed `.exr` have checksums of their pixels, the others change a star unseen.
PictureDetails read_picture_details(const std::filesystem::path& path);

}  // namespace lumivar
