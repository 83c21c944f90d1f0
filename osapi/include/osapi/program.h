// The running program.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// The absolute path of the program's file, with links followed; empty when the system cannot tell.
String program_path();

}  // namespace OSAPI
