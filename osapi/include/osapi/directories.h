// What is in directories.
#pragma once

#include <base/array.h>
#include <base/string.h>

namespace OSAPI {

/// Appends the name of every entry to `out`, in the system's order; "." and "..", hidden files and
/// all else included. Throws "opendir("PATH"): ...", "readdir("PATH"): ..." and
/// "closedir("PATH"): ...".
void lsdir(const char* path, Array<String>& out);

}  // namespace OSAPI
