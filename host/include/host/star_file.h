// Is this file a star database? Asked before anything relies on it, to say what is wrong with it.
#pragma once

#include <filesystem>
#include <string>

namespace host {

/// What the beginning of a file says.
struct StarFile {
    /// 1 or 2; 0 when the file is no star database or cannot be read.
    int version = 0;
    /// Why there is no version, naming the file; a foreign file's first bytes are shown as text and
    /// in hexadecimal. Empty otherwise.
    std::string problem;
};

/// Looks at the first bytes of a file. Never waits, also not on a pipe.
StarFile look_at_star_file(const std::filesystem::path& path);

/// A few bytes as text in quotes, with dots for what cannot be printed, then in hexadecimal.
std::string shown_bytes(const std::string& bytes);

}  // namespace host
