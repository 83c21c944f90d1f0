// Files, folders and mappings: the calls are this system's, records and flags are translated.
#pragma once

#include "symbols.h"

namespace loader {

Symbols file_calls();

/// The call that `variadic_calls` leads to.
int open_file(const char* path, int flags, int mode);

}  // namespace loader
