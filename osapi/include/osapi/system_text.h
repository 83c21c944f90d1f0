// Texts as programs of this system take them that know nothing of Unicode.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// A UTF-8 text in the system's 8-bit encoding, for a host that shows it.
///
/// On Windows that is the code page of the machine: what it has no character for becomes '?', so
/// that names of files are for display only. Elsewhere the text itself.
String system_text(String utf8);

}  // namespace OSAPI
