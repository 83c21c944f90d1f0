// The machine's name.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// The host's name, cut to 255 characters. Asked for once and kept; the first call must not meet
/// another in a second thread. Throws "gethostname: ...".
String gethostname();

}  // namespace OSAPI
