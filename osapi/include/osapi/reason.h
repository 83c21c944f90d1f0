// What to tell a user who knows nothing of system calls.
#pragma once

#include <base/exceptions.h>
#include <base/string.h>

namespace OSAPI {

/// The system's own words in a failure that this room has thrown: "No such file or directory" of
/// "opening file "PATH": No such file or directory in <...> (...)". Of a message without a call's
/// name in front, all but the place of the raise.
String reason(const StrXception& failure);

}  // namespace OSAPI
