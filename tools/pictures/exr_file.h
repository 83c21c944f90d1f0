// Pictures of scene-linear light as `.exr`.
#pragma once

#include <filesystem>

#include "atomic_file.h"
#include "frame_view.h"
#include "picture_file.h"
#include "picture_text.h"

namespace lumivar {

/// Writes the frame's light, with a halo if the content says so, as channels R, G, B and A of 32
/// bits, or of 16 as a half. A float frame is written from where it lies. Throws `Failure`.
void write_exr(AtomicFile& file, const FrameView& frame, const PictureInfo& info,
               const PictureContent& content);

/// As `read_picture_details`.
PictureDetails read_exr_details(const std::filesystem::path& path);

}  // namespace lumivar
