// The functions and variables of macOS's C library that an image imports, from this system's.
#pragma once

#include <string>

namespace loader {

/// What an import of this name, with its underscore, is bound to; null for what is not known here.
void* system_symbol(const std::string& name);

}  // namespace loader
