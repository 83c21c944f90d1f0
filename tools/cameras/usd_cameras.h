// Cameras of USD files, read by a converter in Python: the format has no other library that reads
// all of its forms and is small enough to be asked of everybody.
#pragma once

#include <filesystem>
#include <string>

#include "camera_file.h"

namespace lumivar {

/// Whether a file's name ends as those of USD do: .usd, .usda, .usdc or .usdz.
bool is_usd_name(const std::filesystem::path& file);

/// The folder with the converter's Python: LUMIVAR_USD, else lumivar/usd where XDG_DATA_HOME or
/// else ~/.local/share is. scripts/install-usd takes the same.
std::filesystem::path usd_environment();

/// All cameras of the file or, with `name`, one of them: its prim path, or the last name of it
/// where no other has that. Throws `Failure`, which names the remedy where the converter is
/// missing.
CameraFile read_usd_cameras(const std::filesystem::path& file, const std::string& name = "");

}  // namespace lumivar
