// Regular files read in one go, and the words for a file that cannot be read.
#pragma once

#include <base/exceptions.h>
#include <base/words.h>

#include <cstddef>
#include <string>

namespace OSAPI {

/// The first `most` bytes of a regular file, or all where it has fewer. Never waits, also not on a
/// pipe.
///
/// Throws "opening file "PATH": ...", also for what is no regular file, "fstat: ..." and "read:
/// ...".
std::string read_head(const char* path, std::size_t most);

/// All bytes of a regular file. Never waits, also not on a pipe. Throws what `read_head` throws,
/// and "reading file "PATH": ..." where the file has more than `most` bytes or is cut short
/// meanwhile.
std::string read_whole(const char* path, std::size_t most);

/// What users are told of a file that cannot be read, whoever wanted it: "cannot read NAME:
/// REASON". `failure` is what this room threw, `name` what the user calls the file.
std::string cannot_read(const std::string& name, const StrXception& failure);

}  // namespace OSAPI
