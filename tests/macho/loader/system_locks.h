// Locks between threads.
#pragma once

#include "symbols.h"

namespace loader {

Symbols lock_calls();

/// Forgets those in an image's memory, which goes now.
void forget_locks(const void* begin, const void* end);

}  // namespace loader
