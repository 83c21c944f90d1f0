// Functions with arguments of any number: on arm64 macOS passes those otherwise.
#pragma once

#include "symbols.h"

namespace loader {

Symbols variadic_calls();

}  // namespace loader
