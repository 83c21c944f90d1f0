// Files that are no text with a table of stars.
#pragma once

#include <string>
#include <string_view>

namespace lumivar {

/// Refuses what is no table of stars at all, with the remedy: UTF-16, archives, VOTable, a star
/// database, bytes that are no text. `head` is the beginning of the file, decompressed. Throws
/// `Failure`.
void refuse_other_files(std::string_view head, const std::string& file);

/// Whether the bytes begin a FITS file.
bool begins_fits(std::string_view head);

}  // namespace lumivar
