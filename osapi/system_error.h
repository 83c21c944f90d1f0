// The system's own words for a failure.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// The text of an error number of Windows, without line end; the number itself where the system has
/// no text for it.
String system_error(unsigned long number);

}  // namespace OSAPI
