// Error numbers and flags, which macOS counts otherwise.
#pragma once

#include <cerrno>
#include <cstddef>
#include <type_traits>

#include "symbols.h"

namespace loader {

/// macOS's number of an error of this system.
int apple_error(int here);
/// The calling thread's error number where an image looks for it.
int& image_errno();
Symbols error_calls();

/// Passes a call's result on, and the number of a failure.
template <class Result>
Result told(Result result) {
    bool failed = false;
    if constexpr (std::is_pointer_v<Result>) {
        failed = result == nullptr;
    } else {
        failed = result == -1;
    }
    if (failed) {
        image_errno() = apple_error(errno);
    }
    return result;
}

/// Ends the process with the name of a call that is not translated.
[[noreturn]] void refuse(const char* call, int flags);

struct Flag {
    int apple;
    int here;
};

/// The bits of `flags` by their numbers here; ends the process for one that is not in the table.
template <std::size_t count>
int translated(const char* call, int flags, const Flag (&table)[count]) {
    int here = 0;
    for (const Flag& flag : table) {
        if ((flags & flag.apple) != 0) {
            here |= flag.here;
            flags &= ~flag.apple;
        }
    }
    if (flags != 0) {
        refuse(call, flags);
    }
    return here;
}

}  // namespace loader
