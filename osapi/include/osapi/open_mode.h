// How files are opened.
#pragma once

namespace OSAPI {

/// How a file is opened: bits of an `int`. Neither reading nor writing means reading.
/// Writing creates the file (permissions 0664, less the umask) and truncates it.
enum OpenMode : int {
    kRead = 1,
    kWrite = 2,
    kReadWrite = 3,
    /// Not offered by this system: opening fails at once.
    kUnsupported = 4,
    /// The file must not exist yet.
    kExclusive = 8,
};

}  // namespace OSAPI
