// The attributes of an .exr before the format's library reads them.
#pragma once

#include <filesystem>

namespace lumivar {

/// The library takes the memory that an attribute claims before it looks whether the file is that
/// long, and reads attributes of some types beyond their size. Throws `Failure` for an attribute
/// beyond the file's end, and for types and sizes that no picture of this program has; what else is
/// wrong the library says itself.
void require_plausible_attributes(const std::filesystem::path& path);

}  // namespace lumivar
