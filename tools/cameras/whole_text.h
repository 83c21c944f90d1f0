// A file in memory.
#pragma once

#include <string>

namespace lumivar {

/// All bytes of a file, 1 GiB at most. Throws `Failure`.
std::string whole_text(const std::string& path);

}  // namespace lumivar
