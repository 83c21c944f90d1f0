// Names that an image imports, and what they are bound to.
#pragma once

#include <map>
#include <string>

namespace loader {

/// By the name in the file, which has an underscore in front.
using Symbols = std::map<std::string, void*>;

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace loader
