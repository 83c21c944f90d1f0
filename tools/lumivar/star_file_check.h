// Is this file a star database? Asked before anything relies on it, to say what is wrong with it.
#pragma once

#include <filesystem>
#include <string>

namespace lumivar {

/// The version, 1 or 2. Throws `Failure`: the file cannot be read, is a folder, is empty, or begins
/// with other bytes than a star database (the message shows them as text and in hexadecimal).
int star_file_version(const std::filesystem::path& path);

}  // namespace lumivar
