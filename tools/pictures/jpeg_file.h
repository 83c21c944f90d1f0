// Pictures as `.jpg`.
#pragma once

#include <filesystem>

#include "atomic_file.h"
#include "picture_file.h"
#include "picture_text.h"
#include "sample_rows.h"

namespace lumivar {

/// Samples of 8 bits without alpha. Throws `Failure`.
void write_jpeg(AtomicFile& file, const SampleRows& rows, const PictureInfo& info);

/// As `read_picture_details`.
PictureDetails read_jpeg_details(const std::filesystem::path& path);

}  // namespace lumivar
