// Which files are star databases, by their names and by their first bytes. Asked before anything
// relies on a file, to say what is wrong with it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lumivar {

/// The names in a folder that the plug-in lists, sorted. None when the folder cannot be read.
std::vector<std::string> star_files_in(const std::filesystem::path& folder);

/// What the beginning of a file says.
struct StarFile {
    /// 1 or 2; 0 when the file is no star database or cannot be read.
    int version = 0;
    /// Why there is no version, naming the file: it cannot be read, is a folder, is empty, or
    /// begins with other bytes than a star database (shown as text and in hexadecimal). Empty
    /// otherwise.
    std::string problem;
};

/// Looks at the first bytes of a file. Never waits, also not on a pipe.
StarFile look_at_star_file(const std::filesystem::path& path);

/// The version of a star database, 1 or 2. Throws `Failure` with the problem of any other file.
int star_file_version(const std::filesystem::path& path);

/// A few bytes as text in quotes, with dots for what cannot be printed, then in hexadecimal.
std::string shown_bytes(const std::string& bytes);

}  // namespace lumivar
