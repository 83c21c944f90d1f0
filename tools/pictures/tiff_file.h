// Pictures as `.tif`.
#pragma once

#include <filesystem>

#include "atomic_file.h"
#include "picture_file.h"
#include "picture_text.h"
#include "sample_rows.h"

namespace lumivar {

/// Samples of any kind, with alpha as a fourth channel if there is one. Larger than a file of the
/// old kind can be (4 GiB), it is a BigTIFF. Throws `Failure`.
void write_tiff(AtomicFile& file, const SampleRows& rows, const PictureInfo& info);

/// As `read_picture_details`.
PictureDetails read_tiff_details(const std::filesystem::path& path);

}  // namespace lumivar
