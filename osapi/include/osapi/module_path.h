// Where the running code lies.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// The file of the program or module that `address` is part of, as the loader names it; empty when
/// the loader cannot tell. On Windows too '/' stands between the names, as everywhere above this
/// room.
String module_path(const void* address);

}  // namespace OSAPI
